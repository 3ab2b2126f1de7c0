#include "adapters/sqlite/statement.h"

#include <sqlite3.h>

#include <cmath>
#include <utility>

#include "adapters/sqlite/connection.h"
#include "adapters/sqlite/failure.h"

namespace sabrel::sqlite {

Statement::Statement(Connection& connection, sqlite3_stmt* handle, std::string key, Verb verb)
    : connection_(&connection), handle_(handle), key_(std::move(key)), verb_(verb) {}

Statement::Statement(Statement&& other) noexcept
    : connection_(other.connection_),
      handle_(std::exchange(other.handle_, nullptr)),
      key_(std::move(other.key_)),
      verb_(other.verb_) {}

Statement::~Statement() {
  if (handle_ == nullptr) return;
  sqlite3_reset(handle_);
  sqlite3_clear_bindings(handle_);
  connection_->KeepStatement(std::move(key_), handle_);
}

void Statement::Bind(int index, const Value& value) {
  switch (value.kind) {
    case Value::Kind::kNull: sqlite3_bind_null(handle_, index); return;
    case Value::Kind::kInteger: Bind(index, value.integer); return;
    case Value::Kind::kReal: sqlite3_bind_double(handle_, index, value.real); return;
    case Value::Kind::kText: Bind(index, std::string_view(value.text)); return;
    case Value::Kind::kDate:
      sqlite3_bind_blob64(handle_, index, value.text.data(), value.text.size(), SQLITE_TRANSIENT);
      return;
  }
}

void Statement::Bind(int index, std::string_view text) {
  const int code =
      sqlite3_bind_text64(handle_, index, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
  if (code != SQLITE_OK) connection_->Fail(code, handle_, verb_);
}

void Statement::Bind(int index, std::int64_t number) { sqlite3_bind_int64(handle_, index, number); }

bool Statement::Step() {
  connection_->kept_failure_ = nullptr;
  const int code = sqlite3_step(handle_);
  if (code == SQLITE_ROW) return true;
  if (code == SQLITE_DONE) return false;
  connection_->Fail(code, handle_, verb_);
}

void Statement::RunToEnd() {
  while (Step()) {
  }
}

void Statement::Reset() noexcept { sqlite3_reset(handle_); }
int Statement::Parameters() const noexcept { return sqlite3_bind_parameter_count(handle_); }
int Statement::Columns() const noexcept { return sqlite3_column_count(handle_); }
bool Statement::IsReadOnly() const noexcept { return sqlite3_stmt_readonly(handle_) != 0; }

std::string_view Statement::ColumnName(int column) const {
  const char* name = sqlite3_column_name(handle_, column);
  return name != nullptr ? name : "";
}

std::string_view Statement::DeclaredType(int column) const {
  const char* type = sqlite3_column_decltype(handle_, column);
  return type != nullptr ? type : "";
}

// The engine's own operators and constants come to infinity where Oracle refuses.
double Statement::RealColumn(int column) const {
  const double number = sqlite3_column_double(handle_, column);
  if (!std::isfinite(number)) throw ServerFailure(1426, "numeric overflow");
  return number;
}

Value Statement::Column(int column) const {
  const auto bytes = [this, column](const void* start) {
    return std::string_view(static_cast<const char*>(start),
                            static_cast<std::size_t>(sqlite3_column_bytes(handle_, column)));
  };
  switch (sqlite3_column_type(handle_, column)) {
    case SQLITE_INTEGER: return IntegerValue(sqlite3_column_int64(handle_, column));
    case SQLITE_FLOAT: return RealValue(RealColumn(column));
    case SQLITE_TEXT: return TextValue(bytes(sqlite3_column_text(handle_, column)));
    case SQLITE_BLOB: return DateValue(bytes(sqlite3_column_blob(handle_, column)));
    default: return {};
  }
}

void Statement::AppendRow(RowBlock& block) const {
  for (int column = 0; column < static_cast<int>(block.Columns()); ++column) {
    AppendCell(block, column);
  }
  block.EndRow();
}

void Statement::AppendCell(RowBlock& block, int column) const {
  switch (sqlite3_column_type(handle_, column)) {
    case SQLITE_INTEGER: block.AddWhole(sqlite3_column_int64(handle_, column)); return;
    case SQLITE_FLOAT: block.AddDouble(RealColumn(column)); return;
    case SQLITE_NULL: block.AddNull(); return;
    default: break;
  }
  const bool is_text = sqlite3_column_type(handle_, column) == SQLITE_TEXT;
  const void* start = is_text ? static_cast<const void*>(sqlite3_column_text(handle_, column))
                              : sqlite3_column_blob(handle_, column);
  const std::string_view bytes(static_cast<const char*>(start),
                               static_cast<std::size_t>(sqlite3_column_bytes(handle_, column)));
  if (is_text) {
    block.AddText(bytes);
  } else if (IsMoment(bytes)) {
    block.AddDate(Date::FromCivil(PartsOf(bytes)));
  } else {
    throw ServerFailure(932, "inconsistent datatypes: a binary value that is no date");
  }
}

}  // namespace sabrel::sqlite
