// Reads the tokens of a statement that is parsed into a structure, one after the other.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "adapters/shared/dialect/token.h"

namespace sabrel::dialect {

class TokenReader {
 public:
  /// Failures carry `native_number`.
  TokenReader(std::string_view sql, std::int32_t native_number)
      : sql_(sql), tokens_(Tokenize(sql)), at_(tokens_), native_number_(native_number) {}

  [[nodiscard]] const Token& Here() const { return tokens_[at_]; }
  [[nodiscard]] const Token& Ahead() const { return tokens_[at_ + 1]; }
  [[nodiscard]] std::string_view HereText() const { return TextOf(sql_, Here()); }
  /// Offset just behind the token before the present one.
  [[nodiscard]] std::size_t PreviousEnd() const { return at_ == 0 ? 0 : tokens_[at_ - 1].end; }
  [[nodiscard]] bool AtEnd() const { return Here().kind == TokenKind::kEnd; }
  [[nodiscard]] bool IsWord(Word word) const { return Here().word == word; }
  [[nodiscard]] bool IsText(std::string_view upper) const;
  [[nodiscard]] bool IsSymbol(char symbol) const;
  void Skip() { ++at_; }
  bool SkipWord(Word word);
  bool SkipText(std::string_view upper);
  bool SkipSymbol(char symbol);
  void ExpectWord(Word word, std::string_view what);
  void ExpectSymbol(char symbol, std::string_view what);

  /// A name as the catalogue holds it.
  [[nodiscard]] std::string Name(std::string_view what);
  /// Names joined by ".", each as the catalogue holds it.
  [[nodiscard]] std::string QualifiedName(std::string_view what);
  [[nodiscard]] std::int64_t Integer();
  /// The source from the present token up to the next top-level "," or ")" or to ";", which becomes
  /// the present one.
  [[nodiscard]] std::string_view Expression();
  /// The source from the present token up to the next ";", which becomes the present one.
  [[nodiscard]] std::string_view Statement();

  [[noreturn]] void Fail(std::string_view what) const;

 private:
  [[nodiscard]] std::string_view SourceFrom(std::size_t first) const;

  std::string_view sql_;
  TokenList tokens_;
  TokenCursor at_;
  std::int32_t native_number_;
};

}  // namespace sabrel::dialect
