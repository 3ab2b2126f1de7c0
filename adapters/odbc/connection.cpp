#include "adapters/odbc/connection.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include "adapters/odbc/call_parameters.h"
#include "adapters/odbc/driver.h"
#include "adapters/odbc/wide_text.h"
#include "sabrel/platform/row_text.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::odbc {
namespace {

// Never freed: workers that were left behind may use it until the process ends.
SQLHENV Environment() {
  static const SQLHENV environment = [] {
    SQLHENV made = nullptr;
    if (!SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_ENV, nullptr, &made))) {
      throw DriverFailure({"IM005", 0, "the ODBC driver manager cannot be set up"});
    }
    SQLSetEnvAttr(made, SQL_ATTR_ODBC_VERSION, NumberArgument(SQL_OV_ODBC3), 0);
    return made;
  }();
  return environment;
}

/// When a driver is to give up connecting: late enough for the caller's clock to decide what is
/// told, since a driver counts in whole seconds and does not say that its time was over.
std::int32_t DriverLimit(std::int32_t connect_timeout_s) {
  constexpr std::int32_t kLater = 2;
  constexpr std::int32_t kLongest = 1000000;  // drivers count in milliseconds of 32 bits
  return connect_timeout_s <= 0 ? 0 : std::min(connect_timeout_s, kLongest) + kLater;
}

std::string Text(const Variant& value) {
  return value.kind() == VariantKind::kString ? value.Get<std::string>() : std::string();
}

dialect::Direction DirectionOf(std::string_view in_out) {
  if (in_out == "IN") return dialect::Direction::kIn;
  return in_out == "OUT" ? dialect::Direction::kOut : dialect::Direction::kInOut;
}

/// What an engine's signature query returned.
std::vector<Signature> SignaturesIn(const RowBlock& rows) {
  enum : std::size_t { kPosition, kArgument, kDirection, kType, kCallName, kOverload, kColumns };
  std::vector<Signature> found;
  std::string overload;
  for (std::size_t row = 0; row < rows.Rows() && rows.Columns() == kColumns; ++row) {
    const Variant of = rows.Cell(row, kOverload);
    const std::string this_overload =
        of.kind() == VariantKind::kInt32 ? std::to_string(of.Get<std::int32_t>()) : Text(of);
    if (found.empty() || this_overload != overload) {
      overload = this_overload;
      found.emplace_back().call_name = Text(rows.Cell(row, kCallName));
    }
    const Variant position = rows.Cell(row, kPosition);
    if (position.kind() != VariantKind::kInt32) continue;
    std::string type = Text(rows.Cell(row, kType));
    if (position.Get<std::int32_t>() == 0) {
      found.back().is_function = true;
      found.back().result_type = std::move(type);
    } else {
      found.back().arguments.push_back({Text(rows.Cell(row, kArgument)),
                                        DirectionOf(Text(rows.Cell(row, kDirection))),
                                        std::move(type)});
    }
  }
  return found;
}

void AppendConstant(std::string& sql, const std::optional<std::string>& piece,
                    std::string_view end) {
  if (!piece) {
    sql += "NULL";
    return;
  }
  sql += '\'';
  for (const char c : *piece) sql.append(c == '\'' ? 2 : 1, c);
  sql += '\'';
  sql += end;
}

/// One column's parameters of many rows, in the driver's form.
struct ParameterColumn {
  std::u16string units;  // rows one behind the other, each `width` wide
  std::vector<SQLLEN> lengths;
  std::size_t width = 0;
};

std::vector<ParameterColumn> Columns(
    const std::vector<std::vector<std::optional<std::string>>>& rows, std::size_t count) {
  std::vector<ParameterColumn> columns(count);
  for (std::size_t i = 0; i < count; ++i) {
    ParameterColumn& column = columns[i];
    std::vector<std::u16string> texts;
    for (const auto& row : rows) {
      texts.push_back(row[i] ? ToWide(*row[i]) : std::u16string());
      column.lengths.push_back(row[i] ? static_cast<SQLLEN>(texts.back().size() * sizeof(SQLWCHAR))
                                      : SQL_NULL_DATA);
      column.width = std::max(column.width, texts.back().size());
    }
    column.width = std::max<std::size_t>(column.width, 1);
    column.units.reserve(column.width * texts.size());
    for (std::u16string& text : texts) {
      text.resize(column.width);
      column.units += text;
    }
  }
  return columns;
}

}  // namespace

Connection::Connection(const Engine& engine, const ConnectionProfile& profile,
                       const SectionSettings& section, Opening opening,
                       std::shared_ptr<CancelPoint> cancel_point)
    : engine_(engine), cancel_point_(std::move(cancel_point)) {
  const std::u16string text = ToWide(engine.ConnectionText(profile, section));
  Require(SQLAllocHandle(SQL_HANDLE_DBC, Environment(), &handle_), SQL_HANDLE_ENV, Environment());
  const std::int32_t limit_s = DriverLimit(profile.ConnectTimeout);
  try {
    if (limit_s > 0) {
      SQLSetConnectAttr(handle_, SQL_ATTR_LOGIN_TIMEOUT,
                        NumberArgument(static_cast<std::uintptr_t>(limit_s)), 0);
    }
    Require(SQLDriverConnectW(handle_, nullptr, WideArgument(text),
                              static_cast<SQLSMALLINT>(text.size()), nullptr, 0, nullptr,
                              SQL_DRIVER_NOPROMPT),
            SQL_HANDLE_DBC, handle_);
  } catch (...) {
    SQLFreeHandle(SQL_HANDLE_DBC, handle_);
    throw;
  }
  if (opening == Opening::kBare) return;
  try {
    for (const std::string& statement : engine.OpeningStatements(section.DateFormat)) {
      Execute(ToWide(statement), limit_s);
    }
  } catch (...) {
    SQLDisconnect(handle_);
    SQLFreeHandle(SQL_HANDLE_DBC, handle_);
    throw;
  }
}

Connection::~Connection() {
  SQLDisconnect(handle_);
  SQLFreeHandle(SQL_HANDLE_DBC, handle_);
}

std::int64_t Connection::Execute(const std::u16string& text, std::int32_t timeout_s) {
  Statement statement(handle_, cancel_point_);
  statement.Execute(text, timeout_s);
  return statement.RowsChanged();
}

std::unique_ptr<Statement> Connection::Run(const std::string& text, std::int32_t timeout_s) {
  auto statement = std::make_unique<Statement>(handle_, cancel_point_);
  statement->Execute(ToWide(text), timeout_s);
  return statement;
}

std::unique_ptr<Statement> Connection::Query(const Compiled& statement, std::int32_t timeout_s) {
  const bool has_one_row = !statement.question.empty() && IsSo(statement.question, timeout_s);
  return Run(has_one_row ? std::string(statement.one_row_prefix) + statement.text : statement.text,
             timeout_s);
}

bool Connection::IsSo(const std::string& question, std::int32_t timeout_s) {
  constexpr std::size_t kMostAnswers = 1000;
  if (const auto known = answers_.find(question); known != answers_.end()) return known->second;
  const auto statement = Run(question, timeout_s);
  RowBlock rows(statement->ColumnNames().size());
  static_cast<void>(statement->Fetch(rows, 1));
  const Variant answer = rows.Rows() > 0 ? rows.Cell(0, 0) : Variant();
  const bool is_so = answer.kind() == VariantKind::kInt32 && answer.Get<std::int32_t>() > 0;
  if (answers_.size() >= kMostAnswers) answers_.clear();
  answers_.emplace(question, is_so);
  return is_so;
}

std::optional<Signature> Connection::Find(const std::string& name, std::size_t arguments,
                                          std::int32_t timeout_s) {
  const std::string key = UpperCase(TrimBlanks(name));
  auto known = routines_.find(key);
  if (known == routines_.end()) {
    const auto statement = Run(engine_.SignatureQuery(key), timeout_s);
    RowBlock rows(statement->ColumnNames().size());
    while (statement->Fetch(rows, SIZE_MAX)) {
    }
    std::vector<Signature> found = SignaturesIn(rows);
    if (found.empty()) return std::nullopt;  // it may be made any time: asked for again
    known = routines_.emplace(key, std::move(found)).first;
  }
  for (const Signature& one : known->second) {
    if (one.arguments.size() == arguments) return one;
  }
  for (const Signature& one : known->second) {
    if (one.is_function && one.arguments.size() + 1 == arguments) return one;
  }
  return known->second.front();
}

RowBlock Connection::Call(const Signature& signature,
                          const std::vector<std::optional<std::string>>& values,
                          std::int32_t timeout_s) {
  std::size_t columns = signature.is_function ? 1 : 0;
  for (const Signature::Argument& argument : signature.arguments) {
    if (argument.direction != dialect::Direction::kIn) ++columns;
  }
  RowBlock row(columns);
  if (engine_.CallsByText()) {
    CallByText(signature, values, timeout_s, row);
  } else {
    CallBound(signature, values, timeout_s, row);
  }
  return row;
}

void Connection::CallByText(const Signature& signature,
                            const std::vector<std::optional<std::string>>& values,
                            std::int32_t timeout_s, RowBlock& row) {
  const auto statement = Run(engine_.CallText(signature, values), timeout_s);
  if (row.Columns() == 0) return;
  RowBlock rows(statement->ColumnNames().size());
  while (statement->Fetch(rows, SIZE_MAX)) {
  }
  if (rows.Columns() != row.Columns() || rows.Rows() == 0) {
    throw DriverFailure({"HY000", 0, "the routine did not answer as its description says"});
  }
  row = std::move(rows);
}

void Connection::CallBound(const Signature& signature,
                           const std::vector<std::optional<std::string>>& values,
                           std::int32_t timeout_s, RowBlock& row) {
  std::vector<CallParameter> parameters = ParametersOf(signature, values);
  std::string text = signature.is_function ? "{? = call " : "{call ";
  text += signature.call_name + "(";
  for (std::size_t i = 0; i < signature.arguments.size(); ++i) {
    text += i > 0 ? "," : "";
    text += PlaceOf(signature.arguments[i], values[i]);
  }
  text += ")}";
  Statement statement(handle_, cancel_point_);
  const std::u16string wide = ToWide(text);
  Require(SQLPrepareW(statement.Handle(), WideArgument(wide), static_cast<SQLINTEGER>(wide.size())),
          SQL_HANDLE_STMT, statement.Handle());
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    CallParameter& parameter = parameters[i];
    constexpr SQLULEN kTextSize = 32767;
    constexpr SQLULEN kNumberSize = 40;
    Require(
        SQLBindParameter(
            statement.Handle(), static_cast<SQLUSMALLINT>(i + 1), parameter.direction, SQL_C_WCHAR,
            SQL_WVARCHAR, parameter.is_number ? kNumberSize : kTextSize, 0, parameter.units.data(),
            static_cast<SQLLEN>(parameter.units.size() * sizeof(SQLWCHAR)), &parameter.length),
        SQL_HANDLE_STMT, statement.Handle());
  }
  statement.ExecutePrepared(timeout_s);
  while (SQLMoreResults(statement.Handle()) == SQL_SUCCESS) {  // outputs are there behind the last
  }
  for (const CallParameter& parameter : parameters) {
    if (parameter.direction != SQL_PARAM_INPUT) AppendOutput(row, parameter);
  }
  row.EndRow();
}

void Connection::SetAutocommit(bool on) {
  Require(SQLSetConnectAttr(handle_, SQL_ATTR_AUTOCOMMIT,
                            NumberArgument(on ? SQL_AUTOCOMMIT_ON : SQL_AUTOCOMMIT_OFF), 0),
          SQL_HANDLE_DBC, handle_);
}

void Connection::EndTransaction(bool commit) {
  Require(SQLEndTran(SQL_HANDLE_DBC, handle_, commit ? SQL_COMMIT : SQL_ROLLBACK), SQL_HANDLE_DBC,
          handle_);
}

void Connection::Write(std::string_view head, const RowSet& rows, std::int32_t timeout_s) {
  if (rows.rows.empty()) return;
  SetAutocommit(false);
  try {
    if (engine_.InsertsManyRows()) {
      WriteManyRows(head, rows, timeout_s);
    } else {
      WriteArrays(head, rows, timeout_s);
    }
    EndTransaction(true);
  } catch (...) {
    SQLEndTran(SQL_HANDLE_DBC, handle_, SQL_ROLLBACK);
    SQLSetConnectAttr(handle_, SQL_ATTR_AUTOCOMMIT, NumberArgument(SQL_AUTOCOMMIT_ON), 0);
    throw;
  }
  SetAutocommit(true);
}

void Connection::WriteManyRows(std::string_view head, const RowSet& rows, std::int32_t timeout_s) {
  constexpr std::size_t kStatementBytes = std::size_t{256} << 10U;
  std::string sql(head);
  for (auto row = rows.rows.begin(); row != rows.rows.end();) {
    std::size_t column = 0;
    for (const auto& piece : DecodeRow(*row)) {
      sql += column == 0 ? '(' : ',';
      const bool is_number =
          column < rows.columns.size() && EqualIgnoringCase(rows.columns[column].type_word, "INT");
      AppendConstant(sql, piece, is_number ? std::string_view() : engine_.TextConstantEnd());
      ++column;
    }
    sql += ')';
    ++row;
    if (row != rows.rows.end() && sql.size() < kStatementBytes) {
      sql += ',';
      continue;
    }
    Execute(ToWide(sql), timeout_s);
    sql.assign(head);
  }
}

void Connection::WriteArrays(std::string_view head, const RowSet& rows, std::int32_t timeout_s) {
  constexpr std::size_t kArrayBytes = std::size_t{1} << 20U;
  constexpr std::size_t kMostRows = 500;
  std::string sql(head);
  for (std::size_t i = 0; i < rows.columns.size(); ++i) sql += i > 0 ? ",?" : "(?";
  sql += ")";
  const std::u16string wide = ToWide(sql);
  for (auto row = rows.rows.begin(); row != rows.rows.end();) {
    std::vector<std::vector<std::optional<std::string>>> chunk;
    std::size_t widest = 1;
    while (row != rows.rows.end() && chunk.size() < kMostRows &&
           (chunk.size() + 1) * std::max(widest, (*row).size()) < kArrayBytes) {
      widest = std::max(widest, (*row).size());
      chunk.push_back(DecodeRow(*row));
      ++row;
    }
    if (chunk.empty()) {  // a row as long as a whole array
      chunk.push_back(DecodeRow(*row));
      ++row;
    }
    std::vector<ParameterColumn> columns = Columns(chunk, rows.columns.size());
    Statement statement(handle_, cancel_point_);
    std::vector<SQLUSMALLINT> states(chunk.size(), SQL_PARAM_SUCCESS);
    Require(
        SQLSetStmtAttr(statement.Handle(), SQL_ATTR_PARAMSET_SIZE, NumberArgument(chunk.size()), 0),
        SQL_HANDLE_STMT, statement.Handle());
    SQLSetStmtAttr(statement.Handle(), SQL_ATTR_PARAM_STATUS_PTR, states.data(), 0);
    Require(
        SQLPrepareW(statement.Handle(), WideArgument(wide), static_cast<SQLINTEGER>(wide.size())),
        SQL_HANDLE_STMT, statement.Handle());
    for (std::size_t i = 0; i < columns.size(); ++i) {
      ParameterColumn& column = columns[i];
      Require(SQLBindParameter(
                  statement.Handle(), static_cast<SQLUSMALLINT>(i + 1), SQL_PARAM_INPUT,
                  SQL_C_WCHAR, column.width > 4000 ? SQL_WLONGVARCHAR : SQL_WVARCHAR, column.width,
                  0, column.units.data(), static_cast<SQLLEN>(column.width * sizeof(SQLWCHAR)),
                  column.lengths.data()),
              SQL_HANDLE_STMT, statement.Handle());
    }
    statement.ExecutePrepared(timeout_s);
    // A driver may call an array with refused rows a success.
    if (std::find(states.begin(), states.end(), SQL_PARAM_ERROR) != states.end()) {
      throw DriverFailure(DiagnosisOf(SQL_HANDLE_STMT, statement.Handle()));
    }
  }
}

}  // namespace sabrel::odbc
