#include "adapters/sqlite/connection_pool.h"

#include <utility>

namespace sabrel::sqlite {

std::unique_ptr<Server> ConnectionPool::Take(Deadline deadline) {
  if (idle_.empty()) {
    RequireDateFormat(state_->date_format);
    return std::make_unique<Server>(path_, cancel_switch_, state_, durability_, deadline);
  }
  // The last one back has the statements that are in use now.
  std::unique_ptr<Server> server = std::move(idle_.back());
  idle_.pop_back();
  return server;
}

void ConnectionPool::GiveBack(std::unique_ptr<Server> server) noexcept {
  if (server->Engine().InTransaction()) server->Engine().RollBack();
  if (closed_ || server->Engine().IsBroken() || idle_.size() >= kMostIdle) return;
  try {
    idle_.push_back(std::move(server));
  } catch (...) {  // No memory to keep it: it is closed.
  }
}

void ConnectionPool::Close() noexcept {
  closed_ = true;
  idle_.clear();
}

}  // namespace sabrel::sqlite
