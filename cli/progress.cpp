#include "cli/progress.h"

#include <unistd.h>

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
  painter_ = std::thread([this] { Show(); });
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

void Progress::Show() {
  const auto start = std::chrono::steady_clock::now();
  std::unique_lock lock(mutex_);
  while (!changed_.wait_for(lock, std::chrono::seconds(1), [this] { return stopping_; })) {
    const auto lasted = std::chrono::steady_clock::now() - start;
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(lasted).count();
    std::string line = std::string(kClearLine) + "running, " + std::to_string(seconds) + " s";
    if (rows_ > 0) line += ", " + std::to_string(rows_) + " rows";
    Put(line + " (Ctrl-C cancels)");
    shown_ = true;
  }
}

}  // namespace sabrel::cli
