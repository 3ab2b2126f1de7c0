// Numbers as text and back: decimals, currency, doubles of 7, 15 and 17 digits, and the embedded
// server's own numbers.
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>

#include "adapters/sqlite/value.h"
#include "fuzz/target.h"
#include "sabrel/platform/conversions.h"
#include "sabrel/platform/text_to_number.h"

namespace sabrel::fuzz {
namespace {

using enum RuntimeErrorNumber;

void CheckDecimal(const Decimal& decimal) {
  const std::string text = decimal.Text();
  const Decimal again = Decimal::Parse(text);
  Require(again.Text() == text, "a decimal's text reads back", text);
  Require(decimal.IsZero() == (text == "0"), "zero is written as 0", text);
  double number = 0.0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  Require(decimal.ToDouble() == number, "a decimal is the nearest double", text);
  std::int64_t whole = 0;
  if (DoneOr({kOverflow}, [&] { whole = decimal.ToInt64(); })) {
    Require(std::abs(static_cast<double>(whole) - number) <= 0.5 + std::abs(number) * 1e-15,
            "a decimal is rounded to the nearest whole number", text);
  } else {
    Require(std::abs(number) > 9.2e18, "a decimal that fits 64 bits is no overflow", text);
  }
}

void CheckText(std::string_view text) {
  Decimal decimal;
  if (DoneOr({kOverflow, kTypeMismatch}, [&] { decimal = Decimal::Parse(text); })) {
    CheckDecimal(decimal);
    // Half of the last of 28 decimals is what rounding may change.
    const double number = TextToNumber(text, ".");
    Require(std::abs(number - decimal.ToDouble()) <= std::abs(number) * 1e-15 + 0.6e-28,
            "a decimal has its text's value", text);
  }
  double number = 0.0;
  const bool is_number =
      DoneOr({kOverflow, kTypeMismatch}, [&] { number = TextToNumber(text, ","); });
  if (is_number) Require(std::isfinite(number), "text is a finite number", text);
  const auto value = sqlite::NumberFrom(text);
  if (!value) return;
  const auto again = sqlite::NumberFrom(sqlite::NumberText(*value));
  Require(again && sqlite::NumberText(*again) == sqlite::NumberText(*value),
          "the server's text of a number reads back", text);
}

void CheckDouble(double number) {
  const Variant value(number);
  if (!std::isfinite(number)) {
    return Require(!DoneOr({kOverflow}, [&] { static_cast<void>(Decimal::FromDouble(number)); }),
                   "no decimal is infinite");
  }
  Require(TextToNumber(NumberText(number, 17, "."), ".") == number, "17 digits are exact",
          Shown(value));
  for (const int digits : {7, 15}) {
    const std::string text = NumberText(number, digits, ",");
    double read = 0.0;
    if (!DoneOr({kOverflow}, [&] { read = TextToNumber(text, ","); })) {
      Require(std::abs(number) > 1.79769e308, "only the largest doubles round up beyond", text);
      continue;
    }
    Require(NumberText(read, digits, ",") == text, "rounding twice is rounding once", text);
  }
  if (DoneOr({kOverflow}, [&] { CheckDecimal(Decimal::FromDouble(number)); })) {
    Require(std::abs(number) < 8e28, "no decimal has more than 96 bits", Shown(value));
  }
}

}  // namespace

void Check(std::string_view input) {
  CheckText(input);
  double number = 0.0;
  std::memcpy(&number, input.data(), std::min(sizeof(number), input.size()));
  CheckDouble(number);
  std::int64_t amount = 0;
  std::memcpy(&amount, input.data(), std::min(sizeof(amount), input.size()));
  CheckDecimal(Decimal::FromCurrency(Currency{amount}));
  CheckDecimal(Decimal(amount));
}

}  // namespace sabrel::fuzz
