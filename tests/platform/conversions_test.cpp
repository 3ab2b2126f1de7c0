#include "sabrel/platform/conversions.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/platform/failures.h"

namespace sabrel {
namespace {

using testing::Outcome;
using testing::Outcomes;

const LocaleFacts kDot;
const LocaleFacts kBlank{",", "\u202F", ".", ":", DateOrder::kDayMonthYear};
const LocaleFacts kComma{",", ".", ".", ".", DateOrder::kDayMonthYear};

struct Standing : Object {
  explicit Standing(Variant made) : value(std::move(made)) {}
  Variant DefaultProperty() const override { return value; }
  Variant value;
};

template <class T, class... Arguments>
Variant ObjectOf(Arguments... arguments) {
  return Variant(ObjectRef(std::make_shared<T>(arguments...)));
}

struct Endless : Object {
  Variant DefaultProperty() const override { return ObjectOf<Endless>(); }
};

/// Every conversion of `value`, in the order text, 16 bits, 32 bits, double, date.
std::string Conversions(const Variant& value, const LocaleFacts& locale) {
  const auto text = [](double number) { return NumberText(number, 15, "."); };
  return "[" + Outcome([&] { return ToText(value, locale); }) + "] " +
         Outcome([&] { return ToInt16(value, locale); }) + " " +
         Outcome([&] { return ToInt32(value, locale); }) + " " +
         Outcome([&] { return text(ToDouble(value, locale)); }) + " " +
         Outcome([&] { return text(ToDate(value, locale).Serial()); });
}

std::string Everywhere(const std::string& text, const std::string& o) {
  return "[" + text + "] " + o + " " + o + " " + o + " " + o;
}

TEST(Conversions, EveryKindConvertsToEveryOther) {
  const std::tuple<const char*, Variant, const LocaleFacts&, std::string> rows[] = {
      {"empty", Variant(), kDot, "[] 0 0 0 0"},
      {"null", Variant(Null()), kDot, Everywhere("!94", "!94")},
      {"int32", Variant(70000), kDot, "[70000] !6 70000 70000 70000"},
      {"a single's digits", Variant(1.0F / 3), kDot,
       "[0.3333333] 0 0 0.333333343267441 0.333333343267441"},
      {"single", Variant(0.1F), kDot, "[0.1] 0 0 0.100000001490116 0.100000001490116"},
      {"nan", Variant(std::nan("")), kDot, "[NaN] !6 !6 NaN !6"},
      {"negative zero", Variant(-0.0), kDot, "[0] 0 0 0 0"},
      {"currency", Variant(Currency{12345}), kComma, "[1,2345] 1 1 1.2345 1.2345"},
      {"decimal", Variant(Decimal::Parse("-1.50")), kComma, "[-1,5] -2 -2 -1.5 -1.5"},
      {"date", Variant(Date(45360.5)), kDot, "[03/09/2024 12:00:00] !6 45360 45360.5 45360.5"},
      {"first serial", Variant(-657434.0), kDot, "[-657434] !6 -657434 -657434 -657434"},
      {"below it", Variant(-657434.1), kDot, "[-657434.1] !6 -657434 -657434.1 !6"},
      {"last serial", Variant(2958465.99999), kDot,
       "[2958465.99999] !6 2958466 2958465.99999 2958465.99999"},
      {"above it", Variant(2958465.999999), kDot, "[2958465.999999] !6 2958466 2958465.999999 !6"},
      {"no number", Variant("(NaN)"), kDot, Everywhere("(NaN)", "!13")},
      {"any blank groups", Variant("1 234\u00A0567\u202F8"), kBlank,
       "[1 234\u00A0567\u202F8] !6 12345678 12345678 !13"},
      {"grouped comma", Variant("1.234,5"), kComma, "[1.234,5] 1234 1234 1234.5 !13"},
      {"date text", Variant("1/2/1900"), kDot, "[1/2/1900] !13 !13 !13 3"},
      {"boolean", Variant(true), kDot, "[True] -1 -1 -1 -1"},
      {"error", Variant(ErrorValue{5}), kDot, Everywhere("Error 5", "!13")},
      {"array", Variant(std::vector<Variant>{Variant(1)}), kDot, Everywhere("!13", "!13")},
      {"object", ObjectOf<Standing>(ObjectOf<Standing>(Variant(7))), kDot, "[7] 7 7 7 7"},
      {"endless object", ObjectOf<Endless>(), kDot, Everywhere("!13", "!13")},
      {"absent object", Variant(ObjectRef()), kDot, Everywhere("!91", "!91")}};
  for (const auto& [name, value, locale, expected] : rows) {
    EXPECT_EQ(Conversions(value, locale), expected) << name;
  }
}

TEST(Conversions, WholeNumbersFromTextAreExactAndHalvesGoToEven) {
  const std::tuple<const char*, std::vector<const char*>, const char*> rows[] = {
      {"halves", {"2.5", "3.5", "-2.5", "25e-1"}, " 2 4 -2 2"},
      {"beyond a double",
       {"2.50000000000000000000000000000000000001", "0.49999999999999999999999999999999999999"},
       " 3 0"},
      {"limits", {"2147483647.49999999999", "-2147483648.5"}, " 2147483647 -2147483648"},
      {"past them", {"2147483647.5", "-2147483649", "1e99999999999999999999"}, " !6 !6 !6"},
      {"forms", {"0e400", "1e-400", ".5e1", "5.", "12,34,5"}, " 0 0 5 5 12345"},
      {"no numbers", {"", "1,", ",1", "1.2,3", ".", "1e"}, " !13 !13 !13 !13 !13 !13"}};
  const auto int32 = [](const char* text) { return ToInt32(Variant(text), kDot); };
  for (const auto& [name, texts, all] : rows) EXPECT_EQ(Outcomes(texts, int32), all) << name;
  const auto int16 = [](double number) { return ToInt16(Variant(number), kDot); };
  EXPECT_EQ(Outcomes(std::vector{-32768.5, 32767.49, -32768.51, 32767.5}, int16),
            " -32768 32767 !6 !6");
}

TEST(Conversions, NumberTextHasItsDigitsAndNoMore) {
  const auto text = [](double number) { return NumberText(number, 15, ","); };
  EXPECT_EQ(Outcomes(std::vector{0.1 + 0.2, 1e-4, 1e-5, 999999999999999.9, 5e-324}, text),
            " 0,3 0,0001 1E-05 1E+15 4,94065645841247E-324");
  const auto single = [](double number) { return NumberText(number, 7, ","); };
  EXPECT_EQ(
      Outcomes(std::vector{16777216.0, 499472.25, -64279.125, 4503599627370.5, 499472.26}, single),
      " 1,677722E+07 499472,3 -64279,13 4,5036E+12 499472,3");
  EXPECT_EQ(Outcomes(std::vector{1234567890123.125, 0.000030517578125, 1234567890123445.0,
                                 12345678901234450.0},
                     text),
            " 1234567890123,13 3,0517578125E-05 1,23456789012345E+15 1,23456789012345E+16")
      << "ties go away from zero";
  EXPECT_EQ(NumberText(571919990791592.375, 17, ","), "571919990791592,38") << "reads back";
}

TEST(Conversions, NumbersAreNoDatesAndDatesAreNoNumbers) {
  const auto is = [](const Variant& value) {
    return std::string(IsNumeric(value, kComma) ? "number" : "") +
           (IsDate(value, kComma) ? "date" : "");
  };
  EXPECT_EQ(is(Variant("1,5")) + is(Variant()), "numbernumber");
  EXPECT_EQ(is(Variant(Date(1.0))) + is(Variant("2024-03-09")), "datedate");
  EXPECT_EQ(is(Variant("1e400")) + is(Variant(ObjectRef())), "");
  EXPECT_EQ(ToJoinedText(ObjectOf<Standing>(Variant(Null()))), "");
}

TEST(Decimal, TextOfWhatWasReadIsExact) {
  const std::tuple<const char*, std::vector<const char*>, const char*> rows[] = {
      {"signs, zeros", {"-0.00", "+007.50", "-0.05", "12.5e-1"}, " 0 7.5 -0.05 1.25"},
      {"largest", {"79228162514264337593543950335.4"}, " 79228162514264337593543950335"},
      {"beyond it",
       {"79228162514264337593543950335.5", "79228162514264337593543950336", "1e29"},
       " !6 !6 !6"},
      {"rounded whole", {"7922816251426433759354395033.65"}, " 7922816251426433759354395034"},
      {"carry", {"9.9999999999999999999999999999"}, " 10"},
      {"half down", {"0.12345678901234567890123456785"}, " 0.1234567890123456789012345678"},
      {"half up", {"0.12345678901234567890123456775"}, " 0.1234567890123456789012345678"},
      {"more", {"0.123456789012345678901234567850001"}, " 0.1234567890123456789012345679"},
      {"96 bits", {"34028236692.0938463463374607431768211457"}, " 34028236692.093846346337460743"},
      {"tiny", {"6e-29", "1e-9999999999999999999"}, " 0.0000000000000000000000000001 0"},
      {"no numbers", {"", " 1", "1,5", "1e+"}, " !13 !13 !13 !13"}};
  const auto text = [](const char* digits) { return Decimal::Parse(digits).Text(); };
  for (const auto& [name, texts, all] : rows) EXPECT_EQ(Outcomes(texts, text), all) << name;
  EXPECT_NE(Decimal::Parse("1.0"), Decimal::Parse("1.00"));
}

TEST(Decimal, ComesFromDoublesWithFifteenDigitsAndGoesToWholeNumbersWithHalvesToEven) {
  const auto text = [](double number) { return Decimal::FromDouble(number).Text(); };
  EXPECT_EQ(Outcomes(std::vector{0.1 + 0.2, -1e20, -1e-300, 1e29, HUGE_VAL, std::nan("")}, text),
            " 0.3 -100000000000000000000 0 !6 !6 !6");
  EXPECT_EQ(text(1234567890123.125), "1234567890123.13");
  EXPECT_EQ(Decimal::FromDouble(-1e-300), Decimal::FromDouble(1e-300));
  const auto whole = [](const char* digits) { return Decimal::Parse(digits).ToInt64(); };
  EXPECT_EQ(Outcomes(std::vector{"2.5", "-3.5", "2.50001", "9223372036854775807.4",
                                 "9223372036854775807.5", "-9223372036854775808.5"},
                     whole),
            " 2 -4 3 9223372036854775807 !6 -9223372036854775808");
  EXPECT_EQ(Decimal::FromCurrency({INT64_MIN}).Text(), "-922337203685477.5808");
}

}  // namespace
}  // namespace sabrel
