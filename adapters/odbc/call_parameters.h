// The bound parameters of `{? = call f(?, ?)}`.
//
// All go as text: the server converts to the declared types.
#pragma once

#include <sqlext.h>

#include <optional>
#include <string>
#include <vector>

#include "adapters/odbc/engine.h"
#include "sabrel/platform/row_block.h"

namespace sabrel::odbc {

struct CallParameter {
  std::u16string units;  // with room for what comes back, and a closing one
  SQLLEN length = SQL_NULL_DATA;
  SQLSMALLINT direction = SQL_PARAM_INPUT;
  bool is_number = false;
};

/// In order, a function's result first; `values` are those of the arguments, nothing for null.
[[nodiscard]] std::vector<CallParameter> ParametersOf(
    const Signature& signature, const std::vector<std::optional<std::string>>& values);

/// The place of an argument in a call's text: "?". A date that is not in the session's format, but
/// "YYYY-MM-DD[ HH24:MI:SS]", names that one.
[[nodiscard]] std::string_view PlaceOf(const Signature::Argument& argument,
                                       const std::optional<std::string>& value);

/// Errors: DriverFailure 6502 where a text was longer than its room
void AppendOutput(RowBlock& row, const CallParameter& parameter);

}  // namespace sabrel::odbc
