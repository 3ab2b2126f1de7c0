#include "adapters/sqlite/server.h"

#include <algorithm>
#include <array>
#include <utility>

#include "adapters/shared/dialect/token.h"
#include "adapters/sqlite/access.h"
#include "adapters/sqlite/failure.h"
#include "adapters/sqlite/functions.h"
#include "adapters/sqlite/result_names.h"
#include "adapters/sqlite/server_functions.h"
#include "sabrel/platform/row_text.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::sqlite {
namespace {

using dialect::StatementKind;

bool IsDefinition(StatementKind kind) {
  return kind == StatementKind::kCreateRoutine || kind == StatementKind::kDropRoutine ||
         kind == StatementKind::kCreateSequence || kind == StatementKind::kDropSequence ||
         kind == StatementKind::kCreateTable || kind == StatementKind::kOtherDefinition;
}

/// Whether `sql` reads anything but DUAL.
bool ReadsTables(std::string_view sql) {
  using dialect::Word;
  const dialect::TokenList tokens = dialect::Tokenize(sql);
  const auto is_symbol = [](const dialect::Token& token, char symbol) {
    return token.kind == dialect::TokenKind::kSymbol && token.symbol == symbol;
  };
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    if (tokens[i].word == Word::kJoin) return true;
    if (tokens[i].word != Word::kFrom) continue;
    const dialect::Token& source = tokens[i + 1];
    const Word inner = tokens[i + 2].word;
    if (dialect::TextOf(sql, source) == dialect::kAssignedRows) continue;
    if (is_symbol(source, '(') && (inner == Word::kSelect || inner == Word::kWith)) continue;
    if (!EqualIgnoringCase(dialect::TextOf(sql, source), "DUAL")) return true;
    const std::size_t behind = is_symbol(tokens[i + 2], ')') ? i + 2 : i + 3;
    if (is_symbol(tokens[i + 2], ',') || is_symbol(tokens[behind], ',')) return true;
  }
  return false;
}

std::vector<std::string> ResultNames(const Statement& statement,
                                     const dialect::Rewritten& rewritten) {
  std::vector<std::string> names;
  for (int column = 0; column < statement.Columns(); ++column) {
    names.push_back(ResultName(statement.ColumnName(column), rewritten));
  }
  return names;
}

}  // namespace

bool IsDateType(std::string_view declared) {
  const std::string_view type = declared.substr(0, declared.find_first_of(" ("));
  return EqualIgnoringCase(type, "DATE") || EqualIgnoringCase(type, "TIMESTAMP");
}

Value ValueOf(const dialect::Constant& constant) {
  switch (constant.kind) {
    case dialect::Constant::Kind::kInteger: return IntegerValue(constant.integer);
    case dialect::Constant::Kind::kReal: return RealValue(constant.real);
    case dialect::Constant::Kind::kText: return TextValue(constant.text);
    case dialect::Constant::Kind::kNull: break;
  }
  return {};
}

void RequireBound(const Statement& statement, const dialect::Rewritten& rewritten) {
  if (statement.Parameters() > static_cast<int>(rewritten.constants.size())) {
    throw ServerFailure(1008, "not all variables bound");
  }
}

std::string QuotedName(std::string_view name) {
  return "\"" + ReplaceAll(name, "\"", "\"\"") + "\"";
}

std::optional<dialect::Engine::RoutineFacts> SqliteDialect::FindRoutine(
    std::string_view name) const {
  const auto routine = routines_->Find(name);
  if (!routine) return std::nullopt;
  return RoutineFacts{routine->writes};
}

bool SqliteDialect::KnowsFunction(std::string_view name) const {
  return IsOraclesFunction(name) || connection_->HasFunction(name) || IsOwnName(name);
}

bool SqliteDialect::IsReservedWord(std::string_view word) const {
  // Some are constants and functions of the engine, others have no place there but in its grammar.
  static constexpr std::array<std::string_view, 17> kWords = {
      "AUTOINCREMENT", "COLLATE",   "COMMIT",      "CURRENT_TIME", "DEFERRABLE", "FALSE",
      "FOREIGN",       "INDEXED",   "ISNULL",      "LIMIT",        "NOTHING",    "NOTNULL",
      "REFERENCES",    "RETURNING", "TRANSACTION", "TRUE",         "USING"};
  return std::find(kWords.begin(), kWords.end(), word) != kWords.end();
}

std::vector<std::string_view> SqliteDialect::ConversionsOf(
    std::string_view table, const std::vector<std::string>& columns) const {
  std::vector<std::string> all;
  if (columns.empty()) {
    Statement each = connection_->Prepare("SELECT name FROM pragma_table_info(?1)");
    each.Bind(1, table);
    while (each.Step()) all.push_back(each.Column(0).text);
  }
  std::vector<std::string_view> conversions;
  bool has_any = false;
  for (const std::string& column : columns.empty() ? all : columns) {
    const bool is_date = IsDateType(connection_->DeclaredType(table, column));
    conversions.emplace_back(is_date ? "sabrel_date" : "");
    has_any = has_any || is_date;
  }
  return has_any ? conversions : std::vector<std::string_view>();
}

std::string SqliteDialect::NextValue(std::string_view sequence) const {
  return "sabrel_nextval(" + dialect::TextConstant(UpperCase(sequence)) + ")";
}

std::string SqliteDialect::CurrentValue(std::string_view sequence) const {
  return "sabrel_currval(" + dialect::TextConstant(UpperCase(sequence)) + ")";
}

dialect::Engine::CallOpening SqliteDialect::RoutineCall(std::string_view name) const {
  return {"sabrel_call(" + dialect::TextConstant(UpperCase(name)), true};
}

Server::Server(const std::string& path, std::shared_ptr<CancelSwitch> cancel_switch,
               std::shared_ptr<SessionState> session, Durability durability, Deadline deadline)
    : connection_(path, std::move(cancel_switch), deadline),
      session_(std::move(session)),
      routines_(*this),
      dialect_(routines_, connection_) {
  connection_.FollowDateFormat(session_->date_format);
  RegisterFunctions(connection_);
  RegisterServerFunctions(*this);
  Register(connection_, {"sabrel_arguments", 0, -1, false, TakeArguments}, this);
  const Operation opening(connection_, deadline);
  connection_.Configure(durability);
}

dialect::Rewritten Server::Compile(std::string_view statement) const {
  RefuseOwnNames(statement);
  return CompileOwn(statement);
}

dialect::Rewritten Server::CompileOwn(std::string_view statement) const {
  return dialect::Rewrite(statement, dialect_);
}

Statement Server::Prepare(const dialect::Rewritten& rewritten) {
  RefuseWritingQuery(rewritten);
  Statement statement = connection_.Prepare(rewritten.text, VerbOf(rewritten.kind));
  for (std::size_t i = 0; i < rewritten.constants.size(); ++i) {
    statement.Bind(static_cast<int>(i + 1), ValueOf(rewritten.constants[i]));
  }
  return statement;
}

void Server::RefuseWritingQuery(const dialect::Rewritten& rewritten) {
  constexpr std::string_view kOpening = "sabrel_call('";
  const bool is_query =
      rewritten.kind == StatementKind::kSelect || rewritten.kind == StatementKind::kInsert;
  if (!rewritten.writes || !is_query) return;
  const std::string& sql = rewritten.text;
  for (std::size_t at = sql.find(kOpening); at != std::string::npos;
       at = sql.find(kOpening, at + 1)) {
    const std::size_t start = at + kOpening.size();
    const auto routine = routines_.Find(sql.substr(start, sql.find('\'', start) - start));
    if (routine && routine->writes && ReadsTables(sql)) {
      throw ServerFailure(14551, "cannot perform a DML operation inside a query");
    }
  }
}

std::int64_t Server::Execute(std::string_view statement) {
  routines_.MayBeOutdated();
  const StatementKind kind = dialect::KindOf(statement);
  if (kind == StatementKind::kTransaction) {
    dialect::RequireCommit(statement);
  } else if (kind == StatementKind::kAlterSession) {
    std::string format = dialect::RequireDateFormatOnly(statement);
    RequireDateFormat(format);
    session_->date_format = std::move(format);
  } else if (kind == StatementKind::kBlock) {
    RunBlock(statement);
  } else if (IsDefinition(kind)) {
    Transaction transaction(connection_, Transaction::Kind::kWrite);
    try {
      Define(kind, statement);
      const bool is_of_tables =
          kind == StatementKind::kCreateTable || kind == StatementKind::kOtherDefinition;
      if (is_of_tables) routines_.CountChange();
      transaction.Commit();
    } catch (...) {
      routines_.Forget();
      throw;
    }
  } else {
    return ExecuteStatement(statement);
  }
  return kUnknownRows;
}

std::int64_t Server::ExecuteStatement(std::string_view statement) {
  const dialect::Rewritten rewritten = Compile(statement);
  if (rewritten.kind == StatementKind::kOther) throw ServerFailure(900, "invalid SQL statement");
  Statement prepared = Prepare(rewritten);
  RequireBound(prepared, rewritten);
  const bool writes = rewritten.writes || !prepared.IsReadOnly();
  Transaction transaction(connection_,
                          writes ? Transaction::Kind::kWrite : Transaction::Kind::kRead);
  prepared.RunToEnd();
  const std::int64_t rows_changed =
      VerbOf(rewritten.kind) == Verb::kOther ? kUnknownRows : connection_.RowsChanged();
  prepared.Reset();
  transaction.Commit();
  return rows_changed;
}

QueryResult Server::Query(std::string_view statement) {
  routines_.MayBeOutdated();
  QueryResult result;
  if (dialect::KindOf(statement) != StatementKind::kSelect) {
    Execute(statement);
    result.rows.emplace(0);
    return result;
  }
  const dialect::Rewritten rewritten = Compile(statement);
  Statement prepared = Prepare(rewritten);
  RequireBound(prepared, rewritten);
  if (!rewritten.writes && prepared.IsReadOnly()) {
    const bool has_row = prepared.Step();
    // Only now: the engine prepares again when the schema has changed.
    result.column_names = ResultNames(prepared, rewritten);
    if (has_row) {
      result.running.emplace(std::move(prepared));
    } else {
      result.rows.emplace(result.column_names.size());
    }
    return result;
  }
  Transaction transaction(connection_, Transaction::Kind::kWrite);
  bool has_row = prepared.Step();
  result.column_names = ResultNames(prepared, rewritten);
  result.rows.emplace(result.column_names.size());
  for (; has_row; has_row = prepared.Step()) prepared.AppendRow(*result.rows);
  prepared.Reset();
  transaction.Commit();
  return result;
}

void Server::Write(const RowSet& rows) {
  if (IsOwnName(rows.table)) throw ServerFailure(942, "table or view does not exist");
  std::string sql = "INSERT INTO " + QuotedName(rows.table) + " (";
  std::string places;
  std::vector<std::string> names;
  for (const auto& column : rows.columns) names.push_back(column.name);
  const std::vector<std::string_view> conversions = dialect_.ConversionsOf(rows.table, names);
  for (std::size_t i = 0; i < names.size(); ++i) {
    const std::string_view conversion = conversions.empty() ? "" : conversions[i];
    sql += (i > 0 ? ", " : "") + QuotedName(names[i]);
    places += (i > 0 ? ", " : "") + std::string(conversion) + "(?" + std::to_string(i + 1) + ")";
  }
  sql += ") VALUES (" + places + ")";
  Transaction transaction(connection_, Transaction::Kind::kWrite);
  {
    Statement insert = connection_.Prepare(sql, Verb::kInsert);
    for (const std::string_view row : rows.rows) {
      const auto pieces = DecodeRow(row);
      if (pieces.size() != rows.columns.size()) throw ServerFailure(947, "not enough values");
      for (std::size_t i = 0; i < pieces.size(); ++i) {
        const std::string_view text = pieces[i] ? std::string_view(*pieces[i]) : "";
        if (!IsSendableText(text)) throw ServerFailure(911, "invalid character in a row's text");
        const Value value = TextValue(text);
        const bool is_number = EqualIgnoringCase(rows.columns[i].type_word, "INT");
        insert.Bind(static_cast<int>(i + 1), is_number ? NumberOf(value) : value);
      }
      insert.Step();
      insert.Reset();
    }
  }
  transaction.Commit();
}

std::int64_t Server::NextValue(const std::string& sequence) {
  if (!connection_.MayWrite()) throw ServerFailure(2287, "sequence number not allowed here");
  Statement next = connection_.Prepare("SELECT next_value FROM sabrel_sequence WHERE name = ?1");
  next.Bind(1, std::string_view(sequence));
  if (!next.Step()) throw ServerFailure(2289, "sequence does not exist: " + sequence);
  // The engine makes a real of a whole number that overflows.
  if (next.Column(0).kind != Value::Kind::kInteger) {
    throw ServerFailure(8004, "sequence " + sequence + ".NEXTVAL exceeds its last value");
  }
  const std::int64_t value = next.Column(0).integer;
  next.Reset();
  Statement draw = connection_.Prepare(
      "UPDATE sabrel_sequence SET next_value = next_value + increment_by WHERE name = ?1");
  draw.Bind(1, std::string_view(sequence));
  draw.Step();
  session_->current_values[sequence] = value;
  return value;
}

std::int64_t Server::CurrentValue(const std::string& sequence) {
  const auto found = session_->current_values.find(sequence);
  if (found != session_->current_values.end()) return found->second;
  Statement known = connection_.Prepare("SELECT 1 FROM sabrel_sequence WHERE name = ?1");
  known.Bind(1, std::string_view(sequence));
  if (!known.Step()) throw ServerFailure(2289, "sequence does not exist: " + sequence);
  throw ServerFailure(8002, "sequence " + sequence + ".CURRVAL is not yet defined in this session");
}

}  // namespace sabrel::sqlite
