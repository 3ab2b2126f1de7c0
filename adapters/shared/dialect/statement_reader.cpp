#include "adapters/shared/dialect/statement_reader.h"

#include <utility>

namespace sabrel::dialect {
namespace {

std::string_view Trimmed(std::string_view text) {
  constexpr std::string_view kSpace = " \t\r\n\v\f";
  const std::size_t first = text.find_first_not_of(kSpace);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kSpace) + 1 - first);
}

}  // namespace

std::size_t StatementReader::Take(std::string_view line) {
  std::size_t from = 0;
  if (IsInQuote()) {
    const std::size_t end = EndOfOpen(opening_, line);
    if (end == std::string_view::npos) {
      if (has_begun_) text_.append(line).append("\n");
      return line.size();
    }
    opening_.clear();
    if (!has_begun_) return end;
    from = end;
  } else if (has_begun_ && Trimmed(line) == "/") {
    is_complete_ = true;
    return line.size();
  }
  return TakeTokens(line, from);
}

std::size_t StatementReader::TakeTokens(std::string_view line, std::size_t from) {
  const std::string_view rest = line.substr(from);
  Lexer lexer(rest);
  for (Token token = lexer.Scan(); token.kind != TokenKind::kEnd; token = lexer.Scan()) {
    const bool is_comment = token.kind == TokenKind::kOpen && rest[token.begin] == '/';
    has_begun_ = has_begun_ || !is_comment;
    if (token.kind == TokenKind::kOpen) opening_ = TextOf(rest, token);
    if (form_.IsOpen() && !is_comment) form_.Take(rest, token);
    const bool is_end = token.kind == TokenKind::kSymbol && token.symbol == ';';
    if (is_end && !form_.HoldsStatements()) {
      text_.append(line.substr(0, from + token.begin));
      is_complete_ = true;
      return from + token.end;
    }
  }
  if (has_begun_) text_.append(line).append("\n");
  return line.size();
}

std::string StatementReader::Finish() {
  std::string statement(Trimmed(text_));
  Forget();
  return statement;
}

}  // namespace sabrel::dialect
