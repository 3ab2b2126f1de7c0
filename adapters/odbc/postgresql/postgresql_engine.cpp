// PostgreSQL, reached by psqlodbc: calls go as text, because the driver's `{call ...}` cannot call
// a procedure.
#include <cstdlib>

#include "adapters/odbc/connection_text.h"
#include "adapters/odbc/engine.h"
#include "adapters/odbc/postgresql/postgresql_dialect.h"
#include "adapters/odbc/postgresql/postgresql_errors.h"
#include "adapters/shared/dialect/token.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::odbc {
namespace {

using dialect::Direction;
using dialect::TextConstant;

// A row an argument. A function with out arguments declares its result as the first of them,
// return_value. A routine without a package is looked for in the site's schema, then among ours.
// Types are written for values of any length: "character" alone would keep one character.
constexpr std::string_view kSignatureHead = R"sql(
SELECT a.number - s.has_out_result::integer AS position, a.name AS argument_name,
       CASE a.mode WHEN 'o' THEN 'OUT' WHEN 'b' THEN 'IN/OUT' ELSE 'IN' END AS in_out,
       format_type(a.type, -1) AS data_type, s.call_name,
       CASE WHEN s.routines > 1 THEN s.overload END::integer AS overload
  FROM (SELECT p.*, p.prokind = 'f' AND NOT p.out_result AS has_plain_result,
               p.prokind = 'f' AND p.out_result AS has_out_result,
               row_number() OVER (ORDER BY p.oid) AS overload, count(*) OVER () AS routines
          FROM (SELECT p.oid, p.prokind, p.prorettype, p.proargtypes, p.proallargtypes,
                       p.proargmodes, p.proargnames,
                       quote_ident(n.nspname) || '.' || quote_ident(p.proname) AS call_name,
                       coalesce(p.proargnames[1] = 'return_value' AND p.proargmodes[1] = 'o', false)
                         AS out_result
                  FROM pg_catalog.pg_proc p
                  JOIN pg_catalog.pg_namespace n ON n.oid = p.pronamespace
                 WHERE p.prokind IN ('f', 'p'))sql";

constexpr std::string_view kSignatureTail = R"sql() p) s
  LEFT JOIN LATERAL (
    SELECT 0 AS number, NULL::text AS name, 'o' AS mode, s.prorettype AS type
     WHERE s.has_plain_result
    UNION ALL
    SELECT t.number::integer, s.proargnames[t.number], coalesce(s.proargmodes[t.number], 'i'), t.type
      FROM unnest(coalesce(s.proallargtypes, s.proargtypes::oid[])) WITH ORDINALITY
             AS t (type, number)
     WHERE coalesce(s.proargmodes[t.number], 'i') <> 't') a ON true
 ORDER BY s.overload, a.number)sql";

class Postgresql final : public Engine {
 public:
  [[nodiscard]] std::string_view ServerName() const override { return "PostgreSQL"; }
  [[nodiscard]] std::int32_t UsualPort() const override { return 5432; }
  [[nodiscard]] bool FoldsToLowerCase() const override { return true; }
  [[nodiscard]] std::string ConnectionText(const ConnectionProfile& profile,
                                           const SectionSettings& section) const override {
    return PostgresqlConnectionText(profile, section);
  }
  [[nodiscard]] std::string SocketFile(const ConnectionProfile& profile) const override {
    // Where Debian's client library looks when it is given no host.
    constexpr std::string_view kUsualFolder = "/var/run/postgresql";
    const std::string_view folder = profile.Host.empty() ? kUsualFolder : profile.Host;
    if (folder.front() != '/') return {};
    return std::string(folder) + "/.s.PGSQL." + std::to_string(profile.Port);
  }
  [[nodiscard]] std::vector<std::string> OpeningStatements(
      std::string_view date_format) const override {
    // Nothing in it may end the block.
    const std::string format = ReplaceAll(TextConstant(date_format), "$", "' || chr(36) || '");
    return {R"sql(DO $$
BEGIN
  IF to_regprocedure('sabrel_dictionary.start_session()') IS NULL THEN
    RAISE EXCEPTION 'the database has no site; make one with "sabrel site create"'
      USING ERRCODE = 'N4043';
  END IF;
  IF to_regproc('sabrel_dictionary.set_date_format') IS NULL THEN
    RAISE EXCEPTION 'the site is of an older release; make a new one with "sabrel site create"'
      USING ERRCODE = 'N4043';
  END IF;
  PERFORM sabrel_dictionary.start_session();
  CALL sabrel_dictionary.set_date_format()sql" +
            format + ");\nEND\n$$"};
  }
  [[nodiscard]] Compiled Compile(std::string_view statement) const override {
    return CompileForPostgresql(statement);
  }
  [[nodiscard]] Meaning MeaningOf(const Diagnosis& diagnosis, Verb verb) const override {
    return PostgresqlMeaningOf(diagnosis, verb);
  }
  [[nodiscard]] std::optional<Meaning> MeaningOfRefusedLogin(
      const Diagnosis& diagnosis) const override {
    return PostgresqlMeaningOfRefusedLogin(diagnosis);
  }
  [[nodiscard]] std::string SignatureQuery(std::string_view name) const override;
  [[nodiscard]] bool CallsByText() const override { return true; }
  [[nodiscard]] std::string CallText(
      const Signature& signature,
      const std::vector<std::optional<std::string>>& values) const override;
  [[nodiscard]] bool InsertsManyRows() const override { return true; }
  [[nodiscard]] std::string_view TextConstantEnd() const override { return kTextConstantEnd; }
};

std::string Postgresql::SignatureQuery(std::string_view name) const {
  const std::string folded = LowerCase(name);
  const std::string_view whole(folded);
  const std::size_t dot = whole.rfind('.');
  const std::string_view routine = dot == std::string_view::npos ? whole : whole.substr(dot + 1);
  std::string query(kWithoutCursor);
  query += kSignatureHead;
  query += " AND p.proname = " + TextConstant(routine) + " AND n.nspname ";
  if (dot == std::string_view::npos) {
    query += "IN (sabrel_dictionary.site_schema(), 'sabrel_dictionary', 'public')";
  } else {
    const std::string_view owner = whole.substr(0, dot);
    const std::size_t before = owner.rfind('.');
    query +=
        "= " + TextConstant(before == std::string_view::npos ? owner : owner.substr(before + 1));
  }
  return query += kSignatureTail;
}

std::string Postgresql::CallText(const Signature& signature,
                                 const std::vector<std::optional<std::string>>& values) const {
  std::string text =
      signature.is_function ? std::string(kWithoutCursor) + "SELECT * FROM " : "CALL ";
  text += signature.call_name + "(";
  bool is_first = true;
  for (std::size_t i = 0; i < signature.arguments.size(); ++i) {
    const Signature::Argument& argument = signature.arguments[i];
    // A procedure's out arguments have their places in the call, a function's have none.
    const bool is_out = argument.direction == Direction::kOut;
    if (is_out && signature.is_function) continue;
    const bool is_null = is_out || i >= values.size() || !values[i];
    if (!is_first) text += ", ";
    is_first = false;
    std::string value = is_null ? "NULL" : TextConstant(*values[i]);
    const bool is_date = argument.type.starts_with("timestamp") || argument.type == "date";
    if (is_date && !is_null) value = "sabrel_dictionary.date_argument(" + value + ")";
    text += "CAST(" + value + " AS " + argument.type + ")";
  }
  return text + ")";
}

}  // namespace

const Engine& PostgresqlEngine() {
  // Never destroyed: workers may use it while the process ends.
  static const Postgresql& engine = *[] {
    // Not told this, the driver asks the process for its locale whenever it connects, with a
    // function that two threads must not call at a time. What the host has set stays.
    ::setenv("PGCLIENTENCODING", "UTF8", 0);
    return new Postgresql;
  }();
  return engine;
}

}  // namespace sabrel::odbc
