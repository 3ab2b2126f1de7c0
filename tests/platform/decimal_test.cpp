#include "sabrel/platform/decimal.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/platform/failures.h"

namespace sabrel {
namespace {

using testing::Outcome;

constexpr std::int64_t kLowest = std::numeric_limits<std::int64_t>::min();

TEST(Decimal, TextOfWhatWasReadIsExact) {
  const std::pair<const char*, const char*> rows[] = {
      {"0", "0"},
      {"-0.00", "0"},
      {"+007.50", "7.5"},
      {"-0.05", "-0.05"},
      {"12.5e-1", "1.25"},
      {"79228162514264337593543950335", "79228162514264337593543950335"},
      {"79228162514264337593543950336", "!6"},
      {"79228162514264337593543950335.4", "79228162514264337593543950335"},
      {"79228162514264337593543950335.5", "!6"},
      {"9.9999999999999999999999999999", "10"},
      {"0.12345678901234567890123456785", "0.1234567890123456789012345678"},
      {"0.12345678901234567890123456775", "0.1234567890123456789012345678"},
      {"0.123456789012345678901234567850001", "0.1234567890123456789012345679"},
      {"34028236692.0938463463374607431768211457", "34028236692.093846346337460743"},
      {"6e-29", "0.0000000000000000000000000001"},
      {"1e-9999999999999999999", "0"},
      {"0e9999999999999999999", "0"},
      {"1e29", "!6"},
      {"", "!13"},
      {" 1", "!13"},
      {"1,5", "!13"},
      {"1e+", "!13"}};
  for (const auto& [text, expected] : rows) {
    EXPECT_EQ(Outcome([&, text = text] { return Decimal::Parse(text).Text(); }), expected) << text;
  }
  EXPECT_EQ(Decimal(kLowest).Text(), "-9223372036854775808");
  EXPECT_NE(Decimal::Parse("1.0"), Decimal::Parse("1.00"));
}

TEST(Decimal, DoublesKeepFifteenDigits) {
  EXPECT_EQ(Decimal::FromDouble(0.1 + 0.2), Decimal::Parse("0.3"));
  EXPECT_EQ(Decimal::FromDouble(-1e20).Text(), "-100000000000000000000");
  EXPECT_EQ(Decimal::FromDouble(-1e-300), Decimal::FromDouble(1e-300));
  for (const double number : {1e29, HUGE_VAL, std::nan("")}) {
    EXPECT_EQ(Outcome([&] { return Decimal::FromDouble(number).Text(); }), "!6");
  }
  EXPECT_EQ(Decimal::Parse("-0.1").ToDouble(), -0.1);
}

TEST(Decimal, RoundsToWholeNumbersWithHalvesToEven) {
  const std::pair<const char*, const char*> rows[] = {
      {"2.5", "2"},
      {"-3.5", "-4"},
      {"2.50001", "3"},
      {"9223372036854775807.4", "9223372036854775807"},
      {"9223372036854775807.5", "!6"},
      {"-9223372036854775808.5", "-9223372036854775808"}};
  for (const auto& [text, whole] : rows) {
    EXPECT_EQ(Outcome([&, text = text] { return Decimal::Parse(text).ToInt64(); }), whole) << text;
  }
  EXPECT_EQ(Decimal::FromCurrency({kLowest}).Text(), "-922337203685477.5808");
}

}  // namespace
}  // namespace sabrel
