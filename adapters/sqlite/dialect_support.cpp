#include "adapters/sqlite/dialect_support.h"

#include <sqlite3.h>

#include "adapters/sqlite/failure.h"
#include "adapters/sqlite/functions.h"

namespace sabrel::sqlite {
namespace {

Value Sign(const std::string& a, const std::string& b) {
  return IntegerValue(a < b ? -1 : (b < a ? 1 : 0));
}

Value Compare(Arguments a, void* connection) {
  if (HasNull(a)) return {};
  if (a[0].IsNumber() || a[1].IsNumber()) return IntegerValue(OrderOfNumbers(a[0], a[1]));
  const bool has_date = a[0].kind == Value::Kind::kDate || a[1].kind == Value::Kind::kDate;
  if (has_date) {
    const std::string_view format = DateFormatOf(connection);
    return Sign(CoerceTo("DATE", a[0], format).text, CoerceTo("DATE", a[1], format).text);
  }
  return Sign(a[0].text, a[1].text);
}

/// What the aggregate has seen; zeroed by the engine before its first row.
struct Only {
  sqlite3_value* value;
};

void AddRow(sqlite3_context* context, int, sqlite3_value** values) {
  auto* const only = static_cast<Only*>(sqlite3_aggregate_context(context, sizeof(Only)));
  if (only == nullptr) return sqlite3_result_error_nomem(context);
  if (only->value != nullptr) {
    auto* const connection = static_cast<Connection*>(sqlite3_user_data(context));
    connection->Keep(std::make_exception_ptr(
        ServerFailure(1427, "single-row subquery returns more than one row")));
    return sqlite3_result_error(context, "more than one row", -1);
  }
  only->value = sqlite3_value_dup(values[0]);
  if (only->value == nullptr) sqlite3_result_error_nomem(context);
}

void Finish(sqlite3_context* context) {
  auto* const only = static_cast<Only*>(sqlite3_aggregate_context(context, 0));
  if (only == nullptr || only->value == nullptr) return;
  sqlite3_result_value(context, only->value);
  sqlite3_value_free(only->value);
  only->value = nullptr;
}

}  // namespace

void RegisterDialectSupport(Connection& connection) {
  Register(connection, {"SABREL_COMPARE", 2, 2, true, Compare}, &connection);
  constexpr int kFlags = SQLITE_UTF8 | SQLITE_INNOCUOUS | SQLITE_DETERMINISTIC;
  const int code = sqlite3_create_function_v2(connection.Handle(), "SABREL_SINGLE", 1, kFlags,
                                              &connection, nullptr, AddRow, Finish, nullptr);
  if (code != SQLITE_OK) connection.Fail(code, nullptr, Verb::kOther);
}

}  // namespace sabrel::sqlite
