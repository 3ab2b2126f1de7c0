#include "adapters/console/console_services.h"

#include <unistd.h>

#include "adapters/console/environment_locale.h"
#include "adapters/shared/statement_secrets.h"
#include "sabrel/platform/utf8.h"

namespace sabrel {
namespace {

constexpr std::int32_t kButtonsMask = 0xF;
constexpr std::int32_t kYesNoButtons = 4;
constexpr std::int32_t kSecondButtonIsDefault = 0x100;
constexpr std::int32_t kIconMask = 0x70;

std::string_view IconWord(std::int32_t style) {
  switch (style & kIconMask) {
    case 16: return "critical";
    case 32: return "question";
    case 48: return "exclamation";
    case 64: return "information";
    default: return "message";
  }
}

std::string BoxText(std::string_view text, std::int32_t style, std::string_view caption) {
  return "[" + std::string(IconWord(style)) + "] " + VisibleText(caption, " ") + "\n  " +
         VisibleText(text, "\n  ") + "\n";
}

}  // namespace

ConsoleServices::ConsoleServices(const ConsoleServicesOptions& options)
    : answer_(options.answer),
      answers_from_(options.answers_from),
      wait_for_answer_(options.wait_for_answer),
      locale_(options.locale ? *options.locale : EnvironmentLocale()),
      trace_(options.trace),
      terminal_(options.terminal),
      log_(options.log, terminal_) {}

void ConsoleServices::WriteTrace(std::string_view text) {
  if (trace_) log_.Write("trace", WithoutDeclaredPasswords(text));
}

void ConsoleServices::WriteLog(std::string_view text) {
  log_.Write("log", WithoutDeclaredPasswords(text));
}

void ConsoleServices::WriteServerEntry(std::string_view text) { log_.Write("server", text); }

std::int32_t ConsoleServices::ShowMessage(std::string_view text, std::int32_t style,
                                          std::string_view caption) {
  const std::lock_guard lock(box_mutex_);
  const std::string box = BoxText(text, style, caption);
  if ((style & kButtonsMask) != kYesNoButtons) {
    terminal_.Put(box);
    return kAnswerOk;
  }
  if (CanAsk()) {
    terminal_.Put(box);
    return Ask((style & kSecondButtonIsDefault) != 0);
  }
  const bool yes = answer_ == AnswerMode::kYes;
  terminal_.Put(box + "  Yes or No? " + (yes ? "Yes" : "No") + "\n");
  return yes ? kAnswerYes : kAnswerNo;
}

bool ConsoleServices::CanAsk() const {
  return answer_ == AnswerMode::kAsk && ::isatty(answers_from_) == 1 && terminal_.IsTerminal();
}

std::int32_t ConsoleServices::Ask(bool default_is_no) {
  while (true) {
    terminal_.Put(default_is_no ? "  Yes or No? [y/N] " : "  Yes or No? [Y/n] ");
    const bool comes = !wait_for_answer_ || wait_for_answer_(answers_from_);
    const auto line = comes ? ReadTerminalLine(answers_from_) : std::nullopt;
    if (!line) {
      terminal_.Put("\n");
      return kAnswerNo;
    }
    const std::string word = LowerCase(TrimBlanks(*line));
    if (word.empty()) return default_is_no ? kAnswerNo : kAnswerYes;
    if (word == "y" || word == "yes") return kAnswerYes;
    if (word == "n" || word == "no") return kAnswerNo;
  }
}

void ConsoleServices::Assertion(bool condition, std::string_view source, std::string_view module,
                                std::string_view procedure, std::string_view message) {
  if (condition) return;
  std::string line = "Assertion failed in ";
  line.append(source).append(", ").append(module).append(".").append(procedure);
  WriteLog(line.append(": ").append(message));
}

}  // namespace sabrel
