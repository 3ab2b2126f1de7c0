// Requests beside each other: open rows, time-outs, cancelling, many processes, crashes.
#include <sqlite3.h>

#include <atomic>
#include <csignal>
#include <fstream>
#include <random>
#include <set>
#include <thread>

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
  rows->Open("SELECT N FROM T t WHERE X LIKE 'x%'", "", 0, "", "", 0);
  const auto wide = link->MakeRecordset();
  wide->Open("SELECT N, X FROM T", "", 0, "", "", 5);
  EXPECT_EQ(Do("DELETE FROM T WHERE N > 50000"), "");
  EXPECT_EQ(Do("CREATE TABLE U (N NUMBER)"), "");
  EXPECT_EQ(Do("DROP TABLE T"), "");
  link->ShutDown();
  EXPECT_EQ(Ask("SELECT COUNT(*) FROM U"), "0");
  EXPECT_EQ(wide->RecordCount(), 100000);
  EXPECT_EQ(rows->RecordCount(), 100000);
}

TEST_F(SqliteRequests, AFailureBehindTheFirstRowsReachesWhoeverMovesOn) {
  constexpr struct {
    const char* name;
    const char* last_column;
    const char* condition;
    const char* outcome;
  } kRows[] = {
      {"time-out", "0", "N < 60000", "connection 24"},
      {"refused", "TO_NUMBER(DECODE(N, 60000, 'x', '1'))", "N > 0", "ORA-1722"},
  };
  for (const auto& row : kRows) {
    const auto rows = link->MakeRecordset();
    rows->Open(
        "WITH R(N) AS (SELECT 1 FROM DUAL UNION ALL SELECT N+1 FROM R)"
        " SELECT N, LPAD('x',200,'x'), " +
            std::string(row.last_column) + " FROM R WHERE " + row.condition,
        "", 0, "", "", 2);
    std::int32_t last = 0;
    EXPECT_EQ(Tried([&] {
                for (; !rows->EndOfFile(); rows->MoveNext()) {
                  last = rows->Fields().Item(0).Value().Get<std::int32_t>();
                }
                return std::string("no failure");
              }),
              row.outcome)
        << row.name;
    EXPECT_GT(last, 30000) << row.name;
    EXPECT_EQ(Ask("SELECT 1 FROM DUAL"), "1");
  }
}

TEST_F(SqliteRequests, PreparedStatementsAreKeptUpToALimit) {
  sqlite::Connection connection(File(), std::make_shared<sqlite::StopSwitch>());
  const auto kept = [&] {
    std::size_t count = 0;
    sqlite3_stmt* one = nullptr;
    while ((one = sqlite3_next_stmt(connection.Handle(), one)) != nullptr) ++count;
    return count;
  };
  const std::size_t before = kept();
  for (int i = 0; i < 3; ++i) static_cast<void>(connection.Prepare("SELECT 1"));
  EXPECT_EQ(kept(), before + 1);
  static_cast<void>(connection.Prepare("SELECT '" + std::string(2048, 'x') + "'"));
  EXPECT_EQ(kept(), before + 1);
  for (int i = 0; i < 200; ++i) {
    static_cast<void>(connection.Prepare("SELECT " + std::to_string(i)));
  }
  EXPECT_EQ(kept(), sqlite::Connection::kKeptStatements);
}

TEST_F(SqliteRequests, ThreadsWithRowlinksOfTheirOwnShareAFile) {
  ASSERT_EQ(Do("CREATE TABLE T (ID NUMBER PRIMARY KEY)") + Do("CREATE SEQUENCE S"), "");
  std::atomic<int> failures = 0;
  {
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i) {
      threads.emplace_back([&] {
        Asking asking(File());
        for (int n = 0; n < 10; ++n) {
          if (!asking.Do("INSERT INTO T VALUES (S.NEXTVAL)").empty()) ++failures;
          if (asking.Ask("SELECT ID FROM T WHERE ID = S.CURRVAL").starts_with("ORA")) ++failures;
        }
      });
    }
  }
  EXPECT_EQ(failures, 0);
  EXPECT_EQ(Ask("SELECT COUNT(*), MAX(ID) FROM T"), "40|40");
}

TEST_F(SqliteRequests, ATimeOutStopsAStatementOrItsWaitForTheWriteLockAndTheSessionGoesOn) {
  ASSERT_EQ(Do("CREATE TABLE T (N NUMBER)"), "");
  EXPECT_EQ(Ask(kEndless, 1), "connection 24");
  EXPECT_EQ(Do("INSERT INTO T " + std::string(kEndless), 1), "connection 24");
  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open(File().c_str(), &other), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
  EXPECT_EQ(Do("INSERT INTO T VALUES (1)", 1), "connection 24");
  EXPECT_EQ(Ask("SELECT COUNT(*) FROM T", 1), "0");
  sqlite3_close(other);
  EXPECT_EQ(Do("INSERT INTO T VALUES (1)", 1), "");
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
      std::ofstream drawn(Folder().File("drawn" + std::to_string(i)));
      for (int n = 0; n < 25; ++n) drawn << asking.Ask("SELECT S.NEXTVAL FROM DUAL") << "\n";
      return 0;
    }));
  }
  for (const pid_t child : children) EXPECT_EQ(ResultOf(child), 0);
  std::set<std::string> values;
  for (int i = 0; i < 8; ++i) {
    std::ifstream drawn(Folder().File("drawn" + std::to_string(i)));
    for (std::string line; std::getline(drawn, line);) values.insert(line);
  }
  EXPECT_EQ(values.size(), 200U);
  EXPECT_EQ(Ask("SELECT S.NEXTVAL FROM DUAL"), "201");
}

TEST_F(SqliteRequests, AKilledWriterLeavesASoundFileWithWholeTransactions) {
  ASSERT_EQ(Do("CREATE TABLE T (ID NUMBER PRIMARY KEY, X VARCHAR2(4000))"), "");
  ASSERT_EQ(Do("CREATE SEQUENCE S"), "");
  ASSERT_EQ(Do("CREATE PROCEDURE PAIR IS BEGIN INSERT INTO T VALUES (S.NEXTVAL, LPAD('x',3000));"
               " INSERT INTO T VALUES (S.NEXTVAL, LPAD('y',3000)); END;"),
            "");
  std::mt19937 random(7);
  for (int round = 0; round < 50; ++round) {
    link->ShutDown();
    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    const pid_t child = InChild([&] {
      Asking asking(File());
      for (bool first = true;; first = false) {
        if (!asking.Do("BEGIN PAIR; END;").empty()) return 1;
        if (first && ::write(ready[1], "x", 1) != 1) return 1;
      }
    });
    char byte = 0;
    ASSERT_EQ(::read(ready[0], &byte, 1), 1);
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 15000));
    ::kill(child, SIGKILL);
    EXPECT_EQ(ResultOf(child), -1);
    ::close(ready[0]);
    ::close(ready[1]);
    EXPECT_EQ(Ask("SELECT MOD(COUNT(*), 2) FROM T"), "0");
    sqlite::Connection file(File(), std::make_shared<sqlite::StopSwitch>());
    sqlite::Statement check = file.Prepare("PRAGMA integrity_check");
    ASSERT_TRUE(check.Step());
    ASSERT_EQ(check.Column(0).text, "ok");
  }
}

}  // namespace
}  // namespace sabrel::testing
