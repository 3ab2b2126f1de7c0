// Reading numbers that travel as text.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace sabrel {

/// A number as it was written: `digits` (no leading zeros, "" is zero) times ten to the power of
/// `exponent`.
struct NumberParts {
  bool negative = false;
  std::string digits;
  std::int64_t exponent = 0;

  /// "-125E-2": what Decimal::Parse reads.
  [[nodiscard]] std::string Text() const;
  /// The nearest double. Errors: 6 beyond a double
  [[nodiscard]] double ToDouble() const;
  /// The parts with at most two digits more than `decimals` behind the point, such that rounding to
  /// `decimals` gives what rounding the whole number gives.
  [[nodiscard]] NumberParts CutForRounding(std::int64_t decimals) const;
};

/// Takes apart `[+-]digits[.digits][E[+-]digits]`, where at least one digit stands before the
/// exponent, surrounding blanks are allowed, `thousands_separator` may stand between whole digits
/// and an empty separator never occurs; one that is a blank (U+0020, U+00A0, U+202F) stands for all
/// three. Returns false when `text` is none of that.
[[nodiscard]] bool SplitNumber(std::string_view text, std::string_view decimal_separator,
                               std::string_view thousands_separator, NumberParts& parts);

/// A finite number as `[-]d.ddde[+-]dd` with `digits` significant digits. A tie of up to 15
/// digits goes away from zero: 499472.25 with 7 digits is 4.994723e+05.
[[nodiscard]] std::string_view ScientificText(double number, int digits,
                                              std::array<char, 40>& buffer);

/// `text` as a number, surrounding blanks allowed; "." or `decimal_separator` as the decimal point,
/// an exponent, no grouping; an empty text is 0. Errors: 13 for anything else ("(NaN)", "1,234"
/// where "," is no decimal separator), 6 beyond a double
[[nodiscard]] double TextToNumber(std::string_view text, std::string_view decimal_separator);

}  // namespace sabrel
