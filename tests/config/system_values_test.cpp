#include "sabrel/config/system_values.h"

#include <gmock/gmock.h>

#include <functional>

#include "sabrel/core/session.h"
#include "sabrel/sql/schema_probes.h"
#include "tests/support/scripted_platform.h"

namespace sabrel {
namespace {

using namespace MSabrel;
using ::testing::HasSubstr;
using testing::Refuse;
using testing::Rows;
using testing::ScriptedPlatform;

class SystemValues : public ::testing::Test {
 protected:
  template <class Action>
  static std::int32_t NumberOf(Action action) {
    try {
      static_cast<void>(action());
    } catch (const RuntimeError& failure) {
      return failure.Number();
    }
    return 0;
  }
  ScriptedPlatform platform;
};

Rows Count(Variant count) { return {{"C"}, {{std::move(count)}}}; }

TEST_F(SystemValues, EveryAnswerIsRememberedUnderItsKey) {
  platform.Answer(Count(Variant(1)));
  EXPECT_TRUE(SystemValueExists("X", "it's", "h", 5, "u", "p", 9));
  EXPECT_EQ(
      platform.Conversation(),
      "make recordset\nquery [SELECT COUNT(name) FROM ZR_SYSTEM_VALUES_V WHERE name = 'X' AND "
      "value = 'it's'] host=h port=5 user=u password=p timeout=9\nfetch\nclose\ntrace switch\n");
  EXPECT_TRUE(SystemValueExists("x", "IT'S", "H", 5)) << "keys ignore case";
  EXPECT_EQ(platform.Conversation(), "");
  const std::pair<testing::Rows, bool> rows[] = {{Count(Variant(0)), false},
                                                 {Count(Variant(Null{})), false},
                                                 {{{"C"}, {}}, false},
                                                 {Count(Variant("2")), true}};
  int n = 0;
  for (const auto& [answer, exists] : rows) {
    platform.Answer(answer);
    const std::string value = std::to_string(++n);
    for (int i = 0; i < 2; ++i) EXPECT_EQ(SystemValueExists("Y", value, "", 5000), exists) << n;
  }
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
      [](const std::string& name) { static_cast<void>(SystemValueExists(name, name)); },
      [](const std::string& name) { static_cast<void>(DoesTableExist(name)); },
      [](const std::string& name) { static_cast<void>(DoesFieldExist(name, name)); },
      [](const std::string& name) { static_cast<void>(DoesDbObjectExist(name)); },
      [](const std::string& name) { static_cast<void>(DBColumnLength(name, name)); },
      [](const std::string& name) { static_cast<void>(ProductProperty(name)); },
      [](const std::string&) { static_cast<void>(SystemFirstDayOfWeek()); },
      [](const std::string&) { static_cast<void>(NumberOf([] { return MachineId(); })); },
  };
  int row = 0;
  for (const auto& ask : questions) {
    ++row;
    auto name = std::make_unique<std::string>(40, 'N');
    bool asked_again = false;
    platform.on_box = [&] {
      if (std::exchange(asked_again, true)) return;
      platform.Answer(Refuse(942));
      ask(*name);
    };
    platform.Answer(Refuse(942));
    EXPECT_EQ(NumberOf([&] { return ask(*name), 0; }), 0) << row;
    UnloadThread();
    platform.on_box = [&] {
      name = std::make_unique<std::string>(40, 'X');
      UnloadThread();
    };
    platform.Answer(Refuse(942));
    EXPECT_EQ(NumberOf([&] { return ask(*name), 0; }), 0) << row;
    platform.on_box = nullptr;
    UnloadThread();
  }
}

TEST_F(SystemValues, OnlyTheHostsOwnAnswerStandsForAQuestion) {
  const auto ask = [] { return SystemValueExists("X", "1"); };
  for (const std::int32_t failure : {0, 1234}) {
    bool exists = false;
    platform.on_box = [&] {
      platform.Answer(Count(Variant(1)));
      static_cast<void>(ask());
      platform.FailAtCall(failure == 0 ? 0 : 1, failure);  // the log line after the box
    };
    platform.Answer(Refuse(942));
    EXPECT_EQ(NumberOf([&] { return exists = ask(); }), failure);
    EXPECT_EQ(exists, failure == 0);
    UnloadThread();
  }
}

TEST_F(SystemValues, NothingIsAnsweredWithoutAPlatform) {
  UnloadThread();
  InstallPlatform({});
  const std::function<void()> operations[] = {
      GetNHighAttemptsValue, LoadOtherInfo, [] { static_cast<void>(EmailEnabled()); },
      [] { static_cast<void>(GetProcedureLength("P", "F")); }};
  for (const auto& operation : operations) {
    EXPECT_EQ(NumberOf([&] { return operation(), 0; }), 91) << &operation - operations;
  }
  EXPECT_EQ(NHighAttemptsEnabled(), "");
}

TEST_F(SystemValues, ACollectionFindsAndCopiesItsEntries) {
  CSystemValues values;
  for (const auto& [name, value, host, port] :
       std::vector<std::tuple<const char*, const char*, const char*, std::int32_t>>{
           {"X", "1", "h", 0}, {"X", "1", "", 7}, {"x", "2", "", 0}}) {
    platform.Answer(Count(Variant(1)));
    values.AddNew(name, value, host, port, "u", "p", 3);
  }
  EXPECT_EQ(values.Item("X.1:H:0")->TimeOut(), 3);
  EXPECT_EQ(values.Item(2)->Key(), "X.1");
  EXPECT_EQ(values.Item(4), nullptr);
  EXPECT_EQ(values.Item("nothing"), nullptr);
  EXPECT_EQ(values.Values(Variant("X"))->Count(), 2) << "names exactly";
  EXPECT_EQ(values.Values(Variant("X"), 0, "h")->Item(1)->Key(), "X.1:h:0");
  EXPECT_EQ(values.Values(Variant("X"), 1, "h")->Count(), 0);
  EXPECT_EQ(values.Values(Variant(Null{}))->Count(), 0);
  const auto copies = values.Values(Variant("x"));
  copies->Item(1)->Exists(false);
  EXPECT_TRUE(values.Item("x.2")->Exists()) << "copies are independent";
  EXPECT_EQ(NumberOf([&] { return values.AddNew("X", "1"); }), 457) << "after its query";
  EXPECT_EQ(NumberOf([&] { return values.Remove("none"), 0; }), 5);
  EXPECT_EQ(NumberOf([&] { return values.Remove(9), 0; }), 9);
  values.AddValue(values.Item(1));
  EXPECT_EQ(values.Count(), 3);
}

TEST_F(SystemValues, TheWeekStartsOnADayFromOneToSeven) {
  const struct {
    const char* name;
    Rows answer;
    const char* day;
    std::int32_t failure;
  } rows[] = {
      {"first", Count(Variant(0)), "1", 0},
      {"last", Count(Variant(6)), "7", 0},
      {"behind", Count(Variant(7)), "1", 0},
      {"text", Count(Variant("5")), "6", 0},
      {"half to even", Count(Variant(5.5)), "6", 0},
      {"half behind", Count(Variant(6.5)), "1", 0},
      {"not loaded", Count(Variant(-1)), "0", 0},
      {"null", Count(Variant(Null{})), "", 94},
      {"too large", Count(Variant(32767)), "", 6},
      {"no number", Count(Variant("Sunday")), "", 13},
      {"no row", {{"C"}, {}}, "", 3021},
  };
  for (auto row : rows) {
    UnloadThread();
    row.answer.columns = {"VALUE"};
    platform.Answer(row.answer);
    std::string day;
    EXPECT_EQ(NumberOf([&] { return day = SystemFirstDayOfWeek(); }), row.failure) << row.name;
    EXPECT_EQ(day, row.day) << row.name;
    EXPECT_EQ(platform.OpenCursors(), 0);
    EXPECT_THAT(
        platform.Conversation(),
        HasSubstr(
            "query [select VALUE  from ZR_SYSTEM_VARIABLE a, ZR_SYSTEM_VALUE b  Where a.Id = "
            "b.VARIABLE_ID and a.NAME = 'StartOfWeek'] host= port=0 user= password= timeout=60\n"));
    if (day > "0") {
      EXPECT_EQ(SystemFirstDayOfWeek(), day);
      EXPECT_EQ(platform.Conversation(), "") << "known";
    }
  }
  platform.Answer(Refuse(942));
  UnloadThread();
  EXPECT_EQ(SystemFirstDayOfWeek(), "0");
}

TEST_F(SystemValues, HighAttemptsAreReadAnewEachTime) {
  platform.trace = true;
  EXPECT_EQ(NHighAttemptsEnabled(), "");
  platform.Answer(Rows{{"Name", "Value"}, {{Variant("EnableNHighAttempts"), Variant("True")}}});
  LoadOtherInfo();
  EXPECT_EQ(NHighAttemptsEnabled(), "True");
  const std::string sql =
      "SELECT Name, Value FROM ZR_System_Values_V  WHERE Name = 'EnableNHighAttempts'";
  EXPECT_THAT(platform.Conversation(),
              ::testing::EndsWith(
                  "trace switch\ntrace GetNHighAttemptsValue succeeded\r\nQuery: " + sql + "\n"));
  platform.Answer(Rows{{"Name", "Value"}, {{Variant("EnableNHighAttempts"), Variant(Null{})}}});
  GetNHighAttemptsValue();
  EXPECT_EQ(NHighAttemptsEnabled(), "False");
  EXPECT_THAT(platform.Conversation(), ::testing::Not(HasSubstr("succeeded")));
  platform.Answer(Refuse(942));
  GetNHighAttemptsValue();
  EXPECT_EQ(NHighAttemptsEnabled(), "False");
  EXPECT_THAT(platform.Conversation(), HasSubstr("succeeded")) << "told although nothing came back";
}

TEST_F(SystemValues, EmailNeedsATableAndAMailClient) {
  const std::string client = "\\HKEY_LOCAL_MACHINE\\SOFTWARE\\Clients\\Mail\\";
  const struct {
    const char* name;
    std::map<std::string, std::string> registry;
    std::int32_t tables;
    bool enabled;
  } rows[] = {{"both", {{client, "Mailer"}}, 1, true},
              {"no table", {{client, "Mailer"}}, 0, false},
              {"empty default", {{client, ""}}, 1, false},
              {"no key", {}, 1, false}};
  for (const auto& row : rows) {
    UnloadThread();
    platform.registry = row.registry;
    platform.Answer(Count(Variant(row.tables)));
    EXPECT_EQ(EmailEnabled(), row.enabled) << row.name;
    platform.registry = {{client, "Mailer"}};
    static_cast<void>(platform.Conversation());
    EXPECT_EQ(EmailEnabled(), row.enabled) << row.name << ": the client is looked for once";
    EXPECT_EQ(platform.Conversation(), "");
  }
  UnloadThread();
  platform.FailAtCall(1);
  EXPECT_FALSE(EmailEnabled()) << "a failing registry";
  platform.FailAtCall(0);
  ResetExistingTables();
  platform.Answer(Count(Variant(1)));
  EXPECT_FALSE(EmailEnabled());
  UnloadThread();
  platform.trace = true;
  platform.on_trace = UnloadThread;
  platform.Answer(Count(Variant(1)));
  EXPECT_TRUE(EmailEnabled()) << "the probe ends what is known";
}

}  // namespace
}  // namespace sabrel
