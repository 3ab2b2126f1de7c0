#include "sabrel/sql/literals.h"

#include <gmock/gmock.h>

#include <limits>

#include "sabrel/core/gsabrel.h"
#include "tests/platform/failures.h"
#include "tests/support/scripted_platform.h"

namespace sabrel {
namespace {

using namespace MSabrel;
using testing::Rows;
using testing::ScriptedPlatform;

struct Literals : ::testing::Test {
  ScriptedPlatform platform;
};

struct Priced final : Object {
  Variant DefaultProperty() const override { return Variant(2.5); }
};
struct Plain final : Object {};

const Date kMarch = Date::FromCivil({2024, 3, 9, 17, 5, 0});
constexpr auto kMarchLiteral = "TO_DATE('2024-03-09 17:05:00','YYYY-MM-DD HH24:MI:SS')";

TEST_F(Literals, StandForValuesInEveryLocale) {
  const std::tuple<const char*, CDBLiteral, const char*> rows[] = {
      {"empty text", DBStr(""), "NULL"},
      {"other bytes stay", DBStr("a\\\r\n\"\xC3\xA4\xFF"), "'a\\\r\n\"\xC3\xA4\xFF'"},
      {"no id", DBOrd(0), "NULL"},
      {"zero with other sentinel", DBInt(0, -1), "0"},
      {"other sentinel", DBInt(-1, -1), "NULL"},
      {"smallest integer", DBInt(std::numeric_limits<std::int32_t>::min()), "-2147483648"},
      {"no date text", DBDateString("", "YYYY"), "NULL"},
      {"no format", DBDateString("2024", ""), "TO_DATE('2024',NULL)"},
      {"zero date", DateToDBString(Date(-0.0)), "NULL"},
      {"before the zero date", DateToDBString(Date(-1.25)),
       "TO_DATE('1899-12-29 06:00:00','YYYY-MM-DD HH24:MI:SS')"},
      {"zero", DBFloat(-0.0), "NULL"},
      {"sentinel", DBFloat(7.0, 7), "NULL"},
      {"not a number", DBFloat(std::numeric_limits<double>::quiet_NaN()), "NULL"},
      {"small", DBFloat(0.00001), "1E-05"},
  };
  for (const auto& [name, literal, text] : rows) EXPECT_EQ(literal.Value(), text) << name;
  for (const std::string separator : {".", ",", "\u066B"}) {
    platform.locale.decimal_separator = separator;
    platform.locale.time_separator = ".";
    EXPECT_EQ(DBFloat(0.1 + 0.2).Value() + DBArg(Variant(0.1F)), "0.30.1") << separator;
    EXPECT_EQ(DateToDBString(kMarch).Value(), kMarchLiteral);
  }
}

// What would be cut to 32 bits does not compile.
template <class T>
concept TakesAny = requires(T number) {
  GSabrel::DBInt(number);
}
|| requires(T number) { GSabrel::DBInt(5, number); }
|| requires(T number) { GSabrel::DBFloat(0.5, number); }
|| requires(T number) { GSabrel::DBOrd(number); }
|| requires(T number) { GSabrel::CVInt(Variant(5), number); }
|| requires(T number) { GSabrel::ExecuteQueryReturningLong("", number); }
|| requires(T number) { GSabrel::EA_Add_Common_Entity("", number); }
|| requires(T number) { GSabrel::TestRowLimit(number); }
|| requires(T number) { GDBString::UpdateDBString(number, std::string()); }
|| requires(T number, CDBString text) { text.Load(number); }
|| requires(T number) { DBInt(number); }
|| requires(T number) { DBOrd(number); };
template <class... T>
constexpr bool kAnyTakes = (TakesAny<T> || ...);
static_assert(TakesAny<std::int32_t> && TakesAny<std::uint16_t>);
static_assert(!kAnyTakes<std::int64_t, std::uint32_t, long long, unsigned long, std::size_t, double,
                         const std::int64_t&>);

TEST_F(Literals, AnArgumentFollowsItsKind) {
  platform.locale.decimal_separator = ",";
  const std::tuple<const char*, Variant, const char*> rows[] = {
      {"literal", CDBLiteral("SYSDATE").ToVariant(), "SYSDATE"},
      {"null", Variant(Null{}), "NULL"},
      {"zero", Variant(0.0), "0"},
      {"a single's digits", Variant(1.0F / 3), "0.3333333"},
      {"date", Variant(kMarch), kMarchLiteral},
      {"object", Variant(ObjectRef(std::make_shared<Priced>())), "2,5"},
      {"text", Variant("it's"), "'it''s'"},
      {"true", Variant(true), "'Y'"},
      {"false", Variant(false), "'N'"},
      {"empty", Variant(), ""},
      {"decimal keeps the locale", Variant(Decimal::Parse("2.50")), "2,5"},
      {"error", Variant(ErrorValue{13}), "Error 13"},
  };
  for (const auto& [name, value, expected] : rows) EXPECT_EQ(DBArg(value), expected) << name;
  for (const Variant& bad : {Variant(ObjectRef()), Variant(std::vector<Variant>{Variant(1)}),
                             Variant(ObjectRef(std::make_shared<Plain>()))}) {
    EXPECT_EQ(testing::NumberOf([&] { return DBArg(bad); }), 13);
  }
}

TEST_F(Literals, ListsPlaceTheirCommasByWhatStandsBefore) {
  platform.locale.decimal_separator = ",";
  const Variant none;
  const std::tuple<std::vector<Variant>, const char*, const char*> rows[] = {
      {{}, "  ", "  "},
      {{none, Variant(7)}, " 7 ", "  = 7 "},
      {{Variant(5), none, Variant(7)}, " 5,,7 ", " 5 = ,7 =  "},
      {{Variant(2.5), Variant(2.5)}, " 2.5,2.5 ", " 2,5 = 2.5 "},
      {{Variant("NAME"), Variant("abc"), CDBLiteral("AGE").ToVariant(), Variant(5)},
       " 'NAME','abc',AGE,5 ",
       " NAME = 'abc',AGE = 5 "},
  };
  for (const auto& [values, args, set_args] : rows) {
    EXPECT_EQ(DBArgs(values), args);
    EXPECT_EQ(DBSetArgs(values), set_args);
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
  for (const char* part :
       {"query [SELECT TRUNC(SYSDATE,'MI') FROM DUAL] host= port=0 user= password= timeout=60\n",
        "query [SELECT SQ.NEXTVAL FROM DUAL] host= port=0 user= password= timeout=60\n",
        "assertion true Sabrel MSabrel GetNextInSequence []\n",
        "assertion false Sabrel MSabrel GetNextInSequence []\n"}) {
    EXPECT_THAT(conversation, ::testing::HasSubstr(part));
  }
}

}  // namespace
}  // namespace sabrel
