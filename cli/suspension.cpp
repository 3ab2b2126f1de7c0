#include "cli/suspension.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "adapters/console/access_failure.h"

namespace sabrel::cli {
namespace {

constexpr std::array kSignals = {SIGTSTP, SIGCONT};

// Written to by the signal handler, which may do no more than that.
std::array<int, 2> g_pipe = {-1, -1};

void PassOn(int signal) {
  const int saved_errno = errno;
  const auto byte = static_cast<char>(signal);
  [[maybe_unused]] const ssize_t written = ::write(g_pipe[1], &byte, 1);
  errno = saved_errno;
}

}  // namespace

Suspension::Suspension() {
  if (::pipe2(g_pipe.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
    throw AccessFailure("Signals cannot be waited for", errno);
  }
}

Suspension::~Suspension() {
  for (const int end : g_pipe) ::close(end);
}

Suspension::Watch::Watch(Suspension& suspension) {
  while (suspension.Signal() != 0) {  // Too late for the line that they were sent during.
  }
  struct sigaction action {};
  action.sa_handler = PassOn;
  ::sigemptyset(&action.sa_mask);
  for (std::size_t i = 0; i < kSignals.size(); ++i) {
    ::sigaction(kSignals[i], nullptr, &before_[i]);
    if (before_[i].sa_handler != SIG_IGN) ::sigaction(kSignals[i], &action, nullptr);
  }
}

Suspension::Watch::~Watch() {
  for (std::size_t i = 0; i < kSignals.size(); ++i) {
    ::sigaction(kSignals[i], &before_[i], nullptr);
  }
}

int Suspension::Descriptor() const noexcept { return g_pipe[0]; }

int Suspension::Signal() const noexcept {
  char signal = 0;
  return ::read(g_pipe[0], &signal, 1) == 1 ? signal : 0;
}

void Suspension::Stop() const noexcept {
  struct sigaction ours {};
  struct sigaction usual {};
  usual.sa_handler = SIG_DFL;
  ::sigemptyset(&usual.sa_mask);
  ::sigaction(SIGTSTP, &usual, &ours);
  ::raise(SIGTSTP);
  ::sigaction(SIGTSTP, &ours, nullptr);
  while (Signal() != 0) {  // The SIGCONT that ended the stop.
  }
}

}  // namespace sabrel::cli
