// A line on a terminal's standard error that tells how long work has lasted and how many rows came.
//
// Shows from the first second on, and only where a person looks at it; gone when the work ends.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>

namespace sabrel::cli {

class Progress {
 public:
  Progress();
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void Rows(std::int64_t rows) noexcept { rows_ = rows; }
  /// Takes the line away for good, before something else is written.
  void Stop();

 private:
  void Show();

  std::atomic<std::int64_t> rows_ = 0;
  std::mutex mutex_;
  std::condition_variable changed_;
  bool stopping_ = false;
  bool shown_ = false;
  std::thread painter_;
};

}  // namespace sabrel::cli
