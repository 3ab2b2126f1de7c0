// The seam to the settings that the installation left in the registry (read only).
#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace sabrel {

class RegistryKey {
 public:
  virtual ~RegistryKey() = default;
  /// Null when there is no such subkey.
  [[nodiscard]] virtual std::unique_ptr<RegistryKey> OpenSubkey(std::string_view name) const = 0;
  /// `value_name` empty reads the key's unnamed value. A value of another type reads as
  /// `default_value`.
  [[nodiscard]] virtual std::string ReadString(std::string_view value_name,
                                               std::string_view default_value) const = 0;
  /// A number is true when it is not 0; a text is true for "True", "Yes", "Y" and non-zero numbers,
  /// false for their opposites, any case; anything else reads as `default_value`.
  [[nodiscard]] virtual bool ReadBoolean(std::string_view value_name, bool default_value) const = 0;
};

class Registry {
 public:
  virtual ~Registry() = default;
  /// `path` starts with a backslash and the spelled-out hive name, any case. Null when there is no
  /// such key. Errors: what reading the registry raises
  [[nodiscard]] virtual std::unique_ptr<RegistryKey> OpenKey(std::string_view path) const = 0;
};

}  // namespace sabrel
