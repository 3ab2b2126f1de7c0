#include "sabrel/sql/literals.h"

#include <gmock/gmock.h>

#include <array>
#include <limits>

#include "tests/support/scripted_platform.h"

namespace sabrel {
namespace {

using namespace MSabrel;
using testing::Rows;
using testing::ScriptedPlatform;

class Literals : public ::testing::Test {
 protected:
  ScriptedPlatform platform;
};

struct Priced final : Object {
  Variant DefaultProperty() const override { return Variant(2.5); }
};
struct Plain final : Object {};

const Date kMarch = Date::FromCivil({2024, 3, 9, 17, 5, 0});

TEST_F(Literals, StandForValuesInEveryLocale) {
  const struct {
    const char* name;
    CDBLiteral literal;
    const char* expected;
  } rows[] = {
      {"empty text", DBStr(""), "NULL"},
      {"blank text", DBStr(" "), "' '"},
      {"inner quote", DBStr("it's"), "'it''s'"},
      {"only quotes", DBStr("''"), "''''''"},
      {"other bytes stay", DBStr("a\\\r\n\"\xC3\xA4\xFF"), "'a\\\r\n\"\xC3\xA4\xFF'"},
      {"no id", DBOrd(0), "NULL"},
      {"negative id", DBOrd(-3), "-3"},
      {"integer at default sentinel", DBInt(0), "NULL"},
      {"zero with other sentinel", DBInt(0, -1), "0"},
      {"other sentinel", DBInt(-1, -1), "NULL"},
      {"smallest integer", DBInt(std::numeric_limits<std::int32_t>::min()), "-2147483648"},
      {"date text", DBDateString("2024", "YYYY"), "TO_DATE('2024','YYYY')"},
      {"no date text", DBDateString("", "YYYY"), "NULL"},
      {"no format", DBDateString("2024", ""), "TO_DATE('2024',NULL)"},
      {"zero date", DateToDBString(Date()), "NULL"},
      {"negative zero date", DateToDBString(Date(-0.0)), "NULL"},
      {"before the zero date", DateToDBString(Date(-1.25)),
       "TO_DATE('1899-12-29 06:00:00','YYYY-MM-DD HH24:MI:SS')"},
      {"sequence", NextInSequence("PM_StringTable_SQ"), "PM_StringTable_SQ.NEXTVAL"},
      {"clock", CurrentDateTime(), "TRUNC(SYSDATE,'MI')"},
      {"as it is", DBLiteral("a'b"), "a'b"},
  };
  for (const auto& row : rows) EXPECT_EQ(row.literal.Value(), row.expected) << row.name;
}

TEST_F(Literals, NumbersHaveAPointWhateverTheLocaleWrites) {
  const struct {
    const char* name;
    double number;
    std::int32_t sentinel;
    const char* expected;
  } rows[] = {
      {"half", 2.5, 0, "2.5"},
      {"zero", 0.0, 0, "NULL"},
      {"negative zero", -0.0, 0, "NULL"},
      {"zero, other sentinel", 0.0, 7, "0"},
      {"sentinel", 7.0, 7, "NULL"},
      {"not a number", std::numeric_limits<double>::quiet_NaN(), 0, "NULL"},
      {"fifteen digits", 0.1 + 0.2, 0, "0.3"},
      {"small", 0.00001, 0, "1E-05"},
      {"large", 1e15, 0, "1E+15"},
      {"below a unit", 0.5, 0, "0.5"},
  };
  for (const std::string separator : {".", ",", "\u066B"}) {
    platform.locale.decimal_separator = separator;
    platform.locale.time_separator = ".";
    for (const auto& row : rows) {
      EXPECT_EQ(DBFloat(row.number, row.sentinel).Value(), row.expected) << row.name << separator;
    }
    EXPECT_EQ(DBArg(Variant(0.1F)), "0.1") << separator;
    EXPECT_EQ(DateToDBString(kMarch).Value(),
              "TO_DATE('2024-03-09 17:05:00','YYYY-MM-DD HH24:MI:SS')");
  }
}

TEST_F(Literals, AnArgumentFollowsItsKind) {
  platform.locale.decimal_separator = ",";
  const struct {
    const char* name;
    Variant value;
    const char* expected;
  } rows[] = {
      {"literal", CDBLiteral("SYSDATE").ToVariant(), "SYSDATE"},
      {"null", Variant(Null{}), "NULL"},
      {"double zero", Variant(0.0), "0"},
      {"negative zero", Variant(-0.0), "0"},
      {"zero date", Variant(Date()), "NULL"},
      {"date", Variant(kMarch), "TO_DATE('2024-03-09 17:05:00','YYYY-MM-DD HH24:MI:SS')"},
      {"small integer", Variant(std::int16_t{-7}), "-7"},
      {"object", Variant(ObjectRef(std::make_shared<Priced>())), "2,5"},
      {"text", Variant("O'Hara"), "'O''Hara'"},
      {"empty text", Variant(""), "NULL"},
      {"true", Variant(true), "'Y'"},
      {"false", Variant(false), "'N'"},
      {"empty", Variant(), ""},
      {"integer zero", Variant(0), "0"},
      {"currency keeps the locale", Variant(Currency{25000}), "2,5"},
      {"decimal keeps the locale", Variant(Decimal::Parse("2.50")), "2,5"},
      {"byte", Variant(std::uint8_t{7}), "7"},
      {"error", Variant(ErrorValue{13}), "Error 13"},
  };
  for (const auto& row : rows) EXPECT_EQ(DBArg(row.value), row.expected) << row.name;
  for (const Variant& bad : {Variant(ObjectRef()), Variant(std::vector<Variant>{Variant(1)}),
                             Variant(ObjectRef(std::make_shared<Plain>()))}) {
    try {
      static_cast<void>(DBArg(bad));
      ADD_FAILURE() << "an argument without text was taken";
    } catch (const RuntimeError& failure) {
      EXPECT_EQ(failure.Number(), 13);
    }
  }
}

TEST_F(Literals, ListsPlaceTheirCommasByWhatStandsBefore) {
  platform.locale.decimal_separator = ",";
  const Variant none;
  const Variant null{Null{}};
  const Variant blank = CDBLiteral().ToVariant();
  using List = std::vector<Variant>;
  const struct {
    List values;
    const char* args;
    const char* set_args;
  } rows[] = {
      {{}, "  ", "  "},
      {{Variant(5), Variant("O'Neil"), null}, " 5,'O''Neil',NULL ", " 5 = 'O''Neil', =  "},
      {{none, Variant(7)}, " 7 ", "  = 7 "},
      {{blank, Variant(7)}, " 7 ", "  = 7 "},
      {{Variant(5), none, Variant(7)}, " 5,,7 ", " 5 = ,7 =  "},
      {{Variant(5), none}, " 5, ", " 5 =  "},
      {{Variant(2.5), Variant(2.5)}, " 2.5,2.5 ", " 2,5 = 2.5 "},
      {{CDBLiteral("N").ToVariant(), Variant(kMarch)},
       " N,TO_DATE('2024-03-09 17:05:00','YYYY-MM-DD HH24:MI:SS') ",
       " N = TO_DATE('2024-03-09 17:05:00','YYYY-MM-DD HH24:MI:SS') "},
      {{Variant("NAME"), Variant("abc"), Variant("AGE"), Variant(5)},
       " 'NAME','abc','AGE',5 ",
       " NAME = 'abc',AGE = 5 "},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(DBArgs(row.values), row.args);
    EXPECT_EQ(DBSetArgs(row.values), row.set_args);
  }
}

TEST_F(Literals, AskTheServerForItsClockAndItsSequences) {
  platform.Answer(Rows{{"T"}, {{Variant(kMarch)}}});
  EXPECT_EQ(GetCurrentDateTime(), kMarch);
  platform.Answer(Rows{{"N"}, {{Variant(42)}}});
  EXPECT_EQ(GetNextInSequence("SQ"), 42);
  platform.Answer(testing::Refuse(2289));
  EXPECT_EQ(GetNextInSequence("SQ"), 0);
  const std::string conversation = platform.Conversation();
  EXPECT_THAT(conversation, ::testing::HasSubstr("query [SELECT TRUNC(SYSDATE,'MI') FROM DUAL] "
                                                 "host= port=0 user= password= timeout=60\n"));
  EXPECT_THAT(conversation,
              ::testing::HasSubstr(
                  "query [SELECT SQ.NEXTVAL FROM DUAL] host= port=0 user= password= timeout=60\n"));
  EXPECT_THAT(conversation,
              ::testing::HasSubstr("assertion true Sabrel MSabrel GetNextInSequence []\n"));
  EXPECT_THAT(conversation,
              ::testing::EndsWith("assertion false Sabrel MSabrel GetNextInSequence []\n"));
}

}  // namespace
}  // namespace sabrel
