// What expressions come to: functions, dates, numbers and kinds.
#include "tests/adapters/sqlite_site.h"

namespace sabrel::testing {
namespace {

using SqliteFunctions = SiteTest;

TEST_F(SqliteFunctions, ExpressionsHaveOraclesValues) {
  struct Row {
    const char* expression;
    const char* value;
  };
  constexpr Row kRows[] = {
      {"5", "5"},
      {"4000000000", "decimal 4000000000"},
      {"2.5", "double 2.5"},
      {"10/4", "double 2.5"},
      {"10/5", "2"},
      {"''", "null"},
      {"'a' || NULL || 1", "'a1'"},
      {"NVL(NULL,5)", "5"},
      {"NVL('a','b')", "'a'"},
      {"NVL2(NULL,1,2)", "2"},
      {"DECODE(NULL,1,'one',NULL,'none','other')", "'none'"},
      {"DECODE('1',1,'one','other')", "'one'"},
      {"DECODE(3,1,'one',2,'two')", "null"},
      {"UPPER('äßjé')", "'ÄßJÉ'"},
      {"LENGTH('äöü')", "3"},
      {"SUBSTR('äöü',2,1)", "'ö'"},
      {"SUBSTR('abc',0,2)", "'ab'"},
      {"SUBSTR('abc',-2)", "'bc'"},
      {"SUBSTR('abc',4)", "null"},
      {"INSTR('äbäb','b',1,2)", "4"},
      {"INSTR('abab','a',-1)", "3"},
      {"INSTR('aaab','aab')", "2"},
      {"INSTR('ababa','aba',-1,2)", "1"},
      {"INSTR('abc','c',9)", "0"},
      {"REPLACE('aXbX','X')", "'ab'"},
      {"REPLACE('aaa','aa','b')", "'ba'"},
      {"TRIM('   ')", "null"},
      {"LTRIM('äax','ä')", "'ax'"},
      {"RTRIM('xaä','äa')", "'x'"},
      {"LPAD('ä',3,'xy')", "'xyä'"},
      {"RPAD('abcd',2)", "'ab'"},
      {"MOD(-7,3)", "-1"},
      {"MOD(9007199254740993,2)", "1"},
      {"DECODE(9007199254740993,9007199254740992,'same','other')", "'other'"},
      {"GREATEST(9007199254740992,9007199254740993)", "decimal 9007199254740993"},
      {"ROUND(12345678901234567,-1)", "decimal 12345678901234570"},
      {"TRUNC(12345678901234567,-1)", "decimal 12345678901234560"},
      {"ROUND(-15,-1)", "-20"},
      {"ROUND(1E16,2)", "double 1E+16"},
      {"ABS(-9007199254740993)", "decimal 9007199254740993"},
      {"AVG(2.5)", "double 2.5"},
      {"SUM(9007199254740993)", "decimal 9007199254740993"},
      {"GREATEST(2,10,9)", "10"},
      {"LEAST('b','a')", "'a'"},
      {"GREATEST(1,NULL)", "null"},
      {"TRUNC(-2.7)", "-2"},
      {"TRUNC(1.15,2)", "double 1.15"},
      {"TRUNC(1234,-2)", "1200"},
      {"ROUND(2.675,2)", "double 2.68"},
      {"ROUND(-2.5)", "-3"},
      {"ROUND(1250,-2)", "1300"},
      {"ROUND(TO_DATE('2024-02-28 12','YYYY-MM-DD HH24'))", "date 2024-02-29 00:00:00"},
      {"TO_NUMBER(' 12.50 ')", "double 12.5"},
      {"TO_CHAR(0.5)", "'.5'"},
      {"TO_CHAR(1E20)", "'100000000000000000000'"},
      {"TO_CHAR(1234.5,'9,990.00')", "' 1,234.50'"},
      {"TO_CHAR(5,'FM000')", "'005'"},
      {"TO_CHAR(-5,'99')", "' -5'"},
      {"TO_CHAR(5,'FM990.00')", "'5.00'"},
      {"TO_CHAR(12.5,'FM99.00')", "'12.50'"},
      {"TO_CHAR(5,'FM99.99')", "'5.'"},
      {"TO_CHAR(2.5,'9')", "' 3'"},
      {"TO_CHAR(2.675,'9.99')", "' 2.68'"},
      {"TO_CHAR(99.5,'99')", "'###'"},
      {"TO_CHAR(-0.001,'0.99')", "' 0.00'"},
      {"TO_CHAR(9007199254740993,'FM9999999999999999')", "'9007199254740993'"},
      {"TO_CHAR(500,'99')", "'###'"},
      {"TO_DATE('2024-03-09 17:05:00','YYYY-MM-DD HH24:MI:SS')", "date 2024-03-09 17:05:00"},
      {"TO_DATE('2024-03-09','YYYY-MM-DD HH24:MI:SS')", "date 2024-03-09 00:00:00"},
      {"TO_DATE('9.3.24','DD.MM.RR')", "date 2024-03-09 00:00:00"},
      {"TO_DATE('9.3.76','DD.MM.RR')", "date 1976-03-09 00:00:00"},
      {"TO_DATE('09-mar-2024 12:30 am','DD-MON-YYYY HH:MI AM')", "date 2024-03-09 00:30:00"},
      {"TO_DATE('20240309','YYYYMMDD')", "date 2024-03-09 00:00:00"},
      {"TO_DATE('2024',NULL)", "null"},
      {"TO_DATE(NULL,'YYYY')", "null"},
      {"TO_CHAR(TO_DATE('2024-03-09 00:05','YYYY-MM-DD HH24:MI'),'Day DD-Mon-YY HH12:MI PM')",
       "'Saturday  09-Mar-24 12:05 AM'"},
      {"TO_CHAR(TO_DATE('2024-03-09','YYYY-MM-DD'),'FMDD.MM.YYYY\"x\"Q DDD')", "'9.3.2024x1 69'"},
      {"TO_DATE('2024-02-28','YYYY-MM-DD') + 1.5", "date 2024-02-29 12:00:00"},
      {"TO_DATE('2024-03-01','YYYY-MM-DD') - 1", "date 2024-02-29 00:00:00"},
      {"TO_DATE('2024-03-01','YYYY-MM-DD') - TO_DATE('2024-02-28 12','YYYY-MM-DD HH24')",
       "double 1.5"},
      {"TRUNC(TO_DATE('2024-03-09 17:05:31','YYYY-MM-DD HH24:MI:SS'),'MI')",
       "date 2024-03-09 17:05:00"},
      {"TRUNC(TO_DATE('2024-08-09 17','YYYY-MM-DD HH24'))", "date 2024-08-09 00:00:00"},
      {"TRUNC(TO_DATE('2024-08-09','YYYY-MM-DD'),'Q')", "date 2024-07-01 00:00:00"},
      {"TRUNC(TO_DATE('2024-08-09','YYYY-MM-DD'),'YEAR')", "date 2024-01-01 00:00:00"},
      {"TRUNC(TO_DATE('2024-08-09','YYYY-MM-DD'),'DAY')", "date 2024-08-04 00:00:00"},
      {"ADD_MONTHS(TO_DATE('2024-01-31','YYYY-MM-DD'),1)", "date 2024-02-29 00:00:00"},
      {"ADD_MONTHS(TO_DATE('2024-02-29','YYYY-MM-DD'),-1)", "date 2024-01-31 00:00:00"},
      {"LAST_DAY(TO_DATE('2023-02-05','YYYY-MM-DD'))", "date 2023-02-28 00:00:00"},
      {"MONTHS_BETWEEN(TO_DATE('2024-03-31','YYYY-MM-DD'),TO_DATE('2024-02-29','YYYY-MM-DD'))",
       "1"},
      {"MAX(NVL(NULL,TO_DATE('2024','YYYY')))", "date 2024-"},
      {"TRUNC(SYSDATE,'MI')", "date 20"},
      {"(SELECT MIN(D) FROM (SELECT TO_DATE('2024-10-01','YYYY-MM-DD') D FROM DUAL UNION ALL"
       " SELECT TO_DATE('2024-09-01','YYYY-MM-DD') FROM DUAL))",
       "date 2024-09-01 00:00:00"},
  };
  for (const Row& row : kRows) {
    const std::string value = Ask("SELECT " + std::string(row.expression) + " FROM DUAL");
    const bool is_start = row.value[std::char_traits<char>::length(row.value) - 1] == '-' ||
                          std::string_view(row.value) == "date 20";
    EXPECT_TRUE(value == row.value || (is_start && value.starts_with(row.value)))
        << row.expression << " is " << value;
  }
}

TEST_F(SqliteFunctions, ANumberIsKeptWithTheDigitsOfItsColumn) {
  ASSERT_EQ(Do("CREATE TABLE T (ID INTEGER PRIMARY KEY, N NUMBER(5,2), H NUMBER(6,-2), A NUMBER)"),
            "");
  ASSERT_EQ(Do("ALTER TABLE  T\tADD X NUMBER(3,1)"), "");
  ASSERT_EQ(Do("ALTER TABLE T DROP COLUMN A"), "");
  struct Row {
    const char* name;
    const char* sql;
    const char* outcome;
  };
  constexpr Row kRows[] = {
      {"inserted", "INSERT INTO T VALUES (1.6, 1.235, 1250, 9.96)", ""},
      {"updated", "UPDATE T SET N = N + 0.004, X = '-0.05'", ""},
      {"too large when rounded", "UPDATE T SET N = 999.999", "ORA-1438"},
      {"too large in an added column", "UPDATE T SET X = 100", "ORA-1438"},
      {"key that rounding repeats", "INSERT INTO T VALUES (2.1, 0, 0, 0)", "ORA-1"},
      {"date", "UPDATE T SET N = SYSDATE", "ORA-932"},
  };
  for (const Row& row : kRows) EXPECT_EQ(Do(row.sql), row.outcome) << row.name;
  EXPECT_EQ(Ask("SELECT ID, N, H, X FROM T"), "2|double 1.24|1300|double -0.1");
  EXPECT_EQ(Ask("SELECT object_name FROM user_objects"), "'T'");
  EXPECT_EQ(Do("ALTER TABLE T RENAME TO U"), "");
  EXPECT_EQ(Do("CREATE TABLE T (N INTEGER)"), "");
  EXPECT_EQ(Do("INSERT INTO T VALUES (0.5)"), "");
  EXPECT_EQ(Do("UPDATE U SET N = 7.777"), "");
  EXPECT_EQ(Ask("SELECT T.N, U.N FROM T, U"), "1|double 7.78");
}

TEST_F(SqliteFunctions, SumsGoAlongWithTheirWindow) {
  ASSERT_EQ(Do("CREATE TABLE T (N NUMBER, L LONG, M TIMESTAMP)"), "");
  ASSERT_EQ(Do("INSERT INTO T SELECT 9007199254740993, '05', SYSDATE FROM DUAL UNION ALL"
               " SELECT 1.5, '6', NULL FROM DUAL UNION ALL SELECT 2, NULL, NULL FROM DUAL"),
            "");
  EXPECT_EQ(Ask("SELECT SUM(N) OVER (ORDER BY N ROWS BETWEEN 1 PRECEDING AND CURRENT ROW) FROM T"
                " WHERE N < 5"),
            "double 1.5;double 3.5");
  EXPECT_EQ(Ask("SELECT SUM(N) FROM T WHERE N > 9"), "decimal 9007199254740993");
  EXPECT_EQ(Ask("SELECT SUM(N), AVG(N), MIN(L) FROM T WHERE N = 1.5"), "double 1.5|double 1.5|'6'");
  EXPECT_EQ(Ask("SELECT SUM(N), AVG(N) FROM T WHERE N < 0"), "null|null");
  EXPECT_EQ(Ask("SELECT L FROM T WHERE L = '05'"), "'05'");
  EXPECT_EQ(Do("UPDATE T SET M = 'garbage'"), "ORA-1861");
}

TEST_F(SqliteFunctions, LikeTellsCaseApart) {
  EXPECT_EQ(Ask("SELECT 1 FROM DUAL WHERE 'abc' LIKE 'A%'"), "");
  EXPECT_EQ(Ask("SELECT 1 FROM DUAL WHERE 'abc' LIKE 'a%'"), "1");
  EXPECT_EQ(Ask("SELECT NVL(CASE WHEN 'abc' LIKE '%C' THEN 1 END, 0) FROM DUAL"), "0");
  EXPECT_EQ(Ask("SELECT 1 FROM DUAL WHERE 'abc' LIKE '_bc' AND 'a%' LIKE 'a!%' ESCAPE '!'"), "1");
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
