// The tree of keys and values behind `.reg` text.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace sabrel {

/// A text, a number, or data of a kind that no setting is read from.
using RegistryValue = std::variant<std::string, std::uint64_t, std::monostate>;

/// Names are in lower case; the unnamed value stands under "".
struct RegistryNode {
  std::map<std::string, std::shared_ptr<RegistryNode>> subkeys;
  std::map<std::string, RegistryValue> values;
};

/// The full lower-case name of the hive called `name`; none when there is no such hive.
[[nodiscard]] std::optional<std::string> HiveName(std::string_view name);

/// The node above the hives. `file_name` is for the error texts, in which no value is ever shown.
/// Errors: 321 naming file, line and reason; then nothing was read
[[nodiscard]] std::shared_ptr<RegistryNode> ParseRegistryText(std::string_view bytes,
                                                              const std::string& file_name);

/// The text of UTF-16 little-endian bytes, an even number of them; unpaired surrogates become
/// U+FFFD.
[[nodiscard]] std::string FromUtf16LittleEndian(std::string_view bytes);

}  // namespace sabrel
