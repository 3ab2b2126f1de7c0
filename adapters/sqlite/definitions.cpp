// CREATE and DROP of sequences, routines and tables.
#include <algorithm>
#include <utility>

#include "adapters/shared/dialect/token.h"
#include "adapters/shared/number_type.h"
#include "adapters/sqlite/access.h"
#include "adapters/sqlite/error_table.h"
#include "adapters/sqlite/failure.h"
#include "adapters/sqlite/query_table.h"
#include "adapters/sqlite/rounding.h"
#include "adapters/sqlite/server.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::sqlite {
namespace {

using dialect::ColumnDefinition;
using dialect::Token;
using dialect::TokenList;
using dialect::Word;

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
    std::string checks =
        Check(kTextCheck, label, "typeof(" + name + ") IN ('text', 'null') AND " + name + " <> ''");
    if (column.width) {
      const std::string width = std::to_string(*column.width);
      checks += Check(kWidthCheck, label + " (maximum: " + width + ")",
                      "length(" + name + ") <= " + width);
    }
    return checks;
  }
  if (IsNumberType(column.type)) {
    // Not IN of the three kinds that are left: the engine builds a table of more than two values,
    // anew for each row that a trigger writes.
    std::string checks = Check(kNoDateCheck, label, "typeof(" + name + ") <> 'blob'") +
                         Check(kNumberCheck, label, "typeof(" + name + ") <> 'text'");
    const bool has_precision = IsOneOf(column.type, {"NUMBER", "DECIMAL", "DEC", "NUMERIC"});
    if (has_precision && column.width) {
      // What is written is rounded behind this check.
      const std::int64_t scale = column.scale.value_or(0);
      checks += Check(kPrecisionCheck, label,
                      "abs(round(" + name + "," + std::to_string(scale) + ")) < 1e" +
                          std::to_string(*column.width - scale));
    } else {
      checks += Check(kOverflowCheck, label, name + " BETWEEN -1e308 AND 1e308");
    }
    return checks;
  }
  if (IsOneOf(column.type, {"DATE", "TIMESTAMP"})) {
    return Check(
        kDateCheck, label,
        name + " IS NULL OR (typeof(" + name + ") = 'blob' AND length(" + name + ") = 19)");
  }
  return {};
}

/// `text`, as the engine takes it, with the checks of its columns.
std::string WithChecks(std::string_view text) {
  std::string checked;
  std::size_t copied = 0;
  for (const ColumnDefinition& column : dialect::ParseCreateTable(text)) {
    checked.append(text, copied, column.type_end - copied);
    // The engine makes numbers of texts in a column whose type it does not know.
    if (column.type == "LONG") checked += " TEXT";
    checked.append(text, column.type_end, column.end - column.type_end);
    checked += ChecksOf(column);
    copied = column.end;
  }
  checked.append(text, copied);
  return checked;
}

/// The table that `statement` made; upper case.
std::string CreatedTable(Connection& engine) {
  Statement last = engine.Prepare(
      "SELECT name FROM sqlite_schema WHERE type = 'table' ORDER BY rowid DESC LIMIT 1");
  last.Step();
  return last.Column(0).text;
}

/// Refuses references to what is no table.
void RequireParents(Connection& engine, std::string_view table) {
  Statement missing = engine.Prepare(
      "SELECT k.\"table\" FROM pragma_foreign_key_list(?1) k WHERE NOT EXISTS (SELECT 1 FROM"
      " sqlite_schema r WHERE r.type = 'table' AND UPPER(r.name) = UPPER(k.\"table\"))");
  missing.Bind(1, table);
  if (!missing.Step()) return;
  throw ServerFailure(942, "table or view does not exist: " + missing.Column(0).text);
}

/// Tables, views, sequences and routines share their names. `besides` are kinds that may have it.
void RequireFreeName(Connection& engine, std::string_view name, const std::string& besides = "") {
  Statement known = engine.Prepare(
      "SELECT 1 FROM user_objects WHERE OBJECT_NAME = ?1"
      " AND OBJECT_TYPE NOT IN ('INDEX', 'TRIGGER'" +
      besides + ")");
  known.Bind(1, name);
  if (!known.Step()) return;
  throw ServerFailure(955, "name is already used by an existing object: " + std::string(name));
}

/// What CREATE TABLE names, without its owner, and the query that the table is made of, if any.
struct NewTable {
  std::string name;
  std::string_view head;  // up to the query's AS
  std::string_view query;
};

/// The last part of the name, "T" of "MAIN.T", that starts at `first`.
std::size_t LastPartOfName(const TokenList& tokens, std::size_t first) {
  while (tokens[first + 1].symbol == '.') first += 2;
  return first;
}

NewTable PartsOf(std::string_view statement) {
  const TokenList tokens = dialect::Tokenize(statement);
  const std::size_t name = LastPartOfName(tokens, 2);
  NewTable table{dialect::ValueOfName(statement, tokens[name]), {}, {}};
  if (tokens[name + 1].word != Word::kAs) return table;
  table.head = statement.substr(0, tokens[name].end);
  table.query = statement.substr(tokens[name + 2].begin);
  return table;
}

/// CREATE TABLE with the columns of the query. Finding them must not draw the sequences: the query
/// runs once more.
std::string WithColumns(Server& server, const NewTable& table) {
  server.Engine().Run("SAVEPOINT sabrel_columns");
  std::string columns = ColumnsFor(server, table.query);
  server.Engine().Run("ROLLBACK TO sabrel_columns; RELEASE sabrel_columns");
  return std::string(table.head) + " " + columns;
}

void CreateTable(Server& server, std::string_view statement) {
  Connection& engine = server.Engine();
  dialect::Rewritten listed = server.Compile(statement);
  const NewTable parts = PartsOf(statement);
  RequireFreeName(engine, parts.name);
  if (!parts.query.empty()) listed = server.CompileOwn(WithColumns(server, parts));
  const std::string text = WithChecks(listed.text);
  engine.Run(text.c_str());
  const std::string table = CreatedTable(engine);
  std::int64_t key_columns = 0;
  {
    Statement count = engine.Prepare("SELECT COUNT(*) FROM pragma_table_info(?1) WHERE pk > 0");
    count.Bind(1, std::string_view(table));
    count.Step();
    key_columns = count.Column(0).integer;
  }
  if (key_columns > 0) {
    // With its row ids the engine would take nulls in a primary key, or make up a number for one.
    engine.Run(("DROP TABLE " + QuotedName(table)).c_str());
    engine.Run((text + "\nWITHOUT ROWID").c_str());
  }
  RequireParents(engine, table);
  AddRounding(engine, table);
  if (parts.query.empty()) return;
  dialect::Rewritten fill = server.Compile(parts.query);
  fill.text.insert(0, "INSERT INTO " + QuotedName(parts.name) + " ");
  fill.kind = dialect::StatementKind::kInsert;
  server.Prepare(fill).RunToEnd();
}

bool IsWord(std::string_view text, const Token& token, std::string_view word) {
  return token.kind == dialect::TokenKind::kWord &&
         EqualIgnoringCase(dialect::TextOf(text, token), word);
}

/// `text` with the checks of the column that an ALTER TABLE adds.
std::string WithColumnChecks(const std::string& text) {
  const TokenList tokens = dialect::Tokenize(text);
  // ALTER TABLE name ADD
  std::size_t add = LastPartOfName(tokens, 2) + 1;
  if (!IsWord(text, tokens[add], "ADD")) return text;
  if (IsWord(text, tokens[add + 1], "COLUMN")) ++add;
  const std::string head = text.substr(0, tokens[add].end);
  std::string table = "CREATE TABLE T (" + text.substr(tokens[add].end) + ")";
  if (dialect::ParseCreateTable(table).size() != 1) return text;
  table = WithChecks(table);
  const std::size_t open = table.find('(') + 1;
  return head + " " + table.substr(open, table.size() - open - 1);
}

/// Refuses a new name in the form of a text, which the engine takes for a name and nobody looked
/// at.
void RequireNameAfterRename(std::string_view statement, const TokenList& tokens) {
  if (!IsWord(statement, tokens[LastPartOfName(tokens, 2) + 1], "RENAME")) return;
  for (const Token& token : tokens) {
    if (token.kind != dialect::TokenKind::kText) continue;
    throw ServerFailure(903, "invalid table name" + dialect::PlaceOf(statement, token));
  }
}

/// Refuses to take away what every site has.
void RequireOwnObject(std::string_view statement) {
  const std::string name = dialect::DroppedName(statement);
  const std::size_t dot = name.rfind('.');
  if (IsDictionaryView(dot == std::string::npos ? name : name.substr(dot + 1))) {
    throw ServerFailure(1031, "insufficient privileges: the dictionary belongs to the server");
  }
  if (dot != std::string::npos) throw ServerFailure(942, "table or view does not exist: " + name);
}

/// Refuses to take a table, or its rows, away from under those that refer to it.
void RequireUnreferenced(Connection& engine, std::string_view table, std::int32_t native_number) {
  Statement child = engine.Prepare(
      "SELECT r.name FROM sqlite_schema r JOIN pragma_foreign_key_list(r.name) k"
      " WHERE r.type = 'table' AND UPPER(k.\"table\") = ?1 AND UPPER(r.name) <> ?1");
  child.Bind(1, table);
  if (!child.Step()) return;
  throw ServerFailure(native_number, "unique/primary keys in table referenced by foreign keys of " +
                                         child.Column(0).text + "; drop it first");
}

/// CREATE [OR REPLACE] VIEW; what the view reads must be there.
void CreateView(Server& server, std::string_view statement) {
  Connection& engine = server.Engine();
  std::string text = server.Compile(statement).text;
  TokenList tokens = dialect::Tokenize(text);
  const bool replaces = tokens[1].word == Word::kOr;
  if (replaces) {
    text.erase(tokens[1].begin, tokens[3].begin - tokens[1].begin);
    tokens = dialect::Tokenize(text);
  }
  const std::string name = dialect::ValueOfName(text, tokens[LastPartOfName(tokens, 2)]);
  RequireFreeName(engine, name, replaces ? ", 'VIEW'" : "");
  Statement old = engine.Prepare(
      "SELECT 1 FROM user_objects WHERE OBJECT_NAME = ?1 AND OBJECT_TYPE = 'VIEW'");  // no server's
  old.Bind(1, std::string_view(name));
  if (replaces && old.Step()) {
    old.Step();
    engine.Run(("DROP VIEW " + QuotedName(name)).c_str());
  }
  engine.Prepare(text).RunToEnd();
  engine.Prepare("SELECT * FROM " + QuotedName(name) + " LIMIT 0").RunToEnd();
}

/// Whether the session's date format decides on what `function` makes of a date, or of a text.
bool DependsOnDateFormat(std::string_view function, bool is_date) {
  if (!is_date) {
    return IsOneOf(function, {"ADD_MONTHS", "LAST_DAY", "MONTHS_BETWEEN", "TRUNC", "ROUND"});
  }
  return IsOneOf(function,
                 {"UPPER", "LOWER", "LENGTH", "SUBSTR", "INSTR", "REPLACE", "LPAD", "RPAD", "TRIM",
                  "LTRIM", "RTRIM", "CONCAT", "CAST", "GREATEST", "LEAST", "SABREL_LIKE"});
}

/// Whether the date or text at `i` is part of an argument of such a function, other than within a
/// TO_CHAR or TO_DATE, which names its format; `list` is where the index's columns start.
bool IsReadByDateFormat(bool is_date, std::string_view text, const TokenList& tokens,
                        std::size_t list, std::size_t i) {
  int depth = 0;
  bool is_argument = false;
  for (; i > list; --i) {
    const char symbol = tokens[i].kind == dialect::TokenKind::kSymbol ? tokens[i].symbol : '\0';
    if (symbol == ')') ++depth;
    if (symbol != '(' || --depth >= 0) continue;
    depth = 0;
    const std::string function = UpperCase(dialect::TextOf(text, tokens[i - 1]));
    if (function == "TO_CHAR" || function == "TO_DATE") return false;
    is_argument = is_argument || DependsOnDateFormat(function, is_date);
  }
  return is_argument;
}

/// Refuses an index of texts that the session's date format decides on: another session's would
/// find no row by it.
void RequireLastingTexts(Connection& engine, std::string_view text) {
  const TokenList tokens = dialect::Tokenize(text);
  std::size_t on = 0;
  while (on < tokens.Last() && tokens[on].word != Word::kOn) ++on;
  const std::size_t name = LastPartOfName(tokens, on + 1);
  const std::string table = dialect::ValueOfName(text, tokens[name]);
  const bool joins = std::any_of(tokens.begin(), tokens.end(), [](const Token& token) {
    return token.kind == dialect::TokenKind::kSymbol && token.symbol == dialect::kConcatenation;
  });
  for (std::size_t i = name + 2; i < tokens.size(); ++i) {
    const bool is_name = tokens[i].kind == dialect::TokenKind::kWord ||
                         tokens[i].kind == dialect::TokenKind::kQuotedName;
    if (!is_name) continue;
    const std::string column = dialect::ValueOfName(text, tokens[i]);
    const std::string declared = UpperCase(engine.DeclaredType(table, column));
    const std::string_view type =
        TrimBlanks(std::string_view(declared).substr(0, declared.find('(')));
    if (type.empty() || IsNumberType(type)) continue;
    const bool is_date = IsDateType(type);
    if ((is_date && joins) || IsReadByDateFormat(is_date, text, tokens, name + 1, i)) {
      throw ServerFailure(
          1743, "only pure functions can be indexed: write TO_CHAR(" + column + ", format)");
    }
  }
}

void DefineOther(Server& server, std::string_view statement) {
  Connection& engine = server.Engine();
  const TokenList tokens = dialect::Tokenize(statement);
  const auto is = [&](std::size_t i, std::string_view word) {
    return IsWord(statement, tokens[i], word);
  };
  const auto name = [&](std::size_t i) { return dialect::ValueOfName(statement, tokens[i]); };
  if (is(0, "CREATE") && (is(1, "VIEW") || is(3, "VIEW"))) return CreateView(server, statement);
  if (is(0, "DROP")) RequireOwnObject(statement);
  std::string text = server.Compile(statement).text;
  if (is(0, "CREATE") && !is(1, "INDEX") && !is(1, "UNIQUE")) {
    throw ServerFailure(901,
                        "invalid CREATE command: tables, views, indexes, sequences, functions and "
                        "procedures can be made");
  }
  if (is(0, "DROP") && is(1, "TABLE")) RequireUnreferenced(engine, name(2), 2449);
  if (is(0, "TRUNCATE")) RequireUnreferenced(engine, name(2), 2266);
  if (is(0, "CREATE") && (is(1, "INDEX") || is(2, "INDEX"))) RequireLastingTexts(engine, statement);
  const bool alters = is(0, "ALTER") && is(1, "TABLE");
  if (alters) {
    RequireNameAfterRename(statement, tokens);
    text = WithColumnChecks(text);
    DropRounding(engine, name(2));
  }
  engine.Prepare(text).RunToEnd();
  if (!alters) return;
  const std::string table = is(3, "RENAME") && is(4, "TO") ? name(5) : name(2);
  RequireParents(engine, table);
  AddRounding(engine, table);
}

void CreateSequence(Connection& engine, const dialect::SequenceDefinition& sequence) {
  RequireFreeName(engine, sequence.name);
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
    case dialect::StatementKind::kCreateRoutine: {
      const dialect::RoutineDefinition routine = dialect::ParseCreateRoutine(statement);
      if (routine.package.empty())
        RequireFreeName(connection_, routine.name, ", 'FUNCTION', 'PROCEDURE'");
      routines_.Create(routine);
      return;
    }
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
    case dialect::StatementKind::kOtherDefinition: DefineOther(*this, statement); return;
    default: throw ServerFailure(900, "invalid SQL statement");
  }
}

}  // namespace sabrel::sqlite
