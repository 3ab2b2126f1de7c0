// The seam to the host's global services: trace, log, message boxes, locale, assertions.
//
// One instance serves the whole process; every function may be called from any thread. A failure (a
// full disk under the log) is thrown and reaches the operation that wrote.
#pragma once

#include <cstdint>
#include <string_view>

#include "sabrel/platform/locale_facts.h"

namespace sabrel {

/// Styles of message boxes, and the two answers that are asked for.
inline constexpr std::int32_t kBoxCritical = 16;
inline constexpr std::int32_t kBoxExclamation = 48;
inline constexpr std::int32_t kBoxExclamationYesNo = 52;
inline constexpr std::int32_t kBoxQuestionYesNoDefaultNo = 292;
inline constexpr std::int32_t kAnswerOk = 1;
inline constexpr std::int32_t kAnswerYes = 6;
inline constexpr std::int32_t kAnswerNo = 7;

class Services {
 public:
  virtual ~Services() = default;

  /// Whether trace lines are wanted; read before each of them.
  [[nodiscard]] virtual bool TraceSwitch() const = 0;
  /// Writes one trace line, which may hold line breaks; drops it when the trace switch is off.
  virtual void WriteTrace(std::string_view text) = 0;
  /// Writes one log line whatever the switch says.
  virtual void WriteLog(std::string_view text) = 0;
  /// Shows `text` and waits; returns the button pressed. A service that cannot ask answers No to a
  /// question.
  virtual std::int32_t ShowMessage(std::string_view text, std::int32_t style,
                                   std::string_view caption) = 0;
  [[nodiscard]] virtual LocaleFacts Locale() const = 0;
  /// Told about every asserted condition, true or false; returns in both cases.
  virtual void Assertion(bool condition, std::string_view source, std::string_view module,
                         std::string_view procedure, std::string_view message) = 0;
};

}  // namespace sabrel
