// Statements out of text that comes line by line, as a person types it or a script has it.
//
// A statement ends at ";" outside quotes and comments, one that holds statements of its own (a
// block, CREATE FUNCTION) not even there; a line with "/" alone ends either. Each line is read
// once, however long the statement.
//
//   StatementReader reader;
//   while (!reader.IsComplete()) reader.Take(NextLine());
//   Send(reader.Finish());
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "adapters/shared/dialect/token.h"

namespace sabrel::dialect {

class StatementReader {
 public:
  /// Starts a statement before its first word has come.
  void Begin() { has_begun_ = true; }
  /// Takes `line`, which has no line break, up to the statement's end or, before a statement, up to
  /// the end of a comment that an earlier line opened. Returns the bytes taken: what follows starts
  /// anew.
  std::size_t Take(std::string_view line);

  /// Whether more than comments came.
  [[nodiscard]] bool HasBegun() const noexcept { return has_begun_; }
  /// Whether the line after this one starts inside a quote or comment.
  [[nodiscard]] bool IsInQuote() const noexcept { return !opening_.empty(); }
  [[nodiscard]] bool HoldsStatements() const noexcept { return form_.HoldsStatements(); }
  [[nodiscard]] bool IsComplete() const noexcept { return is_complete_; }
  /// What has come of the statement.
  [[nodiscard]] std::string_view Text() const noexcept { return text_; }

  /// The statement, without its end and the space around it, and starts anew.
  [[nodiscard]] std::string Finish();
  void Forget() { *this = {}; }

 private:
  std::size_t TakeTokens(std::string_view line, std::size_t from);

  std::string text_;
  /// How the quote or comment starts that is open.
  std::string opening_;
  StatementForm form_;
  bool has_begun_ = false;
  bool is_complete_ = false;
};

}  // namespace sabrel::dialect
