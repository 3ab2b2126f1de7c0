// Ctrl-C and requests to end, turned into a cancelled statement.
//
// The signal handler sets flags, which the thread that works looks at and waits for; a thread of
// its own asks the session's Rowlink to stop what is running. A program that is stuck
// ends at the third Ctrl-C. One instance per process.
#pragma once

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

  [[nodiscard]] bool Cancelled() const noexcept;
  [[nodiscard]] bool Ending() const noexcept;

  /// Waits until `descriptor` or, where there is one, `other` can be read; false when Ctrl-C or a
  /// request to end came first.
  [[nodiscard]] bool WaitForInput(int descriptor, int other = -1);

 private:
  void Listen();
  [[nodiscard]] bool TakeSignal();
  void DropWakeUp() const;

  std::mutex mutex_;
  std::shared_ptr<Rowlink> rowlink_;
  std::thread listener_;
};

}  // namespace sabrel::cli
