// What expressions come to: functions, dates, numbers and kinds.
#include "tests/adapters/sqlite_site.h"

namespace sabrel::testing {
namespace {

using SqliteFunctions = SiteTest;

TEST_F(SqliteFunctions, ExpressionsHaveOraclesValues) {
  constexpr std::tuple<const char*, const char*, const char*> kRows[] = {
      {"null", "'', 'a' || NULL || 1, TRIM('   '), GREATEST(1,NULL), TO_DATE('2024',NULL)",
       "null|'a1'|null|null|null"},
      {"DECODE",
       "DECODE('1',1,'one','other'), DECODE(NULL,1,'one',NULL,'none','other'),"
       "DECODE(3,1,'one'), NVL2(NULL,1,2)",
       "'one'|'none'|null|2"},
      {"digits beyond a double",
       "GREATEST(9007199254740992,9007199254740993),"
       " ABS(-9007199254740993), ROUND(12345678901234567,-1), TRUNC(12345678901234567,-1)",
       "decimal 9007199254740993|decimal 9007199254740993|decimal 12345678901234570|"
       "decimal 12345678901234560"},
      {"rounding", "ROUND(-15,-1), ROUND(1E16,2), ROUND(2.675,2), ROUND(-2.5), ROUND(1250,-2)",
       "-20|double 1E+16|double 2.68|-3|1300"},
      {"formats",
       "TO_CHAR(1234.5,'9,990.00'), TO_CHAR(-5,'99'), TO_CHAR(5,'FM99.99'),"
       " TO_CHAR(5,'FM000'), TO_CHAR(2.675,'9.99'), TO_CHAR(99.5,'99'), TO_CHAR(-0.001,'0.99')",
       "' 1,234.50'|' -5'|'5.'|'005'|' 2.68'|'###'|' 0.00'"},
      {"dates read",
       "TO_DATE('9.3.24','DD.MM.RR'), TO_DATE('9.3.76','DD.MM.RR'),"
       " TO_DATE('09-mar-2024 12:30 am','DD-MON-YYYY HH:MI AM'), TO_DATE('20240309','YYYYMMDD')",
       "date 2024-03-09 00:00:00|date 1976-03-09 00:00:00|date 2024-03-09 00:30:00|"
       "date 2024-03-09 00:00:00"},
      {"dates written",
       "TO_CHAR(DATE '2024-03-09' + 5/1440,'Day DD-Mon-YY HH12:MI PM'),"
       " TO_CHAR(DATE '2024-03-09','FMDD.MM.YYYY\"x\"Q DDD')",
       "'Saturday  09-Mar-24 12:05 AM'|'9.3.2024x1 69'"},
      {"dates moved",
       "DATE '2024-02-28' + 1.5, DATE '2024-03-01' - 1,"
       " DATE '2024-03-01' - TO_DATE('2024-02-28 12','YYYY-MM-DD HH24')",
       "date 2024-02-29 12:00:00|date 2024-02-29 00:00:00|double 1.5"},
      {"months",
       "ADD_MONTHS(DATE '2024-01-31',1), ADD_MONTHS(DATE '2024-02-29',-1),"
       " LAST_DAY(DATE '2023-02-05'), MONTHS_BETWEEN(DATE '2024-03-31',DATE '2024-02-29')",
       "date 2024-02-29 00:00:00|date 2024-01-31 00:00:00|date 2023-02-28 00:00:00|1"},
  };
  for (const auto& [name, expressions, values] : kRows) {
    EXPECT_EQ(Ask("SELECT " + std::string(expressions) + " FROM DUAL"), values) << name;
  }
  EXPECT_TRUE(Ask("SELECT MAX(NVL(NULL,TRUNC(SYSDATE,'MI'))) FROM DUAL").starts_with("date 20"));
}

TEST_F(SqliteFunctions, ANumberIsKeptWithTheDigitsOfItsColumn) {
  ASSERT_EQ(Do("CREATE TABLE T (ID INTEGER PRIMARY KEY, N NUMBER(5,2), H NUMBER(6,-2), A NUMBER)"),
            "");
  ASSERT_EQ(Do("ALTER TABLE  T\tADD X NUMBER(3,1)"), "");
  ASSERT_EQ(Do("ALTER TABLE T DROP COLUMN A"), "");
  constexpr std::tuple<const char*, const char*, const char*> kRows[] = {
      {"inserted", "INSERT INTO T VALUES (1.6, 1.235, 1250, 9.96)", ""},
      {"updated", "UPDATE T SET N = N + 0.004, X = '-0.05'", ""},
      {"too large when rounded", "UPDATE T SET N = 999.999", "ORA-1438"},
      {"too large in an added column", "UPDATE T SET X = 100", "ORA-1438"},
      {"key that rounding repeats", "INSERT INTO T VALUES (2.1, 0, 0, 0)", "ORA-1"},
  };
  for (const auto& [name, sql, outcome] : kRows) EXPECT_EQ(Do(sql), outcome) << name;
  EXPECT_EQ(Ask("SELECT ID, N, H, X FROM T"), "2|double 1.24|1300|double -0.1");
  EXPECT_EQ(Do("ALTER TABLE T RENAME TO U"), "");
  EXPECT_EQ(Do("UPDATE U SET N = 7.777"), "");
  EXPECT_EQ(Ask("SELECT N FROM U"), "double 7.78");
}

TEST_F(SqliteFunctions, SumsGoAlongWithTheirWindow) {
  ASSERT_EQ(Do("CREATE TABLE T (N NUMBER, L LONG, M TIMESTAMP)"), "");
  ASSERT_EQ(Do("INSERT INTO T SELECT 9007199254740993, '05', SYSDATE FROM DUAL UNION ALL"
               " SELECT 1.5, '6', NULL FROM DUAL UNION ALL SELECT 2, NULL, NULL FROM DUAL"),
            "");
  EXPECT_EQ(Ask("SELECT SUM(N) OVER (ORDER BY N ROWS BETWEEN 1 PRECEDING AND CURRENT ROW) FROM T"
                " WHERE N < 5"),
            "double 1.5;double 3.5");
  EXPECT_EQ(Ask("SELECT SUM(N), AVG(2.5) FROM T WHERE N > 9"),
            "decimal 9007199254740993|double 2.5");
  EXPECT_EQ(Ask("SELECT SUM(N), AVG(N), MIN(L) FROM T WHERE N = 1.5"), "double 1.5|double 1.5|'6'");
}

TEST_F(SqliteFunctions, ColumnsAreNamedAsTheStatementNamesThem) {
  ASSERT_EQ(Do("CREATE FUNCTION PKG.F(a NUMBER) RETURN NUMBER IS BEGIN"
               " SELECT :a AS return_value FROM DUAL; END;"),
            "");
  const auto rows = link->MakeRecordset();
  rows->Open("SELECT dummy, PKG.F(1) , 5 AS \"Mixed\", 'a' lower FROM dual", "", 0, "", "", 0);
  std::string names;
  for (std::int32_t i = 0; i < rows->Fields().Count(); ++i) {
    names += rows->Fields().Item(i).Name() + ";";
  }
  EXPECT_EQ(names, "DUMMY;PKG.F(1);Mixed;LOWER;");
}

}  // namespace
}  // namespace sabrel::testing
