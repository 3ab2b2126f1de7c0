#include "tests/cli/program.h"

#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <thread>

namespace sabrel::testing {
namespace {

constexpr int kPatience_ms = 60000;

std::string ShellLine(const Start& start) {
  return "env -u NO_COLOR -u LC_ALL HOME=/nonexistent TERM=xterm SABREL_SITE=" + start.site +
         " " SABREL_PROGRAM " " + start.line;
}

int StatusOf(int waited) {
  return WIFEXITED(waited) ? WEXITSTATUS(waited) : 128 + WTERMSIG(waited);
}

void WriteFile(const std::string& path, const std::string& content) {
  std::ofstream(path, std::ios::binary) << content;
}

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

Outcome RunProgram(const Start& start) {
  const TemporaryFolder folder;
  WriteFile(folder.Path("in"), start.input);
  WriteFile(folder.Path("script"), "cd " + folder.Path() + "\nset -o pipefail\n{ " +
                                       ShellLine(start) + "\n} < <(cat in) > out 2> err\n");
  const int status = StatusOf(std::system(("bash " + folder.Path("script")).c_str()));
  return {status, ReadFile(folder.Path("out")), ReadFile(folder.Path("err"))};
}

TerminalProgram::TerminalProgram(const Start& start) {
  winsize size{24, 60, 0, 0};
  process_ = ::forkpty(&terminal_, nullptr, nullptr, &size);
  if (process_ < 0) std::abort();  // A signal to process -1 would reach everybody.
  if (process_ != 0) return;
  // A runner in the background may ignore what these tests send.
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) std::signal(signal, SIG_DFL);
  ::execl("/bin/sh", "sh", "-c", ("exec " + ShellLine(start)).c_str(), nullptr);
  ::_exit(127);
}

TerminalProgram::~TerminalProgram() {
  if (process_ > 0) {
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
  }
  ::close(terminal_);
}

void TerminalProgram::Type(const std::string& text) const {
  if (::write(terminal_, text.data(), text.size()) < 0) std::abort();
}

bool TerminalProgram::WaitForEditing() const {
  for (int waited_ms = 0; waited_ms < kPatience_ms; ++waited_ms) {
    termios state{};
    if (::tcgetattr(terminal_, &state) == 0 && (state.c_lflag & ICANON) == 0) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return false;
}

void TerminalProgram::EndEditing() const {
  termios state{};
  ::tcgetattr(terminal_, &state);
  state.c_lflag |= ICANON | ECHO;
  ::tcsetattr(terminal_, TCSANOW, &state);
}

void TerminalProgram::Signal(int signal) const { ::kill(process_, signal); }

bool TerminalProgram::Read() {
  pollfd source = {terminal_, POLLIN, 0};
  if (::poll(&source, 1, kPatience_ms) <= 0 && process_ > 0) ::kill(process_, SIGKILL);
  std::array<char, 65536> buffer;
  const ssize_t got = ::read(terminal_, buffer.data(), buffer.size());
  if (got > 0) outcome_.out.append(buffer.data(), static_cast<std::size_t>(got));
  return got > 0;
}

bool TerminalProgram::WaitFor(const std::string& text) {
  std::size_t found = 0;
  while ((found = outcome_.out.find(text, seen_)) == std::string::npos) {
    if (!Read()) return false;
  }
  seen_ = found + text.size();
  return true;
}

Outcome TerminalProgram::End() {
  while (Read()) {
  }
  int status = 0;
  ::waitpid(process_, &status, 0);
  process_ = -1;
  outcome_.status = StatusOf(status);
  return outcome_;
}

std::string SiteFolder::Filled(std::string text) const {
  for (std::size_t at = text.find('@'); at != std::string::npos; at = text.find('@', at)) {
    text.replace(at, 1, folder_.Path());
  }
  std::replace(text.begin(), text.end(), '`', '"');
  return text;
}

void SiteFolder::Write(const std::string& name, const std::string& content) const {
  WriteFile(folder_.Path(name), Filled(content));
}

std::string SiteFolder::Read(const std::string& name) const { return ReadFile(folder_.Path(name)); }

}  // namespace sabrel::testing
