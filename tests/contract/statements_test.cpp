// Statements, the dictionary and quoted texts, as the component and its hosts send them.
#include "sabrel/sql/literals.h"
#include "tests/contract/contract.h"
#include "tests/support/scripted_platform.h"

namespace sabrel::testing {
namespace {

// Sent where a site is of an older release; operations_test.cpp sends the others.
TEST_P(Contract, RunsTheQueriesThatDeriveFeatures) {
  for (const char* sql :
       {"SELECT c.Category_Id FROM PM_GROUPS g, PM_GROUP_CATEGORIES gc, PM_CATEGORIES c WHERE "
        "g.Group_Active = 'Y' AND g.Group_ID = gc.Group_ID AND c.Category_ID = gc.Category_ID AND "
        "c.Category_Active = 'Y' AND c.CategoryFunction = 'no such'",
        "SELECT * FROM PM_Tools WHERE Tool_Name = 'no such'",
        "SELECT a.TabName, a.TabLabel, c.App_Name, b.Control_Name FROM PM_APP_TABS a, PM_TABS b, "
        "PM_APP_NAMES c WHERE a.Active='Y' AND c.Active = 'Y' AND a.App_ID = c.App_ID AND a.Tab_ID "
        "= b.Tab_ID AND b.Control_Name = 'no such'",
        "SELECT *  FROM Job_Type  WHERE Description = 'no such'"}) {
    const Outcome outcome = Query(sql);
    EXPECT_EQ(outcome.native, 0) << sql << "\n" << session->LastDatabaseError().message;
    EXPECT_TRUE(outcome.rows.empty()) << sql;
  }
}

TEST_P(Contract, DictionaryViewsTellTheSchemaInUpperCase) {
  EXPECT_EQ(Value("SELECT FS_GetColumnLength('pm_stringtable','stringdata') FROM DUAL"),
            Variant(4000));
  EXPECT_EQ(Value("select MAX(position) AS ProcLen From user_arguments where package_name = "
                  "'EA_CLIENT' and object_name = 'ADD_COMMON_ENTITY'"),
            Variant(2));
  const std::pair<const char*, int> counts[] = {
      {"user_tables WHERE table_name = 'PM_EMAIL'", 1},
      {"user_tables WHERE table_name = 'pm_email'", 0},
      {"user_tables WHERE table_name = 'DUAL'", 0},
      {"user_tab_columns WHERE table_name = 'TASK_FILENAME' AND column_name = 'SIZEINROWS'", 1},
      {"user_objects WHERE object_name = 'LENGTHYREPORT' AND object_type = 'PACKAGE'", 1},
      {"user_objects WHERE object_name = 'PM_STRINGTABLE_SQ' AND object_type = 'SEQUENCE'", 1},
      {"user_objects WHERE object_name = 'ZR_SYSTEM_VALUES_V' AND object_type = 'VIEW'", 1},
      {"user_arguments WHERE package_name = 'EA_CLIENT' AND object_name = 'ADD_COMMON_ENTITY' AND "
       "position = 0",
       1},
  };
  for (const auto& [rows, count] : counts) {
    EXPECT_EQ(Value("SELECT COUNT(*) FROM " + std::string(rows)), Variant(count)) << rows;
  }
}

TEST_P(Contract, RowsAreCountedBeforeAnythingElseIsDoneWithThem) {
  Run("CREATE TABLE T AS (SELECT Group_Id A FROM PM_GROUPS WHERE Group_Id IN (1, 2, 3, 4))");
  Run("INSERT INTO T (SELECT A + 10 FROM T WHERE ROWNUM <= 2)");
  EXPECT_EQ(Value("SELECT COUNT(*) FROM T"), Variant(6));
  Run("CREATE VIEW V AS SELECT A FROM T");
  Run("CREATE OR REPLACE VIEW V AS (SELECT A FROM T WHERE A < 4)");
  const Outcome page = Query(
      "SELECT * FROM (SELECT x.*, ROWNUM N FROM (SELECT A FROM V ORDER BY A DESC) x"
      " WHERE ROWNUM <= 3) WHERE N > 1");
  ASSERT_EQ(page.rows.size(), 2U) << session->LastDatabaseError().message;
  EXPECT_EQ(page.columns[1], "N");
  EXPECT_EQ(page.rows[1], (std::vector<Variant>{Variant(1), Variant(3)}));
  EXPECT_EQ(Value("SELECT (SELECT A FROM V WHERE A > 2 AND ROWNUM = 1) FROM DUAL WHERE EXISTS"
                  " (SELECT 1 FROM V WHERE ROWNUM = 1)"),
            Variant(3));
  EXPECT_EQ(Value("SELECT A FROM (SELECT A, ROWNUM N FROM (SELECT A FROM V ORDER BY A DESC) x)"
                  " WHERE N = '2'"),
            Variant(2));
  EXPECT_EQ(Query("(SELECT x.A, y.A FROM V x, V y WHERE ROWNUM < 2)").columns[1], "A");
  EXPECT_EQ(Query("(SELECT A FROM V WHERE ROWNUM < 3) UNION ALL (SELECT A FROM V)").rows.size(),
            5U);
}

TEST_P(Contract, RequestsTellHowManyRowsTheyChanged) {
  const std::pair<const char*, std::int64_t> requests[] = {
      {"CREATE TABLE T (A NUMBER(9) PRIMARY KEY, B NUMBER(9,2))", kUnknownRows},
      {"INSERT INTO T SELECT Group_Id, 1 FROM PM_GROUPS WHERE Group_Id IN (1, 2, 3)", 3},
      {"INSERT INTO T (A, B) VALUES (ZR_QUERY_SQ.NEXTVAL, 1.239)", 1},
      {"UPDATE T SET B = B + 0.111 WHERE A > 1", 3},
      {"DELETE FROM T WHERE A = -1", 0},
      {"BEGIN DELETE FROM T WHERE A = 1; END;", kUnknownRows},
      {"SELECT A FROM T", kUnknownRows},
      {"DELETE FROM T", 3},
  };
  for (const auto& [sql, rows_changed] : requests) {
    EXPECT_EQ(Execute(sql).rows_changed, rows_changed) << sql;
  }
}

TEST_P(Contract, QuotingBringsEveryTextBack) {
  const ScriptedPlatform locale;
  std::vector<std::string> texts;
  for (char a = 1; a > 0; ++a) {  // every pair of ASCII characters but NUL
    for (char b = 1; b > 0; ++b) texts.push_back({a, b});
  }
  for (const char* text :
       {"\u00E4\u20AC", "\U0001F600'\U0001F600", "--", "/*", "*/", "''''", " "}) {
    texts.emplace_back(text);
  }
  for (std::size_t i = 0; i < texts.size(); i += 100) {
    std::string sql = "SELECT ";
    const std::size_t end = std::min(texts.size(), i + 100);
    for (std::size_t j = i; j < end; ++j) {
      sql += (j > i ? "," : "") + MSabrel::DBStr(texts[j]).Value() + " AS C" + std::to_string(j);
    }
    const Outcome outcome = Query(sql + " FROM DUAL");
    ASSERT_EQ(outcome.rows.size(), 1U) << sql << session->LastDatabaseError().message;
    for (std::size_t j = i; j < end; ++j) EXPECT_EQ(outcome.rows[0][j - i], Variant(texts[j]));
  }
}

}  // namespace
}  // namespace sabrel::testing
