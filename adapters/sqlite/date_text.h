// Dates as text and back, by the format models of TO_DATE and TO_CHAR.
//
// Reading takes YYYY, RRRR, YYY, YY, RR, MM, MON, MONTH, DD, HH24, HH12, HH, MI, SS, SSSSS, AM/PM
// and literal parts; punctuation matches any punctuation, and none behind numbers with all their
// digits; MM takes a month's name, MON and MONTH each other's, YY and RR a year of four digits; a
// time that the text leaves out is midnight. Writing takes these and Q, D, DDD, DY, DAY, J, FM.
#pragma once

#include <string>
#include <string_view>

namespace sabrel::sqlite {

/// A session's date format, for dates where a statement names none, unless it sets another.
inline constexpr std::string_view kDefaultDateFormat = "DD-MON-RR";

/// Refuses what is no date format. Errors (ServerFailure): 1821
void RequireDateFormat(std::string_view format);

/// Errors (ServerFailure): 1861, 1830, 1840, 1843, 1847, 1839, 1841, 1849 to 1852, 1855, 1858, and
/// 1820 and 1821 for the format
[[nodiscard]] std::string ParseMoment(std::string_view text, std::string_view format);
/// Errors (ServerFailure): 1821 for the format
[[nodiscard]] std::string FormatMoment(std::string_view moment, std::string_view format);

/// The moment cut to `unit` of TRUNC: DD by default, MI, HH, MM, Q, YYYY, DAY and their other
/// names. Errors (ServerFailure): 1898 for the unit
[[nodiscard]] std::string TruncateMoment(std::string_view moment, std::string_view unit);

/// `moment` moved by whole seconds. Errors (ServerFailure): 1841 outside the years 100 to 9999
[[nodiscard]] std::string MoveMoment(std::string_view moment, double seconds);
/// Seconds from `earlier` to `later`.
[[nodiscard]] double SecondsBetween(std::string_view earlier, std::string_view later);
/// The same day `months` later, the last day of a shorter month; a last day stays one. Errors: as
/// MoveMoment
[[nodiscard]] std::string AddMonths(std::string_view moment, int months);
[[nodiscard]] std::string LastDay(std::string_view moment);
[[nodiscard]] double MonthsBetween(std::string_view later, std::string_view earlier);
/// The machine's local time.
[[nodiscard]] std::string Now();

}  // namespace sabrel::sqlite
