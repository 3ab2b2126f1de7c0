// SUM and AVG, also over windows.
#include <sqlite3.h>

#include <cmath>
#include <new>

#include "adapters/sqlite/failure.h"
#include "adapters/sqlite/functions.h"

namespace sabrel::sqlite {
namespace {

/// What was added up so far. Whole numbers are exact as long as they fit; then and with others the
/// real sum holds.
struct Total {
  std::int64_t count = 0;
  std::int64_t reals = 0;
  std::int64_t whole = 0;
  // The sum and what its rounding has lost; the engine's memory is too coarsely aligned for a long
  // double.
  double real = 0.0;
  double lost = 0.0;
  bool has_overflown = false;

  void Take(const Value& value, int sign) {
    if (value.IsNull()) return;
    const Value number = NumberOf(value);
    count += sign;
    if (number.kind == Value::Kind::kReal) {
      reals += sign;
    } else {
      has_overflown = (sign > 0 ? __builtin_add_overflow(whole, number.integer, &whole)
                                : __builtin_sub_overflow(whole, number.integer, &whole)) ||
                      has_overflown;
    }
    AddReal(sign * (number.kind == Value::Kind::kReal ? number.real
                                                      : static_cast<double>(number.integer)));
  }
  void AddReal(double term) {
    const double sum = real + term;
    lost += std::abs(real) >= std::abs(term) ? (real - sum) + term : (term - sum) + real;
    real = sum;
  }
  [[nodiscard]] Value Sum() const {
    if (count == 0) return {};
    return reals == 0 && !has_overflown ? IntegerValue(whole) : Tidy(real + lost);
  }
  [[nodiscard]] Value Average() const {
    if (count == 0) return {};
    return Tidy((real + lost) / static_cast<double>(count));
  }
};

/// Runs `work` on the group's total. The engine hands out zeroed bytes, which are a new Total.
template <class Work>
void OnTotal(sqlite3_context* context, Work&& work) {
  auto& connection = *static_cast<Connection*>(sqlite3_user_data(context));
  try {
    auto* total = static_cast<Total*>(sqlite3_aggregate_context(context, sizeof(Total)));
    if (total == nullptr) throw std::bad_alloc();
    work(*total);
  } catch (...) {
    connection.Keep(std::current_exception());
    sqlite3_result_error(context, "the function failed", -1);
  }
}

template <int kSign>
void Take(sqlite3_context* context, int, sqlite3_value** values) {
  OnTotal(context, [values](Total& total) { total.Take(ArgumentOf(values[0]), kSign); });
}

template <Value (Total::*kResult)() const>
void Tell(sqlite3_context* context) {
  OnTotal(context, [context](const Total& total) { Answer(context, (total.*kResult)()); });
}

template <Value (Total::*kResult)() const>
void Add(Connection& connection, const char* name) {
  const int code = sqlite3_create_window_function(
      connection.Handle(), name, 1, SQLITE_UTF8 | SQLITE_INNOCUOUS | SQLITE_DETERMINISTIC,
      &connection, Take<1>, Tell<kResult>, Tell<kResult>, Take<-1>, nullptr);
  if (code != SQLITE_OK) connection.Fail(code, nullptr, Verb::kOther);
}

}  // namespace

void RegisterAggregates(Connection& connection) {
  Add<&Total::Sum>(connection, "SUM");
  Add<&Total::Average>(connection, "AVG");
}

}  // namespace sabrel::sqlite
