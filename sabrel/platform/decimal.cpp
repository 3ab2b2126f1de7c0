#include "sabrel/platform/decimal.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "sabrel/platform/runtime_error.h"
#include "sabrel/platform/text_to_number.h"

namespace sabrel {
namespace {

__extension__ using Wide = unsigned __int128;

constexpr std::int64_t kMostDecimals = 28;
/// 2^96 has 29 digits; any 29 digits fit `Wide`.
constexpr std::int64_t kMostDigits = 29;
constexpr std::int64_t kCurrencyDecimals = 4;
constexpr std::uint64_t kLargestMagnitude = std::uint64_t{1} << 63U;

[[noreturn]] void Overflow() { throw RuntimeError(RuntimeErrorNumber::kOverflow); }

bool Fits96Bits(Wide value) { return (value >> 96U) == 0; }

Wide PowerOfTen(std::int64_t exponent) {
  Wide power = 1;
  while (exponent-- > 0) power *= 10;
  return power;
}

Wide DivideHalfEven(Wide value, Wide divisor) {
  const Wide quotient = value / divisor;
  const Wide rest = value % divisor;
  const Wide other = divisor - rest;
  const bool up = rest > other || (rest == other && (quotient & 1U) != 0);
  return up ? quotient + 1 : quotient;
}

/// `digits` without its last `dropped` ones, halves to even; at most kMostDigits digits may stay.
Wide RoundedDigits(std::string_view digits, std::int64_t dropped) {
  const auto size = static_cast<std::int64_t>(digits.size());
  if (dropped > size) return 0;
  const std::string_view rest = digits.substr(static_cast<std::size_t>(size - dropped));
  Wide value = 0;
  for (const char digit : digits.substr(0, digits.size() - rest.size())) {
    value = value * 10 + static_cast<unsigned>(digit - '0');
  }
  if (rest.empty() || rest.front() < '5') return value;
  const bool half = rest.front() == '5' && rest.find_first_not_of('0', 1) == std::string_view::npos;
  return half && (value & 1U) == 0 ? value : value + 1;
}

std::int64_t Signed(Wide magnitude, bool negative) {
  if (magnitude > kLargestMagnitude - (negative ? 0U : 1U)) Overflow();
  const auto bits = static_cast<std::uint64_t>(magnitude);
  return static_cast<std::int64_t>(negative ? 0U - bits : bits);
}

std::uint64_t Magnitude(std::int64_t value) {
  const auto bits = static_cast<std::uint64_t>(value);
  return value < 0 ? 0U - bits : bits;
}

Wide Joined(std::uint32_t high, std::uint64_t low) { return (Wide{high} << 64U) | low; }

}  // namespace

Decimal::Decimal(std::int64_t whole) noexcept : low_(Magnitude(whole)), negative_(whole < 0) {}

Decimal Decimal::Parse(std::string_view text) {
  NumberParts parts;
  // Blanks around the number are the business of whoever reads text from people.
  if (text.empty() || text.front() == ' ' || text.back() == ' ' ||
      !SplitNumber(text, ".", {}, parts)) {
    throw RuntimeError(RuntimeErrorNumber::kTypeMismatch);
  }
  if (parts.exponent > 0 && !parts.digits.empty()) {
    if (parts.exponent > kMostDigits) Overflow();
    parts.digits.append(static_cast<std::size_t>(parts.exponent), '0');
  }
  const auto size = static_cast<std::int64_t>(parts.digits.size());
  const std::int64_t written = std::max<std::int64_t>(-parts.exponent, 0);
  // A long whole part leaves less room behind the point.
  std::int64_t scale = std::min({written, kMostDecimals, written + kMostDigits - size});
  if (scale < 0) Overflow();
  Wide value = RoundedDigits(parts.digits, written - scale);
  while (!Fits96Bits(value)) {
    if (--scale < 0) Overflow();
    value = RoundedDigits(parts.digits, written - scale);
  }
  Decimal result;
  result.low_ = static_cast<std::uint64_t>(value);
  result.high_ = static_cast<std::uint32_t>(value >> 64U);
  result.scale_ = static_cast<std::uint8_t>(scale);
  result.negative_ = parts.negative && value != 0;
  return result;
}

Decimal Decimal::FromDouble(double number) {
  if (!std::isfinite(number)) Overflow();
  std::array<char, 40> buffer{};
  std::string text(ScientificText(number, 15, buffer));
  // Zeros that only fill up the 15 digits would count as decimals.
  const std::size_t exponent = text.find('e');
  const std::size_t last = text.find_last_not_of('0', exponent - 1);
  text.erase(last + 1, exponent - last - 1);
  return Parse(text);
}

Decimal Decimal::FromCurrency(Currency amount) noexcept {
  Decimal result(amount.ten_thousandths);
  result.scale_ = kCurrencyDecimals;
  return result;
}

std::string Decimal::Text() const {
  std::string text;
  for (Wide rest = Joined(high_, low_); rest != 0; rest /= 10) {
    text += static_cast<char>('0' + static_cast<int>(rest % 10));
  }
  const std::size_t scale = scale_;
  if (text.size() <= scale) text.append(scale + 1 - text.size(), '0');
  std::reverse(text.begin(), text.end());
  if (scale > 0) {
    text.insert(text.size() - scale, 1, '.');
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
  }
  if (negative_ && !IsZero()) text.insert(0, 1, '-');
  return text;
}

double Decimal::ToDouble() const {
  const std::string text = Text();
  double number = 0.0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

std::int64_t Decimal::ToInt64() const {
  return Signed(DivideHalfEven(Joined(high_, low_), PowerOfTen(scale_)), negative_);
}

}  // namespace sabrel
