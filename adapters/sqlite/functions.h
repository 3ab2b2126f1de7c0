// The server's SQL functions that need no more than their arguments.
#pragma once

#include <span>
#include <string>

#include "adapters/sqlite/connection.h"
#include "adapters/sqlite/value.h"

struct sqlite3_context;
struct sqlite3_value;

namespace sabrel::sqlite {

using Arguments = std::span<const Value>;

/// A function of SQL. `most` -1 takes any number of arguments; a failure is thrown as
/// ServerFailure.
struct SqlFunction {
  const char* name;
  int least;
  int most;
  bool is_pure;  // same arguments, same result
  Value (*run)(Arguments arguments, void* context);
  bool takes_texts = false;  // dates come as texts in the session's format
};

/// Makes `function` known to statements of `connection`; `context` must live as long as the
/// connection. Errors (ServerFailure): the engine's
void Register(Connection& connection, const SqlFunction& function, void* context);

/// All functions that need no server, with the connection as their context: the ones below, those
/// that rewritten statements call, NVL, DECODE, MOD, GREATEST, ... Errors: as Register
void RegisterFunctions(Connection& connection);
/// UPPER, SUBSTR, INSTR, ... and the operator ||.
void RegisterTextFunctions(Connection& connection);
/// TO_DATE, TO_CHAR, TRUNC, ROUND, ... and the operators + - / of numbers and dates.
void RegisterDateFunctions(Connection& connection);
/// What CAST becomes.
void RegisterCasts(Connection& connection);
/// SUM and AVG, which refuse what is no number.
void RegisterAggregates(Connection& connection);

/// A function's argument and result on their way from and to the engine. Errors (ServerFailure):
/// 932 for bytes that are no date, 1426 for infinity
[[nodiscard]] Value ArgumentOf(sqlite3_value* value);
void Answer(sqlite3_context* context, const Value& value);

[[nodiscard]] bool HasNull(Arguments arguments);
/// Throws ServerFailure 1489 for a text that no value holds.
void RequireLength(std::size_t bytes);
/// A value as text; a date as it is kept. Null is "".
[[nodiscard]] std::string TextOf(const Value& value);
/// The date format of the session that a function without a server runs for.
[[nodiscard]] std::string_view DateFormatOf(void* context);
/// A value as a number. Errors (ServerFailure): 1722
[[nodiscard]] Value NumberOf(const Value& value);
/// -1, 0 or 1 as the number `a` is below, equal to or above `b`. Errors: as NumberOf
[[nodiscard]] int OrderOfNumbers(const Value& a, const Value& b);
[[nodiscard]] double RealOf(const Value& value);
/// A whole number, cut. Errors (ServerFailure): 1722, 1426
[[nodiscard]] std::int64_t WholeOf(const Value& value);
/// As TO_CHAR(value): a number, or a date in the session's format.
[[nodiscard]] std::string PlainTextOf(const Value& value, std::string_view date_format);
/// A number rounded to `digits` behind its point, before it where negative.
[[nodiscard]] Value RoundedTo(const Value& number, std::int64_t digits);
/// Throws ServerFailure 1426 for what is no finite number.
void RequireFinite(double number);
/// A number, as a whole one when it is one.
[[nodiscard]] Value Tidy(double number);

}  // namespace sabrel::sqlite
