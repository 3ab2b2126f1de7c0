// Statements, calls and row sets of one thread, sent to the files that its profiles name.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>

#include "adapters/shared/profiles.h"
#include "adapters/sqlite/connection_pool.h"
#include "sabrel/platform/data_link.h"
#include "sabrel/platform/rowlink.h"

namespace sabrel::sqlite {

class SqliteLink final : public DataLink {
 public:
  /// `last_error` may be shared with other links of the thread.
  explicit SqliteLink(
      ProfileSet profiles, Durability durability = Durability::kEachCommit,
      std::shared_ptr<DatabaseError> last_error = std::make_shared<DatabaseError>());

  [[nodiscard]] std::unique_ptr<Cursor> Query(std::string_view sql,
                                              const DataServerAddress& address) override;
  std::int64_t Execute(std::string_view sql, const DataServerAddress& address) override;
  [[nodiscard]] RoutineOutcome Call(const RoutineCall& call) override;
  void Write(const RowSet& rows) override;

  void ShutDown() noexcept;
  void Cancel() noexcept { cancel_switch_->CancelAll(); }
  [[nodiscard]] const DatabaseError& LastError() const noexcept { return *last_error_; }

 private:
  struct Target {
    std::shared_ptr<ConnectionPool> pool;
    std::int32_t timeout_s;
  };
  using Key = std::tuple<std::string, std::string, std::int32_t, std::string, std::string,
                         std::string, SectionSettings>;
  [[nodiscard]] Target Find(const DataServerAddress& address);

  ProfileSet profiles_;
  Durability durability_;
  std::shared_ptr<CancelSwitch> cancel_switch_;
  /// Shared with cursors, which may fail later than this link lives.
  std::shared_ptr<DatabaseError> last_error_;
  std::map<Key, std::shared_ptr<ConnectionPool>> pools_;
};

}  // namespace sabrel::sqlite
