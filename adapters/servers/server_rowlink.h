// One rowlink for every profile: the driver "sqlite" is the embedded server, any other an ODBC
// driver.
//
//   platform.rowlink = sabrel::MakeServerRowlink(sabrel::ReadProfileFile("servers.ini").profiles);
#pragma once

#include <memory>

#include "adapters/shared/profiles.h"
#include "sabrel/platform/rowlink.h"

namespace sabrel {

/// The rowlink of one thread; nothing is opened or connected before the first statement.
[[nodiscard]] std::shared_ptr<Rowlink> MakeServerRowlink(const ProfileSet& profiles);

}  // namespace sabrel
