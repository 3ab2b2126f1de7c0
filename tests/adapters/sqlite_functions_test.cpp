// What expressions come to: functions, dates, numbers and kinds.
#include "tests/adapters/sqlite_site.h"

namespace sabrel::testing {
namespace {

using SqliteFunctions = SiteTest;

TEST_F(SqliteFunctions, ExpressionsHaveOraclesValues) {
  constexpr std::tuple<const char*, const char*, const char*> kRows[] = {
      {"null", "'', 'a' || NULL || 1, TRIM('   '), GREATEST(1,NULL), TO_DATE('2024',NULL)",
       "null|'a1'|null|null|null"},
      {"texts beside numbers",
       "CASE WHEN '5' BETWEEN 1 AND 10 AND 5 IN ('5') AND NVL('9','0') < 10 AND"
       " SUBSTR('x7',2) IN (6,7) AND 1+1 BETWEEN '2' AND '10' THEN 'all' END",
       "'all'"},
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
      {"casts to numbers",
       "CAST(12.755 AS NUMBER(5,2)), CAST(' 7 ' AS NUMBER)+1, CAST(12.5 AS INTEGER),"
       " CAST(1250 AS NUMBER(6,-2)), CAST(2.5 AS DEC), CAST(1.25 AS FLOAT), CAST('' AS INT)",
       "double 12.76|8|13|1300|3|double 1.25|null"},
      {"casts to texts",
       "CAST('äbcd' AS VARCHAR2(2 CHAR)), CAST(.50 AS CHAR VARYING(9)), CAST('yes' AS CHAR),"
       " CAST(DATE '2024-03-09' AS VARCHAR2(30)), CAST(NULL AS CLOB)",
       "'äb'|'.5'|'y'|'09-MAR-24'|null"},
      {"logarithms", "LOG(10,1000), LOG(2,0.5), EXP(LN(4))", "3|-1|4"},
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
      {"patterns",
       "CASE WHEN 'a%b€' LIKE '_!%%_' ESCAPE '!' THEN 1 END,"
       " CASE WHEN 'abcabd' LIKE '%ab'||'d' THEN 1 END, CASE WHEN 'ab' NOT LIKE '%B' THEN 1 END,"
       " CASE WHEN 'aXb' LIKE 'a%c%' OR 'ab' LIKE NULL THEN 1 ELSE 0 END, CHR(8364)",
       "1|1|1|0|'€'"},
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
  ASSERT_EQ(Do("ALTER TABLE  T\tADD X DEC(3,1)"), "");
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

TEST_F(SqliteFunctions, ATableMadeOfAQueryHasTheTypesOfItsColumns) {
  Make({
      "CREATE SEQUENCE Q",
      "CREATE TABLE S (N NUMBER(5,2), V VARCHAR2(3), L LONG, D DATE, W INTEGER PRIMARY KEY)",
      "INSERT INTO S VALUES (1.25, '05', '6', DATE '2024-03-09', 7)",
      "CREATE TABLE T AS SELECT CAST(NULL AS VARCHAR2(4 CHAR)) \"c\", S.*, UPPER(V) U, N*2 P, D+1"
      " NEXT, Q.NEXTVAL FROM S",
      "CREATE TABLE U AS ((SELECT V, N FROM S) UNION (SELECT 'longer', 1.239 FROM DUAL))",
      "CREATE TABLE E AS (WITH R AS (SELECT N, D FROM S) SELECT ROWNUM A, R.* FROM R WHERE 1 = 0)",
      "CREATE TABLE C AS WITH Z AS (SELECT 1 A FROM DUAL), Y AS (SELECT 12.5 B FROM DUAL)"
      " SELECT ALL A, CAST(A AS INTEGER) I, B FROM Z, Y WHERE ROWNUM <= 1",
      "CREATE VIEW W AS SELECT 'longer' X, 1.239 Y FROM DUAL UNION SELECT V, N FROM S",
      "CREATE TABLE F AS SELECT X, S.D + 1 Y FROM W, S WHERE 1 = 2",
  });
  const auto types_of = [this](const std::string& table) {
    return Ask(
        "SELECT COLUMN_NAME || ' ' || DATA_TYPE || ' ' || DATA_LENGTH || DATA_PRECISION ||"
        " DATA_SCALE FROM USER_TAB_COLUMNS WHERE TABLE_NAME = '" +
        table + "' ORDER BY COLUMN_ID");
  };
  EXPECT_EQ(types_of("T"),
            "'C VARCHAR2 4';'N NUMBER 2252';'V VARCHAR2 3';'L LONG 22';'D DATE 7';'W INTEGER 220';"
            "'U VARCHAR2 4000';'P NUMBER 22';'NEXT DATE 7';'NEXTVAL NUMBER 22'");
  EXPECT_EQ(types_of("U"), "'V VARCHAR2 4000';'N NUMBER 22'");
  EXPECT_EQ(types_of("E"), "'A NUMBER 22';'N NUMBER 2252';'D DATE 7'");
  EXPECT_EQ(types_of("F"), "'X VARCHAR2 4000';'Y BLOB 4000'");
  EXPECT_EQ(Ask("SELECT * FROM C"), "1|1|double 12.5");
  EXPECT_EQ(Ask("SELECT * FROM T"),
            "null|double 1.25|'05'|'6'|date 2024-03-09 00:00:00|7|'05'|double 2.5|"
            "date 2024-03-10 00:00:00|1");
  EXPECT_EQ(Ask("SELECT V, N FROM U"), "'05'|double 1.25;'longer'|double 1.239");
  constexpr std::tuple<const char*, const char*, const char*> kRows[] = {
      {"text for a number", "UPDATE T SET N = 'abc'", "ORA-1722"},
      {"beyond the width", "UPDATE T SET V = 'abcd'", "ORA-12899"},
      {"infinity", "UPDATE T SET P = 1e308*10", "ORA-1426"},
      {"column without a type", "CREATE TABLE X AS SELECT N, NULL M FROM S", "ORA-1723"},
      {"one name twice", "CREATE TABLE X AS SELECT N, N FROM S", "ORA-957"},
      {"row that does not fit",
       "CREATE TABLE X AS SELECT DECODE(W,7,W) M FROM S UNION ALL SELECT"
       " 'a' FROM DUAL",
       "ORA-1722"},
  };
  for (const auto& [name, sql, outcome] : kRows) EXPECT_EQ(Do(sql), outcome) << name;
  EXPECT_EQ(Ask("SELECT Q.NEXTVAL, COUNT(*) FROM USER_TABLES WHERE TABLE_NAME = 'X'"), "2|0");
}

TEST_F(SqliteFunctions, TheFormatOfDatesBelongsToTheSession) {
  Make(
      {"CREATE TABLE T (N NUMBER, D DATE CHECK (LENGTH(D) = 19), M CHAR(1)"
       " CHECK (INSTR(M,'a',1,2) = 0 AND M NOT LIKE '%!%' ESCAPE '#'))",
       "CREATE INDEX I ON T (TRUNC(D), TO_CHAR(D,'YYYY'), UPPER(N))",
       "INSERT INTO T VALUES (1, '15-MAR-24', 'm')"});
  Asking other(ProfileSet(ProfileOf(File()), {"", "", "DD.MM.YY"}));
  EXPECT_EQ(other.Ask("SELECT D || '', D FROM T"), "'15.03.24'|date 2024-03-15 00:00:00");
  constexpr std::tuple<const char*, const char*, const char*> kRows[] = {
      {"too many values", "INSERT INTO T (N, D) SELECT 1, '15-MAR-24', 3 FROM DUAL", "ORA-913"},
      {"number", "INSERT INTO T (N, D) VALUES (1, 15)", "ORA-932"},
      {"index of a text", "CREATE INDEX J ON T (TO_CHAR(D))", "ORA-1743"},
      {"index of a text function", "CREATE INDEX J ON T (N, SUBSTR(LAST_DAY(D), 1))", "ORA-1743"},
      {"index of texts put together", "CREATE UNIQUE INDEX J ON T (D || N)", "ORA-1743"},
      {"index of a date and a text", "CREATE INDEX J ON T (GREATEST(D, '01-JAN-24'))", "ORA-1743"},
  };
  for (const auto& [name, sql, outcome] : kRows) EXPECT_EQ(Do(sql), outcome) << name;
  Asking invalid(ProfileSet(ProfileOf(File()), {"", "", "nonsense"}));
  EXPECT_EQ(invalid.Ask("SELECT 1 FROM DUAL"), "ORA-1821");
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
  EXPECT_EQ(Ask("SELECT L FROM T WHERE 5 = L OR L BETWEEN 5.5 AND 10 ORDER BY N"), "'6';'05'");
}

}  // namespace
}  // namespace sabrel::testing
