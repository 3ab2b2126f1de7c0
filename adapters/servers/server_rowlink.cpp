#include "adapters/servers/server_rowlink.h"

#include <utility>

#include "adapters/odbc/odbc_link.h"
#include "adapters/shared/rowlink_of.h"
#include "adapters/sqlite/sqlite_link.h"
#include "sabrel/platform/utf8.h"

namespace sabrel {
namespace {

/// Sends each request to the link that its profile's driver belongs to.
class ServerLink final : public DataLink {
 public:
  explicit ServerLink(const ProfileSet& profiles)
      : profiles_(profiles),
        last_error_(std::make_shared<DatabaseError>()),
        sqlite_(profiles, sqlite::Durability::kEachCommit, last_error_),
        odbc_(profiles, last_error_) {}

  [[nodiscard]] std::unique_ptr<Cursor> Query(std::string_view sql,
                                              const DataServerAddress& address) override {
    return Choose(address).Query(sql, address);
  }
  std::int64_t Execute(std::string_view sql, const DataServerAddress& address) override {
    return Choose(address).Execute(sql, address);
  }
  [[nodiscard]] RoutineOutcome Call(const RoutineCall& call) override {
    return Choose(call.address).Call(call);
  }
  void Write(const RowSet& rows) override { Choose({}).Write(rows); }

  void ShutDown() noexcept {
    sqlite_.ShutDown();
    odbc_.ShutDown();
  }
  void Cancel() noexcept {
    sqlite_.Cancel();
    odbc_.Cancel();
  }
  [[nodiscard]] const DatabaseError& LastError() const noexcept { return *last_error_; }

 private:
  DataLink& Choose(const DataServerAddress& address) {
    const bool is_embedded = EqualIgnoringCase(profiles_.Resolve(address).profile.Driver, "sqlite");
    return is_embedded ? static_cast<DataLink&>(sqlite_) : odbc_;
  }

  ProfileSet profiles_;
  std::shared_ptr<DatabaseError> last_error_;
  sqlite::SqliteLink sqlite_;
  odbc::OdbcLink odbc_;
};

}  // namespace

std::shared_ptr<Rowlink> MakeServerRowlink(const ProfileSet& profiles) {
  return std::make_shared<RowlinkOf<ServerLink>>(std::make_shared<ServerLink>(profiles));
}

}  // namespace sabrel
