// One value as it stands in a table, a CSV file or JSON.
#pragma once

#include <map>
#include <string>
#include <string_view>

#include "sabrel/platform/variant.h"

namespace sabrel::cli {

enum class Format { kTable, kCsv, kJson };
/// The words that stand for them.
[[nodiscard]] const std::map<std::string, Format>& FormatWords();

/// How null shows in tables.
inline constexpr std::string_view kNullMark = "\u2205";

/// "2024-03-09T17:05:00", with `separator` between day and time. Errors: 6 for a date that is none
[[nodiscard]] std::string IsoDate(const Date& date, char separator);

/// For a person: one line, nothing in it steers a terminal; null is the null mark.
[[nodiscard]] std::string TableText(const Variant& value);
/// A field of RFC 4180: null is empty, the empty text is "". Numbers have "." and all their digits.
[[nodiscard]] std::string CsvText(const Variant& value);
/// A decimal of more than 15 digits is a string, so that no reader rounds it; a double has the
/// digits that read back as the same double; dates are strings.
[[nodiscard]] std::string JsonText(const Variant& value);
/// A JSON string; bytes that are not UTF-8 become U+FFFD.
[[nodiscard]] std::string JsonString(std::string_view text);

[[nodiscard]] bool IsNumber(const Variant& value) noexcept;

}  // namespace sabrel::cli
