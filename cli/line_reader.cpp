#include "cli/line_reader.h"

#include <histedit.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <string_view>
#include <utility>

#include "adapters/console/access_failure.h"
#include "cli/suspension.h"

namespace sabrel::cli {
namespace {

class StreamReader final : public LineReader {
 public:
  explicit StreamReader(Interrupts& interrupts) : interrupts_(interrupts) {}

  Result Next(const std::string&) override {
    while (true) {
      const std::size_t end = pending_.find('\n', searched_);
      if (end != std::string::npos) return {End::kLine, Take(end, 1)};
      searched_ = pending_.size();
      if (at_end_) {
        if (start_ == pending_.size()) return {End::kEnd, {}};
        return {End::kLine, Take(pending_.size(), 0)};
      }
      if (!interrupts_.WaitForInput(STDIN_FILENO)) return {End::kInterrupted, {}};
      Read();
    }
  }

  [[nodiscard]] bool IsInteractive() const noexcept override { return false; }

 private:
  std::string Take(std::size_t end, std::size_t line_break) {
    std::string line = pending_.substr(start_, end - start_);
    start_ = end + line_break;
    searched_ = start_;
    if (line.ends_with('\r')) line.pop_back();
    return line;
  }

  void Read() {
    pending_.erase(0, start_);
    searched_ -= std::exchange(start_, 0);
    std::array<char, 65536> buffer;
    const ssize_t got = ::read(STDIN_FILENO, buffer.data(), buffer.size());
    if (got < 0 && errno != EINTR) throw AccessFailure("Standard input cannot be read", errno);
    if (got == 0) at_end_ = true;
    if (got > 0) pending_.append(buffer.data(), static_cast<std::size_t>(got));
  }

  Interrupts& interrupts_;
  std::string pending_;
  std::size_t start_ = 0;  // of the next line
  std::size_t searched_ = 0;
  bool at_end_ = false;
};

class TerminalReader final : public LineReader {
 public:
  explicit TerminalReader(Interrupts& interrupts)
      : interrupts_(interrupts),
        editor_(::el_init("sabrel", stdin, stdout, stderr)),
        history_(::history_init()) {
    ::el_set(editor_, EL_CLIENTDATA, this);
    ::el_set(editor_, EL_PROMPT, &TerminalReader::Prompt);
    ::el_set(editor_, EL_EDITOR, "emacs");
    ::el_set(editor_, EL_SIGNAL, 0);
    ::el_set(editor_, EL_GETCFN, &TerminalReader::ReadCharacter);
    ::el_set(editor_, EL_HIST, ::history, history_);
    ::el_source(editor_, nullptr);
    HistEvent event;
    ::history(history_, &event, H_SETSIZE, 1000);
    ::history(history_, &event, H_SETUNIQUE, 1);
    if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0') {
      history_file_ = std::string(home) + "/.sabrel_history";
      ::history(history_, &event, H_LOAD, history_file_.c_str());
    }
  }

  ~TerminalReader() override {
    HistEvent event;
    if (!history_file_.empty()) ::history(history_, &event, H_SAVE, history_file_.c_str());
    ::history_end(history_);
    ::el_end(editor_);
  }
  TerminalReader(const TerminalReader&) = delete;
  TerminalReader& operator=(const TerminalReader&) = delete;

  Result Next(const std::string& prompt) override {
    prompt_ = prompt;
    interrupted_ = false;
    const Suspension::Watch watch(suspension_);
    int length = 0;
    const char* line = ::el_gets(editor_, &length);
    if (interrupted_) {
      std::fputs("^C\n", stdout);
      std::fflush(stdout);
      return {End::kInterrupted, {}};
    }
    if (line == nullptr || length <= 0) {
      std::fputs("\n", stdout);
      return {End::kEnd, {}};
    }
    std::string text(line, static_cast<std::size_t>(length));
    if (text.find_first_not_of(" \t\n") != std::string::npos) {
      HistEvent event;
      ::history(history_, &event, H_ENTER, line);
    }
    if (text.ends_with('\n')) text.pop_back();
    return {End::kLine, std::move(text)};
  }

  [[nodiscard]] bool IsInteractive() const noexcept override { return true; }

 private:
  static TerminalReader& Of(EditLine* editor) {
    TerminalReader* self = nullptr;
    ::el_get(editor, EL_CLIENTDATA, &self);
    return *self;
  }

  static const char* Prompt(EditLine* editor) { return Of(editor).prompt_.c_str(); }

  // The library's own reader swallows an interruption; this one ends the line.
  static int ReadCharacter(EditLine* editor, wchar_t* character) {
    TerminalReader& self = Of(editor);
    std::mbstate_t state{};
    while (true) {
      if (!self.interrupts_.WaitForInput(STDIN_FILENO, self.suspension_.Descriptor())) {
        self.interrupted_ = true;
        return -1;
      }
      if (const int signal = self.suspension_.Signal(); signal != 0) {
        self.Suspend(signal);
        continue;
      }
      char byte = 0;
      const ssize_t got = ::read(STDIN_FILENO, &byte, 1);
      if (got < 0 && errno == EINTR) continue;
      if (got <= 0) return static_cast<int>(got);
      const std::size_t used = std::mbrtowc(character, &byte, 1, &state);
      if (used <= 1) return 1;
      if (used == static_cast<std::size_t>(-1)) state = {};
    }
  }

  // The library's own handlers would signal the whole process group, from inside a handler.
  void Suspend(int signal) {
    // Whoever stopped or continued the program may have set the terminal up anew.
    ::el_set(editor_, EL_PREP_TERM, 0);
    if (signal == SIGTSTP) suspension_.Stop();
    ::el_set(editor_, EL_PREP_TERM, 1);
    ::el_set(editor_, EL_REFRESH);
  }

  Interrupts& interrupts_;
  Suspension suspension_;
  EditLine* editor_;
  History* history_;
  std::string prompt_;
  std::string history_file_;
  bool interrupted_ = false;
};

}  // namespace

std::unique_ptr<LineReader> MakeLineReader(Interrupts& interrupts) {
  if (::isatty(STDIN_FILENO) == 1 && ::isatty(STDOUT_FILENO) == 1) {
    // Editing counts characters by the C locale; what is typed and sent is UTF-8.
    std::setlocale(LC_CTYPE, "C.UTF-8");
    return std::make_unique<TerminalReader>(interrupts);
  }
  return std::make_unique<StreamReader>(interrupts);
}

}  // namespace sabrel::cli
