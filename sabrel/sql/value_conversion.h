// Fetched values into typed ones, with a fixed rule for null.
//
// Only null counts as null: an empty value converts ("", 0, false, the zero date). Failures of a
// conversion reach the caller: 13 for what has no such form, 6 for what does not fit.
#pragma once

#include <cstdint>
#include <string>

#include "sabrel/platform/date.h"
#include "sabrel/platform/variant.h"

namespace sabrel::MSabrel {

/// As text without leading and trailing blanks; "" for null.
[[nodiscard]] std::string CVString(const Variant& vString);
/// 0 for null. Errors: 6, 13
[[nodiscard]] std::int32_t CVId(const Variant& vId);
/// `iNull` for null and for the text "(NaN)", blanks around it allowed. Errors: 6, 13
[[nodiscard]] std::int32_t CVInt(const Variant& vInt, std::int32_t iNull = 0);
/// Always by way of text, so with at most 15 significant digits; `iNull` for null. Errors: 6, 13
[[nodiscard]] double CVDbl(const Variant& vInt, std::int32_t iNull = 0);
/// The zero date for null. Errors: 6, 13
[[nodiscard]] Date CVDateTime(const Variant& vDate);
/// True for the text "Y" alone; "y", "TRUE", 1 and true are false. Errors: none
[[nodiscard]] bool CVBoolean(const Variant& vYesNo) noexcept;

}  // namespace sabrel::MSabrel
