// The connections of one thread to one file as one user.
//
// A request borrows a connection and gives it back; rows that are still being read keep theirs, so
// that nothing else waits for them or disturbs them. Mostly one connection serves everything.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "adapters/sqlite/connection.h"
#include "adapters/sqlite/server.h"

namespace sabrel::sqlite {

class ConnectionPool {
 public:
  static constexpr std::size_t kMostIdle = 4;

  ConnectionPool(std::string path, std::shared_ptr<CancelSwitch> cancel_switch,
                 Durability durability, std::string date_format)
      : path_(std::move(path)),
        cancel_switch_(std::move(cancel_switch)),
        state_(std::make_shared<SessionState>()),
        durability_(durability) {
    state_->date_format = std::move(date_format);
  }

  /// A new connection waits for the file's lock until `deadline`. Errors: as Connection
  [[nodiscard]] std::unique_ptr<Server> Take(Deadline deadline);
  void GiveBack(std::unique_ptr<Server> server) noexcept;
  /// Closes the idle connections now, the borrowed ones when they come back.
  void Close() noexcept;
  [[nodiscard]] const std::string& Path() const noexcept { return path_; }

 private:
  std::string path_;
  std::shared_ptr<CancelSwitch> cancel_switch_;
  std::shared_ptr<SessionState> state_;
  std::vector<std::unique_ptr<Server>> idle_;
  Durability durability_;
  bool closed_ = false;
};

/// A borrowed connection.
class Lease {
 public:
  Lease(std::shared_ptr<ConnectionPool> pool, Deadline deadline)
      : pool_(std::move(pool)), server_(pool_->Take(deadline)) {}
  ~Lease() {
    if (server_) pool_->GiveBack(std::move(server_));
  }
  Lease(Lease&&) noexcept = default;
  Lease& operator=(Lease&&) = delete;
  Lease(const Lease&) = delete;
  Lease& operator=(const Lease&) = delete;
  [[nodiscard]] Server& operator*() const noexcept { return *server_; }
  [[nodiscard]] Server* operator->() const noexcept { return server_.get(); }

 private:
  std::shared_ptr<ConnectionPool> pool_;
  std::unique_ptr<Server> server_;
};

}  // namespace sabrel::sqlite
