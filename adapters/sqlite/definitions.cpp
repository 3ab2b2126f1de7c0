// CREATE and DROP of sequences, routines and tables.
#include <utility>

#include "adapters/sqlite/error_table.h"
#include "adapters/sqlite/failure.h"
#include "adapters/sqlite/server.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::sqlite {
namespace {

using dialect::ColumnDefinition;

bool IsOneOf(std::string_view type, std::initializer_list<std::string_view> names) {
  for (const std::string_view name : names) {
    if (type == name) return true;
  }
  return false;
}

std::string Check(std::string_view prefix, const std::string& label, const std::string& test) {
  return " CONSTRAINT " + QuotedName(std::string(prefix) + label) + " CHECK (" + test + ")";
}

/// Constraints for what the engine itself lets pass: width, kind and precision of a column's
/// values.
std::string ChecksOf(const ColumnDefinition& column) {
  const std::string name = QuotedName(column.name);
  const std::string label = UpperCase(column.name);
  if (IsOneOf(column.type, {"VARCHAR2", "VARCHAR", "CHAR", "NVARCHAR2", "NCHAR", "CLOB", "LONG"})) {
    std::string checks = Check(kTextCheck, label, "typeof(" + name + ") IN ('text', 'null')");
    if (column.width) {
      const std::string width = std::to_string(*column.width);
      checks += Check(kWidthCheck, label + " (maximum: " + width + ")",
                      "length(" + name + ") <= " + width);
    }
    return checks;
  }
  if (IsOneOf(column.type, {"NUMBER", "INTEGER", "INT", "SMALLINT", "DECIMAL", "NUMERIC", "FLOAT",
                            "REAL", "DOUBLE PRECISION", "BINARY_DOUBLE", "BINARY_FLOAT"})) {
    std::string checks =
        Check(kNumberCheck, label, "typeof(" + name + ") IN ('integer', 'real', 'null')");
    const bool has_precision = IsOneOf(column.type, {"NUMBER", "DECIMAL", "NUMERIC"});
    if (has_precision && column.width) {
      const std::int64_t digits = *column.width - column.scale.value_or(0);
      checks += Check(kPrecisionCheck, label,
                      "abs(" + name + ") < 1e" + std::to_string(digits > 0 ? digits : 0));
    }
    return checks;
  }
  if (column.type == "DATE") {
    return Check(
        kDateCheck, label,
        name + " IS NULL OR (typeof(" + name + ") = 'blob' AND length(" + name + ") = 19)");
  }
  return {};
}

/// `statement` with the checks of its columns.
std::string WithChecks(std::string_view statement) {
  std::string checked;
  std::size_t copied = 0;
  for (const ColumnDefinition& column : dialect::ParseCreateTable(statement)) {
    checked.append(statement, copied, column.end - copied);
    checked += ChecksOf(column);
    copied = column.end;
  }
  checked.append(statement, copied);
  return checked;
}

/// The table that `statement` made; upper case.
std::string CreatedTable(Connection& engine) {
  Statement last = engine.Prepare(
      "SELECT name FROM sqlite_schema WHERE type = 'table' ORDER BY rowid DESC LIMIT 1");
  last.Step();
  return last.Column(0).text;
}

void CreateTable(Server& server, std::string_view statement) {
  Connection& engine = server.Engine();
  static_cast<void>(server.Compile(statement));
  const std::string text = server.CompileOwn(WithChecks(statement)).text;
  engine.Run(text.c_str());
  const std::string table = CreatedTable(engine);
  std::int64_t key_columns = 0;
  {
    Statement count = engine.Prepare("SELECT COUNT(*) FROM pragma_table_info(?1) WHERE pk > 0");
    count.Bind(1, std::string_view(table));
    count.Step();
    key_columns = count.Column(0).integer;
  }
  if (key_columns == 0) return;
  // With its row ids the engine would take nulls in a primary key, or make up a number for one.
  engine.Run(("DROP TABLE " + QuotedName(table)).c_str());
  engine.Run((text + "\nWITHOUT ROWID").c_str());
}

/// `text` with the checks of the column that an ALTER TABLE adds.
std::string WithColumnChecks(const std::string& text) {
  constexpr std::string_view kAdd = " ADD ";
  if (!EqualIgnoringCase(text.substr(0, 6), "ALTER ")) return text;
  for (std::size_t at = 0; at + kAdd.size() < text.size(); ++at) {
    if (!EqualIgnoringCase(std::string_view(text).substr(at, kAdd.size()), kAdd)) continue;
    std::string column = text.substr(at + kAdd.size());
    if (EqualIgnoringCase(column.substr(0, 7), "COLUMN ")) column.erase(0, 7);
    const auto columns = dialect::ParseCreateTable("CREATE TABLE T (" + column + ")");
    return columns.size() == 1 ? text + ChecksOf(columns.front()) : text;
  }
  return text;
}

/// Refuses to take away what every site has.
void RequireOwnObject(std::string_view statement) {
  if (!EqualIgnoringCase(statement.substr(0, 5), "DROP ")) return;
  if (IsOneOf(dialect::DroppedName(statement),
              {"DUAL", "USER_TABLES", "USER_TAB_COLUMNS", "USER_ARGUMENTS", "USER_OBJECTS",
               "USER_SEQUENCES"})) {
    throw ServerFailure(1031, "insufficient privileges: the dictionary belongs to the server");
  }
}

void CreateSequence(Connection& engine, const dialect::SequenceDefinition& sequence) {
  Statement known = engine.Prepare("SELECT 1 FROM user_objects WHERE OBJECT_NAME = ?1");
  known.Bind(1, std::string_view(sequence.name));
  if (known.Step()) {
    throw ServerFailure(955, "name is already used by an existing object: " + sequence.name);
  }
  if (sequence.increment == 0) throw ServerFailure(4002, "INCREMENT must be a non-zero integer");
  Statement insert =
      engine.Prepare("INSERT INTO sabrel_sequence VALUES (?1, ?2, ?3)", Verb::kInsert);
  insert.Bind(1, std::string_view(sequence.name));
  insert.Bind(2, sequence.start);
  insert.Bind(3, sequence.increment);
  insert.Step();
}

void DropSequence(Connection& engine, const std::string& name) {
  Statement drop =
      engine.Prepare("DELETE FROM sabrel_sequence WHERE name = ?1 RETURNING 1", Verb::kDelete);
  drop.Bind(1, std::string_view(name));
  if (!drop.Step()) throw ServerFailure(2289, "sequence does not exist: " + name);
  drop.Step();
}

}  // namespace

void Server::Define(dialect::StatementKind kind, std::string_view statement) {
  switch (kind) {
    case dialect::StatementKind::kCreateRoutine:
      routines_.Create(dialect::ParseCreateRoutine(statement));
      return;
    case dialect::StatementKind::kDropRoutine:
      routines_.Drop(dialect::DroppedName(statement));
      return;
    case dialect::StatementKind::kCreateSequence:
      CreateSequence(connection_, dialect::ParseCreateSequence(statement));
      return;
    case dialect::StatementKind::kDropSequence: {
      const std::string name = dialect::DroppedName(statement);
      DropSequence(connection_, name);
      session_->current_values.erase(name);
      return;
    }
    case dialect::StatementKind::kCreateTable: CreateTable(*this, statement); return;
    case dialect::StatementKind::kOtherDefinition: {
      RequireOwnObject(statement);
      Statement define = connection_.Prepare(WithColumnChecks(Compile(statement).text));
      while (define.Step()) {
      }
      return;
    }
    default: throw ServerFailure(900, "invalid SQL statement");
  }
}

}  // namespace sabrel::sqlite
