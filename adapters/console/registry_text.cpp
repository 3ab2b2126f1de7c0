#include "adapters/console/registry_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <utility>

#include "sabrel/platform/runtime_error.h"
#include "sabrel/platform/utf8.h"

namespace sabrel {
namespace {

// Types of values as the export numbers them.
enum RegistryType : unsigned {
  kString = 1,
  kExpandString = 2,
  kBinary = 3,
  kNumber = 4,
  kNumberBigEndian = 5,
  kLongNumber = 11,
};

// The registry itself nests no deeper.
constexpr int kDeepestKey = 512;

constexpr std::string_view kMarkUtf16 = "\xFF\xFE";
constexpr std::string_view kMarkUtf16BigEndian = "\xFE\xFF";
constexpr std::string_view kMarkUtf8 = "\xEF\xBB\xBF";

bool IsBlank(char c) { return c == ' ' || c == '\t'; }
bool IsLineBreak(char c) { return c == '\r' || c == '\n'; }

class RegistryTextParser {
 public:
  RegistryTextParser(std::string_view bytes, const std::string& file_name)
      : file_name_(file_name), text_(Decoded(bytes)) {}

  std::shared_ptr<RegistryNode> Parse() {
    ReadHeader();
    while (SkipBlankLines()) {
      if (Peek() == '[') {
        ReadKeyLine();
      } else if (Peek() == '"' || Peek() == '@') {
        ReadValueLine();
      } else {
        Fail("this is neither a key, nor a value, nor a comment");
      }
    }
    return root_;
  }

 private:
  [[noreturn]] void FailAt(int line, const std::string& reason) const {
    throw RuntimeError(RuntimeErrorNumber::kInvalidFileFormat,
                       "The settings file \"" + file_name_ + "\" is not usable, line " +
                           std::to_string(line) + ": " + reason);
  }
  [[noreturn]] void Fail(const std::string& reason) const { FailAt(line_, reason); }

  std::string Decoded(std::string_view bytes) const {
    if (bytes.starts_with(kMarkUtf16BigEndian)) {
      Fail("the text is big-endian UTF-16; save it as UTF-8 or little-endian UTF-16");
    }
    std::string text;
    if (bytes.starts_with(kMarkUtf16)) {
      bytes.remove_prefix(kMarkUtf16.size());
      text = FromUtf16LittleEndian(bytes.substr(0, bytes.size() / 2 * 2));
      if (bytes.size() % 2 != 0) {
        FailAt(LinesOf(text), "the file ends inside a character; it has been cut");
      }
    } else {
      if (bytes.starts_with(kMarkUtf8)) bytes.remove_prefix(kMarkUtf8.size());
      text = bytes;
    }
    const std::size_t nul = text.find('\0');
    if (nul != std::string::npos) {
      FailAt(LinesOf(std::string_view(text).substr(0, nul)),
             "there is a null character; UTF-16 text needs a byte-order mark");
    }
    if (!IsValidUtf8(text))
      FailAt(InvalidLine(text), "the text is neither UTF-8 nor marked UTF-16");
    return text;
  }

  static int LinesOf(std::string_view text) {
    return 1 + static_cast<int>(std::count(text.begin(), text.end(), '\n'));
  }

  static int InvalidLine(std::string_view text) {
    int line = 1;
    while (IsValidUtf8(text.substr(0, text.find('\n')))) {
      text.remove_prefix(text.find('\n') + 1);
      ++line;
    }
    return line;
  }

  [[nodiscard]] bool AtEnd() const { return position_ == text_.size(); }
  [[nodiscard]] char Peek() const { return AtEnd() ? '\0' : text_[position_]; }
  [[nodiscard]] std::string_view Rest() const { return std::string_view(text_).substr(position_); }

  void TakeLineBreak() {
    position_ += Rest().starts_with("\r\n") ? 2U : 1U;
    ++line_;
  }
  void SkipBlanks() {
    while (IsBlank(Peek())) ++position_;
  }
  bool Take(std::string_view expected) {
    if (!Rest().starts_with(expected)) return false;
    position_ += expected.size();
    return true;
  }
  std::string_view TakeRestOfLine() {
    const std::string_view rest = Rest().substr(0, Rest().find_first_of("\r\n"));
    position_ += rest.size();
    return rest;
  }

  // A line counts only with its line break, or a cut number or list would pass for a shorter one.
  void EndLine(const char* what) {
    SkipBlanks();
    if (Peek() == ';') TakeRestOfLine();
    if (AtEnd()) Fail("the file ends without a line break; it has been cut");
    if (!IsLineBreak(Peek())) Fail(std::string("there is more text behind ") + what);
    TakeLineBreak();
  }

  // Whether there is a line with something on it.
  bool SkipBlankLines() {
    SkipBlanks();
    while (IsLineBreak(Peek()) || Peek() == ';') {
      EndLine("a comment");
      SkipBlanks();
    }
    return !AtEnd();
  }

  void ReadHeader() {
    if (Take("Windows Registry Editor Version 5.00")) {
      texts_are_utf16_ = true;
    } else if (!Take("REGEDIT4")) {
      Fail("the header \"Windows Registry Editor Version 5.00\" or \"REGEDIT4\" is missing");
    }
    EndLine("the header");
  }

  void ReadKeyLine() {
    // Names of keys may hold brackets, so the line's last one closes the key.
    const std::string_view line = Rest().substr(0, Rest().find_first_of("\r\n"));
    const std::size_t close = line.rfind(']');
    if (close == std::string_view::npos) Fail("the name of the key is not closed by ]");
    std::string_view path = line.substr(1, close - 1);
    const bool removed = path.starts_with('-');
    if (removed) path.remove_prefix(1);
    current_ = removed ? nullptr : root_;
    removed ? RemoveKey(path) : EnterKey(path);
    position_ += close + 1;
    EndLine("the name of the key");
  }

  // The first of the names in `path`, which it is taken off; hives under their full name.
  std::string TakeName(std::string_view& path, int depth) const {
    const std::size_t end = path.find('\\');
    const std::string_view name = path.substr(0, end);
    path = end == std::string_view::npos ? std::string_view() : path.substr(end + 1);
    if (depth > kDeepestKey) Fail("the key is nested too deeply");
    if (name.empty() || (end != std::string_view::npos && path.empty())) {
      Fail("the key has a part without a name");
    }
    if (depth > 0) return LowerCase(name);
    const auto hive = HiveName(name);
    if (!hive) Fail("the key does not start with the name of a hive");
    return *hive;
  }

  void EnterKey(std::string_view path) {
    for (int depth = 0; depth == 0 || !path.empty(); ++depth) {
      auto& child = current_->subkeys[TakeName(path, depth)];
      if (!child) child = std::make_shared<RegistryNode>();
      current_ = child;
    }
  }

  void RemoveKey(std::string_view path) {
    auto node = root_;
    for (int depth = 0;; ++depth) {
      const std::string name = TakeName(path, depth);
      if (path.empty()) return static_cast<void>(node->subkeys.erase(name));
      const auto child = node->subkeys.find(name);
      if (child == node->subkeys.end()) return;
      node = child->second;
    }
  }

  void ReadValueLine() {
    if (!current_) Fail("the value stands under no key");
    const std::string name = Take("@") ? std::string() : LowerCase(TakeString());
    SkipBlanks();
    if (!Take("=")) Fail("= is missing behind the name of the value");
    SkipBlanks();
    if (Take("-")) {
      EndLine("the value");
      current_->values.erase(name);
      return;
    }
    RegistryValue value = TakeValue();
    EndLine("the value");
    current_->values.insert_or_assign(name, std::move(value));
  }

  RegistryValue TakeValue() {
    if (Peek() == '"') return TakeString();
    const std::size_t colon = Rest().substr(0, Rest().find_first_of("\r\n")).find(':');
    if (colon == std::string_view::npos) Fail("the type of the value is missing or incomplete");
    const std::string type = LowerCase(Rest().substr(0, colon));
    position_ += colon + 1;
    if (type == "dword") return std::uint64_t{TakeHexadecimal(8)};
    if (type == "hex") return TakeBytes(kBinary);
    unsigned number = 0;
    const char* end = type.data() + type.size();
    if (type.starts_with("hex(") && type.ends_with(")")) {
      const auto read = std::from_chars(type.data() + 4, end - 1, number, 16);
      if (read.ec == std::errc() && read.ptr == end - 1) return TakeBytes(number);
    }
    Fail("the type of the value is not known");
  }

  // A text may run over several lines; the line it starts on is the one to report.
  std::string TakeString() {
    const int start = line_;
    std::string text;
    ++position_;
    while (!Take("\"")) {
      if (AtEnd()) FailAt(start, "the text is not closed; the file may have been cut");
      if (IsLineBreak(Peek())) {
        const std::size_t before = position_;
        TakeLineBreak();
        text.append(text_, before, position_ - before);
        continue;
      }
      if (Peek() == '\\') {
        ++position_;
        if (Peek() != '\\' && Peek() != '"') {
          FailAt(start, "a backslash in a text must be doubled or stand before a quotation mark");
        }
      }
      text += text_[position_++];
    }
    return text;
  }

  std::uint32_t TakeHexadecimal(std::size_t digits) {
    const std::string_view word = Rest().substr(0, digits);
    std::uint32_t number = 0;
    const auto read = std::from_chars(word.data(), word.data() + word.size(), number, 16);
    if (word.size() < digits || read.ptr != word.data() + digits) {
      Fail("a number of " + std::to_string(digits) + " hexadecimal digits is incomplete or wrong");
    }
    position_ += digits;
    return number;
  }

  // Bytes parted by commas; a backslash at the end of a line continues the list on the next one.
  std::string TakeByteList() {
    std::string bytes;
    bool comma = false;
    while (true) {
      SkipBlanks();
      if (Take("\\")) {
        SkipBlanks();
        if (!IsLineBreak(Peek())) Fail("the continued list of bytes is not continued");
        TakeLineBreak();
      } else if (AtEnd() || IsLineBreak(Peek()) || Peek() == ';') {
        if (comma) Fail("the list of bytes ends with a comma; it has been cut");
        return bytes;
      } else {
        if (!bytes.empty() && !comma) Fail("a comma is missing in the list of bytes");
        bytes += static_cast<char>(TakeHexadecimal(2));
        SkipBlanks();
        comma = Take(",");
      }
    }
  }

  RegistryValue TakeBytes(unsigned type) {
    const int start = line_;
    std::string bytes = TakeByteList();
    switch (type) {
      case kString:
      case kExpandString: return TextOf(bytes, start);
      case kNumber:
      case kNumberBigEndian: return NumberOf(bytes, 4, start);
      case kLongNumber: return NumberOf(bytes, 8, start);
      default: return std::monostate();
    }
  }

  // A number only serves as a truth value, to which the order of its bytes does not matter.
  [[nodiscard]] RegistryValue NumberOf(std::string_view bytes, std::size_t size, int line) const {
    if (bytes.size() != size) {
      FailAt(line, "the number has to have " + std::to_string(size) + " bytes");
    }
    std::uint64_t number = 0;
    for (std::size_t i = size; i > 0; --i) {
      number = number << 8U | static_cast<unsigned char>(bytes[i - 1]);
    }
    return number;
  }

  [[nodiscard]] RegistryValue TextOf(const std::string& bytes, int line) const {
    if (texts_are_utf16_ && bytes.size() % 2 != 0)
      FailAt(line, "the text ends in half a character");
    std::string text = texts_are_utf16_ ? FromUtf16LittleEndian(bytes) : bytes;
    text.erase(std::min(text.find('\0'), text.size()));
    if (!IsValidUtf8(text)) FailAt(line, "the text is not UTF-8");
    return text;
  }

  const std::string& file_name_;
  int line_ = 1;
  std::string text_;
  std::size_t position_ = 0;
  bool texts_are_utf16_ = false;
  std::shared_ptr<RegistryNode> root_ = std::make_shared<RegistryNode>();
  std::shared_ptr<RegistryNode> current_;
};

}  // namespace

std::optional<std::string> HiveName(std::string_view name) {
  constexpr std::array<std::pair<std::string_view, std::string_view>, 5> kHives = {
      {{"HKLM", "hkey_local_machine"},
       {"HKCU", "hkey_current_user"},
       {"HKCR", "hkey_classes_root"},
       {"HKU", "hkey_users"},
       {"HKCC", "hkey_current_config"}}};
  for (const auto& [abbreviation, full] : kHives) {
    if (EqualIgnoringCase(name, abbreviation) || EqualIgnoringCase(name, full)) {
      return std::string(full);
    }
  }
  return std::nullopt;
}

std::shared_ptr<RegistryNode> ParseRegistryText(std::string_view bytes,
                                                const std::string& file_name) {
  return RegistryTextParser(bytes, file_name).Parse();
}

std::string FromUtf16LittleEndian(std::string_view bytes) {
  const auto unit = [&](std::size_t i) {
    return static_cast<char32_t>(static_cast<unsigned char>(bytes[i]) |
                                 static_cast<unsigned char>(bytes[i + 1]) << 8U);
  };
  std::string text;
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    char32_t point = unit(i);
    if (point >= 0xD800 && point < 0xDC00 && i + 3 < bytes.size() &&
        (unit(i + 2) & 0xFC00U) == 0xDC00U) {
      point = 0x10000U + ((point & 0x3FFU) << 10U) + (unit(i + 2) & 0x3FFU);
      i += 2;
    } else if (point >= 0xD800 && point < 0xE000) {
      point = 0xFFFD;
    }
    AppendUtf8(text, point);
  }
  return text;
}

}  // namespace sabrel
