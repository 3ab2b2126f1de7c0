// Every operation that is one call of a packaged routine: what it sends, traces and answers.
#include <gmock/gmock.h>

#include <functional>

#include "sabrel/core/gsabrel.h"
#include "sabrel/platform/utf8.h"
#include "tests/support/outcome.h"
#include "tests/support/scripted_platform.h"

namespace sabrel {
namespace {

using testing::ConnectionRefusal;
using testing::OutcomeOf;
using testing::Refuse;
using testing::ScriptedPlatform;

template <class Work>
std::function<std::string()> Do(Work work) {
  return [work] { return OutcomeOf(work); };
}

RoutineOutcome Outputs(Variant result, std::vector<std::optional<Variant>> outputs = {}) {
  return {std::move(result), std::move(outputs)};
}

const Date kTime = Date::FromCivil({2024, 3, 9, 17, 5, 0});
// A name with a quote and letters beyond ASCII goes out as it is.
const std::string kName = "O'Hara Zürich";

struct Operation {
  const char* name;
  std::function<std::string()> run;
  RoutineOutcome answer;
  std::string result;
  std::string sent;    // of the call: name, address when not the session's, parameters
  std::string traced;  // caption | call text
  std::string on_null;
  std::string returned = {};  // the "Function returned: " line's number, "" for no line
  std::string on_database_error = "raises database 20001";
  std::string on_connection_error = "raises connection";
  bool returned_needs_switch = false;
};

std::vector<Operation> Operations() {
  const auto mail = [] {
    std::int32_t code = 7;
    std::string message = "stale";
    const std::string ready = OutcomeOf([&] { return GSabrel::Is_SMTP_Ready(code, message); });
    return ready + " " + std::to_string(code) + " " + message;
  };
  return {
      {"add", Do([] { return GSabrel::EA_Add_Common_Entity(kName, 3); }),
       Outputs(Variant(1), {Variant(70000)}), "70000",
       "EA_Client.Add_Common_Entity] (,integer,) (O'Hara Zürich,string,) (3,integer,)",
       "Add Common Entity Ready.|EA_Client.Add_Common_Entity ( O'Hara Zürich,3)", "0", "70000"},
      {"reparent", Do([] { return GSabrel::EA_Reparent_Common_Entity(-7, 3); }),
       Outputs(Variant(5)), "true", "EA_Client.Reparent_Common_Entity] (-7,integer,) (3,integer,)",
       "Reparent Common Entity Ready.|EA_Client.Reparent_Common_Entity ( -7,3)", "true", "0"},
      {"remove", Do([] { return GSabrel::EA_Remove_Common_Entity(7); }), Outputs(Variant()), "true",
       "EA_Client.Remove_Common_Entity] (7,integer,)",
       "Delete Common Entity Ready.|EA_Client.remove_common_entity ( 7)", "true", "", "false",
       "false"},
      {"equivalent", Do([] { return GSabrel::EA_Add_EntityEQV(1, kName, Variant(7.5)); }),
       Outputs(Variant()), "true",
       "EA_DD.EA_Add_Entity_EQV] (1,integer,) (O'Hara Zürich,string,) (7.5,string,)",
       "Add Entity Equivalence.|EA_DD.EA_Add_Entity_EQV( 1, O'Hara Zürich, 7.5)", "true"},
      {"ready", Do([] { return GSabrel::IsEADocumentReady(1, 4, Variant(kTime), 2); }),
       Outputs(Variant(1), {Variant(32767)}), "32767",
       "EA_EXP.Export_Required] (,integer,) (1,integer,) (2,integer,) (4,integer,) "
       "(2024-03-09 17.05.00,string,)",
       "Is EA Document(s) Ready.|EA_EXP.Export_Required ( 1,2,4,09/03/2024 17.05.00)", "0",
       "32767"},
      {"clear", Do([] { return GSabrel::ClearEATempRecords(4, kTime); }), Outputs(Variant()), "''",
       "EA_EXP.Clear_EXP_Required] (4,integer,) (2024-03-09 17.05.00,string,)",
       "Checking expression.|EA_EXP.Clear_EXP_Required( 4,'2024-03-09 17.05.00' )", "''", "",
       "'Error: 20001\r\nDescription: no (detail)\r\nSource: Oracle (server)'",
       "'The connection to the Data Server has been refused"},
      {"scenario copy", Do([] { return GSabrel::CopyScenarioQueryText(1, 2); }),
       Outputs(Variant(9), {std::nullopt, Variant("70001")}), "70001",
       "ZR_Query.CreateFQuery] (1,integer,) (2,integer,)",
       "Copy Scenario Query Text.|ZR_Query.CreateFQuery ( 1,2)", "0", "70001"},
      {"original copy", Do([] { return GSabrel::CopyOriginalQueryText(1, 2); }), Outputs(Variant()),
       "-1", "ZR_Query.CopyNFQuery] (1,integer,) (2,integer,)",
       "Copy Scenario's Original Query Text.|ZR_Query.CopyNFQuery( 1, 2)", "-1"},
      {"mail", mail, Outputs(Variant(-1), {Variant(3), Variant(" no host ")}), "false 3 no host",
       "check_smtp_val] (,integer,) (,string,)", "Check SMTP .|check_smtp_val ( )", "true 0 ", "-1",
       "raises database 20001 7 stale", "raises connection 7 stale", true},
      {"user", Do([] { return GSabrel::FindOrCreateUser("h", 15, "ana", "it's", 9, "TRUE"); }),
       Outputs(Variant(" TRUE ")), "' TRUE '",
       "EA_FindOrCreateUser] host=h port=15 user=system password= timeout=9 (ana,string,) "
       "(it's,string,) (TRUE,string,)",
       "Checking expression.|EA_FindOrCreateUser( 'h',15,'ana','it''s',9 )", "''", "",
       "'Connection Failed'", "''"}};
}

class PackageCalls : public ::testing::Test {
 protected:
  PackageCalls() { platform.locale = {".", ",", "/", ".", DateOrder::kDayMonthYear}; }
  // What was sent and told, without what leads to it.
  std::string Told() {
    std::string told = platform.Conversation();
    for (const char* part :
         {"make procedure call\n", "trace switch\n", " host= port=0 user= password= timeout=0"}) {
      told = ReplaceAll(told, part, "");
    }
    return told;
  }
  ScriptedPlatform platform;
};

TEST_F(PackageCalls, SendTraceAndAnswerEachInItsWay) {
  for (const Operation& op : Operations()) {
    for (const bool trace : {true, false}) {
      platform.trace = trace;
      platform.Answer(op.answer);
      EXPECT_EQ(op.run(), op.result) << op.name;
      const std::string traced =
          "trace " + ReplaceAll(op.traced, "|", "\r\nQuery: BEGIN ") + " ; END;\n";
      const bool returns = !op.returned.empty() && (trace || !op.returned_needs_switch);
      EXPECT_EQ(Told(), (trace ? traced : "") + "call [" + op.sent + "\n" +
                            (returns ? "trace Function returned: " + op.returned + "\n" : ""))
          << op.name << ", tracing " << trace;
    }
    platform.Answer(Refuse(20001, "no"));
    EXPECT_EQ(op.run(), op.on_database_error) << op.name;
    platform.Answer(ConnectionRefusal(30));
    EXPECT_THAT(op.run(), ::testing::StartsWith(op.on_connection_error)) << op.name;
    EXPECT_THAT(Told(), Not(::testing::HasSubstr("Function returned"))) << op.name;
    const Variant none{Null{}};
    platform.Answer(Outputs(none, {none, none, none}));
    EXPECT_EQ(op.run(), op.on_null) << op.name;
    static_cast<void>(Told());
  }
}

// A fault at the n-th call of the platform, for every n: it is raised or answered as a failure of
// the same kind, and never looks like success.
TEST_F(PackageCalls, NeverTakeAFaultOnTheWayForSuccess) {
  platform.trace = true;
  for (const Operation& op : Operations()) {
    const bool answers = !op.on_connection_error.starts_with("raises");
    for (int n = 1;; ++n) {
      platform.FailAtCall(n);
      platform.Answer(op.answer);
      const std::string outcome = op.run();
      const bool met = platform.FaultMet();
      platform.FailAtCall(0);
      UnloadThread();
      if (!met) break;
      const bool raised = outcome.starts_with("raises 1234 injected");
      const bool told =
          outcome == "false" || outcome == "''" || outcome == "'An unexpected error occurred'";
      EXPECT_TRUE(raised || (answers && told && outcome != op.result))
          << outcome << " of " << op.name << " at call " << n;
      ASSERT_LT(n, 100) << op.name;
      platform.DropAnswers();
    }
  }
}

TEST_F(PackageCalls, ResultsOutsideTheirRangeOverflow) {
  const auto ready = [](const Variant& time) {
    return OutcomeOf([&] { return GSabrel::IsEADocumentReady(1, 4, time); });
  };
  platform.Answer(Outputs({}, {Variant(32768)}));
  EXPECT_EQ(ready(Variant(kTime)), "raises 6 Overflow");
  EXPECT_THAT(Told(), Not(::testing::HasSubstr("returned"))) << "narrowed before it is told";
  EXPECT_EQ(ready(Variant(Null{})), "raises 94 Invalid use of null");
  EXPECT_EQ(OutcomeOf([] { return GSabrel::EA_Add_EntityEQV(1, "x", Variant(Null{})); }),
            "raises 94 Invalid use of null");
  EXPECT_EQ(Told(), "") << "nothing was sent";
}

TEST_F(PackageCalls, ARefusedRemovalIsToldByItsKind) {
  const std::string caption = "box 16 [EA_Remove_Common_Entity] ";
  const std::pair<testing::Refusal, std::string> rows[] = {
      {Refuse(2292), caption + "This Enitity is currently being used. \r\nPlease delete or modify "
                               "the referencing object and try deleting again.\n"},
      {Refuse(2291), ""},
      {ConnectionRefusal(30), caption + "Unable to delete Entity.\r\nno server\n"}};
  for (const auto& [refusal, box] : rows) {
    platform.Answer(refusal);
    EXPECT_FALSE(GSabrel::EA_Remove_Common_Entity(7));
    EXPECT_EQ(Told(), "call [EA_Client.Remove_Common_Entity] (7,integer,)\n" + box);
    EXPECT_EQ(GSabrel::SabrelErrorObject()->Number(), 0) << "the shared object is not touched";
  }
  platform.on_box = [] { throw std::logic_error("no desktop"); };
  platform.Answer(Refuse(2292));
  EXPECT_FALSE(GSabrel::EA_Remove_Common_Entity(7)) << "what cannot be shown is dropped";
}

TEST_F(PackageCalls, UsersWhoMayNotWorkThereAreToldApart) {
  const std::pair<testing::Refusal, std::string> rows[] = {
      {Refuse(20011, "ORA-20011: no"), "raises code 8 User Not an Enterprise Remote User."},
      {Refuse(20001, "120012x"), "raises code 9 User Not a Data Admin User."},
      {Refuse(20001, "20012 and 20011"), "raises code 8 User Not an Enterprise Remote User."},
      {Refuse(20011, "no"),
       "'Connection Failed'box 48 [FindOrCreateUser] Connection failed.\r\nno\n"},
      {testing::Refusal{DatabaseError{20001, "s", "o", "no", "see 20011"}, 0},
       "raises code 8 User Not an Enterprise Remote User."},
  };
  for (const auto& [refusal, outcome] : rows) {
    platform.Answer(refusal);
    std::string told =
        OutcomeOf([] { return GSabrel::FindOrCreateUser("h", 1, "u", "p", 5, "FALSE"); });
    const std::string conversation = Told();
    told += conversation.substr(conversation.find('\n') + 1);
    EXPECT_EQ(told, outcome);
    EXPECT_NE(GSabrel::SabrelErrorObject()->Number(), 0) << "the shared object holds the failure";
  }
}

}  // namespace
}  // namespace sabrel
