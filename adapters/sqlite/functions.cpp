#include "adapters/sqlite/functions.h"

#include <sqlite3.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "adapters/sqlite/dialect_support.h"
#include "adapters/sqlite/failure.h"

namespace sabrel::sqlite {
namespace {

/// What a call costs besides its texts, as work.
constexpr std::size_t kBytesOfACall = 256;

struct Binding {
  SqlFunction function;
  Connection* connection;
  void* context;
};

}  // namespace

Value ArgumentOf(sqlite3_value* value) {
  const auto bytes = [value](const void* start) {
    return std::string_view(static_cast<const char*>(start),
                            static_cast<std::size_t>(sqlite3_value_bytes(value)));
  };
  switch (sqlite3_value_type(value)) {
    case SQLITE_INTEGER: return IntegerValue(sqlite3_value_int64(value));
    case SQLITE_FLOAT: {
      const double number = sqlite3_value_double(value);
      RequireFinite(number);
      return RealValue(number);
    }
    case SQLITE_TEXT: return TextValue(bytes(sqlite3_value_text(value)));
    case SQLITE_BLOB: {
      const std::string_view moment = bytes(sqlite3_value_blob(value));
      if (IsMoment(moment)) return DateValue(moment);
      throw ServerFailure(932, "inconsistent datatypes: a binary value that is no date");
    }
    default: return {};
  }
}

void Answer(sqlite3_context* context, const Value& value) {
  switch (value.kind) {
    case Value::Kind::kNull: sqlite3_result_null(context); return;
    case Value::Kind::kInteger: sqlite3_result_int64(context, value.integer); return;
    case Value::Kind::kReal:
      RequireFinite(value.real);
      sqlite3_result_double(context, value.real);
      return;
    case Value::Kind::kText:
      sqlite3_result_text64(context, value.text.data(), value.text.size(), SQLITE_TRANSIENT,
                            SQLITE_UTF8);
      return;
    case Value::Kind::kDate:
      sqlite3_result_blob64(context, value.text.data(), value.text.size(), SQLITE_TRANSIENT);
      return;
  }
}

namespace {

void Run(sqlite3_context* context, int count, sqlite3_value** values) {
  const auto& binding = *static_cast<Binding*>(sqlite3_user_data(context));
  // No exception may pass through the engine: it waits with the connection, which throws it again.
  try {
    if (count < binding.function.least) {
      throw ServerFailure(938, "not enough arguments for function");
    }
    std::vector<Value> arguments;
    arguments.reserve(static_cast<std::size_t>(count));
    binding.connection->Worked(kBytesOfACall);
    for (int i = 0; i < count; ++i) {
      Value& argument = arguments.emplace_back(ArgumentOf(values[i]));
      binding.connection->Worked(argument.text.size());
      if (!binding.function.takes_texts || argument.kind != Value::Kind::kDate) continue;
      argument = TextValue(PlainTextOf(argument, binding.connection->DateFormat()));
    }
    Answer(context, binding.function.run(arguments, binding.context));
  } catch (...) {
    binding.connection->Keep(std::current_exception());
    sqlite3_result_error(context, "the function failed", -1);
  }
}

Value Nvl(Arguments a, void*) { return a[0].IsNull() ? a[1] : a[0]; }
Value Nvl2(Arguments a, void*) { return a[0].IsNull() ? a[2] : a[1]; }

/// `a` as a value of the kind of `b`, where the two are a date and a text.
Value LikeDateOrText(const Value& a, const Value& b, std::string_view date_format) {
  using Kind = Value::Kind;
  if (a.kind == Kind::kDate && b.kind == Kind::kText) {
    return TextValue(PlainTextOf(a, date_format));
  }
  if (a.kind == Kind::kText && b.kind == Kind::kDate) return CoerceTo("DATE", a, date_format);
  return a;
}

bool SameValue(const Value& a, const Value& b, std::string_view date_format) {
  if (a.IsNull() || b.IsNull()) return a.IsNull() && b.IsNull();
  if (a.IsNumber() || b.IsNumber()) return OrderOfNumbers(a, b) == 0;
  return LikeDateOrText(a, b, date_format).text == b.text;
}

Value Decode(Arguments a, void* connection) {
  for (std::size_t i = 1; i + 1 < a.size(); i += 2) {
    if (SameValue(a[0], a[i], DateFormatOf(connection))) return a[i + 1];
  }
  return a.size() % 2 == 0 ? a.back() : Value{};
}

Value Mod(Arguments a, void*) {
  if (HasNull(a)) return {};
  const Value number = NumberOf(a[0]);
  const Value divisor = NumberOf(a[1]);
  if (RealOf(divisor) == 0.0) return number;
  if (number.kind == Value::Kind::kInteger && divisor.kind == Value::Kind::kInteger) {
    // The smallest whole number by -1 has no quotient.
    return IntegerValue(divisor.integer == -1 ? 0 : number.integer % divisor.integer);
  }
  return Tidy(std::fmod(RealOf(number), RealOf(divisor)));
}

Value Abs(Arguments a, void*) {
  if (a[0].IsNull()) return {};
  const Value number = NumberOf(a[0]);
  const bool fits = number.integer != std::numeric_limits<std::int64_t>::min();
  if (number.kind == Value::Kind::kInteger && fits) {
    return IntegerValue(number.integer < 0 ? -number.integer : number.integer);
  }
  return RealValue(std::fabs(RealOf(number)));
}

Value Sqrt(Arguments a, void*) {
  if (a[0].IsNull()) return {};
  const double number = RealOf(a[0]);
  if (number < 0) throw ServerFailure(1428, "argument is out of range");
  return Tidy(std::sqrt(number));
}

double Logarithm(const Value& value) {
  const double number = RealOf(value);
  if (!(number > 0)) throw ServerFailure(1428, "argument is out of range");
  return std::log(number);
}

Value Ln(Arguments a, void*) { return a[0].IsNull() ? Value{} : Tidy(Logarithm(a[0])); }

Value Log(Arguments a, void*) {
  // With one argument the engine's own would answer.
  if (a.size() < 2) throw ServerFailure(938, "not enough arguments for function");
  if (HasNull(a)) return {};
  const double base = Logarithm(a[0]);
  if (base == 0.0) throw ServerFailure(1428, "argument is out of range: 1 is no base");
  const double power = Logarithm(a[1]) / base;
  // LOG(10, 1000) is 3, whatever the last digit of the quotient.
  const double nearest = std::round(power);
  return Tidy(std::fabs(power - nearest) <= std::fabs(nearest) * 1e-15 ? nearest : power);
}

Value Exp(Arguments a, void*) { return a[0].IsNull() ? Value{} : Tidy(std::exp(RealOf(a[0]))); }

/// `number` by `round`, a whole one as it is.
Value Whole(const Value& number, double (*round)(double)) {
  const Value read = NumberOf(number);
  return read.kind == Value::Kind::kReal ? Tidy(round(read.real)) : read;
}

Value Ceil(Arguments a, void*) { return Whole(a[0], std::ceil); }
Value Floor(Arguments a, void*) { return Whole(a[0], std::floor); }
Value Power(Arguments a, void*) {
  if (HasNull(a)) return {};
  return Tidy(std::pow(RealOf(a[0]), RealOf(a[1])));
}

/// -1, 0 or 1 as `a` sorts before, with or behind `b`, which decides by its own kind.
int Order(const Value& a, const Value& b) {
  if (b.IsNumber()) return OrderOfNumbers(a, b);
  return TextOf(a).compare(TextOf(b));
}

Value Extreme(Arguments a, int wanted_sign, std::string_view date_format) {
  if (HasNull(a)) return {};
  Value best = a[0];
  for (const Value& one : a) {
    Value value = LikeDateOrText(one, best, date_format);
    if (Order(value, best) * wanted_sign > 0) best = std::move(value);
  }
  return best;
}

Value Greatest(Arguments a, void* connection) { return Extreme(a, 1, DateFormatOf(connection)); }
Value Least(Arguments a, void* connection) { return Extreme(a, -1, DateFormatOf(connection)); }

Value ToNumber(Arguments a, void*) {
  if (HasNull(a)) return {};
  if (a.size() < 2 || a[0].kind != Value::Kind::kText) return NumberOf(a[0]);
  // A format only says which signs to pass over; the digits are the number.
  std::string digits;
  for (const char c : a[0].text) {
    if (c != ',' && c != '$') digits += c;
  }
  return NumberOf(TextValue(digits));
}

Value RaiseApplicationError(Arguments a, void*) {
  const std::int64_t number = a[0].IsNull() ? 0 : WholeOf(a[0]);
  if (number > -20000 || number < -20999) {
    throw ServerFailure(21000, "error number argument to raise_application_error is out of range");
  }
  throw ServerFailure(static_cast<std::int32_t>(-number), TextOf(a[1]));
}

constexpr SqlFunction kFunctions[] = {
    {"NVL", 2, 2, true, Nvl},
    {"NVL2", 3, 3, true, Nvl2},
    {"DECODE", 3, -1, true, Decode},
    {"MOD", 2, 2, true, Mod},
    {"ABS", 1, 1, true, Abs},
    {"SQRT", 1, 1, true, Sqrt},
    {"LN", 1, 1, true, Ln},
    {"LOG", 1, 2, true, Log},
    {"EXP", 1, 1, true, Exp},
    {"CEIL", 1, 1, true, Ceil},
    {"FLOOR", 1, 1, true, Floor},
    {"POWER", 2, 2, true, Power},
    {"GREATEST", 1, -1, true, Greatest},
    {"LEAST", 1, -1, true, Least},
    {"TO_NUMBER", 1, 2, true, ToNumber},
    // Not pure: a pure function of constants runs before any row is looked at.
    {"RAISE_APPLICATION_ERROR", 2, 3, false, RaiseApplicationError},
};

}  // namespace

bool HasNull(Arguments arguments) {
  return std::any_of(arguments.begin(), arguments.end(),
                     [](const Value& value) { return value.IsNull(); });
}

void RequireLength(std::size_t bytes) {
  if (bytes > Connection::kLongestText) {
    throw ServerFailure(1489, "result of string concatenation is too long");
  }
}

std::string_view DateFormatOf(void* context) {
  return static_cast<const Connection*>(context)->DateFormat();
}

std::string TextOf(const Value& value) {
  switch (value.kind) {
    case Value::Kind::kNull: return {};
    case Value::Kind::kInteger:
    case Value::Kind::kReal: return NumberText(value);
    default: return value.text;
  }
}

Value NumberOf(const Value& value) {
  if (value.kind == Value::Kind::kText) {
    if (auto number = NumberFrom(value.text)) return *number;
    throw ServerFailure(1722, "invalid number");
  }
  if (value.kind == Value::Kind::kDate) {
    throw ServerFailure(932, "inconsistent datatypes: expected NUMBER got DATE");
  }
  return value;
}

int OrderOfNumbers(const Value& a, const Value& b) {
  const Value x = NumberOf(a);
  const Value y = NumberOf(b);
  if (x.kind == Value::Kind::kInteger && y.kind == Value::Kind::kInteger) {
    return x.integer < y.integer ? -1 : (x.integer > y.integer ? 1 : 0);
  }
  const double left = RealOf(x);
  const double right = RealOf(y);
  return left < right ? -1 : (left > right ? 1 : 0);
}

double RealOf(const Value& value) {
  const Value number = NumberOf(value);
  return number.kind == Value::Kind::kReal ? number.real : static_cast<double>(number.integer);
}

std::int64_t WholeOf(const Value& value) {
  const Value number = NumberOf(value);
  if (number.kind != Value::Kind::kReal) return number.integer;
  if (!(std::fabs(number.real) < 9.2e18)) throw ServerFailure(1426, "numeric overflow");
  return static_cast<std::int64_t>(number.real);
}

void RequireFinite(double number) {
  if (!std::isfinite(number)) throw ServerFailure(1426, "numeric overflow");
}

Value Tidy(double number) {
  RequireFinite(number);
  const bool is_whole = std::fabs(number) < 9007199254740992.0 && std::trunc(number) == number;
  return is_whole ? IntegerValue(static_cast<std::int64_t>(number)) : RealValue(number);
}

void Register(Connection& connection, const SqlFunction& function, void* context) {
  const int flags = SQLITE_UTF8 | SQLITE_INNOCUOUS | (function.is_pure ? SQLITE_DETERMINISTIC : 0);
  const auto add = [&](int count) {
    const int code = sqlite3_create_function_v2(
        connection.Handle(), function.name, count, flags,
        new Binding{function, &connection, context}, Run, nullptr, nullptr,
        [](void* binding) { delete static_cast<Binding*>(binding); });
    if (code != SQLITE_OK) connection.Fail(code, nullptr, Verb::kOther);
  };
  connection.AddFunction(function.name);
  if (function.most < 0) {
    add(-1);
  } else {
    for (int count = function.least; count <= function.most; ++count) add(count);
  }
}

void RegisterFunctions(Connection& connection) {
  for (const SqlFunction& function : kFunctions) Register(connection, function, &connection);
  RegisterTextFunctions(connection);
  RegisterDateFunctions(connection);
  RegisterCasts(connection);
  RegisterAggregates(connection);
  RegisterDialectSupport(connection);
}

}  // namespace sabrel::sqlite
