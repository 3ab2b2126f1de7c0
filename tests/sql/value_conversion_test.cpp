#include "sabrel/sql/value_conversion.h"

#include <gmock/gmock.h>

#include <functional>

#include "tests/support/scripted_platform.h"

namespace sabrel {
namespace {

using namespace MSabrel;

TEST(ValueConversion, FollowsItsRulesForNullAndOddTexts) {
  testing::ScriptedPlatform platform;
  const Variant null{Null{}};
  const Variant array(std::vector<Variant>{});
  const auto number = [](const std::function<double()>& convert) {
    try {
      return convert();
    } catch (const RuntimeError& failure) {
      return 1000000.0 + failure.Number();
    }
  };
  constexpr double kOverflow = 1000006.0;
  constexpr double kMismatch = 1000013.0;
  const struct {
    const char* name;
    Variant value;
    double id;
    double integer;  // iNull = -1
    double real;     // iNull = 5
  } rows[] = {
      {"null", null, 0, -1, 5},
      {"empty", Variant(), 0, 0, 0},
      {"text", Variant("12"), 12, 12, 12},
      {"not a number", Variant(" (NaN) "), kMismatch, -1, kMismatch},
      {"lower case", Variant("(nan)"), kMismatch, kMismatch, kMismatch},
      {"tab before", Variant("\t(NaN)"), kMismatch, kMismatch, kMismatch},
      {"half to even", Variant(2.5), 2, 2, 2.5},
      {"other half", Variant("3.5"), 4, 4, 3.5},
      {"true", Variant(true), -1, -1, kMismatch},
      {"too large", Variant("2147483647.5"), kOverflow, kOverflow, 2147483647.5},
      {"empty text", Variant(""), kMismatch, kMismatch, 0},
      {"fifteen digits", Variant(0.1 + 0.2), 0, 0, 0.3},
      {"decimal", Variant(Decimal::Parse("5000000000.25")), kOverflow, kOverflow, 5000000000.25},
      {"array", array, kMismatch, kMismatch, kMismatch},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(number([&] { return CVId(row.value); }), row.id) << row.name;
    EXPECT_EQ(number([&] { return CVInt(row.value, -1); }), row.integer) << row.name;
    EXPECT_EQ(number([&] { return CVDbl(row.value, 5); }), row.real) << row.name;
  }
  platform.locale.decimal_separator = ",";
  platform.locale.thousands_separator = ".";
  EXPECT_EQ(CVDbl(Variant("2,5")), 2.5);
  EXPECT_EQ(CVDbl(Variant("2.5")), 2.5) << "a point is read in every locale";
  EXPECT_EQ(CVDbl(Variant(2.5)), 2.5);
  EXPECT_EQ(CVInt(Variant("2,5")), 2);
}

TEST(ValueConversion, TextsDatesAndTruth) {
  const testing::ScriptedPlatform platform;
  const Variant null{Null{}};
  EXPECT_EQ(CVString(null) + CVString(Variant()), "");
  EXPECT_EQ(CVString(Variant("  a b  ")), "a b");
  EXPECT_EQ(CVString(Variant(" \ta\r\n ")), "\ta\r\n") << "blanks only";
  EXPECT_EQ(CVString(Variant(12)), "12");
  EXPECT_TRUE(CVDateTime(null).IsZero() && CVDateTime(Variant()).IsZero());
  EXPECT_EQ(CVDateTime(Variant("01/01/1995")), Date::FromCivil({1995, 1, 1, 0, 0, 0}));
  EXPECT_EQ(CVDateTime(Variant(2.5)), Date(2.5));
  EXPECT_THROW(static_cast<void>(CVDateTime(Variant("no date"))), RuntimeError);
  EXPECT_THROW(static_cast<void>(CVDateTime(Variant(1e9))), RuntimeError);
  EXPECT_TRUE(CVBoolean(Variant("Y")));
  for (const Variant& value :
       {Variant("y"), Variant("YES"), Variant("Y "), Variant("TRUE"), Variant("1"), Variant(1),
        Variant(true), null, Variant(), Variant(ErrorValue{1}), Variant(ObjectRef()),
        Variant(std::vector<Variant>{})}) {
    EXPECT_FALSE(CVBoolean(value)) << static_cast<int>(value.kind());
  }
}

}  // namespace
}  // namespace sabrel
