#include "adapters/sqlite/functions.h"

#include <sqlite3.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "adapters/sqlite/dialect_support.h"
#include "adapters/sqlite/failure.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::sqlite {
namespace {

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
    for (int i = 0; i < count; ++i) arguments.push_back(ArgumentOf(values[i]));
    Answer(context, binding.function.run(arguments, binding.context));
  } catch (...) {
    binding.connection->Keep(std::current_exception());
    sqlite3_result_error(context, "the function failed", -1);
  }
}

Value Nvl(Arguments a, void*) { return a[0].IsNull() ? a[1] : a[0]; }
Value Nvl2(Arguments a, void*) { return a[0].IsNull() ? a[2] : a[1]; }

bool IsNumber(const Value& value) {
  return value.kind == Value::Kind::kInteger || value.kind == Value::Kind::kReal;
}

/// -1, 0 or 1 as the number `a` is below, equal to or above `b`.
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

bool SameValue(const Value& a, const Value& b) {
  if (a.IsNull() || b.IsNull()) return a.IsNull() && b.IsNull();
  return IsNumber(a) || IsNumber(b) ? OrderOfNumbers(a, b) == 0 : a.text == b.text;
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

/// Offsets of `part` in `text`, overlapping ones too. Cost: linear, whatever the texts
std::vector<std::size_t> OffsetsOf(std::string_view part, std::string_view text) {
  // How much of `part` still fits where its character behind `i` others does not.
  std::vector<std::size_t> fallback(part.size(), 0);
  for (std::size_t i = 1, fits = 0; i < part.size(); ++i) {
    while (fits > 0 && part[i] != part[fits]) fits = fallback[fits - 1];
    if (part[i] == part[fits]) ++fits;
    fallback[i] = fits;
  }
  std::vector<std::size_t> offsets;
  for (std::size_t i = 0, fits = 0; i < text.size(); ++i) {
    while (fits > 0 && text[i] != part[fits]) fits = fallback[fits - 1];
    if (text[i] == part[fits]) ++fits;
    if (fits < part.size()) continue;
    offsets.push_back(i + 1 - fits);
    fits = fallback[fits - 1];
  }
  return offsets;
}

/// INSTR(text, part[, start[, occurrence]]); a negative start searches backwards from the end.
Value Instr(Arguments a, void*) {
  if (std::any_of(a.begin(), a.end(), [](const Value& v) { return v.IsNull(); })) return {};
  const std::string text = TextOf(a[0]);
  const std::string part = TextOf(a[1]);
  const auto characters = static_cast<std::int64_t>(CharacterCount(text));
  const std::int64_t start = a.size() > 2 ? WholeOf(a[2]) : 1;
  const std::int64_t occurrence = a.size() > 3 ? WholeOf(a[3]) : 1;
  if (occurrence < 1) throw ServerFailure(1428, "argument is out of range");
  if (start == 0 || start > characters || start < -characters) return IntegerValue(0);
  const std::vector<std::size_t> offsets = OffsetsOf(part, text);
  const std::int64_t first = start > 0 ? start - 1 : characters + start;
  const std::size_t from = ByteLengthOf(text, static_cast<std::size_t>(first));
  const auto bound = start > 0 ? std::lower_bound(offsets.begin(), offsets.end(), from)
                               : std::upper_bound(offsets.begin(), offsets.end(), from);
  const std::int64_t there = start > 0 ? offsets.end() - bound : bound - offsets.begin();
  if (occurrence > there) return IntegerValue(0);
  const std::size_t found = start > 0 ? bound[occurrence - 1] : bound[-occurrence];
  return IntegerValue(
      static_cast<std::int64_t>(CharacterCount(std::string_view(text).substr(0, found))) + 1);
}

Value Replace(Arguments a, void*) {
  const std::string text = TextOf(a[0]);
  const std::string from = TextOf(a[1]);
  const std::string to = a.size() > 2 ? TextOf(a[2]) : "";
  if (from.empty()) return TextValue(text);
  std::string replaced;
  std::size_t copied = 0;
  for (const std::size_t found : OffsetsOf(from, text)) {
    if (found < copied) continue;
    replaced.append(text, copied, found - copied).append(to);
    copied = found + from.size();
    RequireLength(replaced.size());
  }
  return TextValue(replaced.append(text, copied));
}

/// Characters of `set` are taken off the sides of the text that `at_left` and `at_right` name.
Value Trimmed(Arguments a, bool at_left, bool at_right) {
  if (a[0].IsNull() || (a.size() > 1 && a[1].IsNull())) return {};
  const std::string text = TextOf(a[0]);
  const std::string set = a.size() > 1 ? TextOf(a[1]) : " ";
  std::string_view rest(text);
  const auto is_in_set = [&set](std::string_view character) {
    return set.find(character) != std::string::npos;
  };
  while (at_left && !rest.empty() && is_in_set(rest.substr(0, FirstCharacterLength(rest)))) {
    rest.remove_prefix(FirstCharacterLength(rest));
  }
  while (at_right && !rest.empty()) {
    std::size_t last = rest.size() - 1;
    while (last > 0 && (static_cast<unsigned char>(rest[last]) & 0xC0U) == 0x80U) --last;
    if (!is_in_set(rest.substr(last))) break;
    rest.remove_suffix(rest.size() - last);
  }
  return TextValue(rest);
}

Value Trim(Arguments a, void*) { return Trimmed(a, true, true); }
Value LeftTrim(Arguments a, void*) { return Trimmed(a, true, false); }
Value RightTrim(Arguments a, void*) { return Trimmed(a, false, true); }

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

Value Ln(Arguments a, void*) {
  if (a[0].IsNull()) return {};
  const double number = RealOf(a[0]);
  if (!(number > 0)) throw ServerFailure(1428, "argument is out of range");
  return Tidy(std::log(number));
}

/// `number` by `round`, a whole one as it is.
Value Whole(const Value& number, double (*round)(double)) {
  const Value read = NumberOf(number);
  return read.kind == Value::Kind::kReal ? Tidy(round(read.real)) : read;
}

Value Ceil(Arguments a, void*) { return Whole(a[0], std::ceil); }
Value Floor(Arguments a, void*) { return Whole(a[0], std::floor); }
Value Power(Arguments a, void*) {
  if (a[0].IsNull() || a[1].IsNull()) return {};
  return Tidy(std::pow(RealOf(a[0]), RealOf(a[1])));
}

/// -1, 0 or 1 as `a` sorts before, with or behind `b`, which decides by its own kind.
int Order(const Value& a, const Value& b) {
  if (IsNumber(b)) return OrderOfNumbers(a, b);
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
    {"TRIM", 1, 2, true, Trim},
    {"LTRIM", 1, 2, true, LeftTrim},
    {"RTRIM", 1, 2, true, RightTrim},
    {"MOD", 2, 2, true, Mod},
    {"ABS", 1, 1, true, Abs},
    {"SQRT", 1, 1, true, Sqrt},
    {"LN", 1, 1, true, Ln},
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

void RequireLength(std::size_t bytes) {
  if (bytes > Connection::kLongestText) {
    throw ServerFailure(1489, "result of string concatenation is too long");
  }
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
  RegisterAggregates(connection);
  RegisterDialectSupport(connection);
}

}  // namespace sabrel::sqlite
