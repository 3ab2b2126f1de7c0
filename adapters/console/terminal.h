// Text on its way to a terminal, and lines on their way back.
//
// What is shown comes from databases and servers, so nothing of it may steer the terminal: escape
// sequences, control characters, bidirectional overrides and stray bytes are shown as `\x1B` or
// `\u202E` instead of being sent. One piece of text is one write, so the pieces of two threads
// never mix.
#pragma once

#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

namespace sabrel {

/// `text` with what could steer a terminal made visible. CR LF, LF and CR each become `line_break`;
/// tabs stay. Shape: valid UTF-8, whatever `text` is. Errors: none
[[nodiscard]] std::string VisibleText(std::string_view text, std::string_view line_break);

/// A line typed on the terminal behind `descriptor`, without its end; none at the end of the input
/// and when a signal interrupts the wait.
[[nodiscard]] std::optional<std::string> ReadTerminalLine(int descriptor);

class TerminalOutput {
 public:
  /// Writes to `file`, which must outlive this object.
  explicit TerminalOutput(std::FILE* file) : file_(file) {}

  /// Writes and flushes `text` as one piece. Errors: 75 naming the reason (a full disk behind a
  /// redirection)
  void Put(std::string_view text);
  [[nodiscard]] bool IsTerminal() const;

 private:
  std::FILE* file_;
};

}  // namespace sabrel
