// Registry settings read from a file that was exported as `.reg` text.
//
// Takes both forms of the export ("Windows Registry Editor Version 5.00", "REGEDIT4"), in UTF-16
// little-endian with a byte-order mark or in UTF-8 with or without one. The file is read once and
// whole: later changes to it are not seen. Refuses, naming file, line and reason, whatever is not
// well-formed to its last line break, because a file cut short would otherwise pass for an
// installation that lacks settings.
//
//   const sabrel::RegistryFile registry("settings.reg");
//   const auto key = registry.OpenKey("\\HKEY_LOCAL_MACHINE\\SOFTWARE\\Torvane\\Norvasta");
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "sabrel/platform/registry.h"

namespace sabrel {

struct RegistryNode;

/// Keys may be read from any thread and outlive the registry.
class RegistryFile final : public Registry {
 public:
  /// An empty registry: every key is null.
  RegistryFile();
  /// Errors: 75 when the file cannot be read, 321 when its text is not well-formed
  explicit RegistryFile(const std::filesystem::path& path);
  /// `bytes` as they would stand in a file called `name`. Errors: 321
  [[nodiscard]] static RegistryFile FromBytes(std::string_view bytes, const std::string& name);

  /// The hive may be spelled out or abbreviated (HKLM), the leading backslash left out. Errors:
  /// none
  [[nodiscard]] std::unique_ptr<RegistryKey> OpenKey(std::string_view path) const override;

 private:
  explicit RegistryFile(std::shared_ptr<const RegistryNode> root) : root_(std::move(root)) {}
  std::shared_ptr<const RegistryNode> root_;
};

}  // namespace sabrel
