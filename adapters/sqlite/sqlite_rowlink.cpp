#include "adapters/sqlite/sqlite_rowlink.h"

#include <utility>

#include "adapters/sqlite/sqlite_link.h"

namespace sabrel {
namespace {

class SqliteRowlink final : public LinkedRowlink {
 public:
  explicit SqliteRowlink(std::shared_ptr<sqlite::SqliteLink> link)
      : LinkedRowlink(link), link_(std::move(link)) {}

  void ShutDown() override { link_->ShutDown(); }
  [[nodiscard]] DatabaseError LastDatabaseError() const override { return link_->LastError(); }
  void Cancel() noexcept override { link_->Cancel(); }

 private:
  std::shared_ptr<sqlite::SqliteLink> link_;
};

}  // namespace

std::shared_ptr<Rowlink> MakeSqliteRowlink(ProfileSet profiles) {
  return std::make_shared<SqliteRowlink>(std::make_shared<sqlite::SqliteLink>(std::move(profiles)));
}

std::shared_ptr<Rowlink> OpenSite(std::string path) {
  ConnectionProfile profile;
  profile.Name = "site";
  profile.Driver = "sqlite";
  profile.Database = std::move(path);
  return MakeSqliteRowlink(ProfileSet(std::move(profile)));
}

}  // namespace sabrel
