// A day and a time of day as one serial number, and civil dates.
//
// The serial counts days since 30 December 1899. Its whole part is the day, the fraction - always
// taken as positive - the time of day, so -1.25 is 29 December 1899, 06:00. Civil arithmetic only:
// no time zones, years 100 to 9999. Serial 0 is the zero date, which stands for "no date"; -0.0 is
// the zero date too.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "sabrel/platform/locale_facts.h"

namespace sabrel {

/// Calendar parts of a moment, to the second; proleptic Gregorian calendar.
struct CivilDate {
  int year = 1899;
  int month = 12;
  int day = 30;
  int hour = 0;
  int minute = 0;
  int second = 0;
  friend bool operator==(const CivilDate&, const CivilDate&) = default;
};

class Date {
 public:
  /// Serial numbers of 0100-01-01 and of the moment after the last one, 10000-01-01.
  static constexpr double kFirstSerial = -657434.0;
  static constexpr double kEndSerial = 2958466.0;

  constexpr Date() = default;
  /// Takes `serial_days` as it is; an out-of-range serial fails when it is first taken apart.
  constexpr explicit Date(double serial_days) : serial_days_(serial_days) {}

  /// Errors: 5 when a part is out of its range (month 13, 30 February, year 99)
  [[nodiscard]] static Date FromCivil(const CivilDate& parts);
  [[nodiscard]] static bool IsValidCivil(const CivilDate& parts) noexcept;
  /// The client machine's local time, to the second.
  [[nodiscard]] static Date Now();

  [[nodiscard]] constexpr double Serial() const noexcept { return serial_days_; }
  [[nodiscard]] constexpr bool IsZero() const noexcept { return serial_days_ == 0.0; }

  /// Rounded to the nearest second; 59.6 seconds carry into the minute and so on.
  /// Errors: 6 when the serial is not a number or outside the years 100 to 9999
  [[nodiscard]] CivilDate ToCivil() const;
  /// Seconds since the zero date after rounding to whole seconds; for differences. Errors: as
  /// ToCivil
  [[nodiscard]] std::int64_t WholeSeconds() const;

  friend constexpr bool operator==(const Date&, const Date&) = default;

 private:
  double serial_days_ = 0.0;
};

/// "yyyy-mm-dd hh<sep>nn<sep>ss", the separator being the locale's. Errors: as Date::ToCivil
[[nodiscard]] std::string FormatDateTime(const Date& date, const LocaleFacts& locale);

/// The locale's general form: the date alone at midnight, the time alone on the zero day, else both
/// with a blank between; numbers only, four-digit year, 24-hour clock. Errors: as Date::ToCivil
[[nodiscard]] std::string GeneralDateText(const Date& date, const LocaleFacts& locale);

/// Reads a date, a time or both: ISO form (a "T" or a blank between), or numbers in the locale's
/// order with the locale's separator, "/", "-" or "." between; a time may end in AM or PM; a
/// two-digit year below 30 is 20xx. Returns false when `text` is none of these.
[[nodiscard]] bool ParseDate(std::string_view text, const LocaleFacts& locale, Date& date);

}  // namespace sabrel
