// Statements, calls and row sets of one thread, sent to the servers that its profiles name.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>

#include "adapters/odbc/connection_pool.h"
#include "adapters/shared/profiles.h"
#include "sabrel/platform/data_link.h"
#include "sabrel/platform/rowlink.h"

namespace sabrel::odbc {

class OdbcLink final : public DataLink {
 public:
  /// `last_error` may be shared with other links of the thread.
  explicit OdbcLink(ProfileSet profiles,
                    std::shared_ptr<DatabaseError> last_error = std::make_shared<DatabaseError>(),
                    Opening opening = Opening::kSite);
  ~OdbcLink() override;
  OdbcLink(const OdbcLink&) = delete;
  OdbcLink& operator=(const OdbcLink&) = delete;

  [[nodiscard]] std::unique_ptr<Cursor> Query(std::string_view sql,
                                              const DataServerAddress& address) override;
  std::int64_t Execute(std::string_view sql, const DataServerAddress& address) override;
  [[nodiscard]] RoutineOutcome Call(const RoutineCall& call) override;
  void Write(const RowSet& rows) override;
  /// Sends a statement in the server's own language, as it stands.
  void ExecuteNative(std::string_view sql);

  void ShutDown() noexcept;
  void Cancel() noexcept { cancel_->CancelAll(); }
  [[nodiscard]] const DatabaseError& LastError() const noexcept { return *last_error_; }

 private:
  struct Target {
    std::shared_ptr<ConnectionPool> pool;
    std::int32_t timeout_s;
  };
  using Key = std::tuple<std::string, std::string, std::int32_t, std::string, std::string,
                         std::string, SectionSettings>;
  [[nodiscard]] Target Find(const DataServerAddress& address);
  static void AlterSession(std::string_view statement, const Target& target);

  ProfileSet profiles_;
  Opening opening_;
  std::shared_ptr<CancelSwitch> cancel_;
  /// Shared with cursors, which may fail later than this link lives.
  std::shared_ptr<DatabaseError> last_error_;
  std::map<Key, std::shared_ptr<ConnectionPool>> pools_;
};

}  // namespace sabrel::odbc
