#include "sabrel/platform/conversions.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "sabrel/platform/runtime_error.h"

namespace sabrel {
namespace {

const LocaleFacts kDot;
const LocaleFacts kComma{",", ".", ".", ".", DateOrder::kDayMonthYear};

class Standing : public Object {
 public:
  explicit Standing(Variant value) : value_(std::move(value)) {}
  Variant DefaultProperty() const override { return value_; }

 private:
  Variant value_;
};
class Bare : public Object {};
class Endless : public Object {
  Variant DefaultProperty() const override {
    return Variant(ObjectRef(std::make_shared<Endless>()));
  }
};

template <class T, class... Arguments>
Variant ObjectOf(Arguments... arguments) {
  return Variant(ObjectRef(std::make_shared<T>(arguments...)));
}

/// What `convert` gives as text, "!n" for failure n.
template <class Convert>
std::string Outcome(Convert convert) {
  try {
    return convert();
  } catch (const RuntimeError& failure) {
    return "!" + std::to_string(failure.Number());
  }
}

/// Every conversion of `value`, in the order text, byte, 16, 32 bits, single, double, currency,
/// decimal, date, boolean.
std::string Conversions(const Variant& value, const LocaleFacts& locale) {
  std::string all = "[" + Outcome([&] { return ToText(value, locale); }) + "]";
  const auto add = [&](auto convert) { all += " " + Outcome(convert); };
  add([&] { return std::to_string(ToByte(value, locale)); });
  add([&] { return std::to_string(ToInt16(value, locale)); });
  add([&] { return std::to_string(ToInt32(value, locale)); });
  add([&] { return NumberText(double{ToSingle(value, locale)}, 7, "."); });
  add([&] { return NumberText(ToDouble(value, locale), 15, "."); });
  add([&] { return std::to_string(ToCurrency(value, locale).ten_thousandths); });
  add([&] { return ToDecimal(value, locale).Text(); });
  add([&] { return NumberText(ToDate(value, locale).Serial(), 15, "."); });
  add([&] { return ToBoolean(value, locale) ? "True" : "False"; });
  return all;
}

std::string Everywhere(const std::string& text, const std::string& outcome) {
  std::string all = "[" + text + "]";
  for (int i = 0; i < 9; ++i) all += " " + outcome;
  return all;
}

TEST(Conversions, EveryKindConvertsToEveryOther) {
  const double infinity = std::numeric_limits<double>::infinity();
  const struct {
    const char* name;
    Variant value;
    const LocaleFacts& locale;
    std::string expected;
  } rows[] = {
      {"empty", Variant(), kDot, "[] 0 0 0 0 0 0 0 0 False"},
      {"null", Variant(Null()), kDot, Everywhere("!94", "!94")},
      {"byte", Variant(std::uint8_t{200}), kDot, "[200] 200 200 200 200 200 2000000 200 200 True"},
      {"int16", Variant(std::int16_t{-300}), kDot,
       "[-300] !6 -300 -300 -300 -300 -3000000 -300 -300 True"},
      {"int32", Variant(70000), kDot, "[70000] !6 !6 70000 70000 70000 700000000 70000 70000 True"},
      {"single", Variant(0.1F), kDot,
       "[0.1] 0 0 0 0.1 0.100000001490116 1000 0.1 0.100000001490116 True"},
      {"double", Variant(2.5), kDot, "[2.5] 2 2 2 2.5 2.5 25000 2.5 2.5 True"},
      {"double comma", Variant(2.5), kComma, "[2,5] 2 2 2 2.5 2.5 25000 2.5 2.5 True"},
      {"huge", Variant(1e300), kDot, "[1E+300] !6 !6 !6 !6 1E+300 !6 !6 !6 True"},
      {"nan", Variant(std::nan("")), kDot, "[NaN] !6 !6 !6 NaN NaN !6 !6 !6 True"},
      {"infinity", Variant(-infinity), kDot,
       "[-Infinity] !6 !6 !6 -Infinity -Infinity !6 !6 !6 True"},
      {"past currency", Variant(922337203685477.5808), kDot,
       "[922337203685478] !6 !6 !6 9.223372E+14 922337203685478 !6 922337203685478 !6 True"},
      {"negative zero", Variant(-0.0), kDot, "[0] 0 0 0 0 0 0 0 0 False"},
      {"currency", Variant(Currency{12345}), kComma,
       "[1,2345] 1 1 1 1.2345 1.2345 12345 1.2345 1.2345 True"},
      {"decimal", Variant(Decimal::Parse("-1.50")), kComma,
       "[-1,5] !6 -2 -2 -1.5 -1.5 -15000 -1.5 -1.5 True"},
      {"date", Variant(Date(45360.5)), kDot,
       "[03/09/2024 12:00:00] !6 !6 45360 45360.5 45360.5 453605000 45360.5 45360.5 True"},
      {"date comma", Variant(Date(5.0)), kComma, "[04.01.1900] 5 5 5 5 5 50000 5 5 True"},
      {"no number", Variant("(NaN)"), kDot, Everywhere("(NaN)", "!13")},
      {"no text", Variant(""), kDot, Everywhere("", "!13")},
      {"grouped", Variant(" 1,234.5 "), kDot,
       "[ 1,234.5 ] !6 1234 1234 1234.5 1234.5 12345000 1234.5 !13 True"},
      {"grouped comma", Variant("1.234,5"), kComma,
       "[1.234,5] !6 1234 1234 1234.5 1234.5 12345000 1234.5 !13 True"},
      {"date text", Variant("1/2/1900"), kDot, "[1/2/1900] !13 !13 !13 !13 !13 !13 !13 3 !13"},
      {"zero text", Variant("0.0"), kDot, "[0.0] 0 0 0 0 0 0 0 !13 False"},
      {"word", Variant("fAlse"), kDot, "[fAlse] !13 !13 !13 !13 !13 !13 !13 !13 False"},
      {"boolean", Variant(true), kDot, "[True] 255 -1 -1 -1 -1 -10000 -1 -1 True"},
      {"error", Variant(ErrorValue{5}), kDot, Everywhere("Error 5", "!13")},
      {"array", Variant(std::vector<Variant>{Variant(1)}), kDot, Everywhere("!13", "!13")},
      {"object", ObjectOf<Standing>(ObjectOf<Standing>(Variant(7))), kDot,
       "[7] 7 7 7 7 7 70000 7 7 True"},
      {"bare object", ObjectOf<Bare>(), kDot, Everywhere("!13", "!13")},
      {"endless object", ObjectOf<Endless>(), kDot, Everywhere("!13", "!13")},
      {"absent object", Variant(ObjectRef()), kDot, Everywhere("!91", "!91")}};
  for (const auto& row : rows)
    EXPECT_EQ(Conversions(row.value, row.locale), row.expected) << row.name;
}

TEST(Conversions, WholeNumbersFromTextAreExactAndHalvesGoToEven) {
  const struct {
    const char* text;
    const char* expected;
  } rows[] = {{"2.5", "2"},
              {"3.5", "4"},
              {"-2.5", "-2"},
              {"0.5", "0"},
              {"25e-1", "2"},
              {"2.50000000000000000000000000000000000001", "3"},
              {"0.49999999999999999999999999999999999999", "0"},
              {"2147483647.49999999999", "2147483647"},
              {"2147483647.5", "!6"},
              {"-2147483648.5", "-2147483648"},
              {"-2147483649", "!6"},
              {"+1E3", "1000"},
              {"0e400", "0"},
              {"1e400", "!6"},
              {"1e-400", "0"},
              {"1e99999999999999999999", "!6"},
              {".5e1", "5"},
              {"5.", "5"},
              {"12,34,5", "12345"}};
  for (const auto& row : rows) {
    EXPECT_EQ(Outcome([&] { return std::to_string(ToInt32(Variant(row.text), kDot)); }),
              row.expected)
        << row.text;
  }
  for (const char* text : {"1,", ",1", "1.2,3", "1 2", "\t1", ".", "-", "1e", "0x10"}) {
    EXPECT_EQ(Outcome([&] { return std::to_string(ToInt32(Variant(text), kDot)); }), "!13") << text;
  }
  for (const char* text : {"-0.5", "255.4999999999999999999"}) {
    EXPECT_EQ(ToByte(Variant(text), kDot), text[0] == '-' ? 0 : 255);
  }
  for (const double number : {-0.51, 255.5}) {
    EXPECT_EQ(Outcome([&] { return std::to_string(ToByte(Variant(number), kDot)); }), "!6");
  }
  EXPECT_EQ(ToInt32(Variant(2147483647.49), kDot), 2147483647);
  EXPECT_EQ(Outcome([] { return std::to_string(ToInt32(Variant(2147483647.5), kDot)); }), "!6");
  EXPECT_EQ(ToInt32(Variant(-2147483648.5), kDot), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(ToCurrency(Variant("0.000250000000000000000000000000000001"), kDot).ten_thousandths, 3);
  EXPECT_EQ(ToCurrency(Variant("922337203685477.5807"), kDot).ten_thousandths,
            std::numeric_limits<std::int64_t>::max());
}

TEST(Conversions, NumberTextHasItsDigitsAndNoMore) {
  const struct {
    double number;
    int digits;
    const char* expected;
  } rows[] = {{0.1 + 0.2, 15, "0,3"},
              {0.0001, 15, "0,0001"},
              {0.00001, 15, "1E-05"},
              {-0.5, 15, "-0,5"},
              {123456789012345.0, 15, "123456789012345"},
              {999999999999999.9, 15, "1E+15"},
              {100.0, 15, "100"},
              {1.5e-300, 15, "1,5E-300"},
              {double{0.1F}, 7, "0,1"},
              {double{16777216.0F}, 7, "1,677722E+07"},
              {1234567.0, 7, "1234567"},
              {5e-324, 15, "4,94065645841247E-324"}};
  for (const auto& row : rows) EXPECT_EQ(NumberText(row.number, row.digits, ","), row.expected);
}

TEST(Conversions, LimitsOfDatesFromNumbers) {
  for (const double serial : {-657434.0, 2958465.99999}) {
    EXPECT_EQ(ToDate(Variant(serial), kDot).Serial(), serial);
  }
  for (const double serial : {-657434.1, 2958465.999999}) {
    EXPECT_EQ(Outcome([&] { return std::to_string(ToDate(Variant(serial), kDot).Serial()); }), "!6")
        << serial;
  }
}

TEST(Conversions, NumbersAreNoDatesAndDatesAreNoNumbers) {
  const struct {
    const char* name;
    Variant value;
    bool numeric;
    bool date;
  } rows[] = {{"number", Variant(1.5), true, false},
              {"empty", Variant(), true, false},
              {"boolean", Variant(false), true, false},
              {"numeric text", Variant("1,5"), true, false},
              {"too large", Variant("1e400"), false, false},
              {"date", Variant(Date(1.0)), false, true},
              {"date text", Variant("2024-03-09"), false, true},
              {"null", Variant(Null()), false, false},
              {"absent object", Variant(ObjectRef()), false, false}};
  for (const auto& row : rows) {
    EXPECT_EQ(IsNumeric(row.value, kComma), row.numeric) << row.name;
    EXPECT_EQ(IsDate(row.value, kComma), row.date) << row.name;
  }
  EXPECT_EQ(ToJoinedText(ObjectOf<Standing>(Variant(Null()))), "");
}

}  // namespace
}  // namespace sabrel
