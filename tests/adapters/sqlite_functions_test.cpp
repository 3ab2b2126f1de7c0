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
      {"REPLACE('aXbX','X')", "'ab'"},
      {"LPAD('ä',3,'xy')", "'xyä'"},
      {"RPAD('abcd',2)", "'ab'"},
      {"MOD(-7,3)", "-1"},
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

TEST_F(SqliteFunctions, LikeTellsCaseApart) {
  EXPECT_EQ(Ask("SELECT 1 FROM DUAL WHERE 'abc' LIKE 'A%'"), "");
  EXPECT_EQ(Ask("SELECT 1 FROM DUAL WHERE 'abc' LIKE 'a%'"), "1");
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
