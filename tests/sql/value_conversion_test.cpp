#include "sabrel/sql/value_conversion.h"

#include <gtest/gtest.h>

#include "sabrel/platform/conversions.h"
#include "tests/platform/failures.h"
#include "tests/support/scripted_platform.h"

namespace sabrel {
namespace {

using namespace MSabrel;
using testing::Outcome;

TEST(ValueConversion, FollowsItsRulesForNullAndOddTexts) {
  testing::ScriptedPlatform platform;
  // A value as an id, an integer with -1 for null, a real with 5.
  const std::tuple<const char*, Variant, const char*> rows[] = {
      {"null", Variant(Null{}), "0 -1 5"},
      {"empty", Variant(), "0 0 0"},
      {"text", Variant("12"), "12 12 12"},
      {"not a number", Variant(" (NaN) "), "!13 -1 !13"},
      {"tab before", Variant("\t(NaN)"), "!13 !13 !13"},
      {"half to even", Variant(2.5), "2 2 2.5"},
      {"true", Variant(true), "-1 -1 !13"},
      {"too large", Variant("2147483647.5"), "!6 !6 2147483647.5"},
      {"empty text", Variant(""), "!13 !13 0"},
      {"fifteen digits", Variant(0.1 + 0.2), "0 0 0.29999999999999999"},
      {"decimal", Variant(Decimal::Parse("5000000000.25")), "!6 !6 5000000000.25"},
  };
  for (const auto& [name, value, expected] : rows) {
    EXPECT_EQ(Outcome([&, &v = value] { return CVId(v); }) + " " +
                  Outcome([&, &v = value] { return CVInt(v, -1); }) + " " +
                  Outcome([&, &v = value] { return NumberText(CVDbl(v, 5), 17, "."); }),
              expected)
        << name;
  }
  platform.locale.decimal_separator = ",";
  platform.locale.thousands_separator = ".";
  EXPECT_EQ(CVDbl(Variant("2,5")) + CVInt(Variant("2,5")), 4.5);
  EXPECT_EQ(CVDbl(Variant("2.5")), 2.5) << "a point is read in every locale";
  EXPECT_EQ(CVDbl(Variant(2.5)), 2.5);
}

TEST(ValueConversion, TextsDatesAndTruth) {
  const testing::ScriptedPlatform platform;
  const Variant null{Null{}};
  EXPECT_EQ(CVString(null) + CVString(Variant(" \ta b\r\n ")), "\ta b\r\n") << "blanks only";
  EXPECT_TRUE(CVDateTime(null).IsZero() && CVDateTime(Variant()).IsZero());
  EXPECT_EQ(CVDateTime(Variant("01/01/1995")), Date::FromCivil({1995, 1, 1, 0, 0, 0}));
  EXPECT_THROW(static_cast<void>(CVDateTime(Variant("no date"))), RuntimeError);
  EXPECT_TRUE(CVBoolean(Variant("Y")));
  for (const Variant& no : {Variant("y"), Variant("Y "), Variant(true), null, Variant()}) {
    EXPECT_FALSE(CVBoolean(no)) << static_cast<int>(no.kind());
  }
}

}  // namespace
}  // namespace sabrel
