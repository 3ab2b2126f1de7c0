// The embedded Data Server: Oracle's statements on a file, in this process.
//
// A connection profile with the driver "sqlite" names its file in Database; the file must be a
// site, made with SiteBuilder. One rowlink serves one thread; any number of threads and processes
// may use one file. A user's name and password are not checked: the file's permissions decide who
// may read and write.
//
//   sabrel::sqlite::SiteBuilder site("plant.site");
//   site.Execute("CREATE TABLE T (ID NUMBER(10) PRIMARY KEY)");
//   site.Finish();
//   platform.rowlink = sabrel::MakeSqliteRowlink(sabrel::ProfileSet(profile));
#pragma once

#include <memory>
#include <string>

#include "adapters/shared/profiles.h"
#include "adapters/sqlite/site_builder.h"  // with it: what makes the files
#include "sabrel/platform/rowlink.h"

namespace sabrel {

/// The rowlink of one thread; nothing is opened before the first statement.
[[nodiscard]] std::shared_ptr<Rowlink> MakeSqliteRowlink(ProfileSet profiles);

/// The same for one file, without time-outs.
[[nodiscard]] std::shared_ptr<Rowlink> OpenSite(std::string path);

}  // namespace sabrel
