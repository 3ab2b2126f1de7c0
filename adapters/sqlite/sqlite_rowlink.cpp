#include "adapters/sqlite/sqlite_rowlink.h"

#include <utility>

#include "adapters/shared/rowlink_of.h"
#include "adapters/sqlite/sqlite_link.h"

namespace sabrel {

std::shared_ptr<Rowlink> MakeSqliteRowlink(ProfileSet profiles) {
  return std::make_shared<RowlinkOf<sqlite::SqliteLink>>(
      std::make_shared<sqlite::SqliteLink>(std::move(profiles)));
}

std::shared_ptr<Rowlink> OpenSite(std::string path) {
  ConnectionProfile profile;
  profile.Name = "site";
  profile.Driver = "sqlite";
  profile.Database = std::move(path);
  return MakeSqliteRowlink(ProfileSet(std::move(profile)));
}

}  // namespace sabrel
