#include "adapters/sqlite/date_text.h"

#include <chrono>
#include <ctime>

#include "adapters/sqlite/date_format.h"
#include "adapters/sqlite/failure.h"
#include "adapters/sqlite/value.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::sqlite {
namespace {

std::chrono::sys_days DaysOf(const CivilDate& parts) {
  return std::chrono::year_month_day(std::chrono::year(parts.year),
                                     std::chrono::month(static_cast<unsigned>(parts.month)),
                                     std::chrono::day(static_cast<unsigned>(parts.day)));
}

double SecondsOf(std::string_view moment) {
  const CivilDate parts = PartsOf(moment);
  return static_cast<double>(DaysOf(parts).time_since_epoch().count()) * 86400.0 +
         parts.hour * 3600.0 + parts.minute * 60.0 + parts.second;
}

int DayOfWeek(const CivilDate& parts) {
  return static_cast<int>(std::chrono::weekday(DaysOf(parts)).c_encoding());
}

int DaysInMonth(int year, int month) {
  const auto last = std::chrono::year_month_day_last(
      std::chrono::year(year),
      std::chrono::month_day_last(std::chrono::month(static_cast<unsigned>(month))));
  return static_cast<int>(static_cast<unsigned>(last.day()));
}

std::string Padded(int number, int digits) {
  std::string text = std::to_string(number);
  const auto width = static_cast<std::size_t>(digits);
  if (text.size() < width) text.insert(0, width - text.size(), '0');
  return text;
}

/// `name` in the case that the format's word is written in, padded to the longest name unless FM is
/// on.
std::string NameLike(std::string_view word, std::string_view name, std::size_t width) {
  std::string text(name);
  const bool first_upper = word[0] >= 'A' && word[0] <= 'Z';
  const bool second_upper = word[1] >= 'A' && word[1] <= 'Z';
  if (!first_upper) text = LowerCase(text);
  if (first_upper && !second_upper) text = text.substr(0, 1) + LowerCase(text.substr(1));
  if (text.size() < width) text.append(width - text.size(), ' ');
  return text;
}

std::string Written(const Element& element, const CivilDate& parts, bool fill) {
  const auto number = [fill](int value, int digits) { return Padded(value, fill ? digits : 1); };
  const int day_of_year =
      static_cast<int>((DaysOf(parts) - DaysOf({parts.year, 1, 1, 0, 0, 0})).count()) + 1;
  const std::string_view month = kMonths[static_cast<std::size_t>(parts.month - 1)];
  const std::string_view day = kDays[static_cast<std::size_t>(DayOfWeek(parts))];
  switch (element.part) {
    case Part::kYear4:
    case Part::kRound4: return number(parts.year, 4);
    case Part::kYear3: return number(parts.year % 1000, 3);
    case Part::kYear2:
    case Part::kRound2: return number(parts.year % 100, 2);
    case Part::kMonth: return number(parts.month, 2);
    case Part::kMonthShort: return NameLike(element.text, month.substr(0, 3), 0);
    case Part::kMonthName: return NameLike(element.text, month, fill ? 9 : 0);
    case Part::kDay: return number(parts.day, 2);
    case Part::kHour24: return number(parts.hour, 2);
    case Part::kHour12: return number((parts.hour + 11) % 12 + 1, 2);
    case Part::kMinute: return number(parts.minute, 2);
    case Part::kSecond: return number(parts.second, 2);
    case Part::kSecondsOfDay:
      return number(parts.hour * 3600 + parts.minute * 60 + parts.second, 5);
    case Part::kHalf: {
      const bool dotted = element.text.size() == 4;
      const std::string half =
          parts.hour < 12 ? (dotted ? "A.M." : "AM") : (dotted ? "P.M." : "PM");
      return element.text.front() >= 'a' ? LowerCase(half) : half;
    }
    case Part::kQuarter: return std::to_string((parts.month + 2) / 3);
    case Part::kDayOfWeek: return std::to_string(DayOfWeek(parts) + 1);
    case Part::kDayOfYear: return number(day_of_year, 3);
    case Part::kDayShort: return NameLike(element.text, day.substr(0, 3), 0);
    case Part::kDayName: return NameLike(element.text, day, fill ? 9 : 0);
    case Part::kJulian: return std::to_string(DaysOf(parts).time_since_epoch().count() + 2440588);
    case Part::kFill: return {};
    case Part::kLiteral:
    case Part::kPunctuation: return std::string(element.text);
  }
  return {};
}

}  // namespace

void RequireDateFormat(std::string_view format) {
  if (format.empty()) throw ServerFailure(1821, "date format not recognized: it is empty");
  while (!format.empty()) static_cast<void>(TakeElement(format));
}

std::string FormatMoment(std::string_view moment, std::string_view format) {
  const CivilDate parts = PartsOf(moment);
  std::string text;
  bool fill = true;
  while (!format.empty()) {
    const Element element = TakeElement(format);
    if (element.part == Part::kFill) fill = !fill;
    text += Written(element, parts, fill);
  }
  return text;
}

std::string TruncateMoment(std::string_view moment, std::string_view unit) {
  CivilDate parts = PartsOf(moment);
  const std::string name = UpperCase(unit);
  const auto is = [&name](std::initializer_list<std::string_view> names) {
    for (const std::string_view one : names) {
      if (name == one) return true;
    }
    return false;
  };
  parts.second = 0;
  if (is({"MI"})) return MomentOf(parts);
  parts.minute = 0;
  if (is({"HH", "HH12", "HH24"})) return MomentOf(parts);
  parts.hour = 0;
  if (is({"DD", "DDD", "J"})) return MomentOf(parts);
  if (is({"DAY", "DY", "D"})) return MoveMoment(MomentOf(parts), -86400.0 * DayOfWeek(parts));
  if (is({"IW"})) return MoveMoment(MomentOf(parts), -86400.0 * ((DayOfWeek(parts) + 6) % 7));
  parts.day = 1;
  if (is({"MM", "MON", "MONTH", "RM"})) return MomentOf(parts);
  if (is({"Q"})) {
    parts.month = (parts.month - 1) / 3 * 3 + 1;
    return MomentOf(parts);
  }
  parts.month = 1;
  if (is({"YYYY", "YEAR", "SYYYY", "SYEAR", "YYY", "YY", "Y"})) return MomentOf(parts);
  throw ServerFailure(1898, "too many precision specifiers: no unit of TRUNC");
}

std::string MoveMoment(std::string_view moment, double seconds) {
  const double total = SecondsOf(moment) + seconds;
  // Years 100 to 9999, in seconds of the calendar's epoch.
  if (!(total >= -59011459200.0 && total < 253402300800.0)) {
    throw ServerFailure(1841, "(full) year must be between 100 and 9999");
  }
  const auto whole = static_cast<std::int64_t>(total < 0 ? total - 0.5 : total + 0.5);
  std::int64_t days = whole / 86400;
  std::int64_t rest = whole % 86400;
  if (rest < 0) {
    rest += 86400;
    --days;
  }
  const std::chrono::year_month_day date{std::chrono::sys_days(std::chrono::days(days))};
  return MomentOf(
      {static_cast<int>(date.year()), static_cast<int>(static_cast<unsigned>(date.month())),
       static_cast<int>(static_cast<unsigned>(date.day())), static_cast<int>(rest / 3600),
       static_cast<int>(rest / 60 % 60), static_cast<int>(rest % 60)});
}

double SecondsBetween(std::string_view earlier, std::string_view later) {
  return SecondsOf(later) - SecondsOf(earlier);
}

std::string AddMonths(std::string_view moment, int months) {
  CivilDate parts = PartsOf(moment);
  const bool last = parts.day == DaysInMonth(parts.year, parts.month);
  const int total = parts.year * 12 + parts.month - 1 + months;
  parts.year = total / 12;
  parts.month = total % 12 + 1;
  if (total < 1200 || parts.year > 9999) {
    throw ServerFailure(1841, "(full) year must be between 100 and 9999");
  }
  const int days = DaysInMonth(parts.year, parts.month);
  if (last || parts.day > days) parts.day = days;
  return MomentOf(parts);
}

std::string LastDay(std::string_view moment) {
  CivilDate parts = PartsOf(moment);
  parts.day = DaysInMonth(parts.year, parts.month);
  return MomentOf(parts);
}

double MonthsBetween(std::string_view later, std::string_view earlier) {
  const CivilDate a = PartsOf(later);
  const CivilDate b = PartsOf(earlier);
  const double months = (a.year - b.year) * 12.0 + (a.month - b.month);
  const bool both_last =
      a.day == DaysInMonth(a.year, a.month) && b.day == DaysInMonth(b.year, b.month);
  if (a.day == b.day || both_last) return months;
  const auto days = [](const CivilDate& parts) {
    return parts.day + (parts.hour * 3600 + parts.minute * 60 + parts.second) / 86400.0;
  };
  return months + (days(a) - days(b)) / 31.0;
}

std::string Now() {
  const std::time_t seconds = std::time(nullptr);
  std::tm local{};
  ::localtime_r(&seconds, &local);
  return MomentOf({local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
                   local.tm_min, local.tm_sec == 60 ? 59 : local.tm_sec});
}

}  // namespace sabrel::sqlite
