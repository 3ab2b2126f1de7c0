#include "adapters/shared/dialect/token.h"

#include <array>

#include "sabrel/platform/utf8.h"

namespace sabrel::dialect {
namespace {

constexpr std::size_t kMaximumBytes = std::size_t{1} << 30;
constexpr std::size_t kMaximumShownCharacters = 60;

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

enum Class : std::uint8_t { kOther, kNameStart, kNameOnly };

constexpr auto kClasses = [] {
  std::array<std::uint8_t, 256> classes{};
  for (std::size_t c = 'a'; c <= 'z'; ++c) classes[c] = kNameStart;
  for (std::size_t c = 'A'; c <= 'Z'; ++c) classes[c] = kNameStart;
  for (std::size_t c = 0x80; c <= 0xFF; ++c) classes[c] = kNameStart;
  for (std::size_t c = '0'; c <= '9'; ++c) classes[c] = kNameOnly;
  classes['_'] = kNameStart;  // only in names that this component's own engines make
  classes['$'] = kNameOnly;
  classes['#'] = kNameOnly;
  return classes;
}();

bool StartsName(char c) { return kClasses[static_cast<unsigned char>(c)] == kNameStart; }
bool IsNameCharacter(char c) { return kClasses[static_cast<unsigned char>(c)] != kOther; }
bool IsSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

char ClosingOf(char open) {
  switch (open) {
    case '[': return ']';
    case '{': return '}';
    case '(': return ')';
    case '<': return '>';
    default: return open;
  }
}

// Behind the closing quote; a doubled one is text.
std::size_t EndOfQuoted(std::string_view sql, char quote, std::size_t from) {
  while (true) {
    const std::size_t end = sql.find(quote, from);
    if (end == std::string_view::npos) return end;
    if (end + 1 >= sql.size() || sql[end + 1] != quote) return end + 1;
    from = end + 2;
  }
}

}  // namespace

Lexer::Lexer(std::string_view sql) : sql_(sql) {
  if (sql.size() >= kMaximumBytes) throw SyntaxFailure{900, "the statement is too long"};
}

// False at a comment that does not end.
bool Lexer::SkipSpace() {
  while (position_ < sql_.size()) {
    const char c = sql_[position_];
    if (IsSpace(c)) {
      ++position_;
    } else if (c == '-' && At(position_ + 1) == '-') {
      const std::size_t end = sql_.find('\n', position_);
      position_ = end == std::string_view::npos ? sql_.size() : end + 1;
    } else if (c == '/' && At(position_ + 1) == '*') {
      const std::size_t end = sql_.find("*/", position_ + 2);
      if (end == std::string_view::npos) return false;
      position_ = end + 2;
    } else {
      return true;
    }
  }
  return true;
}

Token Lexer::Make(TokenKind kind, std::size_t end) {
  Token token;
  token.kind = kind;
  token.begin = static_cast<std::uint32_t>(position_);
  token.end = static_cast<std::uint32_t>(end);
  position_ = end;
  return token;
}

Token Lexer::Next() {
  const Token token = Scan();
  if (token.kind != TokenKind::kOpen) return token;
  const char first = sql_[token.begin];
  if (first == '/') throw SyntaxFailure{900, "a comment is not closed"};
  throw SyntaxFailure{1756, first == '"' ? "quoted name not properly terminated"
                                         : "quoted string not properly terminated"};
}

Token Lexer::Scan() {
  if (!SkipSpace()) return Make(TokenKind::kOpen, sql_.size());
  if (position_ >= sql_.size()) return Make(TokenKind::kEnd, position_);
  const char c = sql_[position_];
  if (StartsName(c)) return WordOrText();
  if (IsDigit(c) || (c == '.' && IsDigit(At(position_ + 1)))) return Number();
  if (c == '\'') return Quoted(TokenKind::kText, position_);
  if (c == '"') return Quoted(TokenKind::kQuotedName, position_);
  if (c == ':' && IsNameCharacter(At(position_ + 1))) {
    std::size_t end = position_ + 1;
    while (IsNameCharacter(At(end))) ++end;
    return Make(TokenKind::kParameter, end);
  }
  return Symbol();
}

Token Lexer::Quoted(TokenKind kind, std::size_t open) {
  const std::size_t end = EndOfQuoted(sql_, sql_[open], open + 1);
  if (end == std::string_view::npos) return Make(TokenKind::kOpen, sql_.size());
  return Make(kind, end);
}

Token Lexer::AlternativelyQuoted(std::size_t open) {
  const std::array<char, 2> closing{ClosingOf(At(open + 1)), '\''};
  const std::size_t end =
      open + 2 > sql_.size()
          ? std::string_view::npos
          : sql_.find(std::string_view(closing.data(), closing.size()), open + 2);
  if (end == std::string_view::npos) return Make(TokenKind::kOpen, sql_.size());
  return Make(TokenKind::kText, end + 2);
}

Token Lexer::Number() {
  std::size_t end = position_;
  while (IsDigit(At(end))) ++end;
  if (At(end) == '.') {
    ++end;
    while (IsDigit(At(end))) ++end;
  }
  if (AsciiUpper(At(end)) == 'E') {
    const bool has_sign = At(end + 1) == '+' || At(end + 1) == '-';
    const std::size_t digits = end + (has_sign ? 2 : 1);
    if (IsDigit(At(digits))) {
      end = digits;
      while (IsDigit(At(end))) ++end;
    }
  }
  const char suffix = AsciiUpper(At(end));  // 1.5f and 1.5d are binary numbers
  if ((suffix == 'F' || suffix == 'D') && !IsNameCharacter(At(end + 1))) ++end;
  return Make(TokenKind::kNumber, end);
}

Token Lexer::WordOrText() {
  std::size_t end = position_ + 1;
  while (end < sql_.size() && IsNameCharacter(sql_[end])) ++end;
  if (At(end) == '\'' && end - position_ <= 2) {
    const char first = AsciiUpper(sql_[position_]);
    const bool alternative =
        AsciiUpper(sql_[end - 1]) == 'Q' && (end - position_ == 1 || first == 'N');
    if (alternative) return AlternativelyQuoted(end);
    if (end - position_ == 1 && first == 'N') return Quoted(TokenKind::kText, end);
  }
  const Word word = FindWord(sql_.substr(position_, end - position_));
  Token token = Make(TokenKind::kWord, end);
  token.word = word;
  return token;
}

Token Lexer::Symbol() {
  const char first = sql_[position_];
  const char second = At(position_ + 1);
  char symbol = first;
  bool is_long = true;
  if (first == '|' && second == '|') {
    symbol = kConcatenation;
  } else if ((first == '<' && second == '>') || (second == '=' && (first == '!' || first == '^'))) {
    symbol = kNotEqual;
  } else if (first == '<' && second == '=') {
    symbol = kLessOrEqual;
  } else if (first == '>' && second == '=') {
    symbol = kGreaterOrEqual;
  } else if (first == '=' && second == '>') {
    symbol = kArrow;
  } else if (first == ':' && second == '=') {
    symbol = kAssignment;
  } else {
    is_long = false;
  }
  constexpr std::string_view kSingles = "()+-*/,.=<>;";
  const bool known = is_long || (first != '\0' && kSingles.find(first) != std::string_view::npos);
  Token token = Make(known ? TokenKind::kSymbol : TokenKind::kStray, position_ + (is_long ? 2 : 1));
  token.symbol = symbol;
  return token;
}

std::size_t EndOfOpen(std::string_view opening, std::string_view text) {
  std::array<char, 2> closing{'*', '/'};
  if (opening.front() != '/') {
    if (opening.front() == '"') return EndOfQuoted(text, '"', 0);
    const std::size_t quote = opening.find('\'');
    const bool is_alternative = quote > 0 && AsciiUpper(opening[quote - 1]) == 'Q';
    if (!is_alternative) return EndOfQuoted(text, '\'', 0);
    const bool has_opening = quote + 1 < opening.size();
    closing = {has_opening ? ClosingOf(opening[quote + 1]) : '\n', '\''};
  }
  const std::size_t end = text.find(std::string_view(closing.data(), closing.size()));
  return end == std::string_view::npos ? end : end + closing.size();
}

TokenList Tokenize(std::string_view sql) {
  Lexer lexer(sql);
  std::vector<Token> tokens;
  tokens.reserve(sql.size() < 4096 ? sql.size() / 4 + 8 : 1024);
  do {
    tokens.push_back(lexer.Next());
  } while (tokens.back().kind != TokenKind::kEnd);
  return TokenList(std::move(tokens));
}

std::string ValueOfText(std::string_view token_text) {
  const std::size_t open = token_text.find('\'');
  if (open > 0 && AsciiUpper(token_text[open - 1]) == 'Q') {
    return std::string(token_text.substr(open + 2, token_text.size() - open - 4));
  }
  const std::string_view inner = token_text.substr(open + 1, token_text.size() - open - 2);
  std::string value;
  value.reserve(inner.size());
  for (std::size_t i = 0; i < inner.size(); ++i) {
    value += inner[i];
    if (inner[i] == '\'') ++i;
  }
  return value;
}

bool IsEmptyText(std::string_view token_text) {
  constexpr std::size_t kLongestEmpty = 6;  // nq'[]'
  return token_text.size() <= kLongestEmpty && ValueOfText(token_text).empty();
}

std::string ValueOfName(std::string_view sql, const Token& token) {
  const std::string_view text = TextOf(sql, token);
  if (token.kind == TokenKind::kQuotedName) {
    return std::string(text.substr(1, text.size() - 2));
  }
  std::string name(text);
  for (char& c : name) {
    if (static_cast<unsigned char>(c) >= 0x80) return UpperCase(text);
    c = AsciiUpper(c);
  }
  return name;
}

std::string TextConstant(std::string_view value) {
  return "'" + ReplaceAll(value, "'", "''") + "'";
}

std::string PlaceOf(std::string_view sql, const Token& token) {
  const std::string where =
      " (character " + std::to_string(CharacterCount(sql.substr(0, token.begin)) + 1) + ")";
  switch (token.kind) {
    case TokenKind::kEnd: return " at the end of the statement";
    case TokenKind::kText: return " near a text constant" + where;
    case TokenKind::kNumber: return " near a number" + where;
    default: break;
  }
  std::string_view shown = TextOf(sql, token);
  shown = shown.substr(0, ByteLengthOf(shown, kMaximumShownCharacters));
  return " near \"" + std::string(shown) + "\"" + where;
}

}  // namespace sabrel::dialect
