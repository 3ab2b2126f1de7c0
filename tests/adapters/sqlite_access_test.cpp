// What statements may reach, and what the engine finds out about it.
#include <sqlite3.h>

#include "adapters/sqlite/failure.h"
#include "adapters/sqlite/server.h"
#include "tests/adapters/sqlite_site.h"

namespace sabrel::testing {
namespace {

class SqliteAccess : public SiteTest {
 protected:
  void SetUp() override {
    Make({"CREATE TABLE T (N NUMBER(5) PRIMARY KEY, V VARCHAR2(9))", "CREATE INDEX T_V ON T (V)",
          "INSERT INTO T VALUES (1, 'abc')"});
  }
  [[nodiscard]] std::unique_ptr<sqlite::Server> Serve() const {
    return std::make_unique<sqlite::Server>(File(), std::make_shared<sqlite::CancelSwitch>(),
                                            std::make_shared<sqlite::SessionState>(),
                                            sqlite::Durability::kEachCommit, Deadline());
  }
  /// What the engine itself says to `sql`; `texts` takes the first column.
  int Raw(const char* sql, std::vector<std::string>* texts = nullptr) const {
    sqlite3* engine = nullptr;
    const auto take = [](void* to, int, char** row, char**) {
      if (to != nullptr) static_cast<std::vector<std::string>*>(to)->emplace_back(row[0]);
      return 0;
    };
    int code = sqlite3_open(File().c_str(), &engine);
    if (code == SQLITE_OK) code = sqlite3_exec(engine, sql, take, texts, nullptr);
    sqlite3_close(engine);
    return code;
  }
};

TEST_F(SqliteAccess, WhatBelongsToTheEngineIsNotReached) {
  constexpr std::tuple<const char*, int, const char*> kRows[] = {
      {"function of a pragma", 942, "SELECT COUNT(*) FROM \"Pragma_database_list\""},
      {"statistics of the file", 942, "SELECT name FROM dbstat"},
      {"module", 942, "SELECT 1 FROM json_each"},
      {"module as a function", 900, "SELECT 1 FROM json_each('[1]')"},
      {"view on a pragma", 942, "CREATE VIEW W AS SELECT 1 A FROM pragma_table_list"},
      {"virtual table", 901, "CREATE VIRTUAL TABLE W USING fts5(x,content='sabrel_routine')"},
      {"temporary table", 901, "CREATE TEMP TABLE W (N NUMBER)"},
      {"table of the temporary owner", 1918, "CREATE TABLE temp.W (N NUMBER)"},
      {"own name as a text", 903, "ALTER TABLE T RENAME TO 'sabrel_t'"},
      {"copy of the file", 900, "VACUUM INTO 'other.site'"},
      {"function of a block's argument", 904, "BEGIN RAISE_APPLICATION_ERROR(-20001,hex(1)); END;"},
      {"function of a body", 904, "CREATE PROCEDURE P IS BEGIN UPDATE T SET V = quote(V); END;"},
      {"function of a check", 904, "CREATE TABLE W (N NUMBER CHECK (typeof(N) <> 'x'))"},
      {"function of an index", 904, "CREATE INDEX T_X ON T (hex(V))"},
      {"greatest of two", 909, "SELECT MAX(N,2) FROM T"},
      {"time without a date", 904, "SELECT CURRENT_TIME FROM DUAL"},
      {"truth", 904, "SELECT TRUE FROM DUAL"},
  };
  for (const auto& [name, number, sql] : kRows) {
    EXPECT_EQ(Ask(sql), "ORA-" + std::to_string(number))
        << name << ": " << link->LastDatabaseError().message;
  }
}

TEST_F(SqliteAccess, OfTheEnginesFunctionsOraclesAloneAreKnown) {
  std::vector<std::string> names;
  Raw("SELECT DISTINCT name FROM pragma_function_list ORDER BY name", &names);
  std::string known;
  for (const std::string& name : names) {
    const std::string outcome = Ask("SELECT " + name + "(1) FROM DUAL");
    const bool is_refused = outcome == "ORA-904" || outcome == "ORA-936" || outcome == "ORA-942";
    if (!is_refused) known += name + " ";
  }
  EXPECT_EQ(known,
            "abs acos asin atan atan2 avg ceil coalesce cos cosh count cume_dist dense_rank exp "
            "first_value floor instr lag last_value lead length ln log lower ltrim max min mod "
            "nth_value ntile nullif percent_rank power rank replace round row_number rtrim sign "
            "sin sinh sqrt substr sum tan tanh trim trunc upper ");
}

TEST_F(SqliteAccess, AnOlderSitesObjectsReachNoMore) {
  link->ShutDown();
  for (const char* sql :
       {"VIEW X AS SELECT COUNT(*) N FROM pragma_database_list", "VIEW Z AS SELECT N FROM X",
        "VIEW Y AS WITH USER_TABLES AS (SELECT name FROM pragma_database_list)"
        " SELECT name FROM USER_TABLES",
        "VIEW M AS SELECT value FROM json_each('[1]')",
        "VIRTUAL TABLE F USING fts5(x,content='sabrel_routine')"}) {
    ASSERT_EQ(Raw(("CREATE " + std::string(sql)).c_str()), SQLITE_OK) << sql;
  }
  for (const char* name : {"X", "Z", "M", "F"}) {
    EXPECT_EQ(Ask(std::string("SELECT * FROM ") + name), "ORA-942") << name;
  }
  EXPECT_EQ(Ask("SELECT * FROM Y"), "ORA-1031");
  EXPECT_EQ(Do("DROP VIEW M"), "") << "the dictionary needs what every view reads";
  EXPECT_EQ(Ask("SELECT COUNT(*) FROM USER_TAB_COLUMNS WHERE TABLE_NAME IN ('T','X')"), "3");
  EXPECT_EQ(Do("DROP TABLE F"), "");
  EXPECT_EQ(Ask("SELECT TABLE_NAME FROM USER_TABLES"), "'T'");
}

TEST_F(SqliteAccess, ViewsReadTheDictionaryInEveryForm) {
  Make({"CREATE VIEW A AS SELECT COUNT(*) N FROM USER_TAB_COLUMNS",
        "CREATE VIEW B AS WITH R AS (SELECT COUNT(*) N FROM USER_SEQUENCES) SELECT N FROM R",
        "CREATE VIEW C AS SELECT (SELECT N FROM A) + (SELECT N FROM B) N FROM DUAL",
        "CREATE SEQUENCE S", "ALTER TABLE T ADD M NUMBER"});
  EXPECT_EQ(Ask("WITH R AS (SELECT COUNT(*) N FROM USER_OBJECTS) SELECT A.N, B.N, C.N, R.N"
                " FROM A, B, C, R"),
            "6|1|7|6");
  Asking other(File());
  ASSERT_EQ(other.Do("DROP TABLE T"), "");
  EXPECT_EQ(Ask("SELECT N FROM A"), "3") << "prepared again";
}

TEST_F(SqliteAccess, AFailureLeavesKeptStatementsPrepared) {
  Make({"CREATE TABLE C (N NUMBER REFERENCES T (N))", "INSERT INTO C VALUES (1)"});
  const auto server = Serve();
  const auto prepared_again = [&] {
    int times = 0;
    for (sqlite3_stmt* one = nullptr;
         (one = sqlite3_next_stmt(server->Engine().Handle(), one)) != nullptr;) {
      times += sqlite3_stmt_status(one, SQLITE_STMTSTATUS_REPREPARE, 0);
    }
    return times;
  };
  server->Execute("UPDATE C SET N = 1");
  const int before = prepared_again();
  for (const std::string change : {"UPDATE C SET N = 2", "UPDATE T SET N = 2"}) {
    EXPECT_THROW(server->Execute(change), sqlite::ServerFailure) << change;
    server->Execute("UPDATE C SET N = 1");
  }
  EXPECT_EQ(prepared_again(), before);
}

TEST_F(SqliteAccess, APatternWithABeginningUsesItsIndex) {
  const auto server = Serve();
  for (const char* pattern : {"'ab%'", "'ab_d%'", ":p"}) {
    std::string sql = server->Compile("SELECT N FROM T WHERE V LIKE " + std::string(pattern)).text;
    const bool has_parameter = !sqlite::NumberVariables(sql, 0).empty();
    sqlite::Statement plan = server->Engine().Prepare("EXPLAIN QUERY PLAN " + sql);
    if (has_parameter) plan.Bind(1, std::string_view("ab%"));
    ASSERT_TRUE(plan.Step());
    EXPECT_TRUE(plan.Column(3).text.starts_with("SEARCH T USING COVERING INDEX T_V (V>? AND V<?)"))
        << pattern << ": " << plan.Column(3).text;
  }
}

TEST_F(SqliteAccess, NoColumnOfTextsTakesTheEmptyText) {
  Make({"CREATE TABLE E (V VARCHAR2(9), \"l\" LONG)", "ALTER TABLE E ADD A CLOB",
        "INSERT INTO E VALUES (NULL, '05', '')"});
  EXPECT_EQ(Ask("SELECT * FROM E"), "null|'05'|null");
  for (const char* sql : {"UPDATE E SET V = ''", "UPDATE E SET l = ''", "UPDATE E SET A = ''"}) {
    EXPECT_EQ(Raw(sql), SQLITE_CONSTRAINT) << sql;
  }
}

}  // namespace
}  // namespace sabrel::testing
