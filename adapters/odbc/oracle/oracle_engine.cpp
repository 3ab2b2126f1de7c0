// Oracle: statements go as they are, the catalogue describes routines.

#include "adapters/odbc/connection_text.h"
#include "adapters/odbc/engine.h"
#include "adapters/odbc/oracle/oracle_errors.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::odbc {
namespace {

std::string Literal(std::string_view text) { return "'" + ReplaceAll(text, "'", "''") + "'"; }

/// A routine's name as the catalogue may hold it: "F" is a routine of the current schema, "A.F" one
/// of package A there or one of schema A, "A.B.F" one of package B in schema A.
std::string ConditionOfName(std::string_view name) {
  constexpr std::string_view kHere = "p.owner = SYS_CONTEXT('USERENV', 'CURRENT_SCHEMA')";
  constexpr std::string_view kAlone = "p.object_type IN ('FUNCTION', 'PROCEDURE')";
  const std::size_t last = name.rfind('.');
  if (last == std::string_view::npos) {
    return std::string(kHere) + " AND " + std::string(kAlone) +
           " AND p.object_name = " + Literal(name);
  }
  const std::string routine = Literal(name.substr(last + 1));
  const std::string_view rest = name.substr(0, last);
  const std::string in_package = "p.object_type = 'PACKAGE' AND p.procedure_name = " + routine;
  if (const std::size_t first = rest.find('.'); first != std::string_view::npos) {
    return "p.owner = " + Literal(rest.substr(0, first)) + " AND " + in_package +
           " AND p.object_name = " + Literal(rest.substr(first + 1));
  }
  return "((" + std::string(kHere) + " AND " + in_package +
         " AND p.object_name = " + Literal(rest) + ") OR (p.owner = " + Literal(rest) + " AND " +
         std::string(kAlone) + " AND p.object_name = " + routine + "))";
}

class ServerOfOracle final : public Engine {
 public:
  [[nodiscard]] std::string_view ServerName() const override { return "Oracle"; }
  [[nodiscard]] std::int32_t UsualPort() const override { return 1521; }
  [[nodiscard]] bool FoldsToLowerCase() const override { return false; }

  [[nodiscard]] std::string ConnectionText(const ConnectionProfile& profile,
                                           const SectionSettings&) const override {
    return OracleConnectionText(profile);
  }

  /// Arguments travel as text: a client's territory must make neither "1.5" a bad number nor
  /// "15-MAR-24" a bad date.
  [[nodiscard]] std::vector<std::string> OpeningStatements(
      std::string_view date_format) const override {
    return {
        "ALTER SESSION SET NLS_NUMERIC_CHARACTERS = '.,' NLS_DATE_LANGUAGE = 'AMERICAN' "
        "NLS_DATE_FORMAT = " +
        Literal(date_format)};
  }

  [[nodiscard]] Compiled Compile(std::string_view statement) const override {
    return {std::string(statement), {}, {}};
  }

  [[nodiscard]] Meaning MeaningOf(const Diagnosis& diagnosis, Verb) const override {
    return OracleMeaningOf(diagnosis);
  }

  /// Oracle numbers what it says of a login as it does everything.
  [[nodiscard]] std::optional<Meaning> MeaningOfRefusedLogin(
      const Diagnosis& diagnosis) const override {
    if (diagnosis.native_number == 0) return std::nullopt;
    return OracleMeaningOf(diagnosis);
  }

  /// A result is the nameless argument at position 0. Rows without a type stand for "no arguments"
  /// in older releases, which newer ones leave out; fields of records lie deeper than level 0.
  /// A number without declared digits would come as a floating one.
  [[nodiscard]] std::string SignatureQuery(std::string_view name) const override {
    const std::string upper = UpperCase(name);
    return "SELECT CAST(a.position AS NUMBER(9)) AS POSITION, a.argument_name AS ARGUMENT_NAME, "
           "a.in_out AS IN_OUT, "
           "a.data_type AS DATA_TYPE, " +
           Literal(upper) +
           " AS CALL_NAME, p.overload AS OVERLOAD FROM all_procedures p LEFT JOIN all_arguments a "
           "ON a.owner = p.owner AND a.object_id = p.object_id AND a.subprogram_id = "
           "p.subprogram_id AND a.data_level = 0 AND a.data_type IS NOT NULL WHERE " +
           ConditionOfName(upper) + " ORDER BY p.owner, p.subprogram_id, a.position";
  }

  [[nodiscard]] bool CallsByText() const override { return false; }
  [[nodiscard]] std::string CallText(
      const Signature&, const std::vector<std::optional<std::string>>&) const override {
    throw RuntimeError(RuntimeErrorNumber::kInternal, "Oracle's routines are not called by text");
  }
  [[nodiscard]] bool InsertsManyRows() const override { return false; }
};

}  // namespace

const Engine& OracleEngine() {
  // Never destroyed: workers may use it while the process ends.
  static const ServerOfOracle& engine = *new ServerOfOracle;
  return engine;
}

}  // namespace sabrel::odbc
