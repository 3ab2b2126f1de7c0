#include "sabrel/platform/date.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <ctime>

#include "sabrel/platform/runtime_error.h"
#include "sabrel/platform/utf8.h"

namespace sabrel {
namespace {

constexpr std::int64_t kSecondsPerDay = 86400;
/// Serial of 1970-01-01, where the calendar types start counting.
constexpr std::int64_t kCalendarEpoch = 25569;
constexpr int kFirstYear = 100;
constexpr int kLastYear = 9999;
constexpr int kTwoDigitYearPivot = 30;

/// Day since the zero date and second of that day, 0 to 86399.
struct Moment {
  std::int64_t day = 0;
  std::int64_t second = 0;
};

Moment MomentOf(double serial) {
  // Written so that a NaN fails; a negative serial may carry a time of day on the first day.
  if (!(serial > Date::kFirstSerial - 1.0 && serial < Date::kEndSerial)) {
    throw RuntimeError(RuntimeErrorNumber::kOverflow);
  }
  const double whole = std::trunc(serial);
  Moment moment{static_cast<std::int64_t>(whole),
                std::llround(std::abs(serial - whole) * kSecondsPerDay)};
  if (moment.second == kSecondsPerDay) {
    // The day after -1.99999 is -0.99999: time of day runs forwards below zero as well.
    ++moment.day;
    moment.second = 0;
    if (static_cast<double>(moment.day) >= Date::kEndSerial) {
      throw RuntimeError(RuntimeErrorNumber::kOverflow);
    }
  }
  return moment;
}

std::chrono::year_month_day Calendar(const CivilDate& parts) {
  return {std::chrono::year(parts.year), std::chrono::month(static_cast<unsigned>(parts.month)),
          std::chrono::day(static_cast<unsigned>(parts.day))};
}

bool InRange(int value, int low, int high) { return value >= low && value <= high; }

/// The parts are valid; `second_of_day` may have a fraction.
Date Compose(const CivilDate& parts, double second_of_day) {
  const auto day = static_cast<double>(
      std::chrono::sys_days(Calendar(parts)).time_since_epoch().count() + kCalendarEpoch);
  const double time = second_of_day / static_cast<double>(kSecondsPerDay);
  return Date(day < 0 ? day - time : day + time);
}

double SecondOfDay(const CivilDate& parts) {
  return static_cast<double>((parts.hour * 60 + parts.minute) * 60 + parts.second);
}

template <class Time>
std::tm LocalTime(const Time& time) {
  std::tm parts{};
  // Where there is no localtime_r, localtime keeps its result per thread.
  if constexpr (requires { localtime_r(&time, &parts); }) {
    localtime_r(&time, &parts);
  } else {
    if (const std::tm* local = std::localtime(&time)) parts = *local;
  }
  return parts;
}

void AppendNumber(std::string& out, int value, std::size_t width) {
  const std::string digits = std::to_string(value);
  if (digits.size() < width) out.append(width - digits.size(), '0');
  out += digits;
}

void AppendJoined(std::string& out, int first, int second, int third, std::string_view separator,
                  std::size_t first_width, std::size_t third_width) {
  AppendNumber(out, first, first_width);
  out += separator;
  AppendNumber(out, second, 2);
  out += separator;
  AppendNumber(out, third, third_width);
}

void AppendTime(std::string& out, const CivilDate& parts, const LocaleFacts& locale) {
  AppendJoined(out, parts.hour, parts.minute, parts.second, locale.time_separator, 2, 2);
}

/// A number and how many digits it was written with.
struct Figure {
  int value = 0;
  int digits = 0;
};

class DateReader {
 public:
  DateReader(std::string_view text, const LocaleFacts& locale) : text_(text), locale_(locale) {}

  bool Read(Date& date) {
    CivilDate parts;
    double second_of_day = 0.0;
    const std::string_view whole = text_;
    if (ReadDay(parts)) {
      if (!text_.empty()) {
        if (!Take("T") && !TakeBlanks()) return false;
        if (!ReadTime(second_of_day)) return false;
      }
    } else {
      // A day that was read in part and then refused must not leave its parts behind.
      text_ = whole;
      parts = CivilDate();
      if (!ReadTime(second_of_day)) return false;
    }
    if (!text_.empty()) return false;
    date = Compose(parts, second_of_day);
    return std::round(second_of_day) < static_cast<double>(kSecondsPerDay) ||
           date.Serial() + 1.0 < Date::kEndSerial;
  }

 private:
  bool Take(std::string_view token) {
    if (token.empty() || !text_.starts_with(token)) return false;
    text_.remove_prefix(token.size());
    return true;
  }

  bool TakeBlanks() {
    const std::size_t count = std::min(text_.find_first_not_of(' '), text_.size());
    text_.remove_prefix(count);
    return count > 0;
  }

  bool TakeFigure(Figure& figure, int most_digits) {
    figure = Figure();
    while (!text_.empty() && text_.front() >= '0' && text_.front() <= '9') {
      if (++figure.digits > most_digits) return false;
      figure.value = figure.value * 10 + (text_.front() - '0');
      text_.remove_prefix(1);
    }
    return figure.digits > 0;
  }

  bool TakeDaySeparator(std::string_view& separator) {
    for (const std::string_view candidate :
         {std::string_view(locale_.date_separator), std::string_view("/"), std::string_view("-"),
          std::string_view(".")}) {
      const bool parts_times =
          candidate == locale_.time_separator && candidate != locale_.date_separator;
      if (!parts_times && Take(candidate)) {
        separator = candidate;
        return true;
      }
    }
    return false;
  }

  bool ReadDay(CivilDate& parts) {
    Figure first;
    Figure second;
    Figure third;
    std::string_view separator;
    if (!TakeFigure(first, 4) || !TakeDaySeparator(separator) || !TakeFigure(second, 2) ||
        !Take(separator) || !TakeFigure(third, 4)) {
      return false;
    }
    DateOrder order = locale_.date_order;
    if (first.digits > 2) {
      order = DateOrder::kYearMonthDay;
    } else if (third.digits > 2 && order == DateOrder::kYearMonthDay) {
      order = DateOrder::kMonthDayYear;
    }
    Figure year = third;
    switch (order) {
      case DateOrder::kYearMonthDay:
        year = first;
        parts.month = second.value;
        parts.day = third.value;
        break;
      case DateOrder::kMonthDayYear:
        parts.month = first.value;
        parts.day = second.value;
        break;
      case DateOrder::kDayMonthYear:
        parts.day = first.value;
        parts.month = second.value;
        break;
    }
    if (year.digits <= 2) year.value += year.value < kTwoDigitYearPivot ? 2000 : 1900;
    parts.year = year.value;
    return Date::IsValidCivil(parts);
  }

  bool ReadTime(double& second_of_day) {
    Figure hour;
    Figure minute;
    Figure second;
    double fraction = 0.0;
    if (!TakeFigure(hour, 2)) return false;
    const bool has_minute = TakeTimeSeparator();
    if (has_minute) {
      if (!TakeFigure(minute, 2)) return false;
      if (TakeTimeSeparator() && !TakeSecond(second, fraction)) return false;
    }
    if (!ReadHalfOfDay(hour.value, has_minute)) return false;
    if (hour.value > 23 || minute.value > 59 || second.value > 59) return false;
    second_of_day =
        static_cast<double>((hour.value * 60 + minute.value) * 60 + second.value) + fraction;
    return true;
  }

  bool TakeTimeSeparator() { return Take(locale_.time_separator) || Take(":"); }

  bool TakeSecond(Figure& second, double& fraction) {
    if (!TakeFigure(second, 2)) return false;
    if (!Take(".") && !Take(",")) return true;
    Figure decimals;
    if (!TakeFigure(decimals, 9)) return false;
    fraction = decimals.value / std::pow(10.0, decimals.digits);
    return true;
  }

  /// An hour alone needs AM or PM to be a time at all.
  bool ReadHalfOfDay(int& hour, bool has_minute) {
    const std::string_view before = text_;
    TakeBlanks();
    const std::string_view half = text_.substr(0, 2);
    const bool afternoon = EqualIgnoringCase(half, "PM");
    if (!afternoon && !EqualIgnoringCase(half, "AM")) {
      text_ = before;
      return has_minute;
    }
    text_.remove_prefix(2);
    if (!InRange(hour, 1, 12)) return false;
    hour = hour % 12 + (afternoon ? 12 : 0);
    return true;
  }

  std::string_view text_;
  const LocaleFacts& locale_;
};

}  // namespace

bool Date::IsValidCivil(const CivilDate& parts) noexcept {
  return InRange(parts.year, kFirstYear, kLastYear) && InRange(parts.month, 1, 12) &&
         InRange(parts.day, 1, 31) && Calendar(parts).ok() && InRange(parts.hour, 0, 23) &&
         InRange(parts.minute, 0, 59) && InRange(parts.second, 0, 59);
}

Date Date::FromCivil(const CivilDate& parts) {
  if (!IsValidCivil(parts)) throw RuntimeError(RuntimeErrorNumber::kInvalidCall);
  return Compose(parts, SecondOfDay(parts));
}

Date Date::Now() {
  const std::tm local =
      LocalTime(std::chrono::system_clock::to_time_t(std::chrono::system_clock::now()));
  // A leap second, where the system's clock knows one, is the second before it.
  return FromCivil({local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
                    local.tm_min, std::min(local.tm_sec, 59)});
}

CivilDate Date::ToCivil() const {
  const Moment moment = MomentOf(serial_days_);
  const std::chrono::year_month_day day{
      std::chrono::sys_days(std::chrono::days(moment.day - kCalendarEpoch))};
  const auto second = static_cast<int>(moment.second);
  return {static_cast<int>(day.year()),
          static_cast<int>(static_cast<unsigned>(day.month())),
          static_cast<int>(static_cast<unsigned>(day.day())),
          second / 3600,
          second / 60 % 60,
          second % 60};
}

std::int64_t Date::WholeSeconds() const {
  const Moment moment = MomentOf(serial_days_);
  return moment.day * kSecondsPerDay + moment.second;
}

std::string FormatDateTime(const Date& date, const LocaleFacts& locale) {
  const CivilDate parts = date.ToCivil();
  std::string out;
  AppendJoined(out, parts.year, parts.month, parts.day, "-", 4, 2);
  out += ' ';
  AppendTime(out, parts, locale);
  return out;
}

std::string GeneralDateText(const Date& date, const LocaleFacts& locale) {
  const CivilDate parts = date.ToCivil();
  const bool zero_day = parts.year == 1899 && parts.month == 12 && parts.day == 30;
  const bool midnight = parts.hour == 0 && parts.minute == 0 && parts.second == 0;
  std::string out;
  if (!zero_day) {
    const std::string& separator = locale.date_separator;
    switch (locale.date_order) {
      case DateOrder::kMonthDayYear:
        AppendJoined(out, parts.month, parts.day, parts.year, separator, 2, 4);
        break;
      case DateOrder::kDayMonthYear:
        AppendJoined(out, parts.day, parts.month, parts.year, separator, 2, 4);
        break;
      case DateOrder::kYearMonthDay:
        AppendJoined(out, parts.year, parts.month, parts.day, separator, 4, 2);
        break;
    }
    if (midnight) return out;
    out += ' ';
  }
  AppendTime(out, parts, locale);
  return out;
}

bool ParseDate(std::string_view text, const LocaleFacts& locale, Date& date) {
  return DateReader(TrimBlanks(text), locale).Read(date);
}

}  // namespace sabrel
