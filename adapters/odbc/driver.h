// The driver manager's functions, as this adapter calls them.
#pragma once

#include <sql.h>
#include <sqlext.h>
#include <sqlucode.h>

#include <cstdint>
#include <exception>
#include <string>
#include <utility>

#include "adapters/odbc/diagnosis.h"

namespace sabrel::odbc {

static_assert(sizeof(SQLWCHAR) == sizeof(char16_t), "the driver manager speaks UTF-16");

/// A driver's call that failed.
class DriverFailure : public std::exception {
 public:
  explicit DriverFailure(Diagnosis diagnosis) : diagnosis_(std::move(diagnosis)) {}
  [[nodiscard]] const Diagnosis& What() const noexcept { return diagnosis_; }
  [[nodiscard]] const char* what() const noexcept override { return diagnosis_.message.c_str(); }

 private:
  Diagnosis diagnosis_;
};

/// The first diagnosis that the handle keeps of its last call.
[[nodiscard]] Diagnosis DiagnosisOf(SQLSMALLINT handle_type, SQLHANDLE handle);

/// Throws DriverFailure unless `result` is a success; "no data" is one.
void Require(SQLRETURN result, SQLSMALLINT handle_type, SQLHANDLE handle);

/// The driver manager takes texts it only reads by pointers to what it may change.
[[nodiscard]] inline SQLWCHAR* WideArgument(const std::u16string& text) {
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast,cppcoreguidelines-pro-type-reinterpret-cast)
  return reinterpret_cast<SQLWCHAR*>(const_cast<char16_t*>(text.data()));
}

/// Attributes with a whole number go where a pointer is due.
[[nodiscard]] inline SQLPOINTER NumberArgument(std::uintptr_t number) {
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast,performance-no-int-to-ptr)
  return reinterpret_cast<SQLPOINTER>(number);
}

}  // namespace sabrel::odbc
