// Words of PostgreSQL that are names on Oracle.
#pragma once

#include <string_view>

namespace sabrel::odbc {

/// Whether the server reserves `upper`, or does not take it as a column's name without AS, and
/// Oracle does.
[[nodiscard]] bool IsReservedByPostgresql(std::string_view upper);

}  // namespace sabrel::odbc
