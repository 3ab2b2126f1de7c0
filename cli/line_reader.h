// Lines for the shell: typed on a terminal with editing and history, or read from a file or pipe as
// they are.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "cli/interrupts.h"

namespace sabrel::cli {

class LineReader {
 public:
  enum class End { kLine, kEnd, kInterrupted };
  struct Result {
    End end = End::kEnd;
    /// Without its line break; may hold any byte.
    std::string line;
  };

  virtual ~LineReader() = default;
  /// `prompt` is for a terminal. Errors: 75 when the input cannot be read
  [[nodiscard]] virtual Result Next(const std::string& prompt) = 0;
  [[nodiscard]] virtual bool IsInteractive() const noexcept = 0;
};

/// Reads standard input. The history of a terminal is kept in ~/.sabrel_history, readable by its
/// owner only.
[[nodiscard]] std::unique_ptr<LineReader> MakeLineReader(Interrupts& interrupts);

}  // namespace sabrel::cli
