#include "adapters/sqlite/sqlite_link.h"

#include <optional>
#include <utility>
#include <vector>

#include "adapters/sqlite/failure.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::sqlite {
namespace {

/// Runs `work`; what the server refuses becomes the last database error and the failure that
/// callers know.
template <class Work>
auto Reporting(DatabaseError& last_error, const std::string& path, Work&& work) {
  try {
    return work();
  } catch (ServerFailure& failure) {
    failure.Originator(path);
    last_error = failure.Error();
  } catch (const dialect::SyntaxFailure& refused) {
    ServerFailure failure(refused.native_number, refused.message);
    failure.Originator(path);
    last_error = failure.Error();
  }
  throw DatabaseFailure(last_error);
}

/// Rows that were all read while the statement ran.
class ReadCursor final : public Cursor {
 public:
  explicit ReadCursor(QueryResult result)
      : names_(std::move(result.column_names)), rows_(std::move(*result.rows)) {}
  [[nodiscard]] const std::vector<std::string>& ColumnNames() const override { return names_; }
  bool Fetch(RowBlock& block, std::size_t) override {
    block = std::move(rows_);
    return false;
  }

 private:
  std::vector<std::string> names_;
  RowBlock rows_;
};

/// Rows of a statement that still runs, on a connection of its own.
class RunningCursor final : public Cursor {
 public:
  RunningCursor(Lease lease, QueryResult result, std::shared_ptr<DatabaseError> last_error,
                std::string path, std::int32_t timeout_s, Deadline deadline)
      : lease_(std::move(lease)),
        names_(std::move(result.column_names)),
        statement_(std::move(result.running)),
        last_error_(std::move(last_error)),
        path_(std::move(path)),
        timeout_s_(timeout_s),
        opening_(deadline) {}

  [[nodiscard]] const std::vector<std::string>& ColumnNames() const override { return names_; }

  bool Fetch(RowBlock& block, std::size_t byte_limit) override {
    if (!statement_) return false;
    try {
      return Reporting(*last_error_, path_, [&] { return Read(block, byte_limit); });
    } catch (...) {
      block.DropUnfinishedRow();
      Finish();
      throw;
    }
  }

 private:
  bool Read(RowBlock& block, std::size_t byte_limit) {
    // The query and the blocks that its opening reads share one limit; each later one has its own.
    const bool is_opening = bytes_ < Recordset::kOpenBytes;
    const Operation operation(lease_->Engine(), is_opening ? opening_ : DeadlineIn(timeout_s_));
    do {
      statement_->AppendRow(block);
      if (!statement_->Step()) {
        Finish();
        return false;
      }
    } while (block.Bytes() < byte_limit);
    bytes_ += block.Bytes();
    return true;
  }

  void Finish() noexcept { statement_.reset(); }

  Lease lease_;
  std::vector<std::string> names_;
  std::optional<Statement> statement_;
  std::shared_ptr<DatabaseError> last_error_;
  std::string path_;
  std::int32_t timeout_s_;
  Deadline opening_;
  std::size_t bytes_ = 0;  // that were handed out
};

}  // namespace

SqliteLink::SqliteLink(ProfileSet profiles, Durability durability,
                       std::shared_ptr<DatabaseError> last_error)
    : profiles_(std::move(profiles)),
      durability_(durability),
      cancel_switch_(std::make_shared<CancelSwitch>()),
      last_error_(std::move(last_error)) {}

SqliteLink::Target SqliteLink::Find(const DataServerAddress& address) {
  const ResolvedTarget target = profiles_.Resolve(address);
  const ConnectionProfile& profile = target.profile;
  if (target.address_replaced) {
    const std::string user = address.user.empty() ? "" : " and the user " + address.user;
    throw ConnectionFailed(ConnectionFailure::kHostUnknown,
                           "No connection profile has the address " + profile.Host + ":" +
                               std::to_string(profile.Port) + user + ".");
  }
  if (!EqualIgnoringCase(profile.Driver, "sqlite")) {
    throw ConnectionFailed(ConnectionFailure::kHostUnknown,
                           "The connection profile \"" + profile.Name + "\" wants the driver \"" +
                               profile.Driver + "\"; this is the embedded server (\"sqlite\").");
  }
  Key key{profile.Driver,   profile.Host,     profile.Port,  profile.Database,
          profile.UserName, profile.Password, target.section};
  auto& pool = pools_[std::move(key)];
  if (!pool) {
    pool = std::make_shared<ConnectionPool>(profile.Database, cancel_switch_, durability_,
                                            target.section.DateFormat);
  }
  return {pool, profile.ReceiveTimeout};
}

std::unique_ptr<Cursor> SqliteLink::Query(std::string_view sql, const DataServerAddress& address) {
  const Target target = Find(address);
  const std::string& path = target.pool->Path();
  return Reporting(*last_error_, path, [&]() -> std::unique_ptr<Cursor> {
    const std::string_view statement = dialect::RequireOneStatement(sql);
    const Deadline deadline = DeadlineIn(target.timeout_s);
    Lease lease(target.pool, deadline);
    const Operation operation(lease->Engine(), deadline);
    QueryResult result = lease->Query(statement);
    if (result.rows) return std::make_unique<ReadCursor>(std::move(result));
    return std::make_unique<RunningCursor>(std::move(lease), std::move(result), last_error_, path,
                                           target.timeout_s, deadline);
  });
}

std::int64_t SqliteLink::Execute(std::string_view sql, const DataServerAddress& address) {
  const Target target = Find(address);
  return Reporting(*last_error_, target.pool->Path(), [&] {
    const std::string_view statement = dialect::RequireOneStatement(sql);
    const Deadline deadline = DeadlineIn(target.timeout_s);
    const Lease lease(target.pool, deadline);
    const Operation operation(lease->Engine(), deadline);
    return lease->Execute(statement);
  });
}

RoutineOutcome SqliteLink::Call(const RoutineCall& call) {
  const Target target = Find(call.address);
  return Reporting(*last_error_, target.pool->Path(), [&] {
    const Deadline deadline = DeadlineIn(target.timeout_s);
    const Lease lease(target.pool, deadline);
    const Operation operation(lease->Engine(), deadline);
    return lease->Call(call);
  });
}

void SqliteLink::Write(const RowSet& rows) {
  const Target target = Find({});
  Reporting(*last_error_, target.pool->Path(), [&] {
    const Deadline deadline = DeadlineIn(target.timeout_s);
    const Lease lease(target.pool, deadline);
    const Operation operation(lease->Engine(), deadline);
    lease->Write(rows);
  });
}

void SqliteLink::ShutDown() noexcept {
  for (auto& [key, pool] : pools_) pool->Close();
  pools_.clear();
}

}  // namespace sabrel::sqlite
