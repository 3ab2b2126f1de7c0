#include "adapters/odbc/odbc_rowlink.h"

#include <utility>

#include "adapters/odbc/odbc_link.h"
#include "adapters/shared/rowlink_of.h"

namespace sabrel {

std::shared_ptr<Rowlink> MakeOdbcRowlink(ProfileSet profiles) {
  return std::make_shared<RowlinkOf<odbc::OdbcLink>>(
      std::make_shared<odbc::OdbcLink>(std::move(profiles)));
}

}  // namespace sabrel
