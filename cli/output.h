// Standard output or a file: buffered, every failure noticed.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace sabrel::cli {

/// Columns where nobody knows a width.
inline constexpr std::size_t kUsualWidth = 80;

class Output {
 public:
  /// `name` is for failures.
  explicit Output(int descriptor, std::string name = "Standard output");

  /// Errors: OutputClosed when the reader has gone, 75 when it cannot be written (a full disk)
  void Write(std::string_view text);
  void Flush();
  /// Forgets what is not written yet; for the way out after a failure to write.
  void Drop() noexcept { buffer_.clear(); }

  [[nodiscard]] bool IsTerminal() const noexcept { return is_terminal_; }
  /// Columns of the terminal, asked anew each time; nothing for a file or a pipe, which have no
  /// edge.
  [[nodiscard]] std::optional<std::size_t> Width() const;
  /// Whether `text` may be dimmed: on a terminal, and nobody asked for none (NO_COLOR).
  [[nodiscard]] bool UsesStyles() const noexcept { return uses_styles_; }

 private:
  int descriptor_;
  std::string name_;
  bool is_terminal_;
  bool uses_styles_;
  std::string buffer_;
};

}  // namespace sabrel::cli
