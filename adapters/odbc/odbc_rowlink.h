// Real database servers, reached by their ODBC drivers.
//
// A connection profile names the ODBC driver in Driver ("PostgreSQL Unicode", "Oracle 19 ODBC
// driver"), the server in Host and Port and the database or service in Database. One rowlink
// serves one thread; each of its connections has a thread of its own that makes the driver's calls,
// so that every request ends within its time-out whatever the network does.
//
//   platform.rowlink = sabrel::MakeOdbcRowlink(sabrel::ReadProfileFile("servers.ini").profiles);
#pragma once

#include <memory>

#include "adapters/shared/profiles.h"
#include "sabrel/platform/rowlink.h"

namespace sabrel {

/// The rowlink of one thread; nothing is connected before the first statement.
[[nodiscard]] std::shared_ptr<Rowlink> MakeOdbcRowlink(ProfileSet profiles);

}  // namespace sabrel
