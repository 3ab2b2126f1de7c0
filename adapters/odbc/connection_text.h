// The connection strings that drivers are given, from the settings of a profile.
//
// Every value is quoted by the rules of the driver manager and of the driver; what no quoting
// carries, or a driver has no room for, is refused. The result holds the password: it goes to the
// driver and nowhere else.
//
//   PostgresqlConnectionText({.Driver = "PostgreSQL Unicode", .Host = "db", .Database = "plant"},
//   {})
#pragma once

#include <string>
#include <string_view>

#include "adapters/shared/section_settings.h"
#include "sabrel/platform/connection_profile.h"

namespace sabrel::odbc {

/// Port 0 is 5432, an empty host the driver's own choice. Errors: 5 naming the setting and the
/// remedy, never the value
[[nodiscard]] std::string PostgresqlConnectionText(const ConnectionProfile& profile,
                                                   const SectionSettings& section);
/// Port 0 is 1521. Errors: as above
[[nodiscard]] std::string OracleConnectionText(const ConnectionProfile& profile);

/// "[::1]" as "::1"; anything else as it is.
[[nodiscard]] std::string_view WithoutBrackets(std::string_view host) noexcept;

}  // namespace sabrel::odbc
