#include "tests/cli/program.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace sabrel::testing {
namespace {

constexpr int kPatience_ms = 60000;

[[noreturn]] void Become(const Start& start) {
  // A runner in the background may ignore what these tests send.
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) std::signal(signal, SIG_DFL);
  for (const char* name : {"SABREL_SITE", "NO_COLOR", "LC_ALL"}) ::unsetenv(name);
  ::setenv("HOME", "/nonexistent", 1);
  ::setenv("TERM", "xterm", 1);
  for (const std::string& setting : start.environment) {
    const std::size_t end = setting.find('=');
    ::setenv(setting.substr(0, end).c_str(), setting.substr(end + 1).c_str(), 1);
  }
  if (start.as_nobody && ::geteuid() == 0 && (::setgid(65534) != 0 || ::setuid(65534) != 0)) {
    ::_exit(127);
  }
  std::vector<char*> arguments = {const_cast<char*>("sabrel")};
  for (const std::string& argument : start.arguments) {
    arguments.push_back(const_cast<char*>(argument.c_str()));
  }
  arguments.push_back(nullptr);
  ::execv(SABREL_PROGRAM, arguments.data());
  ::_exit(127);
}

void CloseAt(int& descriptor) {
  if (descriptor >= 0) ::close(descriptor);
  descriptor = -1;
}

}  // namespace

Program::Program(const Start& start) {
  if (start.on_terminal) {
    winsize size{24, 60, 0, 0};
    process_ = ::forkpty(&err_, nullptr, nullptr, &size);
    if (process_ == 0) Become(start);
    in_ = ::dup(err_);
    return;
  }
  std::array<int, 2> in{};
  std::array<int, 2> out{};
  std::array<int, 2> err{};
  for (auto* ends : {&in, &out, &err}) {
    if (::pipe2(ends->data(), O_CLOEXEC) != 0) std::abort();
  }
  process_ = ::fork();
  if (process_ == 0) {
    ::dup2(in[0], 0);
    ::dup2(start.output_file.empty() ? out[1] : ::open(start.output_file.c_str(), O_WRONLY), 1);
    ::dup2(err[1], 2);
    Become(start);
  }
  for (const int end : {in[0], out[1], err[1]}) ::close(end);
  in_ = in[1];
  out_ = out[0];
  err_ = err[0];
  Type(start.input);
  CloseAt(in_);
}

Program::~Program() {
  for (int* end : {&in_, &out_, &err_}) CloseAt(*end);
  if (process_ <= 0) return;
  ::kill(process_, SIGKILL);
  ::waitpid(process_, nullptr, 0);
}

void Program::Type(const std::string& text) const {
  if (!text.empty() && ::write(in_, text.data(), text.size()) < 0) std::abort();
}

void Program::Signal(int signal) const { ::kill(process_, signal); }
void Program::CloseOutput() { CloseAt(out_); }

bool Program::Read() {
  std::array<pollfd, 2> sources = {{{out_, POLLIN, 0}, {err_, POLLIN, 0}}};
  if ((out_ < 0 && err_ < 0) || ::poll(sources.data(), 2, kPatience_ms) <= 0) return false;
  for (const pollfd& source : sources) {
    if (source.revents == 0) continue;
    std::array<char, 65536> buffer;
    const ssize_t got = ::read(source.fd, buffer.data(), buffer.size());
    if (got <= 0) {
      CloseAt(source.fd == out_ ? out_ : err_);
    } else {
      (source.fd == out_ ? outcome_.out : outcome_.err)
          .append(buffer.data(), static_cast<std::size_t>(got));
    }
  }
  return true;
}

bool Program::WaitFor(const std::string& text) {
  while (true) {
    const std::size_t found = outcome_.err.find(text, seen_);
    if (found != std::string::npos) {
      seen_ = found + text.size();
      return true;
    }
    if (!Read()) return false;
  }
}

Outcome Program::End() {
  while (Read()) {
  }
  int status = 0;
  if (out_ >= 0 || err_ >= 0) ::kill(process_, SIGKILL);
  ::waitpid(process_, &status, 0);
  process_ = -1;
  outcome_.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return outcome_;
}

Outcome RunProgram(const Start& start) { return Program(start).End(); }

SiteFolder::SiteFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "sabrel-XXXXXX").string();
  if (::mkdtemp(name.data()) == nullptr) std::abort();
  path_ = name;
  if (RunProgram({.arguments = {"site", "create", Site()}, .input = ""}).status != 0) std::abort();
}

SiteFolder::~SiteFolder() { std::filesystem::remove_all(path_); }

std::string SiteFolder::Filled(std::string text) const {
  for (std::size_t at = text.find('@'); at != std::string::npos; at = text.find('@', at)) {
    text.replace(at, 1, path_);
  }
  return text;
}

void SiteFolder::Write(const std::string& name, const std::string& content) const {
  std::ofstream(path_ + "/" + name, std::ios::binary) << content;
}

}  // namespace sabrel::testing
