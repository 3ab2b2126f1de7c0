#include "adapters/shared/dialect/dialect.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace sabrel::dialect {
namespace {

// Spells everything so that a row can be read; F is a routine, PKG.F one that writes.
class TestEngine final : public Engine {
 public:
  std::optional<RoutineFacts> FindRoutine(std::string_view name) const override {
    if (name == "PKG.F") return RoutineFacts{true};
    if (name == "F") return RoutineFacts{false};
    return std::nullopt;
  }
  bool KnowsFunction(std::string_view name) const override { return name != "HEX"; }
  bool IsReservedWord(std::string_view word) const override { return word == "LIMIT"; }
  std::string NextValue(std::string_view name) const override { return "next<" + Text(name); }
  std::string CurrentValue(std::string_view name) const override { return "now<" + Text(name); }
  std::string SystemDate() const override { return "now()"; }
  CallOpening RoutineCall(std::string_view name) const override {
    return {"call('" + Text(name) + "'", true};
  }
  std::string_view AddFunction() const override { return "plus"; }
  std::string_view SubtractFunction() const override { return "minus"; }
  std::string_view SingleFunction() const override { return "single"; }
  std::string_view CompareFunction() const override { return "compare"; }
  std::string_view PatternFunction() const override { return "like"; }
  std::string_view FunctionName(std::string_view name) const override {
    return name == "TRUNC" ? "ora_trunc" : "";
  }

 private:
  static std::string Text(std::string_view view) { return std::string(view); }
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
template <class Action>
std::string Attempt(const Action& action) {
  try {
    return action();
  } catch (const SyntaxFailure& failure) {
    const std::string& told = failure.message;
    const std::size_t place = told.rfind("(character ");
    const std::string number = "!" + std::to_string(failure.native_number);
    if (told.ends_with("at the end of the statement")) return number + " @end";
    if (place == std::string::npos) return number;
    return number + " @" + told.substr(place + 11, told.size() - place - 12);
  }
}

// The rewritten text of `sql` between `before` and `behind`, its constants behind "|", "W" where it
// writes; blanks that removed words leave become one.
std::string Between(std::string_view before, std::string_view sql, std::string_view behind) {
  const std::string whole = std::string(before) + std::string(sql) + std::string(behind);
  return Attempt([&] {
    const Rewritten rewritten = Rewrite(RequireOneStatement(whole), TestEngine());
    std::string shown = rewritten.text;
    if (shown.ends_with(behind)) shown.erase(shown.size() - behind.size());
    if (shown.starts_with(before)) shown.erase(0, before.size());
    for (const Constant& constant : rewritten.constants) shown += " |" + Shown(constant);
    if (rewritten.writes) shown += " W";
    const auto both_blank = [](char a, char b) { return a == ' ' && b == ' '; };
    shown.erase(std::unique(shown.begin(), shown.end(), both_blank), shown.end());
    return shown;
  });
}
std::string Whole(std::string_view sql) { return Between("", sql, ""); }
std::string Columns(std::string_view sql) { return Between("SELECT ", sql, " FROM t"); }
std::string Where(std::string_view sql) { return Between("SELECT a FROM t WHERE ", sql, ""); }
std::string Group(std::string_view sql) { return Between("SELECT 1 FROM t GROUP BY ", sql, ""); }

struct Row {
  const char* name;
  std::string (*outcome_of)(std::string_view);
  std::string sql;
  std::string outcome;
};

void CheckAll(const std::vector<Row>& rows) {
  for (const Row& row : rows) EXPECT_EQ(row.outcome_of(row.sql), row.outcome) << row.name;
}

TEST(Rewrite, ReplacesOnlyWhatTheEngineCannotTake) {
  CheckAll({
      {"date", Columns, "TRUNC(SYSDATE,'MI'), t.sysdate",
       "ora_trunc(now(),?1) AS \"TRUNC(SYSDATE,'MI')\", t.sysdate |'MI'"},
      {"sequences", Columns, "my_sq.NEXTVAL, s.q.currval", "next<my_sq, now<s.q W"},
      {"routine", Columns, "Pkg . F( 5,'O''Hara' )", "call('Pkg . F', ?1,?2 ) |5 |'O'Hara' W"},
      {"touching numbers", Columns, "1x, 0x1", "1 x, 0 x1"},
      {"comments", Columns, "/*+ FULL(t) */ a -- ; it's\n", "/*+ FULL(t) */ a -- ; it's\n"},
      {"locks", Where, "b FOR UPDATE OF t.a NOWAIT", "b W"},
      {"fetch", Where, "b ORDER BY 1 OFFSET 4 ROWS FETCH NEXT 2 ROWS ONLY",
       "b ORDER BY 1 NULLS LAST LIMIT 2 OFFSET 4 "},
      {"reserved", Whole, "SELECT t.limit Limit FROM limit t WHERE limit>b ORDER BY LIMIT",
       R"(SELECT t."limit" "Limit" FROM "limit" t WHERE "limit">b ORDER BY "LIMIT" NULLS LAST)"},
      {"update", Whole, "UPDATE t b SET b.x=1,(y,z)=(SELECT 2,3 FROM DUAL) WHERE b.x IN (4,5)",
       "UPDATE t AS b SET x=?1,(y,z)=(SELECT 2,3 FROM DUAL) WHERE b.x IN (?2,?3) |1 |4 |5 W"},
  });
}

TEST(Rewrite, KeepsTheMeaningOfArithmetic) {
  CheckAll({
      {"chain", Group, "a-b-c+d+e", "plus(minus(a,b,c),d,e)"},
      {"product", Group, "a+b*c-d", "minus(plus(a,b*c),d)"},
      {"quotient", Group, "SYSDATE-1/24", "minus(now(),1*1.0/24)"},
      {"text of a number", Group, "1||2+3", "plus(1||2,3)"},
      {"sum before ||", Group, "a+b||c", "plus(a,b)||c"},
      {"products around ||", Group, "a*b||c*d||e-f", "minus((a*b)||(c*d)||e,f)"},
  });
}

TEST(Rewrite, MakesTheEngineDecideAsOracleDoes) {
  CheckAll({
      {"drawn and read", Columns, "q.CURRVAL, Q.NEXTVAL", "!900 @29"},
      {"decode", Columns, "Decode(f(a),1,b,NULL,c)",
       "CASE COALESCE((TO_NUMBER(call('f',a))),x'') WHEN ?1 THEN b WHEN COALESCE((NULL),x'') THEN "
       "c "
       "END AS \"DECODE(F(A),1,B,NULL,C)\" |1"},
      {"decode of no known type", Columns, "DECODE(a,b,1,2)", "DECODE(a,b,?1,?2) |1 |2"},
      {"product of a date", Columns, "SYSDATE*2", "!932 @18"},
      {"order of nulls", Where, "b ORDER BY a, c DESC, d NULLS FIRST",
       "b ORDER BY a NULLS LAST, c DESC NULLS FIRST, d NULLS FIRST"},
      {"sub-select", Where, "b=(SELECT c FROM u)",
       "b=(WITH sabrel_one(v) AS (SELECT c FROM u) SELECT single(v) FROM sabrel_one)"},
      {"unlike types", Where, "LENGTH(b)!='1' OR NVL(a,b)>= '1'",
       "compare(LENGTH(b),?1)<>0 OR compare(NVL(a,b), ?2)>=0 |'1' |'1'"},
      {"patterns", Where, "b LIKE 'x!%' ESCAPE '!' OR (c LIKE '%y') OR d LIKE 'z'||e",
       "like(b , ?1 , ?2) OR (like(c , ?3)) OR like(d , ?4||e) |'x!%' |'!' |'%y' |'z'"},
      {"beginnings", Where, "b LIKE 'x%' OR c LIKE 'x_y%' OR d LIKE 'x' OR UPPER(e) LIKE 'x%'",
       "b LIKE 'x%' OR (c LIKE 'x%' AND like(c,'x_y%')) OR d LIKE 'x' OR like(UPPER(e) , ?1) "
       "|'x%'"},
      {"any above", Where, "a > ANY (1,2)", "!900 @27"},
  });
}

TEST(Rewrite, LiftsConstantsOnlyWhereTheirPlaceDoesNotMatter) {
  CheckAll({
      {"numbers", Where, "a IN (1.0,1e3,.5,9223372036854775808,2f)",
       "a IN (?1,?2,?3,?4,?5) |1 |1000 |0.500000r |9223372036854775808.000000r |2"},
      {"smallest", Where, "a=-9223372036854775808", "a=?1 |-9223372036854775808"},
      {"huge", Where, "a=1e999", "!1426"},
      {"named parameters", Where, "b=5 AND c=:a", "b=5 AND c=:a"},
      {"columns", Columns, "5, -5, 'a', (6), f(7)", "5, -5, 'a', (6), call('f',?1) |7"},
      {"positions", Whole, "SELECT f(1) FROM t GROUP BY f(1) HAVING a>2 ORDER BY 3",
       "SELECT call('f',?1) FROM t GROUP BY call('f',1) HAVING a>?2 ORDER BY 3 NULLS LAST |1 |2"},
  });
  std::string many = "SELECT a FROM t WHERE a IN (0";
  for (int i = 1; i < 2000; ++i) many += "," + std::to_string(i);
  const Rewritten rewritten = Rewrite(many + ")", TestEngine());
  EXPECT_EQ(rewritten.constants.size(), 999U);
  EXPECT_NE(rewritten.text.find(",?999,999,1000,"), std::string::npos);
}

TEST(Rewrite, TurnsRowNumbersIntoALimitOnlyWhereThatIsTheSame) {
  CheckAll({
      {"first", Where, "rownum<5 AND b=1", " b=?1 LIMIT 4 |1"},
      {"last", Where, "b=1 AND ROWNUM=1", "b=?1 LIMIT 1 |1"},
      {"none", Where, "ROWNUM<0", "SELECT a FROM t LIMIT 0"},
      {"sorted", Where, "ROWNUM<=5 ORDER BY a", "!900 @23"},
      {"set", Where, "ROWNUM<=5 UNION SELECT b FROM u", "!900 @23"},
      {"or", Where, "ROWNUM<=5 OR b=1", "!900 @end"},
      {"locked", Where, "ROWNUM<3 FOR UPDATE", "SELECT a FROM t LIMIT 2 W"},
      {"order of what is joined", Whole,
       "SELECT * FROM u, (t JOIN (SELECT a FROM t ORDER BY a) y ON 1=1) WHERE ROWNUM<3",
       "SELECT * FROM u, (t JOIN (SELECT a FROM t ORDER BY a NULLS LAST LIMIT -1) y ON ?1=?2) "
       "LIMIT 2 |1 |1"},
      {"numbers sorted", Columns, "ROWNUM FROM t ORDER BY a", "!900 @8"},
      {"numbers in a join", Whole, "SELECT 1 FROM t JOIN u ON a=ROWNUM", "!900 @29"},
      {"distinct", Whole, "SELECT DISTINCT a FROM t WHERE ROWNUM<=5", "!900 @32"},
  });
}

TEST(Rewrite, RefusesColumnsBesideAggregatesThatAreNotGrouped) {
  CheckAll({
      {"no group", Columns, "1, NVL(MAX(b),0), a", "!937 @26"},
      {"windows", Columns, "MAX(b) OVER (), a", "MAX(b) OVER (), a"},
      {"another group", Whole, "SELECT t.a, MAX(b) FROM t GROUP BY b", "!979 @10"},
      {"its group", Whole, "SELECT t.a, \"B\", 1+c FROM t GROUP BY (A, t.b)",
       "SELECT t.a, \"B\", plus(1,c) FROM t GROUP BY (A, t.b)"},
      {"of another query", Whole, "SELECT a FROM t UNION SELECT MAX(b) FROM u",
       "SELECT a FROM t UNION SELECT MAX(b) FROM u"},
      {"of an outer query", Where, "a IN (SELECT t.a FROM u GROUP BY b)",
       "a IN (SELECT t.a FROM u GROUP BY b)"},
  });
}

TEST(Rewrite, RefusesWhatItCannotRewriteAndNamesThePlace) {
  CheckAll({
      {"outer join mark", Where, "a.x=b.x(+)", "!900 @30"},
      {"engine's own clause", Where, "b=1 LIMIT 5", "!933 @27"},
      {"unnamed parameter", Where, "b=?", "!911 @25"},
      {"open parenthesis", Columns, "(a", "!907 @11"},
      {"case", Columns, "CASE WHEN a=1 THEN 2", "!905 @29"},
      {"date constant", Columns, "DATE '9.3.2024'", "!1861 @8"},
      {"cast to a date", Columns, "CAST(a AS DATE)", "!900 @18"},
      {"behind characters", Columns, "'äö', ", "!936 @15"},
      {"unknown routine", Columns, "pkg.g(1)", "!904"},
      {"unknown function", Where, "a IN (SELECT MAX(Hex(b)) FROM u)", "!904"},
      {"unknown function of a frame", Columns, "MAX(a) OVER (ORDER BY b ROWS HEX(1))", "!907 @40"},
  });
}

TEST(Rewrite, WritesDefinitionsAsTheEngineTakesThem) {
  CheckAll({
      {"table", Whole, "CREATE TABLE t (LIMIT NUMBER(*,0) DEFAULT -1 NOT NULL, v CHAR(2 BYTE))",
       "CREATE TABLE t (\"LIMIT\" NUMBER(38,0) DEFAULT (-1) NOT NULL, v CHAR(2 )) W"},
      {"view that draws", Whole, "CREATE VIEW v AS SELECT q.NEXTVAL a FROM DUAL", "!2287 @end"},
      {"view that writes", Whole, "CREATE VIEW v AS SELECT pkg.f() a FROM DUAL", "!14551 @end"},
      {"package", Whole, "CREATE PACKAGE p AS FUNCTION f RETURN NUMBER; END;", "!900 @45"},
  });
}

TEST(Rewrite, SurvivesLongAndDeepStatements) {
  EXPECT_EQ(Columns(std::string(100'000, '(')), "!900 @508");
  EXPECT_EQ(Columns(std::string(400, '(') + "1" + std::string(400, ')'))[0], '(');
  std::string calls = "b IN (";
  for (int i = 0; i < 50'000; ++i) calls += "SELECT b FROM (";
  EXPECT_EQ(Where(calls).substr(0, 4), "!900");
  std::string chain = "- - - a";
  for (int i = 0; i < 100'000; ++i) chain += "+b";
  const std::string sums = Group(chain);
  EXPECT_EQ(std::count(sums.begin(), sums.end(), '('), 100'000 / 99 + 1);  // 100 operands each
  EXPECT_EQ(std::count(sums.begin(), sums.end(), ','), 100'000);
}

std::string One(std::string_view sql) {
  return Attempt([&] { return std::string(RequireOneStatement(sql)); });
}

TEST(RequireOneStatement, FindsTheEndOfOneStatementAndRefusesASecond) {
  const std::string body =
      "CREATE FUNCTION f RETURN NUMBER IS BEGIN SELECT CASE a WHEN 1 THEN 2 END FROM t; x.END; "
      "END f;";
  CheckAll({
      {"quoted", One, "SELECT ';' FROM \";\" /* ; */", "SELECT ';' FROM \";\""},
      {"block", One, "BEGIN a; b(';'); END; ", "BEGIN a; b(';'); END;"},
      {"behind a block", One, "BEGIN a; END; DROP TABLE t", "!911 @15"},
      {"routine", One, body + " ", body},
      {"behind a routine", One, body + "x", "!911 @95"},
      {"open text", One, "SELECT 'a''", "!1756"},
      {"open comment", One, "SELECT /* a", "!900"},
  });
}

// Calls as name[arguments], statements in braces.
std::string Steps(std::string_view block) {
  return Attempt([&] {
    std::string shown;
    for (const BlockStep& step : ParseBlock(block)) {
      shown += step.is_call ? step.name + "[" : "{" + step.statement + "}";
      for (std::size_t i = 0; i < step.arguments.size(); ++i) {
        shown += step.names[i] + "=" + step.arguments[i] + "|";
      }
      if (step.is_call) shown += "]";
    }
    return shown;
  });
}

TEST(ParseBlock, TakesCallsAndStatementsAndRefusesControlFlow) {
  CheckAll({
      {"texts", Steps, "BEGIN PKG.P( 5,'O''Hara, (;' ); END;", "PKG.P[=5|='O''Hara, (;'|]"},
      {"nested", Steps, "begin p(f(1,2), (3)) ; end p;", "p[=f(1,2)|=(3)|]"},
      {"named", Steps, "BEGIN p(1, b => 2+3); END;", "p[=1|b=2+3|]"},
      {"statements", Steps, "BEGIN NULL; UPDATE t SET a=';' WHERE b=1; COMMIT; END;",
       "{UPDATE t SET a=';' WHERE b=1}{COMMIT}"},
      {"lost argument", Steps, "BEGIN P( 5,,7 ); END;", "!6550 @12"},
      {"named first", Steps, "BEGIN p(a => 1, 2); END;", "!6550 @17"},
      {"no end", Steps, "BEGIN p;", "!6550 @end"},
      {"assignment", Steps, "BEGIN x := 1; END;", "!6550 @9"},
  });
}

std::string Body(std::string_view sql) {
  return Attempt([&] {
    const RoutineDefinition routine = ParseCreateRoutine(sql);
    std::string shown = routine.package + "." + routine.name;
    for (const std::string& statement : routine.body) shown += "{" + statement + "}";
    return shown;
  });
}

std::string Sequence(std::string_view options) {
  return Attempt([&] {
    const auto made = ParseCreateSequence("CREATE SEQUENCE s.My_Sq " + std::string(options));
    return made.name + " " + std::to_string(made.start) + " " + std::to_string(made.increment);
  });
}

std::string Dropped(std::string_view sql) {
  return Attempt([sql] { return DroppedName(sql); });
}

TEST(Definitions, AreReadIntoStructures) {
  CheckAll({
      {"body", Body,
       "CREATE FUNCTION pkg.f RETURN DATE AS BEGIN NULL; DELETE FROM t /* ; */ ; q(':x;'); END f;",
       "PKG.F{DELETE FROM t}{q(':x;')}"},
      {"declarations", Body, "CREATE PROCEDURE p IS x NUMBER; BEGIN q; END;", "!6550 @23"},
      {"no result", Body, "CREATE FUNCTION f IS BEGIN q; END;", "!6550 @19"},
      {"control flow", Body, "CREATE PROCEDURE p IS BEGIN IF a THEN b; END IF; END;", "!6550 @29"},
      {"start and step", Sequence, "START WITH -5 INCREMENT BY 10 ORDER", "S.MY_SQ -5 10"},
      {"limit", Sequence, "MAXVALUE 10", "!900 @end"},
      {"no step", Sequence, "INCREMENT BY 0", "!4002"},
      {"dropped quoted", Dropped, "drop sequence \"a B\"", "a B"},
      {"dropped list", Dropped, "drop function f, g", "!933 @16"},
  });
}

}  // namespace
}  // namespace sabrel::dialect
