#include "cli/progress.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <string>

namespace sabrel::cli {
namespace {

constexpr std::string_view kClearLine = "\r\x1b[K";

void Put(std::string_view text) {
  [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, text.data(), text.size());
}

}  // namespace

Progress::Progress() {
  if (::isatty(STDERR_FILENO) != 1) return;
  // Signals are for the thread that works.
  sigset_t all;
  sigset_t before;
  ::sigfillset(&all);
  ::pthread_sigmask(SIG_BLOCK, &all, &before);
  painter_ = std::thread([this] {
    try {
      Show();
    } catch (...) {  // Without memory there is no progress to see; the work goes on.
    }
  });
  ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

Progress::~Progress() { Stop(); }

void Progress::Stop() {
  if (!painter_.joinable()) return;
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  changed_.notify_all();
  painter_.join();
  if (shown_) Put(kClearLine);
}

void Progress::Bytes(const char* what, std::size_t done, std::size_t total) noexcept {
  what_ = what;
  done_ = done;
  total_ = total;
}

std::string Progress::Amount() const {
  constexpr std::size_t kBarWidth = 20;
  constexpr std::size_t kKilobyte = 1024;
  if (rows_ > 0) return ", " + std::to_string(rows_) + " rows";
  const std::size_t total = total_;
  const std::size_t done = done_;
  if (total == 0) return done == 0 ? "" : ", " + std::to_string(done / kKilobyte) + " KB";
  const std::size_t filled = kBarWidth * std::min(done, total) / total;
  return " [" + std::string(filled, '#') + std::string(kBarWidth - filled, '.') + "] of " +
         std::to_string(total / kKilobyte) + " KB";
}

void Progress::Show() {
  const auto start = std::chrono::steady_clock::now();
  std::unique_lock lock(mutex_);
  while (!changed_.wait_for(lock, std::chrono::seconds(1), [this] { return stopping_; })) {
    const auto lasted = std::chrono::steady_clock::now() - start;
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(lasted).count();
    std::string line = std::string(kClearLine) + what_.load() + ", ";
    line += std::to_string(seconds) + " s" + Amount();
    Put(line + " (Ctrl-C cancels)");
    shown_ = true;
  }
}

}  // namespace sabrel::cli
