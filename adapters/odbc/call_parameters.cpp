#include "adapters/odbc/call_parameters.h"

#include <algorithm>

#include "adapters/odbc/driver.h"
#include "adapters/odbc/statement.h"
#include "adapters/odbc/wide_text.h"
#include "adapters/shared/number_type.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::odbc {

std::vector<CallParameter> ParametersOf(const Signature& signature,
                                        const std::vector<std::optional<std::string>>& values) {
  std::vector<CallParameter> parameters;
  if (signature.is_function) {
    parameters.push_back(
        {{}, SQL_NULL_DATA, SQL_PARAM_OUTPUT, IsNumberType(signature.result_type)});
  }
  for (std::size_t i = 0; i < signature.arguments.size(); ++i) {
    CallParameter& parameter = parameters.emplace_back();
    if (values[i]) {
      parameter.units = ToWide(*values[i]);
      parameter.length = static_cast<SQLLEN>(parameter.units.size() * sizeof(SQLWCHAR));
    }
    const Signature::Argument& argument = signature.arguments[i];
    parameter.is_number = IsNumberType(argument.type);
    if (argument.direction == dialect::Direction::kOut) parameter.direction = SQL_PARAM_OUTPUT;
    if (argument.direction == dialect::Direction::kInOut) {
      parameter.direction = SQL_PARAM_INPUT_OUTPUT;
    }
  }
  constexpr std::size_t kMostUnits = 32768;  // what a routine's text argument may hold
  for (CallParameter& parameter : parameters) {
    if (parameter.direction != SQL_PARAM_INPUT) {
      parameter.units.resize(std::max(kMostUnits, parameter.units.size()));
    }
    parameter.units.push_back(u'\0');
  }
  return parameters;
}

std::string_view PlaceOf(const Signature::Argument& argument,
                         const std::optional<std::string>& value) {
  const bool is_date = argument.type == "DATE" && argument.direction == dialect::Direction::kIn;
  if (!is_date || !value) return "?";
  const bool names_format =
      dialect::HasForm(*value, "0000-00-00") || dialect::HasForm(*value, "0000-00-00 00:00:00");
  return names_format ? "TO_DATE(?,'YYYY-MM-DD HH24:MI:SS')" : "?";
}

void AppendOutput(RowBlock& row, const CallParameter& parameter) {
  if (parameter.length == SQL_NULL_DATA) return row.AddNull();
  const auto units = static_cast<std::size_t>(parameter.length) / sizeof(SQLWCHAR);
  if (parameter.length < 0 || units >= parameter.units.size()) {
    throw DriverFailure({"22001", 6502, "a text that a routine gave back has no room"});
  }
  const std::string value = ToUtf8(std::u16string_view(parameter.units).substr(0, units));
  if (parameter.is_number) {
    AppendExactNumber(row, value);
  } else {
    row.AddText(value);
  }
}

}  // namespace sabrel::odbc
