#include "sabrel/platform/conversions.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/platform/failures.h"

namespace sabrel {
namespace {

using testing::Outcome;

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

/// Every conversion of `value`, in the order text, 16 bits, 32 bits, double, date.
std::string Conversions(const Variant& value, const LocaleFacts& locale) {
  std::string all = "[" + Outcome([&] { return ToText(value, locale); }) + "]";
  const auto add = [&](auto convert) { all += " " + Outcome(convert); };
  add([&] { return ToInt16(value, locale); });
  add([&] { return ToInt32(value, locale); });
  add([&] { return NumberText(ToDouble(value, locale), 15, "."); });
  add([&] { return NumberText(ToDate(value, locale).Serial(), 15, "."); });
  return all;
}

std::string Everywhere(const std::string& text, const std::string& outcome) {
  std::string all = "[" + text + "]";
  for (int i = 0; i < 4; ++i) all += " " + outcome;
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
      {"empty", Variant(), kDot, "[] 0 0 0 0"},
      {"null", Variant(Null()), kDot, Everywhere("!94", "!94")},
      {"byte", Variant(std::uint8_t{200}), kDot, "[200] 200 200 200 200"},
      {"int16", Variant(std::int16_t{-300}), kDot, "[-300] -300 -300 -300 -300"},
      {"int32", Variant(70000), kDot, "[70000] !6 70000 70000 70000"},
      {"single", Variant(0.1F), kDot, "[0.1] 0 0 0.100000001490116 0.100000001490116"},
      {"double", Variant(2.5), kDot, "[2.5] 2 2 2.5 2.5"},
      {"huge", Variant(1e300), kDot, "[1E+300] !6 !6 1E+300 !6"},
      {"nan", Variant(std::nan("")), kDot, "[NaN] !6 !6 NaN !6"},
      {"infinity", Variant(-infinity), kDot, "[-Infinity] !6 !6 -Infinity !6"},
      {"past currency", Variant(922337203685477.5808), kDot,
       "[922337203685478] !6 !6 922337203685478 !6"},
      {"negative zero", Variant(-0.0), kDot, "[0] 0 0 0 0"},
      {"currency", Variant(Currency{12345}), kComma, "[1,2345] 1 1 1.2345 1.2345"},
      {"decimal", Variant(Decimal::Parse("-1.50")), kComma, "[-1,5] -2 -2 -1.5 -1.5"},
      {"date", Variant(Date(45360.5)), kDot, "[03/09/2024 12:00:00] !6 45360 45360.5 45360.5"},
      {"date comma", Variant(Date(5.0)), kComma, "[04.01.1900] 5 5 5 5"},
      {"no number", Variant("(NaN)"), kDot, Everywhere("(NaN)", "!13")},
      {"no text", Variant(""), kDot, Everywhere("", "!13")},
      {"grouped comma", Variant("1.234,5"), kComma, "[1.234,5] 1234 1234 1234.5 !13"},
      {"date text", Variant("1/2/1900"), kDot, "[1/2/1900] !13 !13 !13 3"},
      {"boolean", Variant(true), kDot, "[True] -1 -1 -1 -1"},
      {"error", Variant(ErrorValue{5}), kDot, Everywhere("Error 5", "!13")},
      {"array", Variant(std::vector<Variant>{Variant(1)}), kDot, Everywhere("!13", "!13")},
      {"object", ObjectOf<Standing>(ObjectOf<Standing>(Variant(7))), kDot, "[7] 7 7 7 7"},
      {"bare object", ObjectOf<Bare>(), kDot, Everywhere("!13", "!13")},
      {"endless object", ObjectOf<Endless>(), kDot, Everywhere("!13", "!13")},
      {"absent object", Variant(ObjectRef()), kDot, Everywhere("!91", "!91")}};
  for (const auto& row : rows)
    EXPECT_EQ(Conversions(row.value, row.locale), row.expected) << row.name;
}

TEST(Conversions, WholeNumbersFromTextAreExactAndHalvesGoToEven) {
  const struct {
    const char* name;
    std::vector<std::string> texts;
    const char* expected;
  } rows[] = {
      {"halves", {"2.5", "3.5", "-2.5", "25e-1"}, " 2 4 -2 2"},
      {"beyond a double",
       {"2.50000000000000000000000000000000000001", "0.49999999999999999999999999999999999999"},
       " 3 0"},
      {"limits", {"2147483647.49999999999", "-2147483648.5"}, " 2147483647 -2147483648"},
      {"past them",
       {"2147483647.5", "-2147483649", "1e400", "1e99999999999999999999"},
       " !6 !6 !6 !6"},
      {"forms", {"0e400", "1e-400", ".5e1", "5.", "12,34,5"}, " 0 0 5 5 12345"},
      {"no numbers", {"1,", ",1", "1.2,3", "1 2", "\t1"}, " !13 !13 !13 !13 !13"},
      {"nor these", {".", "-", "1e", "0x10"}, " !13 !13 !13 !13"}};
  for (const auto& row : rows) {
    std::string all;
    for (const std::string& text : row.texts) {
      all += " " + Outcome([&] { return ToInt32(Variant(text), kDot); });
    }
    EXPECT_EQ(all, row.expected) << row.name;
  }
  for (const auto& [number, expected] :
       {std::pair{-32768.5, "-32768"}, {32767.49, "32767"}, {-32768.51, "!6"}, {32767.5, "!6"}}) {
    EXPECT_EQ(Outcome([&, number = number] { return ToInt16(Variant(number), kDot); }), expected);
  }
}

TEST(Conversions, NumberTextHasItsDigitsAndNoMore) {
  const struct {
    double number;
    int digits;
    const char* expected;
  } rows[] = {{0.1 + 0.2, 15, "0,3"},
              {0.0001, 15, "0,0001"},
              {0.00001, 15, "1E-05"},
              {123456789012345.0, 15, "123456789012345"},
              {999999999999999.9, 15, "1E+15"},
              {1.5e-300, 15, "1,5E-300"},
              {double{0.1F}, 7, "0,1"},
              {double{16777216.0F}, 7, "1,677722E+07"},
              {5e-324, 15, "4,94065645841247E-324"}};
  for (const auto& row : rows) EXPECT_EQ(NumberText(row.number, row.digits, ","), row.expected);
}

TEST(Conversions, LimitsOfDatesFromNumbers) {
  for (const auto& [serial, outcome] :
       {std::pair{-657434.0, ""}, {2958465.99999, ""}, {-657434.1, "!6"}, {2958465.999999, "!6"}}) {
    EXPECT_EQ(Outcome([&, serial = serial] {
                return std::string(ToDate(Variant(serial), kDot).Serial() == serial ? "" : "other");
              }),
              outcome)
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
              {"numeric text", Variant("1,5"), true, false},
              {"too large", Variant("1e400"), false, false},
              {"date", Variant(Date(1.0)), false, true},
              {"date text", Variant("2024-03-09"), false, true},
              {"absent object", Variant(ObjectRef()), false, false}};
  for (const auto& row : rows) {
    EXPECT_EQ(IsNumeric(row.value, kComma), row.numeric) << row.name;
    EXPECT_EQ(IsDate(row.value, kComma), row.date) << row.name;
  }
  EXPECT_EQ(ToJoinedText(ObjectOf<Standing>(Variant(Null()))), "");
}

}  // namespace
}  // namespace sabrel
