// Statement text cut into tokens: words, names in quotes, constants, parameters, symbols.
//
// Space and comments lie between tokens and belong to none. A token is a place in the text, never a
// copy of it. Open quotes and comments are refused, or told to those who read line by line; bytes
// that start no token are tokens of their own, for the parser to refuse.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "adapters/shared/dialect/dialect.h"
#include "adapters/shared/dialect/word.h"

namespace sabrel::dialect {

enum class TokenKind : std::uint8_t {
  kEnd,
  kWord,
  kQuotedName,
  kText,  // '...', N'...', q'[...]'
  kNumber,
  kParameter,  // :name
  kSymbol,
  kStray,
  kOpen,  // a quote or comment without its end; from Lexer::Scan only
};

/// Symbols of one character are that character; these stand for the longer ones.
constexpr char kConcatenation = 'c';  // ||
constexpr char kNotEqual = 'n';       // <> != ^=
constexpr char kLessOrEqual = 'l';
constexpr char kGreaterOrEqual = 'g';
constexpr char kArrow = 'a';       // =>
constexpr char kAssignment = 's';  // :=

struct Token {
  TokenKind kind = TokenKind::kEnd;
  Word word = Word::kNone;
  char symbol = '\0';
  std::uint32_t begin = 0;
  std::uint32_t end = 0;
};

/// Some tokens of a statement. Whatever is read outside of them is an end token.
class TokenSpan {
 public:
  explicit TokenSpan(std::span<const Token> tokens) : tokens_(tokens) {}
  [[nodiscard]] const Token& operator[](std::size_t place) const {
    return place < tokens_.size() ? tokens_[place] : kOutside;
  }
  [[nodiscard]] std::size_t size() const { return tokens_.size(); }
  [[nodiscard]] auto begin() const { return tokens_.begin(); }
  [[nodiscard]] auto end() const { return tokens_.end(); }
  [[nodiscard]] TokenSpan Part(std::size_t first, std::size_t count) const {
    first = std::min(first, tokens_.size());
    return TokenSpan(tokens_.subspan(first, std::min(count, tokens_.size() - first)));
  }

 private:
  static constexpr Token kOutside{};
  std::span<const Token> tokens_;
};

/// All tokens of a statement and a kEnd, which is also what is read outside of them: looking ahead
/// and behind needs no check.
class TokenList {
 public:
  /// The last of `tokens` is a kEnd.
  explicit TokenList(std::vector<Token> tokens) : tokens_(std::move(tokens)) {}
  [[nodiscard]] const Token& operator[](std::size_t place) const {
    return tokens_[std::min(place, Last())];
  }
  [[nodiscard]] std::size_t size() const { return tokens_.size(); }
  [[nodiscard]] auto begin() const { return tokens_.begin(); }
  [[nodiscard]] auto end() const { return tokens_.end(); }
  /// The place of the kEnd.
  [[nodiscard]] std::size_t Last() const { return tokens_.size() - 1; }
  [[nodiscard]] TokenSpan All() const { return TokenSpan(tokens_); }

 private:
  std::vector<Token> tokens_;
};

/// A place in a TokenList that no move takes beyond its kEnd.
class TokenCursor {
 public:
  explicit TokenCursor(const TokenList& tokens) : last_(tokens.Last()) {}
  operator std::size_t() const { return at_; }
  TokenCursor& operator=(std::size_t place) {
    at_ = std::min(place, last_);
    return *this;
  }
  TokenCursor& operator+=(std::size_t count) { return *this = at_ + count; }
  TokenCursor& operator++() { return *this += 1; }
  std::size_t operator++(int) {
    const std::size_t before = at_;
    *this += 1;
    return before;
  }

 private:
  std::size_t last_;
  std::size_t at_ = 0;
};

/// Reads tokens one by one. The text must outlive it.
class Lexer {
 public:
  /// Throws SyntaxFailure 900 for a text of 1 GB and more
  explicit Lexer(std::string_view sql);
  /// The next token; kEnd again and again at the end.
  /// Throws SyntaxFailure: 1756 for an open quote, 900 for an open comment
  [[nodiscard]] Token Next();
  /// The same, but an open quote or comment is a kOpen to the end of the text.
  [[nodiscard]] Token Scan();

 private:
  [[nodiscard]] char At(std::size_t position) const {
    return position < sql_.size() ? sql_[position] : '\0';
  }
  [[nodiscard]] bool SkipSpace();
  Token Make(TokenKind kind, std::size_t end);
  Token Quoted(TokenKind kind, std::size_t open);
  Token AlternativelyQuoted(std::size_t open);
  Token Number();
  Token WordOrText();
  Token Symbol();

  std::string_view sql_;
  std::size_t position_ = 0;
};

/// Learns from a statement's first tokens whether it holds statements of its own, whose ";" do not
/// end it: blocks, and CREATE of what has a body.
class StatementForm {
 public:
  /// `token` of the text `sql` is the next one.
  void Take(std::string_view sql, const Token& token);
  /// Whether more tokens are needed.
  [[nodiscard]] bool IsOpen() const { return state_ < State::kPlain; }
  [[nodiscard]] bool HoldsStatements() const { return state_ == State::kHolds; }

 private:
  enum class State : std::uint8_t { kStart, kCreate, kPlain, kHolds };
  State state_ = State::kStart;
};

/// Where the quote or comment that starts like the kOpen token `opening` ends in `text`, which
/// continues it: behind its closing characters, npos where it stays open.
[[nodiscard]] std::size_t EndOfOpen(std::string_view opening, std::string_view text);

/// Errors: as Lexer::Next
[[nodiscard]] TokenList Tokenize(std::string_view sql);

[[nodiscard]] inline std::string_view TextOf(std::string_view sql, const Token& token) {
  return sql.substr(token.begin, token.end - token.begin);
}

/// What a text constant says: without its quotes, doubled quotes single.
[[nodiscard]] std::string ValueOfText(std::string_view token_text);
/// Whether a text constant is the empty one, which is Oracle's NULL.
[[nodiscard]] bool IsEmptyText(std::string_view token_text);
/// A name as the catalogue holds it: upper case, or as written between quotes.
[[nodiscard]] std::string ValueOfName(std::string_view sql, const Token& token);
/// `value` as a text constant.
[[nodiscard]] std::string TextConstant(std::string_view value);
/// ` near "word" (character 12)`. Constants are not shown: they may be secrets.
[[nodiscard]] std::string PlaceOf(std::string_view sql, const Token& token);

}  // namespace sabrel::dialect
