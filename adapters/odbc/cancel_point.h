// Where another thread finds the statement that a connection runs, to ask for its end.
#pragma once

#include <mutex>

namespace sabrel::odbc {

class CancelPoint {
 public:
  /// Names the statement that runs from now on; null for none. Waits while it is being cancelled,
  /// so that its handle outlives the cancelling.
  void Running(void* statement) {
    const std::lock_guard lock(mutex_);
    statement_ = statement;
  }
  /// Any thread; may block as long as the network does.
  void Cancel() noexcept;

 private:
  std::mutex mutex_;
  void* statement_ = nullptr;
};

}  // namespace sabrel::odbc
