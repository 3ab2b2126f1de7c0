// What the ordinary conversions need to know about the user's locale.
//
// The facts come from the services object on each use and are never taken from the C or C++ global
// locale, so a test can set a comma and a dot, and a host's `setlocale` changes nothing.
#pragma once

#include <string>

namespace sabrel {

/// Order of the parts of a date that is written with numbers only.
enum class DateOrder { kMonthDayYear, kDayMonthYear, kYearMonthDay };

struct LocaleFacts {
  std::string decimal_separator = ".";
  std::string thousands_separator = ",";
  std::string date_separator = "/";
  std::string time_separator = ":";
  DateOrder date_order = DateOrder::kMonthDayYear;
};

}  // namespace sabrel
