// Every operation that is one call of a packaged routine: what it sends, traces and answers.
#include <gmock/gmock.h>

#include <functional>

#include "sabrel/core/gsabrel.h"
#include "tests/support/outcome.h"
#include "tests/support/scripted_platform.h"

namespace sabrel {
namespace {

using testing::ConnectionRefusal;
using testing::OutcomeOf;
using testing::Refuse;
using testing::Rows;
using testing::ScriptedPlatform;

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
  std::string sent;      // of the call: name, address when not the session's, parameters
  std::string traced;    // caption | call text
  std::string returned;  // the "Function returned: " line's number, "" for no line
  bool returned_needs_switch = false;
  std::string on_database_error = "raises database 20001";
  std::string on_connection_error = "raises connection";
  std::string on_null;
};

std::vector<Operation> Operations() {
  static std::int32_t code;
  static std::string message;
  return {
      {.name = "add",
       .run = [] { return OutcomeOf([] { return GSabrel::EA_Add_Common_Entity(kName, 3); }); },
       .answer = Outputs(Variant(1), {Variant(70000)}),
       .result = "70000",
       .sent = "EA_Client.Add_Common_Entity] (,integer,) (O'Hara Zürich,string,) (3,integer,)",
       .traced = "Add Common Entity Ready.|EA_Client.Add_Common_Entity ( O'Hara Zürich,3)",
       .returned = "70000",
       .on_null = "0"},
      {.name = "reparent",
       .run = [] { return OutcomeOf([] { return GSabrel::EA_Reparent_Common_Entity(-7, 3); }); },
       .answer = Outputs(Variant(5)),
       .result = "true",
       .sent = "EA_Client.Reparent_Common_Entity] (-7,integer,) (3,integer,)",
       .traced = "Reparent Common Entity Ready.|EA_Client.Reparent_Common_Entity ( -7,3)",
       .returned = "0",
       .on_null = "true"},
      {.name = "remove",
       .run = [] { return OutcomeOf([] { return GSabrel::EA_Remove_Common_Entity(7); }); },
       .answer = {},
       .result = "true",
       .sent = "EA_Client.Remove_Common_Entity] (7,integer,)",
       .traced = "Delete Common Entity Ready.|EA_Client.remove_common_entity ( 7)",
       .returned = "",
       .on_database_error = "false",
       .on_connection_error = "false",
       .on_null = "true"},
      {.name = "equivalent",
       .run =
           [] {
             return OutcomeOf([] { return GSabrel::EA_Add_EntityEQV(1, kName, Variant(7.5)); });
           },
       .answer = {},
       .result = "true",
       .sent = "EA_DD.EA_Add_Entity_EQV] (1,integer,) (O'Hara Zürich,string,) (7.5,string,)",
       .traced = "Add Entity Equivalence.|EA_DD.EA_Add_Entity_EQV( 1, O'Hara Zürich, 7.5)",
       .returned = "",
       .on_null = "true"},
      {.name = "ready",
       .run =
           [] {
             return OutcomeOf([] { return GSabrel::IsEADocumentReady(1, 4, Variant(kTime)); });
           },
       .answer = Outputs(Variant(1), {Variant(32767)}),
       .result = "32767",
       .sent = "EA_EXP.Export_Required] (,integer,) (1,integer,) (0,integer,) (4,integer,) "
               "(2024-03-09 17.05.00,string,)",
       .traced = "Is EA Document(s) Ready.|EA_EXP.Export_Required ( 1,0,4,09/03/2024 17.05.00)",
       .returned = "32767",
       .on_null = "0"},
      {.name = "ready on a server, the time as text",
       .run =
           [] {
             return OutcomeOf(
                 [] { return GSabrel::IsEADocumentReady(1, 4, Variant("2024-03-09"), 2); });
           },
       .answer = Outputs({}, {Variant(-1)}),
       .result = "-1",
       .sent = "EA_EXP.Export_Required] (,integer,) (1,integer,) (2,integer,) (4,integer,) "
               "(2024-03-09 00.00.00,string,)",
       .traced = "Is EA Document(s) Ready.|EA_EXP.Export_Required ( 1,2,4,2024-03-09)",
       .returned = "-1",
       .on_null = "0"},
      {.name = "clear",
       .run = [] { return OutcomeOf([] { return GSabrel::ClearEATempRecords(4, kTime); }); },
       .answer = {},
       .result = "''",
       .sent = "EA_EXP.Clear_EXP_Required] (4,integer,) (2024-03-09 17.05.00,string,)",
       .traced = "Checking expression.|EA_EXP.Clear_EXP_Required( 4,'2024-03-09 17.05.00' )",
       .returned = "",
       .on_database_error = "'Error: 20001\r\nDescription: no (detail)\r\nSource: Oracle (server)'",
       .on_connection_error = "'The connection to the Data Server has been refused",
       .on_null = "''"},
      {.name = "scenario copy",
       .run = [] { return OutcomeOf([] { return GSabrel::CopyScenarioQueryText(1, 2); }); },
       .answer = Outputs(Variant(9), {std::nullopt, Variant("70001")}),
       .result = "70001",
       .sent = "ZR_Query.CreateFQuery] (1,integer,) (2,integer,)",
       .traced = "Copy Scenario Query Text.|ZR_Query.CreateFQuery ( 1,2)",
       .returned = "70001",
       .on_null = "0"},
      {.name = "original copy",
       .run = [] { return OutcomeOf([] { return GSabrel::CopyOriginalQueryText(1, 2); }); },
       .answer = {},
       .result = "-1",
       .sent = "ZR_Query.CopyNFQuery] (1,integer,) (2,integer,)",
       .traced = "Copy Scenario's Original Query Text.|ZR_Query.CopyNFQuery( 1, 2)",
       .returned = "",
       .on_null = "-1"},
      {.name = "mail",
       .run =
           [] {
             code = 7;
             message = "stale";
             const std::string ready =
                 OutcomeOf([] { return GSabrel::Is_SMTP_Ready(code, message); });
             return ready + " " + std::to_string(code) + " " + message;
           },
       .answer = Outputs(Variant(-1), {Variant(3), Variant(" no host ")}),
       .result = "false 3 no host",
       .sent = "check_smtp_val] (,integer,) (,string,)",
       .traced = "Check SMTP .|check_smtp_val ( )",
       .returned = "-1",
       .returned_needs_switch = true,
       .on_database_error = "raises database 20001 7 stale",
       .on_connection_error = "raises connection 7 stale",
       .on_null = "true 0 "},
      {.name = "user",
       .run =
           [] {
             return OutcomeOf(
                 [] { return GSabrel::FindOrCreateUser("h", 15, "ana", "it's", 9, "TRUE"); });
           },
       .answer = Outputs(Variant(" TRUE ")),
       .result = "' TRUE '",
       .sent = "EA_FindOrCreateUser] host=h port=15 user=system password= timeout=9 (ana,string,) "
               "(it's,string,) (TRUE,string,)",
       .traced = "Checking expression.|EA_FindOrCreateUser( 'h',15,'ana','it''s',9 )",
       .returned = "",
       .on_database_error = "'Connection Failed'",
       .on_connection_error = "''",
       .on_null = "''"},
  };
}

class PackageCalls : public ::testing::Test {
 protected:
  // What was sent and told, without what leads to it.
  std::string Told() {
    const std::string session = " host= port=0 user= password= timeout=0";
    std::string told;
    std::string rest = platform.Conversation();
    for (std::size_t at = 0; at < rest.size();) {
      std::size_t end = rest.find('\n', at);
      while (rest.substr(end - 1, 2) == "\r\n") end = rest.find('\n', end + 1);
      std::string line = rest.substr(at, end - at);
      if (const auto found = line.find(session); found != std::string::npos) {
        line.erase(found, session.size());
      }
      if (!line.starts_with("make") && line != "trace switch") told += line + "\n";
      at = end + 1;
    }
    return told;
  }
  PackageCalls() {
    platform.locale.time_separator = ".";
    platform.locale.date_order = DateOrder::kDayMonthYear;
    platform.locale.date_separator = "/";
  }
  ScriptedPlatform platform;
};

TEST_F(PackageCalls, SendTheirParametersAndTraceInOrder) {
  for (const Operation& op : Operations()) {
    for (const bool trace : {true, false}) {
      platform.trace = trace;
      platform.Answer(op.answer);
      EXPECT_EQ(op.run(), op.result) << op.name;
      const auto bar = op.traced.find('|');
      std::string expected;
      if (trace) {
        expected += "trace " + op.traced.substr(0, bar) + "\r\nQuery: BEGIN " +
                    op.traced.substr(bar + 1) + " ; END;\n";
      }
      expected += "call [" + op.sent + "\n";
      if (!op.returned.empty() && (trace || !op.returned_needs_switch)) {
        expected += "trace Function returned: " + op.returned + "\n";
      }
      EXPECT_EQ(Told(), expected) << op.name << ", tracing " << trace;
    }
  }
}

TEST_F(PackageCalls, AnswerFailuresAndNullsEachInItsWay) {
  for (const Operation& op : Operations()) {
    static_cast<void>(Told());
    platform.Answer(Refuse(20001, "no"));
    EXPECT_EQ(op.run(), op.on_database_error) << op.name;
    platform.Answer(ConnectionRefusal(30));
    EXPECT_THAT(op.run(), ::testing::StartsWith(op.on_connection_error)) << op.name;
    EXPECT_THAT(Told(), Not(::testing::HasSubstr("Function returned"))) << op.name;
    for (const Variant& none : {Variant(Null{}), Variant(" (NaN) ")}) {
      const bool text = !none.IsNull() && (op.answer.result.kind() == VariantKind::kString);
      platform.Answer(Outputs(text ? Variant(Null{}) : none, {none, none, none}));
      const std::string answer = op.run();
      EXPECT_EQ(answer.substr(0, op.on_null.size()), op.on_null) << op.name;
    }
    // A wrong kind of answer stands for a failure of the host's own kind.
    platform.Answer(Rows{});
    EXPECT_EQ(op.run().starts_with("raises 51"), op.on_connection_error.starts_with("raises"))
        << op.name;
    if (std::string_view(op.name) != "user") {
      EXPECT_EQ(GSabrel::SabrelErrorObject()->Number(), 0) << op.name << " keeps its failures";
    }
    platform.on_box = [] { throw std::logic_error("no desktop"); };
    platform.Answer(Refuse(2292, "no"));
    EXPECT_EQ(op.run().starts_with("raises 51"), std::string_view(op.name) == "user") << op.name;
    platform.on_box = nullptr;
    UnloadThread();
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
      const bool failure = outcome.starts_with("raises 1234 injected") ||
                           (answers && (outcome == "false" || outcome == "''" ||
                                        outcome == "'An unexpected error occurred'"));
      // The empty text of the clearing operation is its success.
      EXPECT_TRUE(failure && !(outcome == "''" && op.result == "''"))
          << outcome << " of " << op.name << " at call " << n;
      ASSERT_LT(n, 100) << op.name;
      platform.DropAnswers();
    }
  }
}

TEST_F(PackageCalls, ResultsOutsideTheirRangeOverflow) {
  const std::string overflow = "raises 6 Overflow";
  platform.Answer(Outputs({}, {Variant(32768)}));
  EXPECT_EQ(OutcomeOf([] { return GSabrel::IsEADocumentReady(1, 4, Variant(kTime)); }), overflow);
  EXPECT_THAT(Told(), Not(::testing::HasSubstr("returned"))) << "narrowed before it is told";
  platform.Answer(Outputs({}, {Variant(2147483648.0)}));
  EXPECT_EQ(OutcomeOf([] { return GSabrel::EA_Add_Common_Entity("", 0); }), overflow);
  platform.Answer(Outputs(Variant(32768)));
  std::int32_t code = 0;
  std::string message;
  EXPECT_EQ(OutcomeOf([&] { return GSabrel::Is_SMTP_Ready(code, message); }), overflow);
  static_cast<void>(Told());
  const Variant null{Null{}};
  EXPECT_EQ(OutcomeOf([&] { return GSabrel::EA_Add_EntityEQV(1, "x", null); }),
            "raises 94 Invalid use of null");
  EXPECT_EQ(OutcomeOf([&] { return GSabrel::IsEADocumentReady(1, 4, null); }),
            "raises 94 Invalid use of null");
  EXPECT_EQ(Told(), "") << "nothing was sent";
}

TEST_F(PackageCalls, ARefusedRemovalIsToldByItsKind) {
  const std::pair<testing::Refusal, std::string> rows[] = {
      {Refuse(2292),
       "box 16 [EA_Remove_Common_Entity] This Enitity is currently being used. \r\nPlease delete "
       "or "
       "modify the referencing object and try deleting again.\n"},
      {Refuse(2291), ""},
      {Refuse(1), ""},
      {Refuse(60), ""},
      {ConnectionRefusal(30),
       "box 16 [EA_Remove_Common_Entity] Unable to delete Entity.\r\nno server\n"},
  };
  for (const auto& [refusal, box] : rows) {
    platform.Answer(refusal);
    EXPECT_FALSE(GSabrel::EA_Remove_Common_Entity(7));
    EXPECT_EQ(Told(), "call [EA_Client.Remove_Common_Entity] (7,integer,)\n" + box);
    EXPECT_EQ(GSabrel::SabrelErrorObject()->Number(), 0) << "the shared object is not touched";
  }
}

TEST_F(PackageCalls, AnotherServerIsAskedForWhatTheTraceShowed) {
  platform.trace = true;
  std::string host = "first";
  std::string user = "ana";
  platform.on_trace = [&] {
    host = "other";
    user = "eve";
  };
  static_cast<void>(GSabrel::FindOrCreateUser(host, 1, user, "p", 5, "FALSE"));
  EXPECT_THAT(Told(), ::testing::HasSubstr("host=first port=1 user=system password= timeout=5 "
                                           "(ana,string,)"));
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
      {ConnectionRefusal(23), "''"},
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
