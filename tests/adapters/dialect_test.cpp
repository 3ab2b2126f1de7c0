#include "adapters/shared/dialect/dialect.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

namespace sabrel::dialect {
namespace {

// Spells everything so that a row can be read; F is a routine, PKG.F one that writes.
class TestEngine final : public Engine {
 public:
  explicit TestEngine(bool has_functions = true) : has_functions_(has_functions) {}
  std::optional<RoutineFacts> FindRoutine(std::string_view name) const override {
    if (name == "PKG.F") return RoutineFacts{true};
    if (name == "F") return RoutineFacts{false};
    return std::nullopt;
  }
  bool IsReservedWord(std::string_view word) const override {
    return word == "LIMIT" || word == "TRANSACTION";
  }
  std::string NextValue(std::string_view name) const override { return "next<" + Text(name) + ">"; }
  std::string CurrentValue(std::string_view name) const override {
    return "current<" + Text(name) + ">";
  }
  std::string SystemDate() const override { return "now()"; }
  CallOpening RoutineCall(std::string_view name) const override {
    return {"call('" + Text(name) + "'", true};
  }
  std::string_view AddFunction() const override { return Named("plus"); }
  std::string_view SubtractFunction() const override { return Named("minus"); }
  std::string_view SingleFunction() const override { return Named("single"); }
  std::string_view CompareFunction() const override { return Named("compare"); }
  std::string_view HidingOperator() const override { return Named("+"); }
  std::string_view FunctionName(std::string_view name) const override {
    return name == "TRUNC" ? "ora_trunc" : "";
  }

 private:
  static std::string Text(std::string_view view) { return std::string(view); }
  std::string_view Named(std::string_view name) const { return has_functions_ ? name : ""; }
  bool has_functions_;
};

std::string Shown(const Constant& constant) {
  switch (constant.kind) {
    case Constant::Kind::kInteger: return std::to_string(constant.integer);
    case Constant::Kind::kReal: return std::to_string(constant.real) + "r";
    case Constant::Kind::kText: return "'" + constant.text + "'";
    case Constant::Kind::kNull: break;
  }
  return "null";
}

// What `action` yields, or "!", the number of its refusal and the place: a character, the end.
std::string Attempt(const std::function<std::string()>& action) {
  try {
    return action();
  } catch (const SyntaxFailure& failure) {
    const std::string& told = failure.message;
    const std::size_t place = told.rfind("(character ");
    const bool at_end = told.ends_with("at the end of the statement");
    return "!" + std::to_string(failure.native_number) + (at_end ? " @end" : "") +
           (place == std::string::npos ? ""
                                       : " @" + told.substr(place + 11, told.size() - place - 12));
  }
}

// The rewritten text, its constants behind "|", "W" where it writes; blanks that removed words
// leave become one.
std::string Outcome(std::string_view sql) {
  return Attempt([&] {
    const Rewritten rewritten = Rewrite(RequireOneStatement(sql), TestEngine());
    std::string shown = rewritten.text;
    for (const Constant& constant : rewritten.constants) shown += " |" + Shown(constant);
    if (rewritten.writes) shown += " W";
    const auto both_blank = [](char a, char b) { return a == ' ' && b == ' '; };
    shown.erase(std::unique(shown.begin(), shown.end(), both_blank), shown.end());
    return shown;
  });
}

struct Row {
  const char* name;
  std::string sql;
  std::string outcome;
};

void CheckAll(const std::vector<Row>& rows, std::string (*outcome)(std::string_view) = Outcome) {
  for (const Row& row : rows) EXPECT_EQ(outcome(row.sql), row.outcome) << row.name;
}

// Conditions of a query of one table.
void CheckConditions(std::vector<Row> rows) {
  for (Row& row : rows) {
    for (std::string* text : {&row.sql, &row.outcome}) {
      if (!text->starts_with('!')) text->insert(0, "SELECT a FROM t WHERE ");
    }
  }
  CheckAll(rows);
}

TEST(Rewrite, ReplacesOnlyWhatTheEngineCannotTake) {
  CheckAll({
      {"reserved everywhere", "SELECT t.limit Limit FROM limit t WHERE limit>1 ORDER BY LIMIT",
       "SELECT t.\"limit\" \"Limit\" FROM \"limit\" t WHERE \"limit\">?1 ORDER BY \"LIMIT\" NULLS "
       "LAST |1"},
      {"sequence", "SELECT my_sq.NEXTVAL, s.q.currval FROM DUAL",
       "SELECT next<my_sq>, current<s.q> FROM DUAL W"},
      {"system date", "SELECT TRUNC(SYSDATE,'MI'), t.sysdate FROM DUAL",
       "SELECT ora_trunc(now(),?1), t.sysdate FROM DUAL |'MI'"},
      {"routine", "SELECT Pkg . F( 5,'O''Hara' ) FROM DUAL",
       "SELECT call('Pkg . F', ?1,?2 ) FROM DUAL |5 |'O'Hara' W"},
      {"routine without arguments", "SELECT pkg.f() x, f(  ) FROM DUAL",
       "SELECT call('pkg.f') x, call('f' ) FROM DUAL W"},
      {"empty text", "SELECT NVL(a,'') FROM t WHERE b=''",
       "SELECT NVL(a,NULL) FROM t WHERE b=NULL"},
      {"date constants", "SELECT a FROM t WHERE d > DATE '2024-03-09'",
       "SELECT a FROM t WHERE d > TO_DATE('2024-03-09','YYYY-MM-DD') "},
      {"set operators", "SELECT a FROM t MINUS SELECT b FROM u UNION ALL SELECT 1 FROM DUAL",
       "SELECT a FROM t EXCEPT SELECT b FROM u UNION ALL SELECT 1 FROM DUAL"},
      {"for update", "SELECT a FROM t FOR UPDATE OF t.a NOWAIT", "SELECT a FROM t W"},
      {"joins", "SELECT 1 FROM a LEFT JOIN b ON a.x=b.x AND b.y=2 JOIN c USING (z), d e",
       "SELECT 1 FROM a LEFT JOIN b ON a.x=b.x AND b.y=?1 JOIN c USING (z), d e |2"},
      {"sub-selects",
       "WITH w AS (SELECT 1 x FROM DUAL) SELECT (SELECT MAX(2) FROM w WHERE x=3) FROM w",
       "WITH w AS (SELECT 1 x FROM DUAL) SELECT (SELECT MAX(?1) FROM w WHERE x=?2) FROM w |2 |3"},
      {"comments", "SELECT /*+ FULL(t) */ a -- ; it's\n FROM t /* end */;",
       "SELECT /*+ FULL(t) */ a -- ; it's\n FROM t"},
      {"words that touch constants", "SELECT 1x, 0x1 FROM t WHERE a=1and b='c'or d=2",
       "SELECT 1 x, 0 x1 FROM t WHERE a=?1 and b=?2 or d=?3 |1 |'c' |2"},
      {"window", "SELECT SUM(a) OVER (PARTITION BY b ORDER BY c ROWS UNBOUNDED PRECEDING) s FROM t",
       "SELECT SUM(a) OVER (PARTITION BY b ORDER BY c NULLS LAST ROWS UNBOUNDED PRECEDING) s FROM "
       "t"},
      {"fetch first", "SELECT a FROM t ORDER BY 1 OFFSET 4 ROWS FETCH NEXT 2 ROWS ONLY",
       "SELECT a FROM t ORDER BY 1 NULLS LAST LIMIT 2 OFFSET 4 "},
      {"other kinds of quoting", "SELECT \"Limit\" FROM t WHERE a=q'[it's]' AND b=N'x'",
       "SELECT \"Limit\" FROM t WHERE a=?1 AND b=?2 |'it's' |'x'"},
      {"insert", "INSERT INTO s.T (Id, LIMIT) VALUES (q.NEXTVAL,-5)",
       "INSERT INTO s.T (Id, \"LIMIT\") VALUES (next<q>,?1) |-5 W"},
      {"insert of a query", "INSERT INTO t SELECT 'a', 'b' FROM u WHERE c='d'",
       "INSERT INTO t SELECT 'a', 'b' FROM u WHERE c=?1 |'d' W"},
      {"update", "UPDATE t b SET b.x=1,(y,z)=(SELECT 2,3 FROM DUAL) WHERE b.x IN (4,5)",
       "UPDATE t AS b SET x=?1,(y,z)=(SELECT 2,3 FROM DUAL) WHERE b.x IN (?2,?3) |1 |4 |5 W"},
      {"delete", "DELETE t WHERE a IS NOT NULL AND b NOT LIKE 'x!%' ESCAPE '!'",
       "DELETE FROM t WHERE a IS NOT NULL AND b NOT LIKE ?1 ESCAPE ?2 |'x!%' |'!' W"},
  });
}

TEST(Rewrite, KeepsTheMeaningOfArithmetic) {
  const auto select = [](std::string expression) { return "SELECT " + expression + " FROM T"; };
  const struct {
    const char* expression;
    const char* with_functions;
    const char* with_operators;
  } rows[] = {
      {"a+b-c", "minus(plus(a,b),c)", "a+b-c"},
      {"a-b-c+d+e", "plus(minus(a,b,c),d,e)", "a-b-c+d+e"},
      {"a-(b-c)", "minus(a,(minus(b,c)))", "a-(b-c)"},
      {"a+b*c-d", "minus(plus(a,b*c),d)", "a+b*c-d"},
      {"SYSDATE-1/24", "minus(now(),1*1.0/24)", "now()-1*1.0/24"},
      {"1+2-a", "minus(1+2,a)", "1+2-a"},
      {"1E-5+a", "plus(1E-5,a)", "1E-5+a"},
      {"-a+ -b", "plus(-a, -b)", "-a+ -b"},
      {"a||b+c", "plus(a||b,c)", "a||b+c"},
      {"1||2+3", "plus(1||2,3)", "1||2+3"},
      {"a+b||c", "plus(a,b)||c", "(a+b)||c"},
      {"a||b*c||d*e", "a||(b*c)||(d*e)", "a||(b*c)||(d*e)"},
      {"a*b||c-d", "minus((a*b)||c,d)", "(a*b)||c-d"},
      {"a/b/c", "a*1.0/b*1.0/c", "a*1.0/b*1.0/c"},
      {"CASE WHEN a-b>c THEN d+e END+f", "plus(CASE WHEN minus(a,b)>c THEN plus(d,e) END,f)",
       "CASE WHEN a-b>c THEN d+e END+f"},
      {"f(a)-f(b)", "minus(call('f',a),call('f',b))", "call('f',a)-call('f',b)"},
      {"a - /* b */ c", "minus(a , /* b */ c)", "a - /* b */ c"},
  };
  for (const auto& shape : rows) {
    const auto outcome = [&](const TestEngine& engine) {
      std::string text = Rewrite(select(shape.expression), engine).text;
      if (const auto name = text.find(" AS "); name != std::string::npos) {
        text.erase(name, text.rfind('"') + 1 - name);
      }
      return text;
    };
    EXPECT_EQ(outcome(TestEngine()), select(shape.with_functions)) << shape.expression;
    EXPECT_EQ(outcome(TestEngine(false)), select(shape.with_operators)) << shape.expression;
  }
  EXPECT_EQ(Outcome("SELECT a FROM t WHERE d BETWEEN a-1 AND a+-2 AND b=1+2 ORDER BY a+1"),
            "SELECT a FROM t WHERE d BETWEEN minus(a,?1) AND plus(a,?2) AND b=?3+?4 "
            "ORDER BY plus(a,1) NULLS LAST |1 |-2 |1 |2");
}

TEST(Rewrite, MakesTheEngineDecideAsOracleDoes) {
  CheckAll({
      {"order of nulls",
       "SELECT a FROM t ORDER BY a, b ASC, c DESC, d NULLS FIRST, e DESC NULLS LAST",
       "SELECT a FROM t ORDER BY a NULLS LAST, b ASC NULLS LAST, c DESC NULLS FIRST, d NULLS "
       "FIRST, "
       "e DESC NULLS LAST"},
      {"drawn twice", "INSERT INTO t VALUES (q.NEXTVAL, Q.nextval)", "!900 @43"},
      {"drawn and read", "SELECT q.CURRVAL, q.NEXTVAL FROM DUAL", "!900 @29"},
      {"view that draws", "CREATE VIEW v AS SELECT q.NEXTVAL a FROM DUAL", "!2287 @end"},
      {"view that writes", "CREATE VIEW v AS SELECT pkg.f() a FROM DUAL", "!14551 @end"},
      {"decode", "SELECT DECODE(f(a), 1, 10/b, 2, 'x', 0) d FROM t",
       "SELECT CASE TO_NUMBER(call('f',a)) WHEN ?1 THEN ?2*1.0/b WHEN ?3 THEN ?4 ELSE ?5 END d "
       "FROM t |1 |10 |2 |'x' |0"},
      {"decode of null", "SELECT Decode(a,'x',1,NULL,2) FROM t",
       "SELECT CASE COALESCE((TO_CHAR(a)),x'') WHEN ?1 THEN ?2 WHEN COALESCE((NULL),x'') THEN ?3 "
       "END AS \"DECODE(A,'x',1,NULL,2)\" FROM t |'x' |1 |2"},
      {"decode without a known type", "SELECT DECODE(a,b,1,2) FROM t",
       "SELECT DECODE(a,b,?1,?2) FROM t |1 |2"},
      {"product of a date", "SELECT SYSDATE*2 FROM DUAL", "!932 @18"},
      {"minus a date", "SELECT -TO_DATE(a) FROM DUAL", "!932 @20"},
  });
  CheckConditions({
      {"scalar sub-select", "b=(SELECT c FROM u) AND d IN (SELECT e FROM u)",
       "b=(WITH sabrel_one(v) AS (SELECT c FROM u) SELECT single(v) FROM sabrel_one) AND d "
       "IN (SELECT e FROM u)"},
      {"sub-select of one row", "b=(SELECT MAX(c) FROM u)", "b=(SELECT MAX(c) FROM u)"},
      {"bare columns", "id=5 AND t.b='x' AND UPPER(c)='X' AND LENGTH(c)=1",
       "id=?1 AND t.b=?2 AND UPPER(c)=?3 AND LENGTH(c)=?4 |5 |'x' |'X' |1"},
      {"unlike types", "LENGTH(b)!='1' OR NVL(a,0)>= '1' OR '10'=10",
       "compare(LENGTH(b),?1)<>0 OR compare(NVL(a,?2), ?3)>=0 OR compare(?4,?5)=0 |'1' |0 "
       "|'1' |'10' |10"},
      {"patterns", "b LIKE 'x!%' ESCAPE '!' OR (c LIKE '%y') OR d LIKE '' AND e=1",
       "b LIKE 'x!%' ESCAPE '!' OR (c LIKE +(?1)) OR d LIKE NULL AND e=?2 |'%y' |1"},
      {"patterns put together", "b LIKE 'x' || c AND d LIKE UPPER('_y')",
       "b LIKE ?1 || c AND d LIKE UPPER(?2) |'x' |'_y'"},
      {"any", "a = ANY (1,2) OR a <> ALL (SELECT b FROM u)",
       "a IN (?1,?2) OR a NOT IN (SELECT b FROM u) |1 |2"},
      {"any above", "a > ANY (1,2)", "!900 @27"},
  });
}

TEST(Rewrite, LiftsConstantsOnlyWhereTheirPlaceDoesNotMatter) {
  CheckAll({
      {"numbers", "INSERT INTO t VALUES (1.0,1e3,.5,9223372036854775807,9223372036854775808,2f)",
       "INSERT INTO t VALUES (?1,?2,?3,?4,?5,?6) |1 |1000 |0.500000r |9223372036854775807 "
       "|9223372036854775808.000000r |2 W"},
      {"smallest", "DELETE FROM t WHERE a=-9223372036854775808 OR a=- 1",
       "DELETE FROM t WHERE a=?1 OR a= ?2 |-9223372036854775808 |-1 W"},
      {"tiny", "DELETE FROM t WHERE a=1e-999", "DELETE FROM t WHERE a=?1 |0 W"},
      {"huge", "DELETE FROM t WHERE a=1e999", "!1426"},
      {"select list", "SELECT 5, -5, 'a', (6), f(7) FROM DUAL",
       "SELECT 5, -5, 'a', (6), call('f',?1) FROM DUAL |7"},
      {"positions", "SELECT f(1) FROM t GROUP BY f(1) HAVING COUNT(*)>2 ORDER BY 1, f(2)",
       "SELECT call('f',?1) FROM t GROUP BY call('f',1) HAVING COUNT(*)>?2 ORDER BY 1 NULLS LAST, "
       "call('f',2) NULLS LAST |1 |2"},
      {"sizes", "SELECT CAST(a AS VARCHAR2(20 CHAR)) FROM t WHERE CAST('1' AS NUMBER(5,2))=1",
       "SELECT CAST(a AS VARCHAR2(20 )) FROM t WHERE CAST(?1 AS NUMBER(5,2))=?2 |'1' |1"},
      {"named parameters", "UPDATE t SET a=:a WHERE b=5 AND c=-1",
       "UPDATE t SET a=:a WHERE b=5 AND c=-1 W"},
  });
  std::string many = "SELECT a FROM t WHERE a IN (0";
  for (int i = 1; i < 2000; ++i) many += "," + std::to_string(i);
  const Rewritten rewritten = Rewrite(many + ")", TestEngine());
  EXPECT_EQ(rewritten.constants.size(), 999U);
  EXPECT_NE(rewritten.text.find(",?999,999,1000,"), std::string::npos);
}

TEST(Rewrite, TurnsRowNumbersIntoALimitOnlyWhereThatIsTheSame) {
  CheckAll({
      {"only", "SELECT a FROM t WHERE ROWNUM<=5", "SELECT a FROM t LIMIT 5"},
      {"first", "SELECT a FROM t WHERE rownum<5 AND b=1", "SELECT a FROM t WHERE b=?1 LIMIT 4 |1"},
      {"last", "SELECT a FROM t WHERE b=1 AND ROWNUM=1", "SELECT a FROM t WHERE b=?1 LIMIT 1 |1"},
      {"none", "SELECT a FROM t WHERE ROWNUM<0", "SELECT a FROM t LIMIT 0"},
      {"of a sorted query", "SELECT a FROM (SELECT a FROM t ORDER BY a) WHERE ROWNUM<=5",
       "SELECT a FROM (SELECT a FROM t ORDER BY a NULLS LAST) LIMIT 5"},
      {"aggregate inside", "SELECT (SELECT MAX(b) FROM u) FROM t WHERE ROWNUM<=5",
       "SELECT (SELECT MAX(b) FROM u) FROM t LIMIT 5"},
      {"sorted", "SELECT a FROM t WHERE ROWNUM<=5 ORDER BY a", "!900 @23"},
      {"counted", "SELECT NVL(COUNT(*),0) FROM t WHERE ROWNUM<=5", "!900 @37"},
      {"distinct", "SELECT DISTINCT a FROM t WHERE ROWNUM<=5", "!900 @32"},
      {"set", "SELECT a FROM t WHERE ROWNUM<=5 UNION SELECT b FROM u", "!900 @23"},
      {"or", "SELECT a FROM t WHERE ROWNUM<=5 OR b=1", "!900 @end"},
      {"nested", "SELECT a FROM t WHERE b IN (SELECT c FROM u WHERE ROWNUM<=1)", "!900 @51"},
      {"above", "SELECT a FROM t WHERE ROWNUM>5", "!900 @23"},
      {"changed", "DELETE FROM t WHERE ROWNUM<=5", "!900 @21"},
  });
}

TEST(Rewrite, RefusesWhatItCannotRewriteAndNamesThePlace) {
  CheckAll({
      {"no expression", "SELECT  FROM t", "!936 @9"},
      {"outer join mark", "SELECT 1 FROM a,b WHERE a.x=b.x(+)", "!900 @32"},
      {"hierarchy", "SELECT a FROM t CONNECT BY PRIOR a=b", "!900 @17"},
      {"engine's own clause", "SELECT a FROM t WHERE b=1 LIMIT 5", "!933 @27"},
      {"unnamed parameter", "SELECT ? FROM t", "!911 @8"},
      {"open parenthesis", "SELECT (a FROM t", "!907 @11"},
      {"closing parenthesis", "SELECT a FROM t)", "!933 @16"},
      {"case", "SELECT CASE WHEN a=1 THEN 2 FROM t", "!905 @29"},
      {"date constant", "SELECT DATE '9.3.2024' FROM t", "!1861 @8"},
      {"cast to a date", "SELECT CAST(a AS DATE) FROM t", "!900 @18"},
      {"returning", "DELETE FROM t RETURNING a INTO b", "!900 @15"},
      {"no statement", "FOO BAR", "!900 @1"},
  });
}

TEST(Rewrite, TellsWhatItRefusesAndWhereButNoConstant) {
  const std::pair<const char*, const char*> rows[] = {
      {"SELECT a FROM t WHERE b = 'x' 'secret'",
       "SQL command not properly ended near a text constant (character 31)"},
      {"SELECT a FROM t WHERE b = 'x' 7",
       "SQL command not properly ended near a number (character 31)"},
      {"SELECT 'äö', FROM t", "missing expression near \"FROM\" (character 14)"},
      {"SELECT 5", "FROM keyword not found where expected at the end of the statement"},
      {"SELECT pkg.g(1) FROM DUAL", "\"PKG\".\"G\": invalid identifier"}};
  for (const auto& [sql, told] : rows) {
    try {
      ADD_FAILURE() << Rewrite(sql, TestEngine()).text;
    } catch (const SyntaxFailure& failure) {
      EXPECT_EQ(failure.message, told);
    }
  }
}

TEST(Rewrite, WritesDefinitionsAsTheEngineTakesThem) {
  CheckAll({
      {"table", "CREATE TABLE t (LIMIT NUMBER(10,2) DEFAULT -1 NOT NULL, v VARCHAR2(20 BYTE))",
       "CREATE TABLE t (\"LIMIT\" NUMBER(10,2) DEFAULT (-1) NOT NULL, v VARCHAR2(20 )) W"},
      {"key of a column", "CREATE TABLE t (a DATE DEFAULT SYSDATE PRIMARY KEY)",
       "CREATE TABLE t (a DATE NOT NULL DEFAULT (now()) PRIMARY KEY) W"},
      {"key of the table", "CREATE TABLE t (a NUMBER(5), b DATE, c DATE, PRIMARY KEY (A, C))",
       "CREATE TABLE t (a NUMBER(5) NOT NULL, b DATE, c DATE NOT NULL, PRIMARY KEY (A, C)) W"},
      {"rules", "CREATE TABLE t (a NUMBER(*,0) CHECK (a > 0+b) REFERENCES u (x) ON DELETE CASCADE)",
       "CREATE TABLE t (a NUMBER(38,0) CHECK (a > plus(0,b)) REFERENCES u (x) ON DELETE CASCADE) "
       "W"},
      {"copy of a query", "CREATE TABLE t AS SELECT f(1) x FROM u WHERE a='b'",
       "CREATE TABLE t AS SELECT call('f',1) x FROM u WHERE a='b' W"},
      {"view", "CREATE OR REPLACE VIEW v (a) AS SELECT SYSDATE-1 FROM DUAL WHERE 1=1",
       "CREATE OR REPLACE VIEW v (a) AS SELECT minus(now(),1) FROM DUAL WHERE 1=1 W"},
      {"new column", "ALTER TABLE t ADD (limit DATE)", "ALTER TABLE t ADD \"limit\" DATE W"},
      {"truncate", "TRUNCATE TABLE t", "DELETE FROM t W"},
      {"drop", "DROP TABLE t CASCADE CONSTRAINTS PURGE", "DROP TABLE t W"},
      {"package", "CREATE PACKAGE p AS FUNCTION f RETURN NUMBER; END;", "!900 @45"},
  });
}

TEST(Rewrite, SurvivesLongAndDeepStatements) {
  const std::string deep(100'000, '(');
  EXPECT_EQ(Outcome("SELECT " + deep), "!900 @508");
  EXPECT_EQ(Outcome("SELECT " + std::string(400, '(') + "1" + std::string(400, ')') + " FROM t")
                .substr(0, 8),
            "SELECT (");
  std::string calls = "SELECT a FROM t WHERE b IN (";
  for (int i = 0; i < 50'000; ++i) calls += "SELECT b FROM (";
  EXPECT_EQ(Outcome(calls).substr(0, 4), "!900");
  std::string chain = "SELECT - - - a";
  for (int i = 0; i < 100'000; ++i) chain += "+b";
  const std::string sums = Rewrite(chain + " FROM t", TestEngine()).text;
  EXPECT_EQ(std::count(sums.begin(), sums.end(), '('), 100'000 / 99 + 1);  // 100 operands each
  EXPECT_EQ(std::count(sums.begin(), sums.end(), ','), 100'000);
  const std::string text(1'000'000, 'x');
  EXPECT_EQ(Rewrite("INSERT INTO t VALUES ('" + text + "')", TestEngine()).constants[0].text, text);
}

// Whatever the text, it is refused or rewritten to balanced text with a place for every constant.
TEST(Rewrite, AcceptsOrRefusesEveryShortText) {
  constexpr std::string_view kAlphabet = "'\"()-*/; a1";
  const TestEngine engine;
  int accepted = 0;
  const auto try_one = [&](const std::string& sql) {
    try {
      const Rewritten rewritten = Rewrite(RequireOneStatement(sql), engine);
      ++accepted;
      int depth = 0;
      std::size_t places = 0;
      char quote = '\0';
      for (const char c : rewritten.text) {
        if (quote != '\0' || c == '\'' || c == '"') {
          quote = quote == '\0' ? c : (c == quote ? '\0' : quote);
          continue;
        }
        if (c == '?') ++places;
        depth += c == '(' ? 1 : (c == ')' ? -1 : 0);
      }
      const bool has_comment =
          sql.find("/*") != std::string::npos || sql.find("--") != std::string::npos;
      if (has_comment) return;
      ASSERT_EQ(depth, 0) << sql << " -> " << rewritten.text;
      ASSERT_EQ(places, rewritten.constants.size()) << sql << " -> " << rewritten.text;
    } catch (const SyntaxFailure& failure) {
      ASSERT_FALSE(failure.message.empty()) << sql;
    }
    (void)Attempt([&] { return std::to_string(ParseBlock(sql).size()); });
  };
  std::string text;
  const std::function<void(std::size_t)> extend = [&](std::size_t left) {
    try_one(text);
    if (left > 0) try_one("SELECT f(" + text + ") FROM t WHERE a=" + text);
    if (left == 0) return;
    for (const char c : kAlphabet) {
      text += c;
      extend(left - 1);
      text.pop_back();
    }
  };
  extend(5);
  EXPECT_GT(accepted, 500);
}

TEST(RequireOneStatement, FindsTheEndOfOneStatementAndRefusesASecond) {
  const std::string body =
      "CREATE FUNCTION f RETURN NUMBER IS BEGIN SELECT CASE a WHEN 1 THEN 2 END "
      "FROM t; x.END; END f;";
  const std::vector<Row> rows = {
      {"quoted", "SELECT ';' FROM \";\" /* ; */", "SELECT ';' FROM \";\""},
      {"two", "SELECT a FROM t; DELETE FROM t", "!911 @18"},
      {"block", "BEGIN a; b(';'); END; ", "BEGIN a; b(';'); END;"},
      {"behind a block", "BEGIN a; END; DROP TABLE t", "!911 @15"},
      {"routine", body + " ", body},
      {"behind a routine", body + "x", "!911 @95"},
      {"open text", "SELECT 'a''", "!1756"},
      {"open alternative", "SELECT q'[a'", "!1756"},
      {"alternative at the end", "q'", "!1756"},
      {"open comment", "SELECT /* a", "!900"},
      {"closed nothing", ";", "!900"},
      {"not UTF-8", "SELECT '\xC3' FROM t", "!911"},
      {"NUL", std::string("SELECT a\0 FROM t", 16), "!911"},
  };
  CheckAll(rows, [](std::string_view sql) {
    return Attempt([&] { return std::string(RequireOneStatement(sql)); });
  });
}

// Calls as name[arguments], statements in braces.
std::string Steps(std::string_view block) {
  return Attempt([&] {
    std::string shown;
    for (const BlockStep& step : ParseBlock(block)) {
      shown += step.is_call ? step.name + "[" : "{" + step.statement + "}";
      for (std::size_t i = 0; i < step.arguments.size(); ++i) {
        shown += (i == 0 ? "" : "|") + step.names[i] + (step.names[i].empty() ? "" : "=") +
                 step.arguments[i];
      }
      if (step.is_call) shown += "]";
    }
    return shown;
  });
}

TEST(ParseBlock, TakesCallsAndStatementsAndRefusesControlFlow) {
  const std::vector<Row> rows = {
      {"texts", "BEGIN PKG.P( 5,'O''Hara, (;' ); END;", "PKG.P[5|'O''Hara, (;']"},
      {"no arguments", "BEGIN P(  ); q ; END;", "P[]q[]"},
      {"nested", "begin p(f(1,2), (3)) ; end p;", "p[f(1,2)|(3)]"},
      {"named", "BEGIN p(1, b => 2+3); END;", "p[1|b=2+3]"},
      {"statements", "BEGIN NULL; UPDATE t SET a=';' WHERE b=1; COMMIT; END;",
       "{UPDATE t SET a=';' WHERE b=1}{COMMIT}"},
      {"error", "BEGIN RAISE_APPLICATION_ERROR(-20011,'text'); END;",
       "RAISE_APPLICATION_ERROR[-20011|'text']"},
      {"lost argument", "BEGIN P( 5,,7 ); END;", "!6550 @12"},
      {"named first", "BEGIN p(a => 1, 2); END;", "!6550 @17"},
      {"open", "BEGIN p(1; END;", "!6550 @10"},
      {"no end", "BEGIN p;", "!6550 @end"},
      {"no semicolon", "BEGIN p; END", "!6550 @end"},
      {"assignment", "BEGIN x := 1; END;", "!6550 @9"},
      {"if", "BEGIN IF a THEN b; END IF; END;", "!6550 @7"},
  };
  CheckAll(rows, Steps);
}

std::string Routine(std::string_view sql) {
  return Attempt([&] {
    const RoutineDefinition routine = ParseCreateRoutine(sql);
    std::string shown = routine.or_replace ? "replace " : "";
    shown += routine.package + "." + routine.name + "(";
    for (const RoutineArgument& argument : routine.arguments) {
      shown += argument.name + ":" + argument.type;
      shown += argument.direction == Direction::kIn    ? ","
               : argument.direction == Direction::kOut ? "<,"
                                                       : "<>,";
    }
    shown += ")" + (routine.is_function ? "=" + routine.result_type : "");
    for (const std::string& statement : routine.body) shown += "{" + statement + "}";
    return shown;
  });
}

TEST(ParseCreateRoutine, ReadsHeadAndBody) {
  const std::vector<Row> rows = {
      {"function",
       "CREATE OR REPLACE FUNCTION pkg.f (a IN NUMBER, b varchar2(20)) RETURN Varchar2 IS "
       "BEGIN "
       "SELECT ':x;' || :a FROM DUAL; END f;",
       "replace PKG.F(a:NUMBER,b:VARCHAR2,)=VARCHAR2{SELECT ':x;' || :a FROM DUAL}"},
      {"procedure",
       "CREATE PROCEDURE p(x OUT DATE, y IN OUT NUMBER) AS BEGIN "
       "DELETE FROM t /* ; */ ; q(1); END;",
       ".P(x:DATE<,y:NUMBER<>,){DELETE FROM t}{q(1)}"},
      {"empty body", "CREATE PROCEDURE p IS BEGIN NULL; END;", ".P()"},
      {"declarations", "CREATE PROCEDURE p IS x NUMBER; BEGIN NULL; END;", "!6550 @23"},
      {"no result", "CREATE FUNCTION f IS BEGIN NULL; END;", "!6550 @19"},
      {"control flow", "CREATE PROCEDURE p IS BEGIN LOOP NULL; END LOOP; END;", "!6550 @29"},
      {"no statement", "CREATE PROCEDURE p IS BEGIN ; END;", "!6550 @29"},
      {"no end", "CREATE PROCEDURE p IS BEGIN q(1);", "!6550 @end"},
  };
  CheckAll(rows, Routine);
}

TEST(Definitions, AreReadIntoStructures) {
  CheckAll(
      {{"nothing said", "", "S.MY_SQ 1 1"},
       {"start and step", "START WITH -5 INCREMENT BY 10 NOCACHE ORDER", "S.MY_SQ -5 10"},
       {"no limit", "MINVALUE 1 MAXVALUE 9999999999999999999999999999 CACHE 20", "S.MY_SQ 1 1"},
       {"limit", "MAXVALUE 10", "!900 @end"},
       {"cycle", "CYCLE", "!900 @25"},
       {"no step", "INCREMENT BY 0", "!4002"}},
      [](std::string_view options) {
        const std::string outcome = Attempt([&] {
          const auto made = ParseCreateSequence("CREATE SEQUENCE s.My_Sq " + std::string(options));
          return made.name + " " + std::to_string(made.start) + " " +
                 std::to_string(made.increment);
        });
        return outcome;
      });
  CheckAll({{"routine", "DROP FUNCTION pkg.f", "PKG.F"},
            {"quoted", "drop sequence \"a B\"", "a B"},
            {"body", "DROP PACKAGE BODY p", "P"}},
           DroppedName);

  const std::string table =
      "CREATE TABLE s.t (a NUMBER(10,2) DEFAULT f(1,2), \"b c\" varchar2(20 CHAR), d DATE NOT "
      "NULL, "
      "CONSTRAINT p PRIMARY KEY (a), CHECK (d > a))";
  std::string shown;
  for (const ColumnDefinition& column : ParseCreateTable(table)) {
    shown += column.name + ":" + column.type + ":" + std::to_string(column.width.value_or(-1)) +
             ":" + std::to_string(column.scale.value_or(-1)) + table.substr(column.end, 4) + "/";
  }
  EXPECT_EQ(shown, "a:NUMBER:10:2, \"b/b c:VARCHAR2:20:-1, d /d:DATE:-1:-1, CO/");
  EXPECT_TRUE(ParseCreateTable("CREATE TABLE t AS SELECT 1 FROM DUAL").empty());
}

}  // namespace
}  // namespace sabrel::dialect
