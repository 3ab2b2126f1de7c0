// The host's services on a terminal: message boxes, trace and log lines, the user's locale.
//
// A message box is printed; a question is answered by the mode in the options, and only mode kAsk
// with a person at both ends of the terminal waits for one. A service that cannot ask answers No.
// Trace and log lines go to the log file, or to the terminal where none is named. Control
// characters in shown and written text are made visible. Refuses to lose an entry: a log that
// cannot be written raises.
//
//   sabrel::ConsoleServicesOptions options;
//   options.log.path = "sabrel.log";
//   sabrel::ConsoleServices services(options);
#pragma once

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "adapters/console/entry_log.h"
#include "adapters/console/terminal.h"
#include "sabrel/platform/services.h"

namespace sabrel {

enum class AnswerMode { kYes, kNo, kAsk };

struct ConsoleServicesOptions {
  AnswerMode answer = AnswerMode::kAsk;
  bool trace = false;
  EntryLogOptions log;
  /// The environment's locale when absent.
  std::optional<LocaleFacts> locale;
  /// Where boxes, and entries without a log file, are written; must outlive the services.
  std::FILE* terminal = stderr;
  /// Descriptor that answers are read from; standard input.
  int answers_from = 0;
  /// Waits until that descriptor can be read; false gives No. A host that handles signals needs it:
  /// one that comes just before the program reads would not end the wait.
  std::function<bool(int descriptor)> wait_for_answer = {};
};

class ConsoleServices final : public Services {
 public:
  /// Errors: 75 when the log file cannot be opened
  explicit ConsoleServices(const ConsoleServicesOptions& options = {});

  [[nodiscard]] bool TraceSwitch() const override { return trace_; }
  void TraceSwitch(bool on) { trace_ = on; }

  /// Passwords that a statement in `text` declares (IDENTIFIED BY) are written as ***.
  /// Errors: 75 when the entry cannot be written
  void WriteTrace(std::string_view text) override;
  void WriteLog(std::string_view text) override;
  /// An entry about requests to the Data Server, from outside the component. Errors: as WriteLog
  void WriteServerEntry(std::string_view text);

  /// Yes/No styles are questions; every other style is answered OK at once. Enter gives the default
  /// button; the end of the input and an interrupting signal give No. Boxes of two threads are
  /// shown one after the other. Errors: 75 when the terminal cannot be written
  std::int32_t ShowMessage(std::string_view text, std::int32_t style,
                           std::string_view caption) override;

  /// Cost: a copy; the environment is read once, on construction
  [[nodiscard]] LocaleFacts Locale() const override { return locale_; }

  /// A condition that is false writes one log line. Errors: as WriteLog
  void Assertion(bool condition, std::string_view source, std::string_view module,
                 std::string_view procedure, std::string_view message) override;

 private:
  [[nodiscard]] bool CanAsk() const;
  [[nodiscard]] std::int32_t Ask(bool default_is_no);

  const AnswerMode answer_;
  const int answers_from_;
  const std::function<bool(int)> wait_for_answer_;
  const LocaleFacts locale_;
  std::atomic<bool> trace_;
  TerminalOutput terminal_;
  EntryLog log_;
  std::mutex box_mutex_;
};

}  // namespace sabrel
