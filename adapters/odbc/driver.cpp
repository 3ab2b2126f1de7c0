#include "adapters/odbc/driver.h"

#include <algorithm>
#include <limits>
#include <string_view>

#include "adapters/odbc/wide_text.h"

namespace sabrel::odbc {
namespace {

// "[unixODBC][Driver Manager]..." and the like.
std::string_view WithoutPrefixes(std::string_view message) {
  while (message.starts_with('[')) {
    const std::size_t end = message.find(']');
    if (end == std::string_view::npos) break;
    message.remove_prefix(end + 1);
  }
  return message;
}

// A driver puts the severity before a server's message and a remark of its own behind it.
std::string_view WithoutRemarks(std::string_view message) {
  for (const std::string_view severity : {"ERROR: ", "FATAL: "}) {
    if (message.starts_with(severity)) message.remove_prefix(severity.size());
  }
  message = message.substr(0, message.rfind(";\n"));
  return message.substr(0, message.find_last_not_of(" \r\n") + 1);
}

}  // namespace

Diagnosis DiagnosisOf(SQLSMALLINT handle_type, SQLHANDLE handle) {
  constexpr std::size_t kStateUnits = 6;
  std::u16string state(kStateUnits, u'\0');
  // A driver cuts a message that its first reader has no room for into several diagnoses.
  constexpr SQLSMALLINT kMessageUnits = std::numeric_limits<SQLSMALLINT>::max();
  std::u16string message(kMessageUnits, u'\0');
  SQLINTEGER native = 0;
  SQLSMALLINT length = 0;
  const SQLRETURN result = SQLGetDiagRecW(handle_type, handle, 1, WideArgument(state), &native,
                                          WideArgument(message), kMessageUnits, &length);
  if (!SQL_SUCCEEDED(result)) return {"HY000", 0, "the driver failed without saying why"};
  state.resize(kStateUnits - 1);
  message.resize(static_cast<std::size_t>(std::clamp<int>(length, 0, kMessageUnits - 1)));
  const std::string text = ToUtf8(message);
  return {ToUtf8(state), native, std::string(WithoutRemarks(WithoutPrefixes(text)))};
}

void Require(SQLRETURN result, SQLSMALLINT handle_type, SQLHANDLE handle) {
  if (SQL_SUCCEEDED(result) || result == SQL_NO_DATA) return;
  throw DriverFailure(DiagnosisOf(handle_type, handle));
}

}  // namespace sabrel::odbc
