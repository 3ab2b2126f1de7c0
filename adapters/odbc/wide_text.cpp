#include "adapters/odbc/wide_text.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "sabrel/platform/utf8.h"

namespace sabrel::odbc {
namespace {

constexpr std::size_t kRunLength = 8;
constexpr std::uint64_t kNotAscii = 0x8080808080808080U;

constexpr bool IsHighSurrogate(char16_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
constexpr bool IsLowSurrogate(char16_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

/// Copies the ASCII characters that start `text`, in runs; returns how many there were.
std::size_t WidenAscii(std::string_view text, char16_t* out) {
  std::size_t at = 0;
  for (; at + kRunLength <= text.size(); at += kRunLength) {
    std::uint64_t run = 0;
    std::memcpy(&run, text.data() + at, kRunLength);
    if ((run & kNotAscii) != 0) break;
    for (std::size_t i = 0; i < kRunLength; ++i) {
      out[at + i] = static_cast<char16_t>(static_cast<unsigned char>(text[at + i]));
    }
  }
  for (; at < text.size() && static_cast<unsigned char>(text[at]) < 0x80; ++at) {
    out[at] = static_cast<char16_t>(text[at]);
  }
  return at;
}

/// The code point of the valid sequence of `length` (2 to 4) bytes that starts at `text`.
char32_t Decoded(const char* text, std::size_t length) {
  const auto first = static_cast<unsigned char>(text[0]);
  char32_t code_point = first & (0x7FU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    code_point = (code_point << 6) | (static_cast<unsigned char>(text[i]) & 0x3FU);
  }
  return code_point;
}

std::size_t SequenceLength(unsigned char first) {
  if (first >= 0xF0) return 4;
  return first >= 0xE0 ? 3 : 2;
}

}  // namespace

std::u16string ToWide(std::string_view text) {
  // UTF-16 never takes more units than UTF-8 takes bytes.
  std::u16string wide(text.size(), u'\0');
  char16_t* out = wide.data();
  std::size_t at = 0;
  while (true) {
    const std::size_t run = WidenAscii(text.substr(at), out);
    at += run;
    out += run;
    if (at >= text.size()) break;
    const std::size_t length = SequenceLength(static_cast<unsigned char>(text[at]));
    if (length > text.size() - at) break;  // not valid text; nothing is read behind its end
    const char32_t code_point = Decoded(text.data() + at, length);
    at += length;
    if (code_point >= 0x10000) {
      *out++ = static_cast<char16_t>(0xD7C0 + (code_point >> 10));
      *out++ = static_cast<char16_t>(0xDC00 + (code_point & 0x3FF));
    } else {
      *out++ = static_cast<char16_t>(code_point);
    }
  }
  wide.resize(static_cast<std::size_t>(out - wide.data()));
  return wide;
}

void AppendUtf8(std::u16string_view wide, std::string& out) {
  std::size_t at = 0;
  while (at < wide.size()) {
    std::size_t end = at;
    while (end < wide.size() && wide[end] < 0x80) ++end;
    const std::size_t start = out.size();
    out.resize(start + (end - at));
    for (std::size_t to = start; at < end; ++at) out[to++] = static_cast<char>(wide[at]);
    if (at == wide.size()) return;
    const char16_t unit = wide[at++];
    char32_t code_point = unit;
    if (IsHighSurrogate(unit) && at < wide.size() && IsLowSurrogate(wide[at])) {
      code_point = 0x10000 + ((char32_t{unit} - 0xD800) << 10) + (char32_t{wide[at++]} - 0xDC00);
    }
    // Half of a pair is no character: that makes U+FFFD of it.
    sabrel::AppendUtf8(out, code_point);
  }
}

std::string ToUtf8(std::u16string_view wide) {
  std::string text;
  text.reserve(wide.size());
  AppendUtf8(wide, text);
  return text;
}

}  // namespace sabrel::odbc
