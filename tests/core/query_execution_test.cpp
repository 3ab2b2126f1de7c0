#include "sabrel/core/query_execution.h"

#include <gmock/gmock.h>

#include "sabrel/core/error_object.h"
#include "tests/platform/failures.h"
#include "tests/support/scripted_platform.h"

namespace sabrel {
namespace {

using namespace MSabrel;
using ::testing::HasSubstr;
using testing::NumberOf;
using testing::Outcome;
using testing::Refuse;
using testing::Rows;
using testing::ScriptedPlatform;

struct QueryExecution : ::testing::Test {
  ScriptedPlatform platform;
};

// More rows than Open reads: such a recordset stays open until it is closed.
Rows ManyRows() {
  return {{"ID"}, std::vector<std::vector<Variant>>(2, {Variant(std::string(5'000'000, '7'))})};
}

constexpr auto kDefaults = " host= port=0 user= password= timeout=";

TEST_F(QueryExecution, AQueryIsOpenedTracedAndHandedOut) {
  platform.trace = true;
  platform.Answer(Rows{{"ID"}, {{Variant(7)}}});
  const auto rows = ExecuteQuery("SELECT 1", true, "h", 5, "u", "p", 9);
  ASSERT_TRUE(rows);
  EXPECT_EQ(platform.Conversation(),
            "make recordset\n"
            "query [SELECT 1] host=h port=5 user=u password=p timeout=9\n"
            "fetch\nclose\n"
            "trace switch\n"
            "trace ExecuteQuery returned 1 row(s).\r\nQuery: SELECT 1\n");
  EXPECT_EQ(rows->Fields().Item(0).Value(), Variant(7));
}

TEST_F(QueryExecution, AFailedQueryIsShownAndComesBackAsNothing) {
  ASSERT_TRUE(ExecuteQuery("S")) << "no rows are a failure only where data is required";
  const std::string sent = "make recordset\nquery [S]" + std::string(kDefaults) + "60\n";
  for (const bool refused : {true, false}) {
    if (refused) platform.Answer(Refuse(942, "no table"));
    static_cast<void>(platform.Conversation());
    EXPECT_EQ(ExecuteQuery("S", true), nullptr);
    EXPECT_EQ(
        platform.Conversation(),
        sent + (refused ? "" : "fetch\nclose\n") + "notify\nbox 16 [Norvasta] Error ExecuteQuery:" +
            (refused ? "Error: 942\r\nDescription: no table (detail)\r\nSource: Oracle (server)"
                     : "An unexpected error occurred") +
            "\nlog Query: S\n");
    EXPECT_EQ(SabrelErrorObject()->Description(),
              refused ? "no table" : "Query returned no records.");
  }
  EXPECT_EQ(CarriedCode(SabrelErrorObject()->Number()), sabNoDataError);
}

TEST_F(QueryExecution, RequestsShareOneChannelAndRaiseTheirFailures) {
  platform.trace = true;
  platform.Answer(Refuse(1, "dup"));
  const RuntimeError failure = testing::FailureIn([] { return ExecuteRequest("INSERT"), 0; });
  EXPECT_EQ(failure.Description() + std::to_string(CarriedCode(failure.Number())),
            "dup" + std::to_string(kDatabaseErrorCode));
  ExecuteRequest("DELETE");
  EXPECT_EQ(platform.Conversation(),
            std::string("make recordset\nexecute [INSERT]") + kDefaults + "0\ntrace switch\n" +
                "trace ExecuteRequest failed.\r\nError: 1\r\nDescription: dup (detail)\r\n"
                "Source: Oracle (server)\r\nQuery: INSERT\n" +
                "execute [DELETE]" + kDefaults + "0\ntrace switch\n" +
                "trace ExecuteRequest succeeded.\r\nQuery: DELETE\n");
}

TEST_F(QueryExecution, SingleValuesFallBackToTheirDefault) {
  // Rows, and their value as a number, a text, a serial.
  const std::tuple<const char*, std::vector<std::vector<Variant>>, const char*> rows[] = {
      {"no row", {}, "-9 none 5"},
      {"null", {{Variant(Null{})}}, "-9 none 5"},
      {"text", {{Variant("12")}, {Variant("13")}}, "12 12 !13"},
      {"date", {{Variant(Date(7.0))}}, "7 01/06/1900 7"},
  };
  for (const auto& [name, answer, values] : rows) {
    for (int i = 0; i < 3; ++i) platform.Answer(Rows{{"A"}, answer});
    const std::string number = Outcome([] { return ExecuteQueryReturningLong("Q", -9); });
    const std::string text = Outcome([] { return ExecuteQueryReturningString("Q", "none"); });
    const std::string serial = Outcome(
        [] { return static_cast<int>(ExecuteQueryReturningDate("Q", Date(5.0)).Serial()); });
    EXPECT_EQ(number + " " + text + " " + serial, values) << name;
    EXPECT_EQ(platform.OpenCursors(), 0) << name;
    EXPECT_THAT(platform.Conversation(), ::testing::Not(HasSubstr("box"))) << name;
  }
}

TEST_F(QueryExecution, AProcedureHasACommaBetweenAnyTwoArguments) {
  ExecuteProcedure("P", std::vector<Variant>{Variant(), Variant(7), Variant("O'Hara")});
  EXPECT_THAT(platform.Conversation(), HasSubstr("[BEGIN P( ,7,'O''Hara' ); END;] host= port=0 "));
}

TEST_F(QueryExecution, ARecordReadsAsAlignedLines) {
  const std::string name32(32, 'N');
  platform.Answer(Rows{{"ID", name32}, {{Variant(7), Variant(Null{})}}});
  EXPECT_EQ(GenerateRecordString(ExecuteQuery("Q")),
            "\r\n" + std::string(30, ' ') + "ID: '7'\r\n" + name32 + ": ''");
  platform.Answer(Rows{{std::string(33, 'N')}, {{Variant(7)}}});
  for (const std::int32_t number : {5, 3021}) {  // too long a name, no row
    EXPECT_EQ(NumberOf([&] { return GenerateRecordString(ExecuteQuery("Q")); }), number);
  }
}

TEST_F(QueryExecution, WhateverEndsAQueryClosesItsRecordset) {
  const auto closes = [&](auto action) {
    platform.Answer(ManyRows());
    action();
    EXPECT_EQ(platform.OpenCursors(), 0);
  };
  closes([] { EXPECT_THROW(static_cast<void>(ExecuteQueryReturningLong("Q")), RuntimeError); });
  closes([] { EXPECT_THROW(static_cast<void>(ExecuteQueryReturningDate("Q")), RuntimeError); });
  closes([] { EXPECT_EQ(ExecuteQueryReturningString("Q").size(), 5'000'000U); });
  platform.trace = true;
  closes([&] {
    platform.FailAtCall(4);  // the trace switch, with rows still to come
    EXPECT_EQ(ExecuteQuery("Q"), nullptr);
  });
}

// Every seam call of a query and of a request fails in turn: the query is told as failed and gives
// nothing, the request raises; nothing stays open and the error object names the fault.
TEST_F(QueryExecution, AFaultAtAnyCallIsToldOrRaised) {
  platform.trace = true;
  for (int n = 1; n <= 5; ++n) {  // make, query, fetch, switch, trace
    platform.Answer(Rows{{"ID"}, {{Variant(7)}}});
    platform.FailAtCall(n);
    EXPECT_EQ(ExecuteQuery("Q"), nullptr) << n;
    EXPECT_EQ(SabrelErrorObject()->Number(), 1234) << n;
    EXPECT_EQ(platform.OpenCursors(), 0) << n;
    platform.FailAtCall(0);
    platform.DropAnswers();
  }
  for (int n = 1; n <= 4; ++n) {  // make, execute, switch, trace
    UnloadThread();
    platform.FailAtCall(n);
    EXPECT_EQ(NumberOf([] { return ExecuteRequest("R"), 0; }), 1234) << n;
    EXPECT_TRUE(platform.Conversation().ends_with(
        "trace ExecuteRequest failed.\r\nAn unexpected error occurred\r\nQuery: R\n"))
        << n;
    platform.FailAtCall(0);
    ExecuteRequest("R2");  // makes the channel that a failed making left out
  }
  // Telling a failed query: code, last error, notify, ..., caption, box, log.
  for (int n = 3;; ++n) {
    platform.Answer(Refuse(942));
    platform.FailAtCall(n);
    const std::int32_t number = NumberOf([] { return ExecuteQuery("Q"); });
    EXPECT_EQ(number, platform.FaultMet() ? 1234 : 0) << n;
    if (number == 0) {
      EXPECT_GT(n, 8);
      break;
    }
  }
}

TEST_F(QueryExecution, AHostMayCallFromItsOwnHandlerAndMeddleInABox) {
  std::string sql = "SELECT FIRST";
  platform.Answer(Refuse(942));
  platform.on_box = [&] {
    sql.assign(100, 'X');
    UnloadThread();
  };
  try {
    throw RuntimeError(77, "host", "the host's own");
  } catch (...) {
    EXPECT_EQ(SabrelErrorObject()->Number(), 0) << "not this component's failure";
    EXPECT_EQ(ExecuteQuery(sql), nullptr);
    platform.Answer(Refuse(1, "dup"));
    EXPECT_EQ(testing::FailureIn([] { return ExecuteRequest("R"), 0; }).Description(), "dup");
  }
  EXPECT_THAT(platform.Conversation(), HasSubstr("log Query: SELECT FIRST\n"));
}

TEST_F(QueryExecution, ASecondFailureTakesThePlaceOfTheFirst) {
  platform.Answer(testing::ConnectionRefusal(30));
  static_cast<void>(ExecuteQuery("Q"));
  EXPECT_TRUE(CheckConnectionError());
  platform.Answer(Refuse(2292));
  EXPECT_THROW(ExecuteRequest("R"), RuntimeError);
  EXPECT_FALSE(CheckConnectionError());
  platform.FailAtCall(2);
  static_cast<void>(ExecuteQuery("Q"));
  const auto error = SabrelErrorObject();
  EXPECT_EQ(error->Number() + error->DBNumber(), 1234);
  EXPECT_EQ(error->DBDescription() + error->DBSource() + error->DBOriginator(), "server")
      << "only a database error writes the originator";
}

}  // namespace
}  // namespace sabrel
