// The thread that makes the driver's calls for one connection.
//
// A driver may not return while the network is silent, whatever time-out it was given and whoever
// asks it to cancel. So no caller makes a driver's call: a worker takes over whole operations and
// the caller waits for it by the clock. A worker that does not return in time is left behind; it
// keeps its handles and frees them when the driver returns. Nobody ever waits for that, the end of
// the process included. Two workers may be left behind for an address; until one of them returns,
// further calls to the address fail at once.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "adapters/odbc/connection.h"
#include "adapters/shared/deadline.h"
#include "sabrel/platform/runtime_error.h"

namespace sabrel::odbc {

/// What a worker owns: made, used and destroyed on its thread only.
struct Workplace {
  std::shared_ptr<CancelPoint> cancel_point = std::make_shared<CancelPoint>();
  std::unique_ptr<Connection> connection;
  /// A statement whose rows are still being read.
  std::unique_ptr<Statement> statement;
  /// All of them were: the statement ends, which may take a round trip, when its last rows are with
  /// the caller.
  bool is_read = false;
};

class Worker {
 public:
  using Task = std::function<void(Workplace&)>;
  enum class End : std::uint8_t { kDone, kTimeOut, kCancelled };

  /// `address` is what abandoned workers are counted by.
  explicit Worker(std::string address);
  /// Lets the thread end by itself, which closes the connection; does not wait.
  ~Worker();
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

  /// Runs `task` and waits until it ends or `deadline` passes; an exception of the task is thrown
  /// here. After another end than kDone the worker is left behind and must not be used again;
  /// `task` must own all that it refers to; `code` is what later calls fail with when too many
  /// workers were left behind. Cost: a hand-over to the thread and back
  [[nodiscard]] End Run(Task task, Deadline deadline, ConnectionFailure code);
  /// Ends the statement whose rows were being read when the thread is free, without waiting.
  void DropStatement() noexcept;
  /// Asks the driver to end the statement that runs; whoever waits in Run is freed after
  /// kCancelPatience at the latest. Any thread; does not wait.
  void Cancel() noexcept;
  /// Whether Cancel came during the last Run.
  [[nodiscard]] bool WasCancelled() const noexcept;

  static constexpr std::chrono::milliseconds kCancelPatience{1000};

 private:
  struct State;
  static void Live(const std::shared_ptr<State>& state) noexcept;
  void LeaveBehind(ConnectionFailure code) noexcept;

  std::shared_ptr<State> state_;
  std::thread thread_;
};

/// Errors: the code of the last worker left behind for `address` when there are two
void RequireFewLeftBehind(const std::string& address);
/// Waits for workers that were told to end and close their connections, but not for long, and not
/// for those left behind: a process that ended meanwhile would take the driver away under them.
void AwaitEndingWorkers() noexcept;
/// Workers now left behind, for whatever address.
[[nodiscard]] int WorkersLeftBehind() noexcept;

}  // namespace sabrel::odbc
