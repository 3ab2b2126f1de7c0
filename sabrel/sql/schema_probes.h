// Whether the schema has a table, a column, a procedure, an object; how wide its columns are.
//
// Answers about tables, columns and procedures are remembered per thread, false ones and those of
// failed queries included, until ResetExistingTables; a general object is asked for every time.
// Names go into the statements unescaped: a quote makes a failing query and thus the answer false.
// The Does... probes send names in upper case, capture and trace a failure and raise none but 91
// without a platform; the measures below them raise what their contracts say.
#pragma once

#include <cstdint>
#include <string_view>

namespace sabrel::MSabrel {

/// Cost: none once asked, without allocation; else one round trip
[[nodiscard]] bool DoesTableExist(std::string_view sTable, std::string_view sHostName = {},
                                  std::int32_t nPortNumber = 0, std::string_view sUserName = {},
                                  std::string_view sPassword = {}, std::int32_t nTimeOut = 0);
/// Cost: as DoesTableExist; time-out 60
[[nodiscard]] bool DoesFieldExist(std::string_view sTable, std::string_view sFieldName,
                                  std::string_view sHostName = {}, std::int32_t nPortNumber = 0,
                                  std::string_view sUserName = {}, std::string_view sPassword = {});
/// A procedure or function of a package; one without arguments and result counts as absent.
/// Cost: as DoesTableExist; the session's server, time-out 60
[[nodiscard]] bool DoesThisProcedureExist(std::string_view sPackageName,
                                          std::string_view sProcedureName);
/// Any kind of object, or one kind ("PACKAGE"). Cost: one round trip each time
[[nodiscard]] bool DoesDbObjectExist(std::string_view sObjectNameA,
                                     std::string_view sObjectTypeA = {},
                                     std::string_view sHostNameA = {},
                                     std::int32_t nPortNumberA = 0,
                                     std::string_view sUserNameA = {},
                                     std::string_view sPasswordA = {}, std::int32_t nTimeOutA = 0);

/// Number of a procedure's arguments; names as the dictionary has them (upper case). 0 after any
/// failure, which is not captured. Cost: one round trip. Errors: 91 without a platform
[[nodiscard]] std::int16_t GetProcedureLength(std::string_view sPackage,
                                              std::string_view sProcedure);

/// A column's length in characters, remembered once it is greater than 0; 0 when the query fails.
/// Names are sent in lower case, quotes doubled. Errors: 6 or 13 for no length
/// Cost: none once known, without allocation; else one round trip
[[nodiscard]] std::int32_t DBColumnLength(std::string_view sTable, std::string_view sColumn);

/// Characters of the longest module name; 15 when the query fails. Cost: one round trip each time
/// Errors: 94 when there is no module, 6 or 13 for no length
[[nodiscard]] std::int32_t ModuleNameMaxLength();

/// Forgets what exists; lengths stay.
void ResetExistingTables();

}  // namespace sabrel::MSabrel
