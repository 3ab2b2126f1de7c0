#include "sabrel/platform/utf8.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace sabrel {
namespace {

constexpr char32_t kReplacementCharacter = 0xFFFD;
constexpr char32_t kLastCodePoint = 0x10FFFF;

constexpr unsigned Byte(char c) { return static_cast<unsigned char>(c); }
constexpr bool IsAscii(char c) { return Byte(c) < 0x80; }

struct Character {
  char32_t code_point = 0;
  std::size_t length = 0;
};

/// The character that starts `text`, which is not empty. An invalid byte becomes a number above all
/// code points, so that it equals itself and nothing else.
Character Decode(std::string_view text) noexcept {
  const unsigned lead = Byte(text.front());
  if (lead < 0x80) return {lead, 1};
  const Character invalid{kLastCodePoint + 1 + lead, 1};
  if (lead < 0xC2 || lead > 0xF4) return invalid;
  const std::size_t length = lead < 0xE0 ? 2U : (lead < 0xF0 ? 3U : 4U);
  if (text.size() < length) return invalid;
  // The second byte alone excludes overlong forms, surrogates and what lies above U+10FFFF.
  const unsigned second = Byte(text[1]);
  const unsigned low = lead == 0xE0 ? 0xA0 : (lead == 0xF0 ? 0x90 : 0x80);
  const unsigned high = lead == 0xED ? 0x9F : (lead == 0xF4 ? 0x8F : 0xBF);
  if (second < low || second > high) return invalid;
  char32_t code_point = lead & (0xFFU >> (length + 1));
  for (const char next : text.substr(1, length - 1)) {
    if ((Byte(next) & 0xC0U) != 0x80U) return invalid;
    code_point = (code_point << 6U) | (Byte(next) & 0x3FU);
  }
  return {code_point, length};
}

/// Of what is no ASCII: lower-case letters first, first + step, ..., last and the way to their
/// upper-case ones. A range that is not mutual is for upper-casing only: the way back is another
/// letter's.
struct CaseRange {
  char16_t first;
  char16_t last;
  std::uint8_t step;
  std::int16_t to_upper;
  bool mutual = true;
};

// Source: Unicode Character Database, simple case mappings; U+00B5 is left alone, as its upper-case
// form is Greek.
constexpr std::array<CaseRange, 39> kCaseRanges = {{
    {0x00E0, 0x00F6, 1, -32},         {0x00F8, 0x00FE, 1, -32},
    {0x00FF, 0x00FF, 1, 121},         {0x0101, 0x012F, 2, -1},
    {0x0131, 0x0131, 1, -232, false}, {0x0133, 0x0137, 2, -1},
    {0x013A, 0x0148, 2, -1},          {0x014B, 0x0177, 2, -1},
    {0x017A, 0x017E, 2, -1},          {0x017F, 0x017F, 1, -300, false},
    {0x0371, 0x0373, 2, -1},          {0x0377, 0x0377, 1, -1},
    {0x037B, 0x037D, 1, 130},         {0x03AC, 0x03AC, 1, -38},
    {0x03AD, 0x03AF, 1, -37},         {0x03B1, 0x03C1, 1, -32},
    {0x03C2, 0x03C2, 1, -31, false},  {0x03C3, 0x03CB, 1, -32},
    {0x03CC, 0x03CC, 1, -64},         {0x03CD, 0x03CE, 1, -63},
    {0x03D0, 0x03D0, 1, -62, false},  {0x03D1, 0x03D1, 1, -57, false},
    {0x03D5, 0x03D5, 1, -47, false},  {0x03D6, 0x03D6, 1, -54, false},
    {0x03D7, 0x03D7, 1, -8},          {0x03D9, 0x03EF, 2, -1},
    {0x03F0, 0x03F0, 1, -86, false},  {0x03F1, 0x03F1, 1, -80, false},
    {0x03F2, 0x03F2, 1, 7},           {0x03F3, 0x03F3, 1, -116},
    {0x03F5, 0x03F5, 1, -96, false},  {0x03F8, 0x03F8, 1, -1},
    {0x03FB, 0x03FB, 1, -1},          {0x0430, 0x044F, 1, -32},
    {0x0450, 0x045F, 1, -80},         {0x0461, 0x0481, 2, -1},
    {0x048B, 0x04BF, 2, -1},          {0x04C2, 0x04CE, 2, -1},
    {0x04CF, 0x04CF, 1, -15},
}};
/// The rest of Cyrillic, and the end of what is mapped.
constexpr CaseRange kLastRange = {0x04D1, 0x052F, 2, -1};

constexpr bool Holds(const CaseRange& range, std::int64_t letter) {
  return letter >= range.first && letter <= range.last && (letter - range.first) % range.step == 0;
}

char32_t UpperOf(char32_t c) noexcept {
  if (c < 0x80) return c >= 'a' && c <= 'z' ? c - 32 : c;
  if (c > kLastRange.last) return c;
  if (Holds(kLastRange, c)) return c - 1;
  for (const CaseRange& range : kCaseRanges) {
    if (Holds(range, c))
      return static_cast<char32_t>(static_cast<std::int32_t>(c) + range.to_upper);
  }
  return c;
}

char32_t LowerOf(char32_t c) noexcept {
  if (c < 0x80) return c >= 'A' && c <= 'Z' ? c + 32 : c;
  if (c > kLastRange.last) return c;
  if (c == 0x0130) return 'i';
  if (c == 0x03F4) return 0x03B8;
  if (Holds(kLastRange, std::int64_t{c} + 1)) return c + 1;
  for (const CaseRange& range : kCaseRanges) {
    const std::int64_t lower = std::int64_t{c} - range.to_upper;
    if (range.mutual && Holds(range, lower)) return static_cast<char32_t>(lower);
  }
  return c;
}

/// Letters that share an upper-case form are the same letter, hence both ways.
char32_t FoldOf(char32_t c) noexcept { return LowerOf(UpperOf(c)); }

constexpr char FoldAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

template <class Map>
void AppendMapped(std::string& out, std::string_view text, Map map) {
  while (!text.empty()) {
    const Character character = Decode(text);
    const char32_t target = map(character.code_point);
    if (target == character.code_point) {
      out += text.substr(0, character.length);
    } else {
      AppendUtf8(out, target);
    }
    text.remove_prefix(character.length);
  }
}

template <class Map>
std::string Mapped(std::string_view text, Map map) {
  std::string out;
  out.reserve(text.size());
  AppendMapped(out, text, map);
  return out;
}

/// Takes the part that both texts share, ignoring case, off their fronts.
void SkipCommon(std::string_view& a, std::string_view& b) noexcept {
  while (!a.empty() && !b.empty()) {
    if (IsAscii(a.front()) && IsAscii(b.front())) {
      if (FoldAscii(a.front()) != FoldAscii(b.front())) return;
      a.remove_prefix(1);
      b.remove_prefix(1);
      continue;
    }
    const Character from_a = Decode(a);
    const Character from_b = Decode(b);
    if (FoldOf(from_a.code_point) != FoldOf(from_b.code_point)) return;
    a.remove_prefix(from_a.length);
    b.remove_prefix(from_b.length);
  }
}

}  // namespace

std::size_t FirstCharacterLength(std::string_view text) noexcept {
  return text.empty() ? 0 : Decode(text).length;
}

std::size_t CharacterCount(std::string_view text) noexcept {
  std::size_t count = 0;
  for (; !text.empty(); ++count) text.remove_prefix(Decode(text).length);
  return count;
}

std::size_t ByteLengthOf(std::string_view text, std::size_t characters) noexcept {
  std::size_t bytes = 0;
  for (; characters > 0 && bytes < text.size(); --characters) {
    bytes += Decode(text.substr(bytes)).length;
  }
  return bytes;
}

bool IsValidUtf8(std::string_view text) noexcept {
  while (!text.empty()) {
    const Character character = Decode(text);
    if (character.code_point > kLastCodePoint) return false;
    text.remove_prefix(character.length);
  }
  return true;
}

bool IsSendableText(std::string_view text) noexcept {
  return text.find('\0') == std::string_view::npos && IsValidUtf8(text);
}

std::string UpperCase(std::string_view text) { return Mapped(text, UpperOf); }

std::string LowerCase(std::string_view text) { return Mapped(text, LowerOf); }

void AppendLowerCase(std::string& out, std::string_view text) { AppendMapped(out, text, LowerOf); }

bool EqualIgnoringCase(std::string_view a, std::string_view b) noexcept {
  SkipCommon(a, b);
  return a.empty() && b.empty();
}

bool ContainsIgnoringCase(std::string_view text, std::string_view part) noexcept {
  while (true) {
    std::string_view rest = text;
    std::string_view wanted = part;
    SkipCommon(rest, wanted);
    if (wanted.empty()) return true;
    if (text.empty()) return false;
    text.remove_prefix(Decode(text).length);
  }
}

std::size_t HashIgnoringCase(std::string_view text) noexcept {
  // FNV-1a over folded code points.
  std::uint64_t hash = 14695981039346656037U;
  while (!text.empty()) {
    Character folded{Byte(FoldAscii(text.front())), 1};
    if (!IsAscii(text.front())) {
      folded = Decode(text);
      folded.code_point = FoldOf(folded.code_point);
    }
    hash = (hash ^ folded.code_point) * 1099511628211U;
    text.remove_prefix(folded.length);
  }
  return static_cast<std::size_t>(hash);
}

void AppendUtf8(std::string& out, char32_t code_point) {
  const bool surrogate = code_point >= 0xD800 && code_point <= 0xDFFF;
  if (code_point > kLastCodePoint || surrogate) code_point = kReplacementCharacter;
  const auto append = [&out](char32_t byte) { out += static_cast<char>(byte); };
  if (code_point < 0x80) return append(code_point);
  if (code_point < 0x800) {
    append(0xC0U | (code_point >> 6U));
  } else {
    if (code_point < 0x10000) {
      append(0xE0U | (code_point >> 12U));
    } else {
      append(0xF0U | (code_point >> 18U));
      append(0x80U | ((code_point >> 12U) & 0x3FU));
    }
    append(0x80U | ((code_point >> 6U) & 0x3FU));
  }
  append(0x80U | (code_point & 0x3FU));
}

std::string_view TrimBlanks(std::string_view text) noexcept {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::string ReplaceAll(std::string_view text, std::string_view from, std::string_view to) {
  std::string out;
  out.reserve(text.size());
  while (!from.empty()) {
    const std::size_t found = text.find(from);
    if (found == std::string_view::npos) break;
    out += text.substr(0, found);
    out += to;
    text.remove_prefix(found + from.size());
  }
  out += text;
  return out;
}

}  // namespace sabrel
