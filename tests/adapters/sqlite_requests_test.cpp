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
  // The last connection to close locks the file out for everyone, and so does this.
  link->ShutDown();
  ASSERT_EQ(sqlite3_open(File().c_str(), &other), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(other, "PRAGMA locking_mode=EXCLUSIVE; BEGIN IMMEDIATE; COMMIT", nullptr,
                         nullptr, nullptr),
            SQLITE_OK);
  EXPECT_EQ(Ask("SELECT COUNT(*) FROM T", 1), "connection 24") << "opening waits, too";
  sqlite3_close(other);
  EXPECT_EQ(Do("INSERT INTO T VALUES (1)"), "");
}

// Each would take minutes if it were looked at between the engine's steps only.
TEST_F(SqliteRequests, ATimeOutAndCancelReachIntoFunctionsAndPatterns) {
  const std::string big = "REPLACE(RPAD('a',32000,'a'),'a',RPAD('b',1999,'b')||'c')";
  const std::string numbers =
      "WITH N(I) AS (SELECT 1 FROM DUAL UNION ALL SELECT I+1 FROM N WHERE I < 1000000) ";
  const struct {
    const char* name;
    std::string sql;
  } rows[] = {
      {"replace", numbers + "SELECT COUNT(REPLACE(" + big + ",'b',TO_CHAR(I))) FROM N"},
      {"pattern", "SELECT 1 FROM DUAL WHERE " + big + " LIKE '%'||RPAD('b',30000,'b')||'_c'"},
      {"wildcards", "SELECT 1 FROM DUAL WHERE " + big + " LIKE '%b%'||RPAD('_',9999,'_')||'d'"},
      {"trim", numbers + "SELECT SUM(LENGTH(LTRIM(RPAD('a',32000,'a')||'b'||I, RPAD('c',32000,'c')"
                         "||'a'))) FROM N"},
      {"case", numbers + "SELECT COUNT(UPPER(" + big + "||I)) FROM N"},
      {"search", numbers + "SELECT SUM(INSTR(" + big + ",'bc'||I)) FROM N"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Ask(row.sql, 1), "connection 24") << row.name;
    const std::jthread canceller([&](const std::stop_token& stopped) {
      for (; !stopped.stop_requested(); std::this_thread::yield()) link->Cancel();
    });
    EXPECT_EQ(Ask(row.sql), "ORA-1013") << row.name;
  }
}

TEST_F(SqliteRequests, ATimeOutComesBeforeATransactionEndsOrNotAtAll) {
  using sqlite::Transaction;
  sqlite::Connection engine(File(), std::make_shared<sqlite::CancelSwitch>(), std::nullopt);
  const sqlite::Operation late(engine, std::chrono::steady_clock::now());
  // As many as the engine runs before it asks whether to stop.
  for (int i = 0; i < 2000; ++i) {
    EXPECT_NO_THROW(Transaction(engine, Transaction::Kind::kWrite).Commit()) << i;
    ASSERT_FALSE(engine.InTransaction()) << i;
  }
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
    sqlite::Connection file(File(), std::make_shared<sqlite::CancelSwitch>(), std::nullopt);
    sqlite::Statement check = file.Prepare("PRAGMA integrity_check");
    ASSERT_TRUE(check.Step());
    ASSERT_EQ(check.Column(0).text, "ok");
  }
}

}  // namespace
}  // namespace sabrel::testing
