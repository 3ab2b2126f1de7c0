// Functions of texts.
#include <algorithm>
#include <vector>

#include "adapters/sqlite/failure.h"
#include "adapters/sqlite/functions.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::sqlite {
namespace {

Value Upper(Arguments a, void*) { return TextValue(UpperCase(TextOf(a[0]))); }
Value Lower(Arguments a, void*) { return TextValue(LowerCase(TextOf(a[0]))); }

Value Substr(Arguments a, void*) {
  if (HasNull(a)) return {};
  const std::string text = TextOf(a[0]);
  const auto characters = static_cast<std::int64_t>(CharacterCount(text));
  std::int64_t start = WholeOf(a[1]);
  if (start == 0) start = 1;
  if (start < 0) start += characters + 1;
  if (start < 1 || start > characters) return {};
  const std::int64_t length = a.size() > 2 ? WholeOf(a[2]) : characters;
  if (length < 1) return {};
  std::string_view rest(text);
  rest.remove_prefix(ByteLengthOf(rest, static_cast<std::size_t>(start - 1)));
  return TextValue(rest.substr(0, ByteLengthOf(rest, static_cast<std::size_t>(length))));
}

/// Offsets of `part` in `text`, overlapping ones too. Cost: linear, whatever the texts
std::vector<std::size_t> OffsetsOf(std::string_view part, std::string_view text) {
  // How much of `part` still fits where its character behind `i` others does not.
  std::vector<std::size_t> fallback(part.size(), 0);
  for (std::size_t i = 1, fits = 0; i < part.size(); ++i) {
    while (fits > 0 && part[i] != part[fits]) fits = fallback[fits - 1];
    if (part[i] == part[fits]) ++fits;
    fallback[i] = fits;
  }
  std::vector<std::size_t> offsets;
  for (std::size_t i = 0, fits = 0; i < text.size(); ++i) {
    while (fits > 0 && text[i] != part[fits]) fits = fallback[fits - 1];
    if (text[i] == part[fits]) ++fits;
    if (fits < part.size()) continue;
    offsets.push_back(i + 1 - fits);
    fits = fallback[fits - 1];
  }
  return offsets;
}

/// INSTR(text, part[, start[, occurrence]]); a negative start searches backwards from the end.
Value Instr(Arguments a, void*) {
  if (HasNull(a)) return {};
  const std::string text = TextOf(a[0]);
  const std::string part = TextOf(a[1]);
  const auto characters = static_cast<std::int64_t>(CharacterCount(text));
  const std::int64_t start = a.size() > 2 ? WholeOf(a[2]) : 1;
  const std::int64_t occurrence = a.size() > 3 ? WholeOf(a[3]) : 1;
  if (occurrence < 1) throw ServerFailure(1428, "argument is out of range");
  if (start == 0 || start > characters || start < -characters) return IntegerValue(0);
  const std::vector<std::size_t> offsets = OffsetsOf(part, text);
  const std::int64_t first = start > 0 ? start - 1 : characters + start;
  const std::size_t from = ByteLengthOf(text, static_cast<std::size_t>(first));
  const auto bound = start > 0 ? std::lower_bound(offsets.begin(), offsets.end(), from)
                               : std::upper_bound(offsets.begin(), offsets.end(), from);
  const std::int64_t there = start > 0 ? offsets.end() - bound : bound - offsets.begin();
  if (occurrence > there) return IntegerValue(0);
  const std::size_t found = start > 0 ? bound[occurrence - 1] : bound[-occurrence];
  return IntegerValue(
      static_cast<std::int64_t>(CharacterCount(std::string_view(text).substr(0, found))) + 1);
}

Value Replace(Arguments a, void*) {
  const std::string text = TextOf(a[0]);
  const std::string from = TextOf(a[1]);
  const std::string to = a.size() > 2 ? TextOf(a[2]) : "";
  if (from.empty()) return TextValue(text);
  std::string replaced;
  std::size_t copied = 0;
  for (const std::size_t found : OffsetsOf(from, text)) {
    if (found < copied) continue;
    replaced.append(text, copied, found - copied).append(to);
    copied = found + from.size();
    RequireLength(replaced.size());
  }
  return TextValue(replaced.append(text, copied));
}

/// Characters of `set` are taken off the sides of the text that `at_left` and `at_right` name.
Value Trimmed(Arguments a, bool at_left, bool at_right) {
  if (HasNull(a)) return {};
  const std::string text = TextOf(a[0]);
  const std::string set = a.size() > 1 ? TextOf(a[1]) : " ";
  std::string_view rest(text);
  const auto is_in_set = [&set](std::string_view character) {
    return set.find(character) != std::string::npos;
  };
  while (at_left && !rest.empty() && is_in_set(rest.substr(0, FirstCharacterLength(rest)))) {
    rest.remove_prefix(FirstCharacterLength(rest));
  }
  while (at_right && !rest.empty()) {
    std::size_t last = rest.size() - 1;
    while (last > 0 && (static_cast<unsigned char>(rest[last]) & 0xC0U) == 0x80U) --last;
    if (!is_in_set(rest.substr(last))) break;
    rest.remove_suffix(rest.size() - last);
  }
  return TextValue(rest);
}

Value Trim(Arguments a, void*) { return Trimmed(a, true, true); }
Value LeftTrim(Arguments a, void*) { return Trimmed(a, true, false); }
Value RightTrim(Arguments a, void*) { return Trimmed(a, false, true); }

Value Pad(Arguments a, bool at_left) {
  if (HasNull(a)) return {};
  const std::string text = TextOf(a[0]);
  const std::string filler = a.size() > 2 ? TextOf(a[2]) : " ";
  const std::int64_t wanted = std::min<std::int64_t>(WholeOf(a[1]), 32767);
  if (wanted < 1) return {};
  const auto width = static_cast<std::size_t>(wanted);
  const std::size_t characters = CharacterCount(text);
  if (characters >= width) return TextValue(text.substr(0, ByteLengthOf(text, width)));
  std::string padding;
  const std::size_t filler_width = CharacterCount(filler);
  std::size_t missing = width - characters;
  for (; missing >= filler_width; missing -= filler_width) padding += filler;
  padding += filler.substr(0, ByteLengthOf(filler, missing));
  return TextValue(at_left ? padding + text : text + padding);
}

Value LeftPad(Arguments a, void*) { return Pad(a, true); }
Value RightPad(Arguments a, void*) { return Pad(a, false); }

Value Chr(Arguments a, void*) {
  if (a[0].IsNull()) return {};
  std::string text;
  AppendUtf8(text, static_cast<char32_t>(WholeOf(a[0])));
  return TextValue(text);
}

Value Concatenate(Arguments a, void*) {
  std::string text;
  for (const Value& part : a) {
    text += TextOf(part);
    RequireLength(text.size());
  }
  return TextValue(text);
}

constexpr SqlFunction kFunctions[] = {
    {"UPPER", 1, 1, true, Upper},
    {"LOWER", 1, 1, true, Lower},
    {"SUBSTR", 2, 3, true, Substr},
    {"INSTR", 2, 4, true, Instr},
    {"REPLACE", 2, 3, true, Replace},
    {"LPAD", 2, 3, true, LeftPad},
    {"RPAD", 2, 3, true, RightPad},
    {"TRIM", 1, 2, true, Trim},
    {"LTRIM", 1, 2, true, LeftTrim},
    {"RTRIM", 1, 2, true, RightTrim},
    {"CHR", 1, 1, true, Chr},
    {"SABREL_CONCAT", 2, -1, true, Concatenate},
    {"CONCAT", 2, 2, true, Concatenate},
};

}  // namespace

void RegisterTextFunctions(Connection& connection) {
  for (const SqlFunction& function : kFunctions) Register(connection, function, nullptr);
}

}  // namespace sabrel::sqlite
