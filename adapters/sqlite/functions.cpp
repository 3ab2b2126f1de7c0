#include "adapters/sqlite/functions.h"

#include <sqlite3.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "adapters/sqlite/failure.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::sqlite {
namespace {

struct Binding {
  SqlFunction function;
  Connection* connection;
  void* context;
};

Value ArgumentOf(sqlite3_value* value) {
  const auto bytes = [value](const void* start) {
    return std::string_view(static_cast<const char*>(start),
                            static_cast<std::size_t>(sqlite3_value_bytes(value)));
  };
  switch (sqlite3_value_type(value)) {
    case SQLITE_INTEGER: return IntegerValue(sqlite3_value_int64(value));
    case SQLITE_FLOAT: return RealValue(sqlite3_value_double(value));
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
    case Value::Kind::kReal: sqlite3_result_double(context, value.real); return;
    case Value::Kind::kText:
      sqlite3_result_text64(context, value.text.data(), value.text.size(), SQLITE_TRANSIENT,
                            SQLITE_UTF8);
      return;
    case Value::Kind::kDate:
      sqlite3_result_blob64(context, value.text.data(), value.text.size(), SQLITE_TRANSIENT);
      return;
  }
}

void Run(sqlite3_context* context, int count, sqlite3_value** values) {
  const auto& binding = *static_cast<Binding*>(sqlite3_user_data(context));
  // No exception may pass through the engine: it waits with the connection, which throws it again.
  try {
    if (count < binding.function.least) {
      throw ServerFailure(938, "not enough arguments for function");
    }
    std::vector<Value> arguments;
    arguments.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) arguments.push_back(ArgumentOf(values[i]));
    Answer(context, binding.function.run(arguments, binding.context));
  } catch (...) {
    binding.connection->Keep(std::current_exception());
    sqlite3_result_error(context, "the function failed", -1);
  }
}

Value Nvl(Arguments a, void*) { return a[0].IsNull() ? a[1] : a[0]; }
Value Nvl2(Arguments a, void*) { return a[0].IsNull() ? a[2] : a[1]; }

bool SameValue(const Value& a, const Value& b) {
  if (a.IsNull() || b.IsNull()) return a.IsNull() && b.IsNull();
  const auto is_number = [](const Value& v) {
    return v.kind == Value::Kind::kInteger || v.kind == Value::Kind::kReal;
  };
  if (is_number(a) || is_number(b)) return RealOf(a) == RealOf(b);
  return a.text == b.text;
}

Value Decode(Arguments a, void*) {
  for (std::size_t i = 1; i + 1 < a.size(); i += 2) {
    if (SameValue(a[0], a[i])) return a[i + 1];
  }
  return a.size() % 2 == 0 ? a.back() : Value{};
}

Value Upper(Arguments a, void*) { return TextValue(UpperCase(TextOf(a[0]))); }
Value Lower(Arguments a, void*) { return TextValue(LowerCase(TextOf(a[0]))); }

Value Substr(Arguments a, void*) {
  if (std::any_of(a.begin(), a.end(), [](const Value& v) { return v.IsNull(); })) return {};
  const std::string text = TextOf(a[0]);
  const auto characters = static_cast<std::int64_t>(CharacterCount(text));
  std::int64_t start = WholeOf(a[1]);
  if (start == 0) start = 1;
  if (start < 0) start += characters + 1;
  if (start < 1 || start > characters) return {};
  const std::int64_t length = a.size() > 2 ? WholeOf(a[2]) : characters;
  if (length < 1) return {};
  std::string_view rest(text);
  rest.remove_prefix(ByteLengthOf(rest, static_cast<std::size_t>(start - 1)));
  return TextValue(rest.substr(0, ByteLengthOf(rest, static_cast<std::size_t>(length))));
}

/// INSTR(text, part[, start[, occurrence]]); a negative start searches backwards from the end.
Value Instr(Arguments a, void*) {
  if (std::any_of(a.begin(), a.end(), [](const Value& v) { return v.IsNull(); })) return {};
  const std::string text = TextOf(a[0]);
  const std::string part = TextOf(a[1]);
  const auto characters = static_cast<std::int64_t>(CharacterCount(text));
  const std::int64_t start = a.size() > 2 ? WholeOf(a[2]) : 1;
  std::int64_t occurrence = a.size() > 3 ? WholeOf(a[3]) : 1;
  if (occurrence < 1) throw ServerFailure(1428, "argument is out of range");
  if (start == 0) return IntegerValue(0);
  const std::int64_t step = start > 0 ? 1 : -1;
  std::int64_t position = start > 0 ? start : characters + 1 + start;
  for (; position >= 1 && position <= characters; position += step) {
    const std::size_t offset = ByteLengthOf(text, static_cast<std::size_t>(position - 1));
    if (text.compare(offset, part.size(), part) == 0 && --occurrence == 0) {
      return IntegerValue(position);
    }
  }
  return IntegerValue(0);
}

Value Replace(Arguments a, void*) {
  return TextValue(ReplaceAll(TextOf(a[0]), TextOf(a[1]), a.size() > 2 ? TextOf(a[2]) : ""));
}

Value Pad(Arguments a, bool at_left) {
  if (a[0].IsNull() || a[1].IsNull() || (a.size() > 2 && a[2].IsNull())) return {};
  const std::string text = TextOf(a[0]);
  const std::string filler = a.size() > 2 ? TextOf(a[2]) : " ";
  const std::int64_t wanted = std::min<std::int64_t>(WholeOf(a[1]), 32767);
  if (wanted < 1) return {};
  const auto width = static_cast<std::size_t>(wanted);
  const std::size_t characters = CharacterCount(text);
  if (characters >= width) return TextValue(text.substr(0, ByteLengthOf(text, width)));
  std::string padding;
  const std::size_t filler_width = CharacterCount(filler);
  std::size_t missing = width - characters;
  for (; missing >= filler_width; missing -= filler_width) padding += filler;
  padding += filler.substr(0, ByteLengthOf(filler, missing));
  return TextValue(at_left ? padding + text : text + padding);
}

Value LeftPad(Arguments a, void*) { return Pad(a, true); }
Value RightPad(Arguments a, void*) { return Pad(a, false); }

Value Mod(Arguments a, void*) {
  if (a[0].IsNull() || a[1].IsNull()) return {};
  const double divisor = RealOf(a[1]);
  return divisor == 0.0 ? NumberOf(a[0]) : Tidy(std::fmod(RealOf(a[0]), divisor));
}

Value Ceil(Arguments a, void*) { return a[0].IsNull() ? Value{} : Tidy(std::ceil(RealOf(a[0]))); }
Value Floor(Arguments a, void*) { return a[0].IsNull() ? Value{} : Tidy(std::floor(RealOf(a[0]))); }
Value Power(Arguments a, void*) {
  if (a[0].IsNull() || a[1].IsNull()) return {};
  return Tidy(std::pow(RealOf(a[0]), RealOf(a[1])));
}

/// -1, 0 or 1 as `a` sorts before, with or behind `b`, which decides by its own kind.
int Order(const Value& a, const Value& b) {
  if (b.kind == Value::Kind::kInteger || b.kind == Value::Kind::kReal) {
    const double x = RealOf(a);
    const double y = RealOf(b);
    return x < y ? -1 : (x > y ? 1 : 0);
  }
  return TextOf(a).compare(TextOf(b));
}

Value Extreme(Arguments a, int wanted_sign) {
  if (std::any_of(a.begin(), a.end(), [](const Value& v) { return v.IsNull(); })) return {};
  const Value* best = a.data();
  for (const Value& value : a) {
    if (Order(value, *best) * wanted_sign > 0) best = &value;
  }
  return *best;
}

Value Greatest(Arguments a, void*) { return Extreme(a, 1); }
Value Least(Arguments a, void*) { return Extreme(a, -1); }

Value ToNumber(Arguments a, void*) {
  if (a[0].IsNull() || (a.size() > 1 && a[1].IsNull())) return {};
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

Value Chr(Arguments a, void*) {
  if (a[0].IsNull()) return {};
  std::string text;
  AppendUtf8(text, static_cast<char32_t>(WholeOf(a[0])));
  return TextValue(text);
}

constexpr SqlFunction kFunctions[] = {
    {"NVL", 2, 2, true, Nvl},
    {"NVL2", 3, 3, true, Nvl2},
    {"DECODE", 3, -1, true, Decode},
    {"UPPER", 1, 1, true, Upper},
    {"LOWER", 1, 1, true, Lower},
    {"SUBSTR", 2, 3, true, Substr},
    {"INSTR", 2, 4, true, Instr},
    {"REPLACE", 2, 3, true, Replace},
    {"LPAD", 2, 3, true, LeftPad},
    {"RPAD", 2, 3, true, RightPad},
    {"MOD", 2, 2, true, Mod},
    {"CEIL", 1, 1, true, Ceil},
    {"FLOOR", 1, 1, true, Floor},
    {"POWER", 2, 2, true, Power},
    {"GREATEST", 1, -1, true, Greatest},
    {"LEAST", 1, -1, true, Least},
    {"TO_NUMBER", 1, 2, true, ToNumber},
    {"CHR", 1, 1, true, Chr},
    // Not pure: a pure function of constants runs before any row is looked at.
    {"RAISE_APPLICATION_ERROR", 2, 3, false, RaiseApplicationError},
};

}  // namespace

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

Value Tidy(double number) {
  if (!std::isfinite(number)) throw ServerFailure(1426, "numeric overflow");
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
  if (function.most < 0) {
    add(-1);
  } else {
    for (int count = function.least; count <= function.most; ++count) add(count);
  }
}

void RegisterFunctions(Connection& connection) {
  for (const SqlFunction& function : kFunctions) Register(connection, function, nullptr);
}

}  // namespace sabrel::sqlite
