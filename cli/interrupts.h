// Ctrl-C and requests to end, turned into a cancelled statement.
//
// A thread of its own waits for signals and asks the session's Rowlink to stop what is running; the
// thread that works only looks at flags and waits for input through here. A program that is stuck
// ends at the third Ctrl-C. One instance per process.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <thread>

#include "sabrel/platform/rowlink.h"

namespace sabrel::cli {

class Interrupts {
 public:
  /// Takes SIGINT, SIGTERM and SIGHUP over - but not one that the program was started to ignore.
  Interrupts();
  ~Interrupts();
  Interrupts(const Interrupts&) = delete;
  Interrupts& operator=(const Interrupts&) = delete;

  /// Whose statements are cancelled from now on; null for nobody's.
  void Watch(std::shared_ptr<Rowlink> rowlink);
  /// Forgets an earlier Ctrl-C; a request to end stays.
  void StartCommand();

  [[nodiscard]] bool Cancelled() const noexcept { return cancelled_ || ending_; }
  [[nodiscard]] bool Ending() const noexcept { return ending_; }

  /// Waits until `descriptor` or, where there is one, `other` can be read; false when Ctrl-C or a
  /// request to end came first.
  [[nodiscard]] bool WaitForInput(int descriptor, int other = -1);

 private:
  void Listen();
  [[nodiscard]] bool TakeSignal();
  void DropWakeUp() const;

  std::mutex mutex_;
  std::shared_ptr<Rowlink> rowlink_;
  std::atomic<bool> cancelled_ = false;
  std::atomic<bool> ending_ = false;
  std::atomic<int> impatience_ = 0;
  int wake_up_ = -1;
  std::thread listener_;
};

}  // namespace sabrel::cli
