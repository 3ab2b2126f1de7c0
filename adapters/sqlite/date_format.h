// The elements of a date's format model, one by one.
#pragma once

#include <array>
#include <string_view>

namespace sabrel::sqlite {

inline constexpr std::array<std::string_view, 12> kMonths = {
    "JANUARY", "FEBRUARY", "MARCH",     "APRIL",   "MAY",      "JUNE",
    "JULY",    "AUGUST",   "SEPTEMBER", "OCTOBER", "NOVEMBER", "DECEMBER"};
inline constexpr std::array<std::string_view, 7> kDays = {
    "SUNDAY", "MONDAY", "TUESDAY", "WEDNESDAY", "THURSDAY", "FRIDAY", "SATURDAY"};

enum class Part {
  kYear4,
  kYear3,
  kYear2,
  kRound4,
  kRound2,
  kMonth,
  kMonthShort,
  kMonthName,
  kDay,
  kHour24,
  kHour12,
  kMinute,
  kSecond,
  kSecondsOfDay,
  kHalf,
  kQuarter,
  kDayOfWeek,
  kDayOfYear,
  kDayShort,
  kDayName,
  kJulian,
  kFill,
  kLiteral,
  kPunctuation,
};

struct Element {
  Part part;
  std::string_view text;  // as the format writes it; of a literal without its quotes
};

/// Takes the next element off `format`, which is not empty. Errors (ServerFailure): 1821
[[nodiscard]] Element TakeElement(std::string_view& format);

[[nodiscard]] constexpr bool IsLetter(char c) noexcept {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}
[[nodiscard]] constexpr bool IsDigit(char c) noexcept { return c >= '0' && c <= '9'; }

}  // namespace sabrel::sqlite
