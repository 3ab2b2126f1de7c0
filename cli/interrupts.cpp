#include "cli/interrupts.h"

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
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

// Written to by the signal handler, which may do no more than that.
std::array<int, 2> g_pipe = {-1, -1};

void PassOn(int signal) {
  const int saved_errno = errno;
  const auto byte = static_cast<char>(signal);
  [[maybe_unused]] const ssize_t written = ::write(g_pipe[1], &byte, 1);
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

Interrupts::Interrupts() : wake_up_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (wake_up_ < 0 || ::pipe2(g_pipe.data(), O_CLOEXEC) != 0) {
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
  ::close(wake_up_);
}

void Interrupts::Watch(std::shared_ptr<Rowlink> rowlink) {
  const std::lock_guard lock(mutex_);
  rowlink_ = std::move(rowlink);
}

void Interrupts::StartCommand() {
  const std::lock_guard lock(mutex_);
  cancelled_ = false;
  impatience_ = 0;
  DropWakeUp();
}

void Interrupts::DropWakeUp() const {
  std::uint64_t ignored = 0;
  [[maybe_unused]] const ssize_t got = ::read(wake_up_, &ignored, sizeof ignored);
}

bool Interrupts::WaitForInput(int descriptor, int other) {
  std::array<pollfd, 3> sources = {
      {{wake_up_, POLLIN, 0}, {descriptor, POLLIN, 0}, {other, POLLIN, 0}}};
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
  if (::read(g_pipe[0], &signal, 1) != 1 || signal == kStopListening) return false;
  const bool ends = signal != SIGINT;
  if (++impatience_ >= kPatience) ::_exit(ends ? kTerminated : kCancelled);
  // Together, so that nobody forgets the flag and is woken up for it afterwards.
  const std::lock_guard lock(mutex_);
  (ends ? ending_ : cancelled_) = true;
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = ::write(wake_up_, &one, sizeof one);
  return true;
}

}  // namespace sabrel::cli
