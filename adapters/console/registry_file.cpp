#include "adapters/console/registry_file.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>

#include "adapters/console/access_failure.h"
#include "adapters/console/registry_text.h"
#include "sabrel/platform/utf8.h"

namespace sabrel {
namespace {

using SharedNode = std::shared_ptr<const RegistryNode>;

// The node at the end of `path`, whose names are parted by backslashes; an empty path stays where
// it is.
SharedNode Descend(SharedNode node, std::string_view path) {
  while (node && !path.empty()) {
    const std::size_t end = path.find('\\');
    const auto found = node->subkeys.find(LowerCase(path.substr(0, end)));
    node = found == node->subkeys.end() ? nullptr : found->second;
    path = end == std::string_view::npos ? std::string_view() : path.substr(end + 1);
  }
  return node;
}

bool TruthOf(std::string_view text, bool default_value) {
  const std::string word = LowerCase(TrimBlanks(text));
  if (word == "true" || word == "yes" || word == "y") return true;
  if (word == "false" || word == "no" || word == "n") return false;
  double number = 0;
  const char* end = word.data() + word.size();
  const auto read = std::from_chars(word.data(), end, number);
  const bool whole = read.ec == std::errc() && read.ptr == end && std::isfinite(number);
  return whole ? number != 0 : default_value;
}

class Key final : public RegistryKey {
 public:
  explicit Key(SharedNode node) : node_(std::move(node)) {}

  [[nodiscard]] std::unique_ptr<RegistryKey> OpenSubkey(std::string_view name) const override {
    auto node = Descend(node_, name);
    return node ? std::make_unique<Key>(std::move(node)) : nullptr;
  }

  [[nodiscard]] std::string ReadString(std::string_view value_name,
                                       std::string_view default_value) const override {
    const RegistryValue* value = Find(value_name);
    const auto* text = value ? std::get_if<std::string>(value) : nullptr;
    return text ? *text : std::string(default_value);
  }

  [[nodiscard]] bool ReadBoolean(std::string_view value_name, bool default_value) const override {
    const RegistryValue* value = Find(value_name);
    if (!value) return default_value;
    if (const auto* number = std::get_if<std::uint64_t>(value)) return *number != 0;
    const auto* text = std::get_if<std::string>(value);
    return text ? TruthOf(*text, default_value) : default_value;
  }

 private:
  [[nodiscard]] const RegistryValue* Find(std::string_view name) const {
    const auto found = node_->values.find(LowerCase(name));
    return found == node_->values.end() ? nullptr : &found->second;
  }

  SharedNode node_;
};

constexpr std::size_t kLongestFile = std::size_t{64} << 20U;

std::string BytesOf(const std::filesystem::path& path) {
  const std::string what = "The settings file \"" + path.string() + "\" cannot be read";
  const auto close = [](std::FILE* file) { std::fclose(file); };
  const std::unique_ptr<std::FILE, decltype(close)> file(std::fopen(path.c_str(), "rb"), close);
  if (!file) throw AccessFailure(what, errno);
  std::string bytes;
  std::array<char, 4096> buffer{};
  while (const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), file.get())) {
    bytes.append(buffer.data(), count);
    if (bytes.size() > kLongestFile) {
      throw RuntimeError(RuntimeErrorNumber::kInvalidFileFormat,
                         what + ": it is longer than 64 MiB, which no exported settings are");
    }
  }
  if (std::ferror(file.get()) != 0) throw AccessFailure(what, errno);
  return bytes;
}

}  // namespace

RegistryFile::RegistryFile() : root_(std::make_shared<RegistryNode>()) {}

RegistryFile::RegistryFile(const std::filesystem::path& path)
    : root_(ParseRegistryText(BytesOf(path), path.string())) {}

RegistryFile RegistryFile::FromBytes(std::string_view bytes, const std::string& name) {
  return RegistryFile(ParseRegistryText(bytes, name));
}

std::unique_ptr<RegistryKey> RegistryFile::OpenKey(std::string_view path) const {
  if (path.starts_with('\\')) path.remove_prefix(1);
  const std::size_t end = path.find('\\');
  const auto hive = HiveName(path.substr(0, end));
  if (!hive) return nullptr;
  SharedNode node = Descend(root_, *hive);
  if (end != std::string_view::npos) node = Descend(std::move(node), path.substr(end + 1));
  return node ? std::make_unique<Key>(std::move(node)) : nullptr;
}

}  // namespace sabrel
