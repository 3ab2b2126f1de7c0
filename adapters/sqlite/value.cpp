#include "adapters/sqlite/value.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>
#include <utility>

#include "adapters/shared/number_type.h"
#include "adapters/sqlite/date_text.h"
#include "adapters/sqlite/failure.h"

namespace sabrel::sqlite {
namespace {

constexpr std::string_view kMomentShape = "0000-00-00 00:00:00";

int Digits(std::string_view text, std::size_t from, std::size_t count) {
  int number = 0;
  for (std::size_t i = from; i < from + count; ++i) number = number * 10 + (text[i] - '0');
  return number;
}

}  // namespace

Value IntegerValue(std::int64_t number) {
  Value value;
  value.kind = Value::Kind::kInteger;
  value.integer = number;
  return value;
}

Value RealValue(double number) {
  Value value;
  value.kind = Value::Kind::kReal;
  value.real = number;
  return value;
}

Value TextValue(std::string_view text) {
  Value value;
  if (text.empty()) return value;
  value.kind = Value::Kind::kText;
  value.text = text;
  return value;
}

Value DateValue(std::string_view moment) {
  Value value;
  value.kind = Value::Kind::kDate;
  value.text = moment;
  return value;
}

bool IsMoment(std::string_view bytes) noexcept {
  if (bytes.size() != kMomentShape.size()) return false;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const bool is_digit = bytes[i] >= '0' && bytes[i] <= '9';
    if (kMomentShape[i] == '0' ? !is_digit : bytes[i] != kMomentShape[i]) return false;
  }
  return Date::IsValidCivil(PartsOf(bytes));
}

CivilDate PartsOf(std::string_view moment) noexcept {
  return {Digits(moment, 0, 4),  Digits(moment, 5, 2),  Digits(moment, 8, 2),
          Digits(moment, 11, 2), Digits(moment, 14, 2), Digits(moment, 17, 2)};
}

std::string MomentOf(const CivilDate& parts) {
  std::array<char, 80> text{};
  const int length =
      std::snprintf(text.data(), text.size(), "%04d-%02d-%02d %02d:%02d:%02d", parts.year,
                    parts.month, parts.day, parts.hour, parts.minute, parts.second);
  return {text.data(), static_cast<std::size_t>(length)};
}

std::optional<Value> NumberFrom(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  if (text.size() > 1 && text.front() == '+' && text[1] != '-') text.remove_prefix(1);
  // "inf" and "nan" are numbers for from_chars only.
  if (text.empty() || text.find_first_not_of("0123456789.eE+-") != std::string_view::npos) {
    return std::nullopt;
  }
  const char* const end = text.data() + text.size();
  std::int64_t whole = 0;
  if (const auto read = std::from_chars(text.data(), end, whole);
      read.ec == std::errc{} && read.ptr == end) {
    return IntegerValue(whole);
  }
  double number = 0.0;
  const auto read = std::from_chars(text.data(), end, number);
  if (read.ec != std::errc{} || read.ptr != end) return std::nullopt;
  return RealValue(number);
}

std::string NumberText(double number) {
  if (!std::isfinite(number)) return number > 0 ? "~" : "-~";
  const double magnitude = std::fabs(number);
  std::array<char, 64> text{};
  if (magnitude != 0.0 && (magnitude >= 1e39 || magnitude < 1e-38)) {
    std::snprintf(text.data(), text.size(), "%.14E", number);
    return text.data();
  }
  int digits_behind = 15;
  if (magnitude != 0.0) digits_behind = 14 - static_cast<int>(std::floor(std::log10(magnitude)));
  std::string result(128, '\0');
  const int length = std::snprintf(result.data(), result.size(), "%.*f",
                                   digits_behind > 0 ? digits_behind : 0, number);
  result.resize(static_cast<std::size_t>(length));
  if (result.find('.') != std::string::npos) {
    result.erase(result.find_last_not_of('0') + 1);
    if (result.back() == '.') result.pop_back();
  }
  if (result.starts_with("0.")) result.erase(0, 1);
  if (result.starts_with("-0.")) result.erase(1, 1);
  return result == "-0" ? "0" : result;
}

std::string NumberText(const Value& number) {
  return number.kind == Value::Kind::kInteger ? std::to_string(number.integer)
                                              : NumberText(number.real);
}

Value ArgumentFor(std::string_view type, Value value, std::string_view date_format) {
  if (type == "DATE" && value.kind == Value::Kind::kText) {
    if (IsMoment(value.text)) return DateValue(value.text);
    if (IsMoment(value.text + " 00:00:00")) return DateValue(value.text + " 00:00:00");
  }
  return CoerceTo(type, std::move(value), date_format);
}

Value CoerceTo(std::string_view type, Value value, std::string_view date_format) {
  if (value.IsNull()) return value;
  if (IsNumberType(type)) {
    if (value.kind == Value::Kind::kText) {
      if (auto number = NumberFrom(value.text)) return *number;
      throw ServerFailure(6502, "PL/SQL: numeric or value error: character to number conversion");
    }
    if (value.kind == Value::Kind::kDate) {
      throw ServerFailure(6502, "PL/SQL: numeric or value error: a date where a number is due");
    }
  } else if (type == "DATE") {
    if (value.kind == Value::Kind::kText) return DateValue(ParseMoment(value.text, date_format));
    if (value.kind != Value::Kind::kDate) {
      throw ServerFailure(1861, "literal does not match format string");
    }
  } else if (type == "VARCHAR2" || type == "VARCHAR" || type == "CHAR" || type == "CLOB") {
    if (value.kind == Value::Kind::kDate) return TextValue(FormatMoment(value.text, date_format));
    if (value.kind != Value::Kind::kText) return TextValue(NumberText(value));
  }
  return value;
}

Variant ToVariant(const Value& value) {
  switch (value.kind) {
    case Value::Kind::kNull: break;
    case Value::Kind::kInteger:
      if (value.integer >= std::numeric_limits<std::int32_t>::min() &&
          value.integer <= std::numeric_limits<std::int32_t>::max()) {
        return Variant(static_cast<std::int32_t>(value.integer));
      }
      return Variant(Decimal(value.integer));
    case Value::Kind::kReal: return Variant(value.real);
    case Value::Kind::kText: return Variant(value.text);
    case Value::Kind::kDate: return Variant(Date::FromCivil(PartsOf(value.text)));
  }
  return Variant(Null{});
}

}  // namespace sabrel::sqlite
