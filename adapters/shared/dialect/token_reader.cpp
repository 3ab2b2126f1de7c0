#include "adapters/shared/dialect/token_reader.h"

#include <charconv>

#include "sabrel/platform/utf8.h"

namespace sabrel::dialect {

bool TokenReader::IsText(std::string_view upper) const {
  return Here().kind == TokenKind::kWord && EqualIgnoringCase(HereText(), upper);
}

bool TokenReader::IsSymbol(char symbol) const {
  return Here().kind == TokenKind::kSymbol && Here().symbol == symbol;
}

bool TokenReader::SkipWord(Word word) {
  if (!IsWord(word)) return false;
  ++at_;
  return true;
}

bool TokenReader::SkipText(std::string_view upper) {
  if (!IsText(upper)) return false;
  ++at_;
  return true;
}

bool TokenReader::SkipSymbol(char symbol) {
  if (!IsSymbol(symbol)) return false;
  ++at_;
  return true;
}

void TokenReader::ExpectWord(Word word, std::string_view what) {
  if (!SkipWord(word)) Fail(what);
}

void TokenReader::ExpectSymbol(char symbol, std::string_view what) {
  if (!SkipSymbol(symbol)) Fail(what);
}

std::string TokenReader::Name(std::string_view what) {
  const Token& token = Here();
  if (token.kind != TokenKind::kWord && token.kind != TokenKind::kQuotedName) Fail(what);
  if (IsReservedByOracle(token.word)) Fail(what);
  ++at_;
  return ValueOfName(sql_, token);
}

std::string TokenReader::QualifiedName(std::string_view what) {
  std::string name = Name(what);
  while (SkipSymbol('.')) name += "." + Name(what);
  return name;
}

std::int64_t TokenReader::Integer() {
  const bool is_negative = SkipSymbol('-');
  const std::string text = (is_negative ? "-" : "") + std::string(HereText());
  std::int64_t value = 0;
  const char* const end = text.data() + text.size();
  const auto parsed = std::from_chars(text.data(), end, value);
  if (Here().kind != TokenKind::kNumber || parsed.ec != std::errc() || parsed.ptr != end) {
    Fail("a whole number is missing");
  }
  ++at_;
  return value;
}

std::string_view TokenReader::SourceFrom(std::size_t first) const {
  if (first == at_) return {};
  return sql_.substr(tokens_[first].begin, tokens_[at_ - 1].end - tokens_[first].begin);
}

std::string_view TokenReader::Expression() {
  const std::size_t first = at_;
  std::size_t depth = 0;
  for (; !AtEnd() && !IsSymbol(';'); ++at_) {
    if (depth == 0 && (IsSymbol(',') || IsSymbol(')'))) break;
    if (IsSymbol('(')) ++depth;
    if (IsSymbol(')')) --depth;
  }
  return SourceFrom(first);
}

std::string_view TokenReader::Statement() {
  const std::size_t first = at_;
  while (!AtEnd() && !IsSymbol(';')) ++at_;
  return SourceFrom(first);
}

void TokenReader::Fail(std::string_view what) const {
  throw SyntaxFailure{native_number_, std::string(what) + PlaceOf(sql_, Here())};
}

}  // namespace sabrel::dialect
