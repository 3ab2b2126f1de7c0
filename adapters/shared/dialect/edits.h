// What becomes of each token of a statement, and the engine's text that results.
//
// The parser marks tokens while it walks; nothing is written before the end, so that a call can be
// put around an operand that was read long ago. Space and comments between tokens stay as they are.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "adapters/shared/dialect/token.h"

namespace sabrel::dialect {

class Edits {
 public:
  /// Both must outlive this.
  Edits(std::string_view sql, const TokenList& tokens, bool keeps_comments)
      : sql_(sql), tokens_(tokens), keeps_comments_(keeps_comments), marks_(tokens.size()) {}

  void Remove(std::size_t token) { MarkOf(token).output = Output::kNothing; }
  void Replace(std::size_t token, std::string text);
  /// Makes a constant a parameter, or writes it as the engine takes it where `is_lifted` is false.
  void SetConstant(std::size_t token, bool is_lifted, bool is_negative = false);
  /// Makes the tokens the arguments of `function`, or puts them in parentheses where it is empty.
  /// Later calls wrap earlier ones. The name must stay alive; a "(" within it is closed
  /// too, one at its end is the caller's.
  void Wrap(std::size_t first, std::size_t last, std::string_view function);
  /// Puts `text` and "(" before a token and its wraps; the ")" is the caller's. `text` must stay
  /// alive.
  void Open(std::size_t token, std::string_view text);
  /// Makes the tokens `CAST(... AS type)`.
  void Cast(std::size_t first, std::size_t last, std::string_view type);
  /// Whether the tokens are written as they stand in the statement so far.
  [[nodiscard]] bool AreUnchanged(std::size_t first, std::size_t last) const;
  /// Puts `text` behind a token that stays as it is.
  void Append(std::size_t token, std::string_view text);
  /// Puts `text` behind all that is written for a token, behind the ")" of its wraps too.
  void AppendBehind(std::size_t token, std::string_view text);
  /// Makes the newest call, of `function`, around what ends at `last` reach to `new_last`.
  void Extend(std::size_t last, std::size_t new_last, std::string_view function) {
    MarkOf(last).closings -= ClosingsOf(function);
    MarkOf(new_last).closings += ClosingsOf(function);
  }

  /// Cost: linear in the statement's length
  void Render(Rewritten& rewritten) const;

 private:
  enum class Output : std::uint8_t {
    kSource,
    kNothing,
    kReplacement,
    kLifted,
    kLiftedNegative,
    kLiteral
  };
  static constexpr std::uint32_t kNone = 0xFFFFFFFF;
  struct Mark {
    Output output = Output::kSource;
    std::uint32_t closings = 0;
    std::uint32_t opening = kNone;      // newest first: the newest is outermost
    std::uint32_t replacement = kNone;  // index into replacements_
    std::uint32_t suffix = kNone;       // index into replacements_
  };
  struct Opening {
    std::string_view function;
    std::uint32_t next;
  };

  /// What lies outside of the tokens is the kEnd, of which nothing is written.
  [[nodiscard]] Mark& MarkOf(std::size_t token) { return marks_[std::min(token, tokens_.Last())]; }
  static std::uint32_t ClosingsOf(std::string_view function);
  [[nodiscard]] std::string_view Between(std::size_t end, std::size_t begin) const;
  void RenderToken(const Token& token, const Mark& mark, Rewritten& rewritten) const;

  std::string_view sql_;
  const TokenList& tokens_;
  bool keeps_comments_;
  std::vector<Mark> marks_;
  std::vector<Opening> openings_;
  std::vector<std::string> replacements_;
};

}  // namespace sabrel::dialect
