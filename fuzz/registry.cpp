// Registry text: refused with 321 and without a value in the message, or a tree of valid names and
// texts that the keys read, the same in UTF-8 and UTF-16.
#include "adapters/console/registry_text.h"

#include "adapters/console/registry_file.h"
#include "fuzz/target.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::fuzz {
namespace {

constexpr std::string_view kSecret = "Zq7xWv2T";
constexpr std::string_view kMarkUtf16 = "\xFF\xFE";

void CheckNode(const RegistryNode& node, const RegistryFile& file, const std::string& path,
               int depth) {
  Require(depth < 600, "keys nest as deep as the registry's", path);
  const auto key = path.empty() ? nullptr : file.OpenKey(path);
  Require(path.empty() || key != nullptr, "a key that was read can be opened", path);
  for (const auto& [name, value] : node.values) {
    Require(LowerCase(name) == name && IsValidUtf8(name), "a value's name is in lower case", name);
    const auto* text = std::get_if<std::string>(&value);
    if (text == nullptr || key == nullptr) continue;
    Require(IsValidUtf8(*text), "a value is UTF-8", *text);
    Require(key->ReadString(name, "?") == *text, "a key reads its value", *text);
    static_cast<void>(key->ReadBoolean(name, true));
  }
  for (const auto& [name, subkey] : node.subkeys) {
    Require(LowerCase(name) == name && !name.empty() && name.find('\\') == std::string::npos,
            "a key's name is in lower case", name);
    CheckNode(*subkey, file, path + "\\" + name, depth + 1);
  }
}

/// What the tree holds, for comparing.
void Describe(const RegistryNode& node, std::string& out) {
  for (const auto& [name, value] : node.values) {
    out += name + "=" + std::to_string(value.index());
    if (const auto* text = std::get_if<std::string>(&value)) out += *text;
    if (const auto* number = std::get_if<std::uint64_t>(&value)) out += std::to_string(*number);
    out += '\n';
  }
  for (const auto& [name, subkey] : node.subkeys) {
    out += name + "{\n";
    Describe(*subkey, out);
    out += "}\n";
  }
}

std::optional<std::string> Described(std::string_view bytes) {
  std::optional<std::string> text;
  DoneOr({RuntimeErrorNumber::kInvalidFileFormat},
         [&] { Describe(*ParseRegistryText(bytes, "fuzz.reg"), text.emplace()); });
  return text;
}

std::string Utf16Of(std::string_view text) {
  std::string bytes(kMarkUtf16);
  const auto add = [&bytes](unsigned unit) {
    bytes += static_cast<char>(unit & 0xFFU);
    bytes += static_cast<char>(unit >> 8U);
  };
  while (!text.empty()) {
    const std::size_t length = FirstCharacterLength(text);
    const auto first = static_cast<unsigned char>(text.front());
    unsigned code_point = length == 1 ? first : first & (0xFFU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
      code_point = (code_point << 6U) | (static_cast<unsigned char>(text[i]) & 0x3FU);
    }
    if (code_point >= 0x10000) {
      add(0xD800U + ((code_point - 0x10000U) >> 10U));
      add(0xDC00U + ((code_point - 0x10000U) & 0x3FFU));
    } else {
      add(code_point);
    }
    text.remove_prefix(length);
  }
  return bytes;
}

/// `text` with a secret at the beginning of each value.
std::string WithSecrets(std::string_view text) {
  std::string planted = ReplaceAll(text, "=", "=" + std::string(kSecret));
  return ReplaceAll(planted, "=" + std::string(kSecret) + "\"", "=\"" + std::string(kSecret));
}

}  // namespace

void Check(std::string_view input) {
  const auto tree = Described(input);
  if (tree) {
    const auto file = RegistryFile::FromBytes(input, "fuzz.reg");
    CheckNode(*ParseRegistryText(input, "fuzz.reg"), file, "", 0);
  }
  if (!input.starts_with(kMarkUtf16) && IsSendableText(input) &&
      !input.starts_with("\xEF\xBB\xBF")) {
    Require(Described(Utf16Of(input)) == tree, "UTF-16 reads as UTF-8 does");
  }
  try {
    static_cast<void>(ParseRegistryText(WithSecrets(input), "fuzz.reg"));
  } catch (const RuntimeError& failure) {
    Require(failure.Description().find(kSecret) == std::string::npos, "no message shows a value",
            failure.Description());
  }
}

}  // namespace sabrel::fuzz
