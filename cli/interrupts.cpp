#include "cli/interrupts.h"

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>

#include "adapters/console/access_failure.h"
#include "cli/exit_status.h"

namespace sabrel::cli {
namespace {

constexpr std::array kSignals = {SIGINT, SIGTERM, SIGHUP};
constexpr int kPatience = 3;
constexpr int kAskAgain_ms = 50;
constexpr char kStopListening = 0;

// What the signal handler touches. It sets the flags itself: the system call that it interrupts
// returns right afterwards, before the listener has run.
std::atomic<bool> g_cancelled = false;
std::atomic<bool> g_ending = false;
std::atomic<int> g_impatience = 0;
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<int>::is_always_lock_free);
std::array<int, 2> g_pipe = {-1, -1};
int g_wake_up = -1;

void PassOn(int signal) {
  const int saved_errno = errno;
  const bool ends = signal != SIGINT;
  (ends ? g_ending : g_cancelled) = true;
  if (++g_impatience >= kPatience) ::_exit(ends ? kTerminated : kCancelled);
  const auto byte = static_cast<char>(signal);
  [[maybe_unused]] ssize_t written = ::write(g_pipe[1], &byte, 1);
  const std::uint64_t one = 1;
  written = ::write(g_wake_up, &one, sizeof one);
  errno = saved_errno;
}

void Take(int signal) {
  struct sigaction action {};
  ::sigaction(signal, nullptr, &action);
  if (action.sa_handler == SIG_IGN) return;
  // Without SA_RESTART: a system call that waits for a person has to end.
  action = {};
  action.sa_handler = PassOn;
  ::sigemptyset(&action.sa_mask);
  ::sigaction(signal, &action, nullptr);
}

}  // namespace

Interrupts::Interrupts() {
  g_wake_up = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (g_wake_up < 0 || ::pipe2(g_pipe.data(), O_CLOEXEC) != 0) {
    throw AccessFailure("Signals cannot be waited for", errno);
  }
  // The listener must not take the signals itself: they are to interrupt the thread that works.
  sigset_t ours;
  sigset_t before;
  ::sigemptyset(&ours);
  for (const int signal : kSignals) ::sigaddset(&ours, signal);
  ::pthread_sigmask(SIG_BLOCK, &ours, &before);
  listener_ = std::thread([this] { Listen(); });
  ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
  for (const int signal : kSignals) Take(signal);
}

Interrupts::~Interrupts() {
  [[maybe_unused]] const ssize_t written = ::write(g_pipe[1], &kStopListening, 1);
  listener_.join();
}

void Interrupts::Watch(std::shared_ptr<Rowlink> rowlink) {
  const std::lock_guard lock(mutex_);
  rowlink_ = std::move(rowlink);
}

bool Interrupts::Cancelled() const noexcept { return g_cancelled || g_ending; }

bool Interrupts::Ending() const noexcept { return g_ending; }

void Interrupts::StartCommand() {
  const std::lock_guard lock(mutex_);
  g_cancelled = false;
  g_impatience = 0;
  DropWakeUp();
}

void Interrupts::DropWakeUp() const {
  std::uint64_t ignored = 0;
  [[maybe_unused]] const ssize_t got = ::read(g_wake_up, &ignored, sizeof ignored);
}

bool Interrupts::WaitForInput(int descriptor, int other) {
  std::array<pollfd, 3> sources = {
      {{g_wake_up, POLLIN, 0}, {descriptor, POLLIN, 0}, {other, POLLIN, 0}}};
  while (!Cancelled()) {
    if (::poll(sources.data(), sources.size(), -1) < 0) {
      if (errno != EINTR) return true;
    } else if (sources[0].revents == 0) {
      return true;
    } else if (!Cancelled()) {
      DropWakeUp();  // Left over from a signal that was dealt with.
    }
  }
  return false;
}

// A signal may come just before the statement starts that it means; asking again until the command
// has ended reaches it all the same.
void Interrupts::Listen() {
  pollfd source = {g_pipe[0], POLLIN, 0};
  while (true) {
    const int ready = ::poll(&source, 1, Cancelled() ? kAskAgain_ms : -1);
    if (ready > 0 && !TakeSignal()) return;
    const std::lock_guard lock(mutex_);
    if (rowlink_ && Cancelled()) rowlink_->Cancel();
  }
}

bool Interrupts::TakeSignal() {
  char signal = kStopListening;
  return ::read(g_pipe[0], &signal, 1) == 1 && signal != kStopListening;
}

}  // namespace sabrel::cli
