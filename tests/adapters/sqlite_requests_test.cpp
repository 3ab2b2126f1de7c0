// Requests beside each other: open rows, time-outs, cancelling, many processes, crashes.
#include <sqlite3.h>

#include <csignal>
#include <random>
#include <thread>
#include <tuple>

#include "adapters/sqlite/connection.h"
#include "tests/adapters/sqlite_site.h"

namespace sabrel::testing {
namespace {

using SqliteRequests = SiteTest;

constexpr const char* kEndless =
    "WITH R(N) AS (SELECT 1 FROM DUAL UNION ALL SELECT N+1 FROM R) SELECT COUNT(*) FROM R";
constexpr const char* kWide =
    "WITH R(N) AS (SELECT 1 FROM DUAL UNION ALL SELECT N+1 FROM R WHERE N < 100000)"
    " SELECT N, LPAD('x',100,'x') AS X FROM R";

TEST_F(SqliteRequests, OpenRowsStandInNobodysWayAndStayAsTheyWere) {
  ASSERT_EQ(Do("CREATE TABLE T (N NUMBER, X VARCHAR2(200))"), "");
  ASSERT_EQ(Do("INSERT INTO T " + std::string(kWide)), "") << link->LastDatabaseError().message;
  const auto rows = link->MakeRecordset();
  rows->Open("SELECT N, X FROM T", "", 0, "", "", 5);
  EXPECT_EQ(Do("DELETE FROM T WHERE N > 50000"), "");
  EXPECT_EQ(Do("CREATE TABLE U (N NUMBER)"), "");
  EXPECT_EQ(Do("DROP TABLE T"), "");
  link->ShutDown();
  EXPECT_EQ(Ask("SELECT COUNT(*) FROM U"), "0");
  EXPECT_EQ(rows->RecordCount(), 100000);
}

TEST_F(SqliteRequests, AFailureBehindTheFirstRowsReachesWhoeverMovesOn) {
  constexpr std::tuple<const char*, const char*, int, const char*> kRows[] = {
      {"0", "N < 6000", 3, "connection 24"},
      {"TO_NUMBER(DECODE(N, 6000, 'x', '1'))", "N > 0", 60, "ORA-1722"},
  };
  for (const auto& [column, condition, limit, outcome] : kRows) {
    const auto rows = link->MakeRecordset();
    rows->Open(std::string("WITH R(N) AS (SELECT 1 FROM DUAL UNION ALL SELECT N+1 FROM R)"
                           " SELECT N, LPAD('x',2000,'x'), ") +
                   column + " FROM R WHERE " + condition,
               "", 0, "", "", limit);
    std::int32_t last = 0;
    const auto read_on = [&] {
      for (; !rows->EndOfFile(); rows->MoveNext()) {
        last = rows->Fields().Item(0).Value().Get<std::int32_t>();
      }
      return std::string("no failure");
    };
    EXPECT_EQ(Tried(read_on), outcome);
    EXPECT_GT(last, 3000) << outcome;
    EXPECT_EQ(Ask("SELECT 1 FROM DUAL"), "1");
  }
}

TEST_F(SqliteRequests, ATimeOutStopsAStatementOrItsWaitForTheWriteLockAndTheSessionGoesOn) {
  ASSERT_EQ(Do("CREATE TABLE T (N NUMBER)"), "");
  EXPECT_EQ(Ask(kEndless, 1), "connection 24");
  EXPECT_EQ(Ask("WITH R(N) AS (SELECT 1 FROM DUAL UNION ALL SELECT N+1 FROM R WHERE N < 300000),"
                " S(M) AS (SELECT 1 FROM DUAL UNION ALL SELECT M+1 FROM S WHERE M < 16)"
                " SELECT REPLACE(LPAD('a',100,'a'),'a',LPAD('b',3000,'b')),"
                " (SELECT COUNT(*) FROM R WHERE N > M) FROM S",
                1),
            "connection 24")
      << "an opening's blocks share its limit";
  EXPECT_EQ(Do("INSERT INTO T " + std::string(kEndless), 1), "connection 24");
  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open(File().c_str(), &other), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
  EXPECT_EQ(Do("INSERT INTO T VALUES (1)", 1), "connection 24");
  EXPECT_EQ(Ask("SELECT COUNT(*) FROM T"), "0");
  sqlite3_close(other);
  EXPECT_EQ(Do("INSERT INTO T VALUES (1)"), "");
}

TEST_F(SqliteRequests, CancelStopsWhatRunsAndNothingElse) {
  ASSERT_EQ(Do("CREATE TABLE T (N NUMBER)"), "");
  link->Cancel();
  EXPECT_EQ(Ask("SELECT 1 FROM DUAL"), "1");
  for (const char* start : {"", "INSERT INTO T "}) {
    {
      const std::jthread canceller([&](const std::stop_token& stopped) {
        for (; !stopped.stop_requested(); std::this_thread::yield()) link->Cancel();
      });
      EXPECT_EQ(Do(start + std::string(kEndless)), "ORA-1013");
    }
    EXPECT_EQ(Ask("SELECT COUNT(*) FROM T"), "0");
  }
}

TEST_F(SqliteRequests, EightProcessesDrawOneSequenceWithoutFailureOrRepetition) {
  ASSERT_EQ(Do("CREATE SEQUENCE S"), "");
  link->ShutDown();
  std::vector<pid_t> children;
  for (int i = 0; i < 8; ++i) {
    children.push_back(InChild([&] {
      Asking asking(File());
      int refused = 0;
      for (int n = 0; n < 25; ++n) {
        const std::string drawn = asking.Ask("SELECT S.NEXTVAL FROM DUAL");
        refused += drawn.find_first_not_of("0123456789") == std::string::npos ? 0 : 1;
      }
      return refused;
    }));
  }
  for (const pid_t child : children) EXPECT_EQ(ResultOf(child), 0);
  EXPECT_EQ(Ask("SELECT S.NEXTVAL FROM DUAL"), "201") << "each draw was one of its own";
}

TEST_F(SqliteRequests, AKilledWriterLeavesASoundFileWithWholeTransactions) {
  ASSERT_EQ(Do("CREATE TABLE T (ID NUMBER PRIMARY KEY, X VARCHAR2(4000))"), "");
  ASSERT_EQ(Do("CREATE SEQUENCE S"), "");
  ASSERT_EQ(Do("CREATE PROCEDURE PAIR IS BEGIN INSERT INTO T VALUES (S.NEXTVAL, LPAD('x',3000));"
               " INSERT INTO T VALUES (S.NEXTVAL, LPAD('y',3000)); END;"),
            "");
  const auto pairs = [&] { return Ask("SELECT COUNT(*) / 2 FROM T"); };
  std::mt19937 random(7);
  for (int round = 0; round < 50; ++round) {
    const std::string before = pairs();
    link->ShutDown();
    const pid_t child = InChild([&] {
      Asking asking(File());
      while (asking.Do("BEGIN PAIR; END;").empty()) continue;
      return 1;
    });
    while (pairs() == before) std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 15000));
    ::kill(child, SIGKILL);
    EXPECT_EQ(ResultOf(child), -1);
    EXPECT_EQ(Ask("SELECT MOD(COUNT(*), 2) FROM T"), "0");
    sqlite::Connection file(File(), std::make_shared<sqlite::CancelSwitch>());
    sqlite::Statement check = file.Prepare("PRAGMA integrity_check");
    ASSERT_TRUE(check.Step());
    ASSERT_EQ(check.Column(0).text, "ok");
  }
}

}  // namespace
}  // namespace sabrel::testing
