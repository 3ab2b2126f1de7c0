// The ordinary conversions of a value into another kind.
//
// They follow OLE Automation: numbers become text with at most 15 significant digits (7 for a
// single) and the locale's decimal separator; halves round to even, from numbers and from text
// alike; booleans are -1 and 0 as numbers, "True" and "False" as text; a date is its serial as a
// number; empty is "", 0, false or the zero date; an object is converted through its default
// property.
//
// Failures are the same everywhere: 94 from null, 13 from what has no such form (text that is no
// number, an array, an object without default property), 6 from what does not fit, 91 from an
// absent object. No conversion reads the C locale. The forms without a locale ask the platform's
// services object for it, at each call. Source: OLE Automation conversion rules
// (VariantChangeType).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "sabrel/platform/locale_facts.h"
#include "sabrel/platform/variant.h"

namespace sabrel {

[[nodiscard]] std::string ToText(const Variant& value, const LocaleFacts& locale);
[[nodiscard]] std::int16_t ToInt16(const Variant& value, const LocaleFacts& locale);
[[nodiscard]] std::int32_t ToInt32(const Variant& value, const LocaleFacts& locale);
[[nodiscard]] double ToDouble(const Variant& value, const LocaleFacts& locale);
[[nodiscard]] Date ToDate(const Variant& value, const LocaleFacts& locale);

[[nodiscard]] std::string ToText(const Variant& value);
[[nodiscard]] std::int16_t ToInt16(const Variant& value);
[[nodiscard]] std::int32_t ToInt32(const Variant& value);
[[nodiscard]] double ToDouble(const Variant& value);
[[nodiscard]] Date ToDate(const Variant& value);

/// As ToText, but null gives "": the rule of joining texts.
[[nodiscard]] std::string ToJoinedText(const Variant& value);

/// Whether `value` is a number or reads as one (a numeric text, a boolean, empty; never null or a
/// date).
[[nodiscard]] bool IsNumeric(const Variant& value, const LocaleFacts& locale);
/// Whether `value` is a date or a text that reads as one; numbers are no dates.
[[nodiscard]] bool IsDate(const Variant& value, const LocaleFacts& locale);

/// "0.5", "1E-05", "123456789012345", "1E+15": at most `digits` significant digits, trailing zeros
/// dropped. Shape: scientific when the decimal exponent is below -4 or at least `digits`
[[nodiscard]] std::string NumberText(double number, int digits, std::string_view decimal_separator);

/// `number` rounded to a whole one, halves to even. Errors: 6 outside [low, high] or not a number
[[nodiscard]] std::int64_t RoundHalfEven(double number, std::int64_t low, std::int64_t high);

}  // namespace sabrel
