// A line on a terminal's standard error that tells how long work has lasted and how far it is:
// rows, or a bar for bytes.
//
// Shows from the first second on, and only where a person looks at it; gone when the work ends.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>

namespace sabrel::cli {

class Progress {
 public:
  Progress();
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void Rows(std::int64_t rows) noexcept { rows_ = rows; }
  /// Bytes of work whose end is known, drawn as a bar; of `total` 0 only `done` is told. `what`
  /// lives as long as this object.
  void Bytes(const char* what, std::size_t done, std::size_t total) noexcept;
  /// Takes the line away for good, before something else is written.
  void Stop();

 private:
  void Show();
  [[nodiscard]] std::string Amount() const;

  std::atomic<std::int64_t> rows_ = 0;
  std::atomic<const char*> what_ = "running";
  std::atomic<std::size_t> done_ = 0;
  std::atomic<std::size_t> total_ = 0;
  std::mutex mutex_;
  std::condition_variable changed_;
  bool stopping_ = false;
  bool shown_ = false;
  std::thread painter_;
};

}  // namespace sabrel::cli
