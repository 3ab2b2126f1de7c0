#include "sabrel/platform/text_to_number.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

#include "sabrel/platform/runtime_error.h"
#include "sabrel/platform/utf8.h"

namespace sabrel {
namespace {

/// Far beyond any kind of number, and far from overflowing when a digit count is added.
constexpr std::int64_t kLargestExponent = 1'000'000'000'000;

bool StartsWithDigit(std::string_view text) {
  return !text.empty() && text.front() >= '0' && text.front() <= '9';
}

bool Take(std::string_view& text, std::string_view token) {
  if (token.empty() || !text.starts_with(token)) return false;
  text.remove_prefix(token.size());
  return true;
}

/// A blank, one that breaks no line, and its narrow form: keyboards and locales mix them.
constexpr std::array<std::string_view, 3> kBlanks = {" ", "\u00A0", "\u202F"};

bool TakeGrouping(std::string_view& text, std::string_view separator) {
  if (std::ranges::find(kBlanks, separator) == kBlanks.end()) return Take(text, separator);
  return std::ranges::any_of(kBlanks, [&](std::string_view blank) { return Take(text, blank); });
}

bool TakeSign(std::string_view& text) {
  if (Take(text, "-")) return true;
  Take(text, "+");
  return false;
}

bool TakeExponent(std::string_view& text, std::int64_t& exponent) {
  if (!Take(text, "E") && !Take(text, "e")) return true;
  const bool negative = TakeSign(text);
  if (!StartsWithDigit(text)) return false;
  std::int64_t value = 0;
  for (; StartsWithDigit(text); text.remove_prefix(1)) {
    value = std::min(value * 10 + (text.front() - '0'), kLargestExponent);
  }
  exponent += negative ? -value : value;
  return true;
}

/// Whether `number`, whose first digit stands for 10^exponent, lies exactly between two numbers of
/// `digits` digits: it then has exactly one more, a 5. Behind the point there are as many digits as
/// bits; what is wholly before it must be divisible by the 5 and the powers of ten after it.
bool IsTie(double number, int digits, int exponent) {
  const double odd = std::ldexp(number, digits - exponent);
  if (std::fmod(odd, 2.0) != 1.0) return false;
  constexpr int kMostFives = 22;  // that 53 bits hold
  const int fives = exponent - digits + 1;
  if (fives <= 0 || fives > kMostFives) return fives <= 0;
  double divisor = 1.0;
  for (int i = 0; i < fives; ++i) divisor *= 5.0;
  return std::fmod(number, divisor) == 0.0;
}

}  // namespace

std::string_view ScientificText(double number, int digits, std::array<char, 40>& buffer) {
  const auto written = [&](double shown) {
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), shown,
                                   std::chars_format::scientific, digits - 1);
    return std::string_view(buffer.data(), static_cast<std::size_t>(end.ptr - buffer.data()));
  };
  const std::string_view text = written(number);
  int exponent = 0;
  const char* figures = text.data() + text.find('e') + 1;
  std::from_chars(figures + (*figures == '+' ? 1 : 0), text.data() + text.size(), exponent);
  // The next double is more than a tie away from what has more digits than all doubles keep.
  constexpr int kKeptDigits = std::numeric_limits<double>::digits10;
  if (digits > kKeptDigits || !IsTie(std::abs(number), digits, exponent)) return text;
  return written(std::nextafter(number, std::copysign(HUGE_VAL, number)));
}

bool SplitNumber(std::string_view text, std::string_view decimal_separator,
                 std::string_view thousands_separator, NumberParts& parts) {
  parts = NumberParts();
  text = TrimBlanks(text);
  parts.negative = TakeSign(text);
  bool any_digit = false;
  bool behind_point = false;
  while (true) {
    if (StartsWithDigit(text)) {
      any_digit = true;
      if (!parts.digits.empty() || text.front() != '0') parts.digits += text.front();
      if (behind_point) --parts.exponent;
      text.remove_prefix(1);
    } else if (!behind_point && Take(text, decimal_separator)) {
      behind_point = true;
    } else if (!behind_point && any_digit && TakeGrouping(text, thousands_separator)) {
      // How many digits stand between two separators is left to the writer, as everywhere.
      if (!StartsWithDigit(text)) return false;
    } else {
      break;
    }
  }
  return any_digit && TakeExponent(text, parts.exponent) && text.empty();
}

std::string NumberParts::Text() const {
  return (negative ? "-" : "") + (digits.empty() ? "0" : digits) + "E" + std::to_string(exponent);
}

double NumberParts::ToDouble() const {
  const std::string text = Text();
  double number = 0.0;
  const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool tiny = static_cast<std::int64_t>(digits.size()) + exponent < 0;
  if (read.ec == std::errc() ? std::isinf(number) : !tiny) {
    throw RuntimeError(RuntimeErrorNumber::kOverflow);
  }
  return read.ec == std::errc() ? number : 0.0;
}

NumberParts NumberParts::CutForRounding(std::int64_t decimals) const {
  if (-exponent <= decimals + 2) return *this;
  NumberParts cut{negative, {}, -(decimals + 2)};
  // Only the first dropped digit and whether anything follows it decide.
  const std::int64_t kept = static_cast<std::int64_t>(digits.size()) + exponent + decimals + 1;
  if (kept <= 0) return cut;
  cut.digits = digits.substr(0, static_cast<std::size_t>(kept));
  const bool more = digits.find_first_not_of('0', cut.digits.size()) != std::string::npos;
  cut.digits += more ? '1' : '0';
  return cut;
}

double TextToNumber(std::string_view text, std::string_view decimal_separator) {
  NumberParts parts;
  if (TrimBlanks(text).empty()) return 0.0;
  if (SplitNumber(text, ".", {}, parts) || SplitNumber(text, decimal_separator, {}, parts)) {
    return parts.ToDouble();
  }
  throw RuntimeError(RuntimeErrorNumber::kTypeMismatch);
}

}  // namespace sabrel
