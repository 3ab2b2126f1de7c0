#include "adapters/console/password_prompt.h"

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <mutex>
#include <optional>

#include "adapters/console/access_failure.h"
#include "adapters/console/terminal.h"

namespace sabrel {
namespace {

// SIGCONT too: after a SIGSTOP, which nobody can handle, the echo is as the user's shell has it.
constexpr std::array kSignals = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP, SIGCONT};

// What the signal handler needs; it may touch plain memory and make async-signal-safe calls only.
// `descriptor` is stored last and read first: the rest is whole on whatever thread the handler
// runs.
struct SilentTerminal {
  std::atomic<int> descriptor = -1;
  termios original{};
  std::array<struct sigaction, kSignals.size()> handlers{};
};
SilentTerminal g_silent;
static_assert(std::atomic<int>::is_always_lock_free);

// A pipe that is never closed: a handler on another thread may still be about to write when the
// prompt has ended.
std::array<int, 2> g_wake_up = {-1, -1};

void DrainWakeUp() {
  for (char byte = 0; ::read(g_wake_up[0], &byte, 1) == 1;) {
  }
}

// Gives the echo back, hands the signal to whoever handled it before, and ends the wait for the
// line - which may be another thread's, so an interrupted system call would not do.
void GiveBackEcho(int signal) {
  const int saved_errno = errno;
  ::tcsetattr(g_silent.descriptor.load(), TCSANOW, &g_silent.original);
  bool is_over = false;
  for (std::size_t i = 0; i < kSignals.size(); ++i) {
    if (kSignals[i] != signal) continue;
    ::sigaction(signal, &g_silent.handlers[i], nullptr);
    // A process that goes on has gone on: sent again, it could end the prompt that follows.
    is_over = signal == SIGCONT && g_silent.handlers[i].sa_handler == SIG_DFL;
  }
  const auto byte = static_cast<char>(signal);
  [[maybe_unused]] const ssize_t written = ::write(g_wake_up[1], &byte, 1);
  if (!is_over) ::raise(signal);
  errno = saved_errno;
}

// Echo off and handlers in place while it lives.
class EchoOff {
 public:
  explicit EchoOff(int descriptor) {
    if (::tcgetattr(descriptor, &g_silent.original) != 0) {
      throw AccessFailure("A password cannot be asked for", errno);
    }
    if (g_wake_up[0] < 0 && ::pipe2(g_wake_up.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
      throw AccessFailure("A password cannot be asked for", errno);
    }
    DrainWakeUp();

    struct sigaction action {};
    action.sa_handler = GiveBackEcho;
    ::sigemptyset(&action.sa_mask);
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
      ::sigaction(kSignals[i], nullptr, &g_silent.handlers[i]);
    }
    g_silent.descriptor = descriptor;
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
      // A process told to ignore a signal (nohup) goes on ignoring it.
      if (g_silent.handlers[i].sa_handler != SIG_IGN) ::sigaction(kSignals[i], &action, nullptr);
    }
    termios silent = g_silent.original;
    silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    silent.c_lflag |= ECHONL;
    ::tcsetattr(descriptor, TCSAFLUSH, &silent);
  }

  ~EchoOff() {
    ::tcsetattr(g_silent.descriptor, TCSADRAIN, &g_silent.original);
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
      ::sigaction(kSignals[i], &g_silent.handlers[i], nullptr);
    }
  }

  EchoOff(const EchoOff&) = delete;
  EchoOff& operator=(const EchoOff&) = delete;

  // The signal that arrived before a line did, or 0.
  [[nodiscard]] int WaitForLine() const {
    std::array<pollfd, 2> sources = {{{g_wake_up[0], POLLIN, 0}, {g_silent.descriptor, POLLIN, 0}}};
    while (::poll(sources.data(), sources.size(), -1) < 0 && errno == EINTR) {
    }
    char signal = 0;
    return ::read(g_wake_up[0], &signal, 1) == 1 ? signal : 0;
  }
};

// None when the prompt was suspended and has to be shown again.
std::optional<std::string> PromptOnce(std::string_view prompt, int input, std::FILE* output) {
  const EchoOff echo_off(input);
  TerminalOutput(output).Put(VisibleText(prompt, " "));
  const int signal = echo_off.WaitForLine();
  if (signal == SIGTSTP || signal == SIGCONT) return std::nullopt;
  if (signal != 0) {
    throw RuntimeError(RuntimeErrorNumber::kAccessFailure,
                       "The prompt for a password was interrupted");
  }
  auto line = ReadTerminalLine(input);
  if (!line) {
    throw RuntimeError(RuntimeErrorNumber::kAccessFailure,
                       "No password was given: the input has ended");
  }
  return line;
}

}  // namespace

std::string PromptWithoutEcho(std::string_view prompt, int input, std::FILE* output) {
  static std::mutex one_prompt;
  const std::lock_guard lock(one_prompt);
  if (::isatty(input) != 1) {
    throw RuntimeError(RuntimeErrorNumber::kAccessFailure,
                       "A password cannot be asked for: the input is not a terminal");
  }
  while (true) {
    if (auto line = PromptOnce(prompt, input, output)) return *line;
  }
}

}  // namespace sabrel
