#include "adapters/odbc/postgresql/postgresql_dialect.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "adapters/odbc/call_parameters.h"
#include "adapters/odbc/engine.h"
#include "adapters/shared/dialect/dialect.h"

namespace sabrel::odbc {
namespace {

// What is sent for `sql`, without the dictionary's schema and double blanks; "!" and the number of
// a refusal.
std::string Sent(std::string_view sql) {
  try {
    std::string sent = CompileForPostgresql(dialect::RequireOneStatement(sql)).text;
    constexpr std::string_view kSchema = "sabrel_dictionary.";
    for (auto at = sent.find(kSchema); at != std::string::npos; at = sent.find(kSchema, at)) {
      sent.replace(at, kSchema.size(), "@");
    }
    const auto both_blank = [](char a, char b) { return a == ' ' && b == ' '; };
    sent.erase(std::unique(sent.begin(), sent.end(), both_blank), sent.end());
    return sent;
  } catch (const dialect::SyntaxFailure& failure) {
    return "!" + std::to_string(failure.native_number);
  }
}

TEST(PostgresqlDialect, WritesStatementsAsTheServerTakesThem) {
  const struct {
    const char* name;
    const char* oracle;
    const char* postgresql;
  } rows[] = {
      {"names", "SELECT LIMIT, t.End, \"ID\", \"aB\", X#, 1 DAY FROM s.User t ORDER BY LIMIT DESC",
       "SELECT \"limit\", t.\"end\", \"id\", \"aB\", \"x#\", 1 \"day\" FROM s.\"user\" t ORDER BY "
       "\"limit\" DESC"},
      {"names of columns", "SELECT ABS(c), 'a', t.*, q.NEXTVAL, SYSDATE, NULL, a b FROM t",
       "SELECT ABS(c) AS \"abs(c)\", 'a' AS \"'a'\", t.*, @next_value('q') AS \"nextval\", "
       "@sysdate() AS \"sysdate\", NULL AS \"null\", a b FROM t"},
      {"comments", "SELECT/*+ a /* b */c--d\nFROM t", "SELECT c FROM t"},
      {"one row of many values", "SELECT a m FROM DUAL", "/**/SELECT a m FROM DUAL"},
      {"a row a group", "SELECT MAX(a) m FROM t GROUP BY b", "SELECT MAX(a) m FROM t GROUP BY b"},
      {"constants", "SELECT a FROM t WHERE b=-1 AND c='' AND d=N'it''s' AND e=q'[\\]' AND f=1.5d",
       "SELECT a FROM t WHERE b=-1 AND c=NULL AND d='it''s' AND e='\\' AND f=1.5"},
      {"arithmetic", "SELECT d+1, a/b*2, 1+2 FROM t",
       "SELECT d+1 AS \"d+1\", a*1.0/b*1.0*2 AS \"a/b*2\", 1+0.0+2 AS \"1+2\" FROM t"},
      {"set operators", "SELECT a FROM t MINUS SELECT b FROM u ORDER BY 1 FETCH FIRST 2 ROWS ONLY",
       "/**/SELECT a FROM t EXCEPT SELECT b FROM u ORDER BY 1 FETCH FIRST 2 ROWS ONLY"},
      {"locks", "SELECT a FROM t FOR UPDATE OF t.a NOWAIT",
       "SELECT a FROM t FOR UPDATE OF t NOWAIT"},
      {"locks of columns", "SELECT a FROM t FOR UPDATE OF a SKIP LOCKED",
       "SELECT a FROM t FOR UPDATE SKIP LOCKED"},
      {"locks awaited", "SELECT a FROM t FOR UPDATE WAIT 5", "!900"},
      {"parameters", "DELETE FROM t WHERE a=:a", "!1008"},
      {"table",
       "CREATE TABLE t (a NUMBER(10,2) PRIMARY KEY, \"B\" VARCHAR2(20 CHAR) DEFAULT 'x', c DATE "
       "DEFAULT '1-JAN-00', d "
       "NUMBER(*,0), e LONG RAW, f TIMESTAMP(3) WITH TIME ZONE, g INTEGER, h BLOB(9))",
       "CREATE TABLE t (a numeric(10,2) PRIMARY KEY, \"b\" varchar(20) DEFAULT ('x'), c "
       "timestamp(0) DEFAULT (@to_date('1-JAN-00')), d numeric(38,0), e bytea , f timestamp(3) "
       "WITH TIME ZONE, g numeric(38), h "
       "bytea)"},
      {"column", "ALTER TABLE t ADD (Limit CLOB)", "ALTER TABLE t ADD \"limit\" text"},
      {"united texts", "SELECT 'a' x FROM t UNION SELECT pkg.f('b', '5') FROM t",
       "SELECT 'a'::text x FROM t UNION SELECT pkg.f('b'::text, '5') AS \"pkg.f('b','5')\" FROM t"},
      {"drop", "DROP TABLE t CASCADE CONSTRAINTS PURGE", "DROP TABLE t CASCADE "},
      {"sequence from 0", "CREATE SEQUENCE q START WITH 0",
       "CREATE SEQUENCE q INCREMENT BY 1 MINVALUE 0 START WITH 0"},
      {"routine", "CREATE FUNCTION f RETURN NUMBER IS BEGIN NULL; END;", "!900"},
      {"transaction", "COMMIT", ""},
      {"block", "BEGIN Pkg.P(1, b => 'O''Hara'||SYSDATE); q; DELETE t WHERE a='$sabrel$'; END;",
       "DO $sabrel1$BEGIN PERFORM @run('Pkg.P', ARRAY['1', '\"b\" => "
       "@text_or_null(concat(''O''''Hara'',@to_char(@sysdate())))']::text[]); PERFORM @run('q', "
       "ARRAY[]::text[]); EXECUTE 'DELETE FROM t WHERE a=''$sabrel$'''; END$sabrel1$"},
      {"block that commits", "BEGIN DELETE t; COMMIT; END;", "!6550"},
  };
  for (const auto& row : rows) EXPECT_EQ(Sent(row.oracle), row.postgresql) << row.name;
}

// The table and the columns that the question about a unique key names; "" where there is none.
TEST(PostgresqlDialect, AsksForAUniqueKeyWhereOneTableIsLookedInto) {
  const std::pair<const char*, const char*> rows[] = {
      {"SELECT a FROM t WHERE Id = 3", "t id"},
      {"SELECT a FROM s.T x WHERE x.Id = 3 AND b > 1 AND \"Limit\" = 'x' ORDER BY b",
       "s.T id Limit"},
      {"SELECT a FROM t WHERE id = 3 OR id = 4", ""},
      {"SELECT a FROM t WHERE id = b AND c = 1+1", ""},
      {"SELECT a FROM t WHERE id = 3 AND (b = 4 OR c = 5)", "t id"},
      {"SELECT a FROM t, u WHERE id = 3", ""},
      {"SELECT a FROM t JOIN u ON t.a = u.a WHERE id = 3", ""},
      {"SELECT a FROM (SELECT a FROM t WHERE id = 3) x", ""},
      {"SELECT a FROM t WHERE EXISTS (SELECT 1 FROM u WHERE id = 3)", ""},
      {"SELECT a FROM t WHERE id = 3 UNION SELECT b FROM u WHERE id = 4", ""},
  };
  for (const auto& [sql, wanted] : rows) {
    const Compiled compiled = CompileForPostgresql(sql);
    std::string named;
    if (!compiled.question.empty()) {
      const auto between = [&](std::string_view start, char end) {
        const std::size_t at = compiled.question.find(start) + start.size();
        return compiled.question.substr(at, compiled.question.find(end, at) - at);
      };
      named = between("to_regclass('", '\'') + " " + between("ARRAY[", ']');
      std::erase(named, '\'');
      std::replace(named.begin(), named.end(), ',', ' ');
    }
    EXPECT_EQ(named, wanted) << sql;
  }
}

TEST(OracleEngine, OpensWithTheDateFormatAndNamesThatOfOtherDates) {
  const Signature::Argument date{"d", dialect::Direction::kIn, "DATE"};
  EXPECT_NE(OracleEngine().OpeningStatements("DD\"'\"").at(0).find("FORMAT = 'DD\"''\"'"),
            std::string::npos);
  EXPECT_EQ(PlaceOf(date, "15-MAR-24"), "?");
  EXPECT_EQ(PlaceOf(date, "2024-03-15"), "TO_DATE(?,'YYYY-MM-DD HH24:MI:SS')");
  EXPECT_EQ(PlaceOf({"t", dialect::Direction::kIn, "VARCHAR2"}, "2024-03-15"), "?");
}

TEST(PostgresqlEngine, CallsRoutinesByTextWithConstantsOfTheirTypes) {
  using dialect::Direction;
  Signature signature{false,
                      "p.r",
                      "",
                      {{"a", Direction::kIn, "numeric"},
                       {"b", Direction::kOut, "text"},
                       {"c", Direction::kInOut, "text"},
                       {"d", Direction::kIn, "timestamp without time zone"}}};
  const auto call = [&] { return PostgresqlEngine().CallText(signature, {"1", {}, "it's", "x"}); };
  const std::string date =
      ", CAST(sabrel_dictionary.date_argument('x') AS timestamp without time zone))";
  EXPECT_EQ(call(),
            "CALL p.r(CAST('1' AS numeric), CAST(NULL AS text), CAST('it''s' AS text)" + date);
  signature.is_function = true;
  EXPECT_EQ(call(), "/**/SELECT * FROM p.r(CAST('1' AS numeric), CAST('it''s' AS text)" + date);
}

}  // namespace
}  // namespace sabrel::odbc
