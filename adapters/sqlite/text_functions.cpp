// Functions of texts.
#include <algorithm>
#include <bitset>
#include <optional>
#include <unordered_set>
#include <vector>

#include "adapters/sqlite/failure.h"
#include "adapters/sqlite/functions.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::sqlite {
namespace {

/// Whoever handles a long text tells its connection as it goes.
Connection& ConnectionOf(void* context) { return *static_cast<Connection*>(context); }

/// `text` mapped piece by piece.
Value Mapped(std::string_view text, std::string (*map)(std::string_view), void* context) {
  constexpr std::size_t kPiece = 65536;  // characters
  std::string mapped;
  while (!text.empty()) {
    const std::string_view piece = text.substr(0, ByteLengthOf(text, kPiece));
    mapped += map(piece);
    text.remove_prefix(piece.size());
    ConnectionOf(context).Worked(piece.size());
  }
  return TextValue(mapped);
}

Value Upper(Arguments a, void* context) { return Mapped(TextOf(a[0]), UpperCase, context); }
Value Lower(Arguments a, void* context) { return Mapped(TextOf(a[0]), LowerCase, context); }

Value Length(Arguments a, void*) {
  if (a[0].IsNull()) return {};
  return IntegerValue(static_cast<std::int64_t>(CharacterCount(TextOf(a[0]))));
}

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
std::vector<std::size_t> OffsetsOf(std::string_view part, std::string_view text, void* context) {
  constexpr std::size_t kPiece = 65536;
  // How much of `part` still fits where its character behind `i` others does not.
  std::vector<std::size_t> fallback(part.size(), 0);
  for (std::size_t i = 1, fits = 0; i < part.size(); ++i) {
    while (fits > 0 && part[i] != part[fits]) fits = fallback[fits - 1];
    if (part[i] == part[fits]) ++fits;
    fallback[i] = fits;
  }
  std::vector<std::size_t> offsets;
  for (std::size_t i = 0, fits = 0; i < text.size(); ++i) {
    if (i % kPiece == 0) ConnectionOf(context).Worked(kPiece);
    while (fits > 0 && text[i] != part[fits]) fits = fallback[fits - 1];
    if (text[i] == part[fits]) ++fits;
    if (fits < part.size()) continue;
    offsets.push_back(i + 1 - fits);
    fits = fallback[fits - 1];
  }
  return offsets;
}

/// INSTR(text, part[, start[, occurrence]]); a negative start searches backwards from the end.
Value Instr(Arguments a, void* context) {
  if (HasNull(a)) return {};
  const std::string text = TextOf(a[0]);
  const std::string part = TextOf(a[1]);
  const auto characters = static_cast<std::int64_t>(CharacterCount(text));
  const std::int64_t start = a.size() > 2 ? WholeOf(a[2]) : 1;
  const std::int64_t occurrence = a.size() > 3 ? WholeOf(a[3]) : 1;
  if (occurrence < 1) throw ServerFailure(1428, "argument is out of range");
  if (start == 0 || start > characters || start < -characters) return IntegerValue(0);
  const std::vector<std::size_t> offsets = OffsetsOf(part, text, context);
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

Value Replace(Arguments a, void* context) {
  const std::string text = TextOf(a[0]);
  const std::string from = TextOf(a[1]);
  const std::string to = a.size() > 2 ? TextOf(a[2]) : "";
  if (from.empty()) return TextValue(text);
  std::string replaced;
  std::size_t copied = 0;
  for (const std::size_t found : OffsetsOf(from, text, context)) {
    if (found < copied) continue;
    replaced.append(text, copied, found - copied).append(to);
    ConnectionOf(context).Worked(to.size());
    copied = found + from.size();
    RequireLength(replaced.size());
  }
  return TextValue(replaced.append(text, copied));
}

/// The characters of a text. Cost: a look-up takes the same time however many there are
class CharacterSet {
 public:
  explicit CharacterSet(std::string_view characters) {
    while (!characters.empty()) {
      const std::string_view character = characters.substr(0, FirstCharacterLength(characters));
      if (character.size() == 1) {
        ascii_.set(static_cast<unsigned char>(character[0]));
      } else {
        others_.insert(character);
      }
      characters.remove_prefix(character.size());
    }
  }
  [[nodiscard]] bool Has(std::string_view character) const {
    return character.size() == 1 ? ascii_[static_cast<unsigned char>(character[0])]
                                 : others_.contains(character);
  }

 private:
  std::bitset<256> ascii_;
  std::unordered_set<std::string_view> others_;
};

/// Characters of `set` are taken off the sides of the text that `at_left` and `at_right` name.
Value Trimmed(Arguments a, bool at_left, bool at_right) {
  if (HasNull(a)) return {};
  const std::string text = TextOf(a[0]);
  const std::string set_text = a.size() > 1 ? TextOf(a[1]) : " ";
  const CharacterSet set(set_text);
  std::string_view rest(text);
  while (at_left && !rest.empty() && set.Has(rest.substr(0, FirstCharacterLength(rest)))) {
    rest.remove_prefix(FirstCharacterLength(rest));
  }
  while (at_right && !rest.empty()) {
    std::size_t last = rest.size() - 1;
    while (last > 0 && (static_cast<unsigned char>(rest[last]) & 0xC0U) == 0x80U) --last;
    if (!set.Has(rest.substr(last))) break;
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
  const std::int64_t code = WholeOf(a[0]);
  const bool is_surrogate = code >= 0xD800 && code <= 0xDFFF;
  // No text holds U+0000.
  if (code < 1 || code > 0x10FFFF || is_surrogate) {
    throw ServerFailure(
        1428, "argument is out of range: no character has the number " + std::to_string(code));
  }
  std::string text;
  AppendUtf8(text, static_cast<char32_t>(code));
  return TextValue(text);
}

/// A pattern of LIKE, read character by character.
class LikePattern {
 public:
  LikePattern(std::string_view pattern, std::string_view escape) : rest_(pattern), escape_(escape) {
    Next();
  }
  enum class Kind : std::uint8_t { kEnd, kCharacter, kAnyCharacter, kAnyText };
  [[nodiscard]] Kind Here() const noexcept { return kind_; }
  [[nodiscard]] bool Matches(std::string_view character) const noexcept {
    return kind_ == Kind::kAnyCharacter || (kind_ == Kind::kCharacter && character == character_);
  }
  void Next() {
    if (rest_.empty()) {
      kind_ = Kind::kEnd;
      return;
    }
    Take();
    kind_ = character_ == "%"   ? Kind::kAnyText
            : character_ == "_" ? Kind::kAnyCharacter
                                : Kind::kCharacter;
    if (escape_.empty() || character_ != escape_) return;
    const bool is_last = rest_.empty();
    if (!is_last) Take();
    if (is_last || (character_ != "%" && character_ != "_" && character_ != escape_)) {
      throw ServerFailure(1424, "missing or illegal character following the escape character");
    }
    kind_ = Kind::kCharacter;
  }

 private:
  void Take() {
    character_ = rest_.substr(0, FirstCharacterLength(rest_));
    rest_.remove_prefix(character_.size());
  }

  std::string_view rest_;
  std::string_view escape_;
  std::string_view character_;
  Kind kind_ = Kind::kEnd;
};

/// SABREL_LIKE(text, pattern[, escape]) is 1 or 0. A "%" that failed takes one character more;
/// earlier ones need not be tried again. Cost: at most the product of both lengths, stopped by the
/// time-out
Value Like(Arguments a, void* context) {
  if (HasNull(a)) return {};
  const std::string text = TextOf(a[0]);
  const std::string pattern = TextOf(a[1]);
  const std::string escape = a.size() > 2 ? TextOf(a[2]) : "";
  if (a.size() > 2 && CharacterCount(escape) != 1) {
    throw ServerFailure(1425, "escape character must be one character");
  }
  using Kind = LikePattern::Kind;
  std::string_view rest(text);
  LikePattern at(pattern, escape);
  // A wrong escape is refused whatever the text is.
  if (!escape.empty()) {
    for (LikePattern each = at; each.Here() != Kind::kEnd; each.Next()) continue;
  }
  // Behind the last "%": the pattern, and the text that it does not take yet.
  std::optional<LikePattern> behind_any;
  std::string_view any_rest;
  while (true) {
    ConnectionOf(context).Worked(1);
    if (at.Here() == Kind::kAnyText) {
      at.Next();
      if (at.Here() == Kind::kEnd) return IntegerValue(1);
      behind_any = at;
      any_rest = rest;
      continue;
    }
    if (rest.empty() && at.Here() == Kind::kEnd) return IntegerValue(1);
    const std::string_view character =
        rest.empty() ? rest : rest.substr(0, FirstCharacterLength(rest));
    if (!rest.empty() && at.Matches(character)) {
      rest.remove_prefix(character.size());
      at.Next();
      continue;
    }
    if (!behind_any || any_rest.empty()) return IntegerValue(0);
    any_rest.remove_prefix(FirstCharacterLength(any_rest));
    rest = any_rest;
    at = *behind_any;
  }
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
    {"SABREL_LENGTH", 1, 1, true, Length},
    {"SUBSTR", 2, 3, true, Substr},
    {"INSTR", 2, 4, true, Instr},
    {"REPLACE", 2, 3, true, Replace},
    {"LPAD", 2, 3, true, LeftPad},
    {"RPAD", 2, 3, true, RightPad},
    {"TRIM", 1, 2, true, Trim},
    {"LTRIM", 1, 2, true, LeftTrim},
    {"RTRIM", 1, 2, true, RightTrim},
    {"CHR", 1, 1, true, Chr},
    {"SABREL_LIKE", 2, 3, true, Like},
    {"SABREL_CONCAT", 2, -1, true, Concatenate},
    {"CONCAT", 2, 2, true, Concatenate},
};

}  // namespace

void RegisterTextFunctions(Connection& connection) {
  for (SqlFunction function : kFunctions) {
    function.takes_texts = true;
    Register(connection, function, &connection);
  }
}

}  // namespace sabrel::sqlite
