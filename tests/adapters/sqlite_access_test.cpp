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
  /// What the engine itself says to `sql`.
  [[nodiscard]] int Raw(const char* sql) const {
    sqlite3* engine = nullptr;
    int code = sqlite3_open(File().c_str(), &engine);
    if (code == SQLITE_OK) code = sqlite3_exec(engine, sql, nullptr, nullptr, nullptr);
    sqlite3_close(engine);
    return code;
  }
};

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
