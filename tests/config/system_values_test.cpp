#include "sabrel/config/system_values.h"

#include <gmock/gmock.h>

#include <functional>
#include <initializer_list>

#include "sabrel/core/session.h"
#include "sabrel/sql/schema_cache.h"
#include "sabrel/sql/schema_probes.h"
#include "tests/support/outcome.h"
#include "tests/support/scripted_platform.h"

namespace sabrel {
namespace {

using namespace MSabrel;
using ::testing::HasSubstr;
using testing::OutcomeOf;
using testing::Refuse;
using testing::Rows;
using testing::ScriptedPlatform;

class SystemValues : public ::testing::Test {
 protected:
  ScriptedPlatform platform;
};

Rows Count(Variant count) { return {{"C"}, {{std::move(count)}}}; }

TEST_F(SystemValues, EveryAnswerIsRememberedUnderItsKey) {
  platform.Answer(Count(Variant(1)));
  EXPECT_TRUE(SystemValueExists("X", "it's", "h", 5, "u", "p", 9));
  EXPECT_THAT(platform.Conversation(),
              HasSubstr("query [SELECT COUNT(name) FROM ZR_SYSTEM_VALUES_V WHERE name = 'X' AND "
                        "value = 'it's'] host=h port=5 user=u password=p timeout=9\n"));
  EXPECT_TRUE(SystemValueExists("x", "IT'S", "H", 5)) << "keys ignore case";
  EXPECT_EQ(platform.Conversation(), "");
  for (const auto& [count, exists] : std::map<std::string, bool>{{"0", false}, {"2", true}}) {
    platform.Answer(Count(Variant(count)));
    for (int i = 0; i < 2; ++i) EXPECT_EQ(SystemValueExists("Y", count, "", 5000), exists) << count;
  }
  platform.Answer(Count(Variant(Null{})));
  EXPECT_FALSE(SystemValueExists("Y", "null"));
  platform.Answer(Refuse(942));
  EXPECT_FALSE(SystemValueExists("Z", "1"));
  static_cast<void>(platform.Conversation());
  EXPECT_FALSE(SystemValueExists("Z", "1"));
  EXPECT_EQ(platform.Conversation(), "") << "a failed question is not asked again";
}

// A box may run anything in the host: the same question, the end of the thread, the end of its
// strings.
TEST_F(SystemValues, AHostMayMeddleWhileItIsAsked) {
  const std::function<void(const std::string&)> questions[] = {
      [](const std::string& name) { return SystemValueExists(name, name); },
      [](const std::string& name) { return DoesTableExist(name); },
      [](const std::string& name) { return DoesFieldExist(name, name); },
      [](const std::string& name) { return DoesDbObjectExist(name); },
      [](const std::string& name) { return DBColumnLength(name, name); },
      [](const std::string& name) { return ProductProperty(name); },
      [](const std::string&) { return SystemFirstDayOfWeek(); },
      [](const std::string&) { return FailureIn([] { static_cast<void>(MachineId()); }); }};
  for (const auto& ask : questions) {
    for (const bool again : {true, false}) {
      auto name = std::make_unique<std::string>(40, 'N');
      bool meddled = false;
      platform.on_box = [&] {
        if (std::exchange(meddled, true)) return;
        platform.Answer(Refuse(942));
        if (again) return ask(*name);
        name = std::make_unique<std::string>(40, 'X');
        UnloadThread();
      };
      platform.Answer(Refuse(942));
      EXPECT_FALSE(FailureIn([&] { ask(*name); })) << &ask - questions;
      platform.DropAnswers();
      UnloadThread();
    }
  }
  platform.on_box = [] { throw std::logic_error("disk"); };
  for (const auto& ask : std::initializer_list<std::function<void()>>{
           [] { static_cast<void>(CSystemValues().AddNew("N", "V", "", 0, "", "", 0)); },
           [] { static_cast<void>(CColumnLengthCache().ColumnLength("T", "C")); }}) {
    platform.Answer(Refuse(942));
    EXPECT_EQ(OutcomeOf([&] { return (ask(), true); }), "raises 51 disk");
  }
}

TEST_F(SystemValues, OnlyTheHostsOwnAnswerStandsForAQuestion) {
  const auto ask = [] { return SystemValueExists("X", "1"); };
  for (const bool fails : {false, true}) {
    platform.on_box = [&] {
      platform.Answer(Count(Variant(1)));
      static_cast<void>(ask());
      platform.FailAtCall(fails ? 1 : 0);  // the log line after the box
    };
    platform.Answer(Refuse(942));
    EXPECT_EQ(OutcomeOf(ask), fails ? "raises 1234 injected" : "true");
    UnloadThread();
  }
}

TEST_F(SystemValues, ACollectionFindsAndCopiesItsEntries) {
  CSystemValues values;
  values.AddNew("X", "1", "h", 0, "u", "p", 3);
  values.AddNew("X", "1", "", 7, "u", "p", 3);
  values.AddNew("x", "2");
  EXPECT_EQ(values.Item("X.1:H:0")->TimeOut(), 3);
  EXPECT_EQ(values.Values(Variant("X"))->Count(), 2) << "names exactly";
  EXPECT_EQ(values.Values(Variant("X"), 0, "h")->Item(1)->Key(), "X.1:h:0");
  EXPECT_EQ(values.Values(Variant(Null{}))->Count(), 0);
  values.Values(Variant("x"))->Item(1)->Exists(true);
  EXPECT_FALSE(values.Item("x.2")->Exists()) << "copies are independent";
  EXPECT_EQ(FailureIn([&] { values.AddNew("X", "1"); }).value().Number(), 457);
}

TEST_F(SystemValues, TheWeekStartsOnADayFromOneToSeven) {
  const struct {
    const char* name;
    Variant stored;
    std::string day;
  } rows[] = {
      {"first", Variant(0), "'1'"},
      {"last", Variant("6"), "'7'"},
      {"behind", Variant(7), "'1'"},
      {"half to even", Variant(5.5), "'6'"},
      {"half behind", Variant(6.5), "'1'"},
      {"not loaded", Variant(-1), "'0'"},
      {"null", Variant(Null{}), "raises 94 Invalid use of null"},
      {"too large", Variant(32767), "raises 6 Overflow"},
  };
  const std::string query =
      "query [select VALUE  from ZR_SYSTEM_VARIABLE a, ZR_SYSTEM_VALUE b  Where a.Id = "
      "b.VARIABLE_ID and a.NAME = 'StartOfWeek'] host= port=0 user= password= timeout=60\n";
  for (const auto& row : rows) {
    UnloadThread();
    platform.Answer(Rows{{"VALUE"}, {{row.stored}}});
    EXPECT_EQ(OutcomeOf(SystemFirstDayOfWeek), row.day) << row.name;
    EXPECT_EQ(platform.OpenCursors(), 0) << row.name;
    EXPECT_THAT(platform.Conversation(), HasSubstr(query));
    if (row.day == "'0'" || row.day[0] != '\'') continue;
    EXPECT_EQ(OutcomeOf(SystemFirstDayOfWeek), row.day) << row.name;
    EXPECT_EQ(platform.Conversation(), "") << "known";
  }
  platform.Answer(Refuse(942));
  UnloadThread();
  EXPECT_EQ(SystemFirstDayOfWeek(), "0");
}

TEST_F(SystemValues, HighAttemptsAreReadAnewEachTime) {
  platform.trace = true;
  const auto setting = [&](const Variant& stored) {
    platform.Answer(Rows{{"Name", "Value"}, {{Variant("EnableNHighAttempts"), stored}}});
    LoadOtherInfo();
    return NHighAttemptsEnabled();
  };
  const std::string told =
      "trace switch\ntrace GetNHighAttemptsValue succeeded\r\nQuery: SELECT Name, Value FROM "
      "ZR_System_Values_V  WHERE Name = 'EnableNHighAttempts'\n";
  EXPECT_EQ(setting(Variant("True")), "True");
  EXPECT_THAT(platform.Conversation(), ::testing::EndsWith(told));
  EXPECT_EQ(setting(Variant(Null{})), "False");
  EXPECT_THAT(platform.Conversation(), ::testing::Not(HasSubstr("succeeded")));
  static_cast<void>(setting(Variant("True")));
  platform.Answer(Refuse(942));
  GetNHighAttemptsValue();
  EXPECT_EQ(NHighAttemptsEnabled(), "False");
  EXPECT_THAT(platform.Conversation(), ::testing::EndsWith(told)) << "although nothing came back";
}

TEST_F(SystemValues, EmailNeedsATableAndAMailClient) {
  const std::string client = "\\HKEY_LOCAL_MACHINE\\SOFTWARE\\Clients\\Mail\\";
  for (const std::string mailer : {"Mailer", ""}) {
    for (const int tables : {1, 0}) {
      UnloadThread();
      platform.registry = {{client, mailer}};
      platform.Answer(Count(Variant(tables)));
      EXPECT_EQ(EmailEnabled(), !mailer.empty() && tables == 1) << mailer << tables;
      platform.registry = {{client, "Mailer"}};
      EXPECT_EQ(EmailEnabled(), !mailer.empty() && tables == 1) << "the client is sought once";
    }
  }
  UnloadThread();
  platform.FailAtCall(1);
  EXPECT_FALSE(EmailEnabled());
  platform.FailAtCall(0);
  ResetExistingTables();
  platform.Answer(Count(Variant(1)));
  EXPECT_FALSE(EmailEnabled()) << "a failing registry is not asked again";
  UnloadThread();
  platform.trace = true;
  platform.on_trace = UnloadThread;
  platform.Answer(Count(Variant(1)));
  EXPECT_TRUE(EmailEnabled()) << "the probe ends what is known";
}

}  // namespace
}  // namespace sabrel
