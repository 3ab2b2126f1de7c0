// Dates and numbers: conversions, and the operators that take both.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "adapters/sqlite/date_text.h"
#include "adapters/sqlite/failure.h"
#include "adapters/sqlite/functions.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::sqlite {
namespace {

constexpr double kSecondsPerDay = 86400.0;

bool IsDate(const Value& value) { return value.kind == Value::Kind::kDate; }

/// The moment of a date, or of a text in the session's format. Errors: as ParseMoment
std::string MomentFrom(const Value& value, void* connection) {
  if (IsDate(value)) return value.text;
  if (value.kind == Value::Kind::kText) return ParseMoment(value.text, DateFormatOf(connection));
  throw ServerFailure(932, "inconsistent datatypes: expected DATE got NUMBER");
}

Value ToDate(Arguments a, void* connection) {
  if (HasNull(a)) return {};
  if (IsDate(a[0])) return a[0];
  const std::string_view format = a.size() > 1 ? a[1].text : DateFormatOf(connection);
  return DateValue(ParseMoment(TextOf(a[0]), format));
}

/// What is assigned to a column of dates.
Value AssignedDate(Arguments a, void* connection) {
  return a[0].IsNull() ? Value{} : DateValue(MomentFrom(a[0], connection));
}

struct NumberFormat {
  int whole = 0;  // places before the point
  int zeros = 0;  // of them from the first 0 on
  int decimals = 0;
  int kept_decimals = 0;  // of them up to the last 0: FM keeps these
  bool has_point = false;
  bool fill = true;
  bool sign = false;
  bool dollar = false;
  std::vector<int> commas;  // as the number of whole places before each
};

NumberFormat ParseNumberFormat(std::string_view text) {
  NumberFormat format;
  const std::string upper = UpperCase(text);
  std::string_view rest(upper);
  if (rest.starts_with("FM")) {
    format.fill = false;
    rest.remove_prefix(2);
  }
  bool zero_seen = false;
  for (const char c : rest) {
    if (c == '9' || c == '0') {
      if (format.has_point) {
        ++format.decimals;
        if (c == '0') format.kept_decimals = format.decimals;
      } else {
        ++format.whole;
        zero_seen = zero_seen || c == '0';
        if (zero_seen) ++format.zeros;
      }
    } else if ((c == '.' || c == 'D') && !format.has_point) {
      format.has_point = true;
    } else if ((c == ',' || c == 'G') && !format.has_point) {
      format.commas.push_back(format.whole);
    } else if (c == 'S' && !format.sign) {
      format.sign = true;
    } else if (c == '$' && !format.dollar) {
      format.dollar = true;
    } else {
      throw ServerFailure(1481, "invalid number format model");
    }
  }
  return format;
}

/// A number without its sign, in decimal digits.
struct Digits {
  std::string whole;
  std::string decimals;
};

/// The digits of `number` as it is shown, rounded to `decimals` behind the point: 2.675 is 2.68,
/// though the nearest double is a little less.
Digits RoundedDigits(const Value& number, int decimals) {
  std::string text = NumberText(number);
  if (text.front() == '-') text.erase(0, 1);
  const auto wanted = static_cast<std::size_t>(decimals);
  const bool is_tiny = text.find("E-") != std::string::npos;
  // Beyond 39 places no format has room.
  if (text.find_first_of("E~") != std::string::npos) text = is_tiny ? "0" : std::string(99, '9');
  const std::size_t point = text.find('.');
  Digits digits{text.substr(0, point), point == std::string::npos ? "" : text.substr(point + 1)};
  const bool goes_up = digits.decimals.size() > wanted && digits.decimals[wanted] >= '5';
  digits.decimals.resize(wanted, '0');
  std::string all = "0" + digits.whole + digits.decimals;
  if (goes_up) {
    std::size_t at = all.size() - 1;
    for (; all[at] == '9'; --at) all[at] = '0';
    ++all[at];
  }
  digits.decimals = all.substr(all.size() - wanted);
  digits.whole = all.substr(0, all.size() - wanted);
  digits.whole.erase(0, std::min(digits.whole.find_first_not_of('0'), digits.whole.size() - 1));
  return digits;
}

std::string FormatNumber(const Value& number, std::string_view model) {
  const NumberFormat format = ParseNumberFormat(model);
  auto [digits, decimals] = RoundedDigits(number, format.decimals);
  const bool is_negative =
      RealOf(number) < 0 && (digits + decimals).find_first_not_of('0') != std::string::npos;
  if (digits == "0" && format.whole > 0 && format.zeros == 0 && format.decimals > 0) digits.clear();
  const auto places = static_cast<std::size_t>(format.whole);
  const std::size_t width = places + format.commas.size() + 1 + (format.has_point ? 1 : 0) +
                            static_cast<std::size_t>(format.decimals) + (format.dollar ? 1 : 0);
  if (digits.size() > places) return std::string(width, '#');
  if (digits.size() < static_cast<std::size_t>(format.zeros)) {
    digits.insert(0, static_cast<std::size_t>(format.zeros) - digits.size(), '0');
  }
  std::string text;
  for (std::size_t i = 0; i < digits.size(); ++i) {
    const auto place = static_cast<int>(places - digits.size() + i);
    for (const int comma : format.commas) {
      if (comma == place && i > 0) text += ',';
    }
    text += digits[i];
  }
  if (!format.fill) {
    const auto kept = static_cast<std::size_t>(format.kept_decimals);
    while (decimals.size() > kept && decimals.back() == '0') decimals.pop_back();
  }
  if (format.has_point) text += '.' + decimals;
  if (format.dollar) text.insert(0, 1, '$');
  if (is_negative || format.sign) text.insert(0, 1, is_negative ? '-' : '+');
  if (format.fill && text.size() < width) text.insert(0, width - text.size(), ' ');
  return text;
}

Value ToChar(Arguments a, void* connection) {
  if (HasNull(a)) return {};
  if (a.size() < 2) return TextValue(PlainTextOf(a[0], DateFormatOf(connection)));
  if (IsDate(a[0])) return TextValue(FormatMoment(a[0].text, a[1].text));
  return TextValue(FormatNumber(NumberOf(a[0]), TextOf(a[1])));
}

/// From here on a double has no digits behind the point that could be cut.
constexpr double kAllDigitsCount = 1e15;

std::int64_t PowerOfTen(std::int64_t exponent) {
  std::int64_t power = 1;
  for (; exponent > 0; --exponent) power *= 10;
  return power;
}

Value Trunc(Arguments a, void* connection) {
  if (HasNull(a)) return {};
  if (IsDate(a[0]) || (a.size() > 1 && a[1].kind == Value::Kind::kText)) {
    return DateValue(
        TruncateMoment(MomentFrom(a[0], connection), a.size() > 1 ? TextOf(a[1]) : "DD"));
  }
  const std::int64_t digits = a.size() > 1 ? WholeOf(a[1]) : 0;
  const Value number = NumberOf(a[0]);
  if (number.kind == Value::Kind::kInteger && digits >= 0) return number;
  if (digits > 15 || digits < -18) return digits > 0 ? number : IntegerValue(0);
  if (number.kind == Value::Kind::kInteger) {
    return IntegerValue(number.integer - number.integer % PowerOfTen(-digits));
  }
  const double scale = std::pow(10.0, static_cast<double>(std::llabs(digits)));
  const double real = RealOf(number);
  if (digits < 0) return Tidy(std::trunc(real / scale) * scale);
  // 1.15 * 100 is 114.99999999999999: the digits count, not the nearest double of the product.
  const double product = real * scale;
  if (std::fabs(product) >= kAllDigitsCount) return number;
  const double nearest = std::round(product);
  const bool is_whole = std::fabs(product - nearest) <= std::fabs(product) * 1e-15;
  return Tidy((is_whole ? nearest : std::trunc(product)) / scale);
}

Value Round(Arguments a, void*) {
  if (HasNull(a)) return {};
  if (IsDate(a[0])) {
    if (a.size() > 1) throw ServerFailure(1898, "ROUND of a date takes no unit here");
    return DateValue(TruncateMoment(MoveMoment(a[0].text, kSecondsPerDay / 2), "DD"));
  }
  return RoundedTo(NumberOf(a[0]), a.size() > 1 ? WholeOf(a[1]) : 0);
}

Value SystemDate(Arguments, void*) { return DateValue(Now()); }

Value AddMonthsTo(Arguments a, void* connection) {
  if (HasNull(a)) return {};
  const std::int64_t months = WholeOf(a[1]);
  if (months < -200000 || months > 200000) {
    throw ServerFailure(1841, "(full) year must be between 100 and 9999");
  }
  return DateValue(AddMonths(MomentFrom(a[0], connection), static_cast<int>(months)));
}

Value LastDayOf(Arguments a, void* connection) {
  return a[0].IsNull() ? Value{} : DateValue(LastDay(MomentFrom(a[0], connection)));
}

Value MonthsBetweenDates(Arguments a, void* connection) {
  if (HasNull(a)) return {};
  return Tidy(MonthsBetween(MomentFrom(a[0], connection), MomentFrom(a[1], connection)));
}

/// `left` plus or minus `right` as numbers; whole numbers that overflow become reals.
Value Sum(const Value& left, const Value& right, int sign) {
  const Value a = NumberOf(left);
  const Value b = NumberOf(right);
  if (a.kind == Value::Kind::kInteger && b.kind == Value::Kind::kInteger) {
    std::int64_t result = 0;
    const bool overflows = sign > 0 ? __builtin_add_overflow(a.integer, b.integer, &result)
                                    : __builtin_sub_overflow(a.integer, b.integer, &result);
    if (!overflows) return IntegerValue(result);
  }
  return RealValue(RealOf(a) + sign * RealOf(b));
}

Value Add(Arguments a, void*) {
  if (IsDate(a[0]) && IsDate(a[1])) throw ServerFailure(975, "date + date not allowed");
  if (HasNull(a)) return {};
  if (IsDate(a[0])) return DateValue(MoveMoment(a[0].text, RealOf(a[1]) * kSecondsPerDay));
  if (IsDate(a[1])) return DateValue(MoveMoment(a[1].text, RealOf(a[0]) * kSecondsPerDay));
  return Sum(a[0], a[1], 1);
}

Value Subtract(Arguments a, void* connection) {
  if (HasNull(a)) return {};
  if (IsDate(a[0]) && IsDate(a[1])) {
    return RealValue(SecondsBetween(a[1].text, a[0].text) / kSecondsPerDay);
  }
  if (IsDate(a[0])) return DateValue(MoveMoment(a[0].text, -RealOf(a[1]) * kSecondsPerDay));
  if (IsDate(a[1])) {
    if (a[0].kind == Value::Kind::kText) {
      return RealValue(SecondsBetween(a[1].text, MomentFrom(a[0], connection)) / kSecondsPerDay);
    }
    throw ServerFailure(932, "inconsistent datatypes: expected DATE got NUMBER");
  }
  return Sum(a[0], a[1], -1);
}

Value Divide(Arguments a, void*) {
  if (HasNull(a)) return {};
  const Value dividend = NumberOf(a[0]);
  const Value divisor = NumberOf(a[1]);
  if (RealOf(divisor) == 0.0) throw ServerFailure(1476, "divisor is equal to zero");
  const bool whole =
      dividend.kind == Value::Kind::kInteger && divisor.kind == Value::Kind::kInteger;
  // Only -1 can make the quotient of whole numbers overflow.
  if (whole && divisor.integer != -1 && dividend.integer % divisor.integer == 0) {
    return IntegerValue(dividend.integer / divisor.integer);
  }
  return Tidy(RealOf(dividend) / RealOf(divisor));
}

template <Value (*kStep)(Arguments, void*)>
Value Chain(Arguments a, void* connection) {
  Value total = a[0];
  for (std::size_t i = 1; i < a.size(); ++i) {
    const Value operands[] = {std::move(total), a[i]};
    total = kStep(Arguments(operands), connection);
  }
  return total;
}

constexpr SqlFunction kFunctions[] = {
    // Those that read the session's date format are not pure: it changes.
    {"TO_DATE", 1, 1, false, ToDate},
    {"TO_DATE", 2, 2, true, ToDate},
    {"TO_CHAR", 1, 1, false, ToChar},
    {"TO_CHAR", 2, 2, true, ToChar},
    {"SABREL_DATE", 1, 1, false, AssignedDate},
    {"TRUNC", 1, 2, true, Trunc},
    {"ROUND", 1, 2, true, Round},
    {"ADD_MONTHS", 2, 2, true, AddMonthsTo},
    {"LAST_DAY", 1, 1, true, LastDayOf},
    {"MONTHS_BETWEEN", 2, 2, true, MonthsBetweenDates},
    {"SABREL_SYSDATE", 0, 0, false, SystemDate},
    {"SABREL_ADD", 2, -1, true, Chain<Add>},
    {"SABREL_SUB", 2, -1, true, Chain<Subtract>},
    {"SABREL_DIV", 2, 2, true, Divide},
};

}  // namespace

std::string PlainTextOf(const Value& value, std::string_view date_format) {
  return IsDate(value) ? FormatMoment(value.text, date_format) : TextOf(value);
}

Value RoundedTo(const Value& number, std::int64_t digits) {
  if ((number.kind == Value::Kind::kInteger && digits >= 0) || digits > 15) return number;
  if (digits < -18) return IntegerValue(0);
  if (number.kind == Value::Kind::kInteger) {
    const std::int64_t unit = PowerOfTen(-digits);
    const std::int64_t rest = number.integer % unit;
    std::int64_t rounded = number.integer - rest;
    const bool goes_away = std::llabs(rest) >= unit / 2;
    const std::int64_t step = goes_away ? (rest < 0 ? -unit : unit) : 0;
    if (!__builtin_add_overflow(rounded, step, &rounded)) return IntegerValue(rounded);
    return RealValue(static_cast<double>(number.integer - rest) + static_cast<double>(step));
  }
  const double scale = std::pow(10.0, static_cast<double>(std::llabs(digits)));
  const double product = digits < 0 ? RealOf(number) / scale : RealOf(number) * scale;
  if (std::fabs(product) >= kAllDigitsCount) return number;
  // 2.675 * 100 is 267.49999999999997: the digits count.
  const double rounded = std::round(product * (1.0 + 1e-15));
  return Tidy(digits < 0 ? rounded * scale : rounded / scale);
}

void RegisterDateFunctions(Connection& connection) {
  for (const SqlFunction& function : kFunctions) Register(connection, function, &connection);
}

}  // namespace sabrel::sqlite
