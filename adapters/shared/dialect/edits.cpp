#include "adapters/shared/dialect/edits.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>

namespace sabrel::dialect {
namespace {

// Engines limit the parameters of one statement; constants beyond stay in the text.
constexpr std::size_t kMaximumConstants = 999;
constexpr double kLargestExactInteger = 9007199254740992.0;

std::string_view WithoutSuffix(std::string_view number) {
  const char last = AsciiUpper(number.back());
  return last == 'F' || last == 'D' ? number.substr(0, number.size() - 1) : number;
}

Constant NumberConstant(std::string_view digits, bool is_negative) {
  std::string text(is_negative ? "-" : "");
  text += digits;
  const char* const end = text.data() + text.size();
  Constant constant;
  constant.kind = Constant::Kind::kInteger;
  const auto whole = std::from_chars(text.data(), end, constant.integer);
  if (whole.ec == std::errc() && whole.ptr == end) return constant;
  const auto real = std::from_chars(text.data(), end, constant.real);
  if (real.ec != std::errc()) {
    // Too small for a double is zero in every engine, too large is no number in any.
    if (digits.find("e-") == std::string_view::npos &&
        digits.find("E-") == std::string_view::npos) {
      throw SyntaxFailure{1426, "numeric overflow in a constant"};
    }
    constant.real = 0.0;
  }
  constant.integer = 0;
  constant.kind = Constant::Kind::kReal;
  if (std::trunc(constant.real) == constant.real &&
      std::abs(constant.real) <= kLargestExactInteger) {
    constant.kind = Constant::Kind::kInteger;  // 1.0 and 1e3 are whole numbers
    constant.integer = static_cast<std::int64_t>(constant.real);
    constant.real = 0.0;
  }
  return constant;
}

// Two of these must not touch, or they would be one token or another one.
bool NeedsSpace(char before, char after) {
  const auto is_name = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
           c == '$' || c == '#' || c == '"' || c == '\'' || c == '?' || c == ':' ||
           static_cast<unsigned char>(c) >= 0x80;
  };
  return (is_name(before) && is_name(after)) || (before == '-' && after == '-');
}

}  // namespace

void Edits::Replace(std::size_t token, std::string text) {
  MarkOf(token).output = Output::kReplacement;
  MarkOf(token).replacement = static_cast<std::uint32_t>(replacements_.size());
  replacements_.push_back(std::move(text));
}

void Edits::SetConstant(std::size_t token, bool is_lifted, bool is_negative) {
  MarkOf(token).output = !is_lifted    ? Output::kLiteral
                         : is_negative ? Output::kLiftedNegative
                                       : Output::kLifted;
}

void Edits::Open(std::size_t token, std::string_view text) {
  openings_.push_back({text, MarkOf(token).opening});
  MarkOf(token).opening = static_cast<std::uint32_t>(openings_.size() - 1);
}

void Edits::Wrap(std::size_t first, std::size_t last, std::string_view function) {
  Open(first, function);
  MarkOf(last).closings += ClosingsOf(function);
}

void Edits::Cast(std::size_t first, std::size_t last, std::string_view type) {
  Open(first, "CAST");
  AppendBehind(last, " AS " + std::string(type) + ")");
}

std::uint32_t Edits::ClosingsOf(std::string_view function) {
  const std::string_view inner = function.substr(0, function.empty() ? 0 : function.size() - 1);
  return 1 + static_cast<std::uint32_t>(std::count(inner.begin(), inner.end(), '('));
}

bool Edits::AreUnchanged(std::size_t first, std::size_t last) const {
  return std::all_of(marks_.begin() + static_cast<std::ptrdiff_t>(first),
                     marks_.begin() + static_cast<std::ptrdiff_t>(last) + 1, [](const Mark& mark) {
                       return mark.output == Output::kSource && mark.closings == 0 &&
                              mark.opening == kNone && mark.suffix == kNone;
                     });
}

void Edits::Append(std::size_t token, std::string_view text) {
  Replace(token, std::string(TextOf(sql_, tokens_[token])) + std::string(text));
}

void Edits::AppendBehind(std::size_t token, std::string_view text) {
  Mark& mark = MarkOf(token);
  if (mark.suffix == kNone) {
    mark.suffix = static_cast<std::uint32_t>(replacements_.size());
    replacements_.emplace_back();
  }
  replacements_[mark.suffix] += text;
}

void Edits::RenderToken(const Token& token, const Mark& mark, Rewritten& rewritten) const {
  std::string& out = rewritten.text;
  const std::string_view source = TextOf(sql_, token);
  bool is_lifted = mark.output == Output::kLifted || mark.output == Output::kLiftedNegative;
  const bool is_negative = mark.output == Output::kLiftedNegative;
  if (is_lifted && rewritten.constants.size() < kMaximumConstants) {
    if (token.kind == TokenKind::kNumber) {
      rewritten.constants.push_back(NumberConstant(WithoutSuffix(source), is_negative));
    } else {
      Constant& constant = rewritten.constants.emplace_back();
      constant.kind = Constant::Kind::kText;
      constant.text = ValueOfText(source);
    }
    out += '?';
    out += std::to_string(rewritten.constants.size());
    return;
  }
  switch (mark.output) {
    case Output::kSource: out += source; break;
    case Output::kNothing: break;
    case Output::kReplacement: out += replacements_[mark.replacement]; break;
    case Output::kLifted:
    case Output::kLiftedNegative:
    case Output::kLiteral:
      if (is_negative) out += '-';
      if (token.kind == TokenKind::kNumber) {
        out += WithoutSuffix(source);
      } else {
        out += source.front() == '\'' ? std::string(source) : TextConstant(ValueOfText(source));
      }
      break;
  }
}

// The space and the comments between two tokens.
std::string_view Edits::Between(std::size_t end, std::size_t begin) const {
  const std::string_view gap = sql_.substr(end, begin - end);
  const bool has_comment = gap.find_first_of("-/") != std::string_view::npos;
  return has_comment && !keeps_comments_ ? " " : gap;
}

void Edits::Render(Rewritten& rewritten) const {
  std::string& out = rewritten.text;
  out.reserve(sql_.size() + 64);
  std::size_t previous_end = 0;
  for (std::size_t i = 0; i < tokens_.size(); ++i) {
    const Token& token = tokens_[i];
    if (token.kind == TokenKind::kEnd) break;
    const Mark& mark = marks_[i];
    out += Between(previous_end, token.begin);
    previous_end = token.end;
    const std::size_t written = out.size();
    for (std::uint32_t at = mark.opening; at != kNone; at = openings_[at].next) {
      out += openings_[at].function;
      out += '(';
    }
    RenderToken(token, mark, rewritten);
    if (written > 0 && written < out.size() && NeedsSpace(out[written - 1], out[written])) {
      out.insert(written, 1, ' ');
    }
    out.append(mark.closings, ')');
    if (mark.suffix != kNone) out += replacements_[mark.suffix];
  }
}

}  // namespace sabrel::dialect
