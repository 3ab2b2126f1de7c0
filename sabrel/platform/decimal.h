// Exact decimal values: currency with four decimals, and decimals of up to 28 digits.
//
// Both are plain values without a heap part. Arithmetic is not offered: the component only carries
// such values from the Data Server to its callers and into statement text. Numbers that do not fit
// raise 6 (overflow).
#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>

namespace sabrel {

/// An amount in units of 1/10000, range about +-922 * 10^12.
struct Currency {
  std::int64_t ten_thousandths = 0;
  friend auto operator<=>(const Currency&, const Currency&) = default;
};

/// Sign, a whole number of up to 96 bits, and how many of its digits stand behind the decimal point
/// (0 to 28). Equality is of representation: 1.0 and 1.00 differ; normalise by text when that
/// matters.
class Decimal {
 public:
  Decimal() = default;
  explicit Decimal(std::int64_t whole) noexcept;

  /// Reads `[+-]digits[.digits][E[+-]digits]` with "." as the decimal point. More than 28 digits
  /// behind the point are rounded, halves to even. Errors: 13 when `text` is no number, 6 when it
  /// does not fit 96 bits
  [[nodiscard]] static Decimal Parse(std::string_view text);
  /// The value with at most 15 significant digits of `number`. Errors: 6 when it does not fit or is
  /// not finite
  [[nodiscard]] static Decimal FromDouble(double number);
  [[nodiscard]] static Decimal FromCurrency(Currency amount) noexcept;

  /// Plain digits with "." as the decimal point; trailing zeros behind the point are dropped, "-"
  /// never precedes 0.
  [[nodiscard]] std::string Text() const;
  [[nodiscard]] double ToDouble() const;
  /// Rounded to a whole number, halves to even. Errors: 6 outside 64 bits
  [[nodiscard]] std::int64_t ToInt64() const;
  [[nodiscard]] bool IsZero() const noexcept { return low_ == 0 && high_ == 0; }

  friend bool operator==(const Decimal&, const Decimal&) = default;

 private:
  std::uint64_t low_ = 0;
  std::uint32_t high_ = 0;
  std::uint8_t scale_ = 0;
  bool negative_ = false;
};

}  // namespace sabrel
