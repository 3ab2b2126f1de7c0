// What an operation came to, as text that a table can hold.
#pragma once

#include <string>
#include <utility>

#include "sabrel/core/error_object.h"
#include "sabrel/platform/conversions.h"
#include "sabrel/platform/runtime_error.h"
#include "sabrel/platform/variant.h"

namespace sabrel::testing {

inline std::string Shown(const Variant& value) {
  return value.IsEmpty() ? "empty" : "'" + ToText(value, LocaleFacts{}) + "'";
}
inline std::string Shown(const std::string& text) { return "'" + text + "'"; }
inline std::string Shown(bool truth) { return truth ? "true" : "false"; }
inline std::string Shown(std::int32_t number) { return std::to_string(number); }
inline std::string Shown(const std::pair<std::int32_t, std::int32_t>& range) {
  return std::to_string(range.first) + " " + std::to_string(range.second);
}
inline std::string Shown(const Date& date) { return FormatDateTime(date, LocaleFacts{}); }

/// Whether `part` stands in `text`.
inline bool Has(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

/// The result of `work`, or "raises" and what: its own number, the code that it carries, or
/// "database" with the native number, "connection".
template <class Work>
std::string OutcomeOf(Work work) {
  try {
    return Shown(work());
  } catch (const RuntimeError& failure) {
    const std::int32_t code = CarriedCode(failure.Number());
    if (code == kDatabaseErrorCode) {
      return "raises database " + std::to_string(CErrorObject(failure).DBNumber());
    }
    if (CarriedConnectionCode(failure.Number()) != 0) return "raises connection";
    return "raises " +
           (code == 0 ? std::to_string(failure.Number()) : "code " + std::to_string(code)) + " " +
           failure.Description();
  }
}

}  // namespace sabrel::testing
