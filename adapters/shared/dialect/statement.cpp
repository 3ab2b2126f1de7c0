// What kind of statement a text is, and that it is one.
#include <algorithm>
#include <array>

#include "adapters/shared/dialect/token.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::dialect {
namespace {

bool IsText(std::string_view sql, const Token& token, std::string_view upper) {
  return token.kind == TokenKind::kWord && EqualIgnoringCase(TextOf(sql, token), upper);
}

StatementKind KindOfCreate(Lexer& lexer) {
  Token object = lexer.Next();
  if (object.word == Word::kOr) {
    (void)lexer.Next();  // REPLACE
    object = lexer.Next();
  }
  switch (object.word) {
    case Word::kFunction:
    case Word::kProcedure: return StatementKind::kCreateRoutine;
    case Word::kSequence: return StatementKind::kCreateSequence;
    case Word::kTable: return StatementKind::kCreateTable;
    default: return StatementKind::kOtherDefinition;
  }
}

StatementKind KindOfDrop(Lexer& lexer) {
  switch (lexer.Next().word) {
    case Word::kFunction:
    case Word::kProcedure: return StatementKind::kDropRoutine;
    case Word::kSequence: return StatementKind::kDropSequence;
    default: return StatementKind::kOtherDefinition;
  }
}

// They are refused later, by what they are.
bool HoldsStatements(std::string_view sql) {
  Lexer lexer(sql);
  StatementForm form;
  while (form.IsOpen()) form.Take(sql, lexer.Next());
  return form.HoldsStatements();
}

[[noreturn]] void RefuseSecond(std::string_view sql, const Token& token) {
  throw SyntaxFailure{911,
                      "invalid character: a second statement after \";\"" + PlaceOf(sql, token)};
}

// The end of `BEGIN ... END [name];` or `CREATE FUNCTION ... END [name];`. Nothing closed: the
// whole text, whose parser says what is missing.
std::size_t EndOfBody(std::string_view sql) {
  Lexer lexer(sql);
  int depth = 0;
  bool has_begun = false;
  bool is_closed = false;
  std::size_t end = 0;
  bool is_part_of_name = false;
  Word previous = Word::kNone;
  for (Token token = lexer.Next(); token.kind != TokenKind::kEnd; token = lexer.Next()) {
    if (is_closed) RefuseSecond(sql, token);
    const Word word = is_part_of_name ? Word::kNone : token.word;
    const bool is_suffix =
        previous == Word::kEnd;  // END IF and END LOOP close what no BEGIN opened
    if (word == Word::kBegin || (word == Word::kCase && !is_suffix)) {
      ++depth;
      has_begun = true;
    }
    if ((word == Word::kIf || word == Word::kLoop) && is_suffix) ++depth;
    if (word == Word::kEnd) --depth;
    const char symbol = token.kind == TokenKind::kSymbol ? token.symbol : '\0';
    is_closed = symbol == ';' && has_begun && depth <= 0;
    is_part_of_name = symbol == '.';
    end = token.end;
    previous = word;
  }
  return end;
}

}  // namespace

void StatementForm::Take(std::string_view sql, const Token& token) {
  constexpr std::array<std::string_view, 4> kModifiers = {"OR", "REPLACE", "EDITIONABLE",
                                                          "NONEDITIONABLE"};
  constexpr std::array<std::string_view, 5> kHolders = {"FUNCTION", "PROCEDURE", "PACKAGE",
                                                        "TRIGGER", "TYPE"};
  const auto is_one_of = [&](const auto& words) {
    return std::any_of(words.begin(), words.end(),
                       [&](std::string_view word) { return IsText(sql, token, word); });
  };
  if (state_ == State::kStart && token.word == Word::kCreate) {
    state_ = State::kCreate;
  } else if (state_ == State::kStart) {
    const bool is_block = token.word == Word::kBegin || token.word == Word::kDeclare;
    state_ = is_block ? State::kHolds : State::kPlain;
  } else if (state_ == State::kCreate && !is_one_of(kModifiers)) {
    state_ = is_one_of(kHolders) ? State::kHolds : State::kPlain;
  }
}

bool CountsRows(std::string_view statement) {
  switch (KindOf(statement)) {
    case StatementKind::kInsert:
    case StatementKind::kUpdate:
    case StatementKind::kDelete: return true;
    case StatementKind::kOther: return IsText(statement, Lexer(statement).Next(), "MERGE");
    default: return false;
  }
}

std::string_view RequireOneStatement(std::string_view sql) {
  if (!IsSendableText(sql)) {
    throw SyntaxFailure{911, "invalid character: the statement is not UTF-8 text without NUL"};
  }
  Lexer lexer(sql);
  const Token first = lexer.Next();
  if (first.kind == TokenKind::kEnd || (first.kind == TokenKind::kSymbol && first.symbol == ';')) {
    throw SyntaxFailure{900, "invalid SQL statement: it is empty"};
  }
  const StatementKind kind = KindOf(sql);
  if (HoldsStatements(sql)) {
    const bool is_parsed_here = first.word == Word::kBegin || kind == StatementKind::kCreateRoutine;
    if (is_parsed_here) return sql.substr(first.begin, EndOfBody(sql) - first.begin);
    Token token = first;
    std::size_t end = 0;
    for (; token.kind != TokenKind::kEnd; token = lexer.Next()) end = token.end;
    return sql.substr(first.begin, end - first.begin);
  }
  std::size_t end = 0;
  bool is_closed = false;
  for (Token token = first; token.kind != TokenKind::kEnd; token = lexer.Next()) {
    if (is_closed) RefuseSecond(sql, token);
    is_closed = token.kind == TokenKind::kSymbol && token.symbol == ';';
    if (!is_closed) end = token.end;
  }
  return sql.substr(first.begin, end - first.begin);
}

StatementKind KindOf(std::string_view statement) {
  Lexer lexer(statement);
  Token token = lexer.Next();
  while (token.kind == TokenKind::kSymbol && token.symbol == '(') token = lexer.Next();
  switch (token.word) {
    case Word::kSelect:
    case Word::kWith: return StatementKind::kSelect;
    case Word::kInsert: return StatementKind::kInsert;
    case Word::kUpdate: return StatementKind::kUpdate;
    case Word::kDelete: return StatementKind::kDelete;
    case Word::kBegin:
    case Word::kDeclare: return StatementKind::kBlock;
    case Word::kCreate: return KindOfCreate(lexer);
    case Word::kDrop: return KindOfDrop(lexer);
    case Word::kAlter:
      return IsText(statement, lexer.Next(), "SESSION") ? StatementKind::kAlterSession
                                                        : StatementKind::kOtherDefinition;
    case Word::kTruncate: return StatementKind::kOtherDefinition;
    case Word::kCommit:
    case Word::kRollback:
    case Word::kSavepoint: return StatementKind::kTransaction;
    default: return StatementKind::kOther;
  }
}

void RequireCommit(std::string_view statement) {
  if (Lexer(statement).Next().word == Word::kCommit) return;
  throw SyntaxFailure{3001,
                      "unimplemented feature: each statement is a transaction of its own and was "
                      "committed with its end; statements that belong together go between BEGIN "
                      "and END;"};
}

}  // namespace sabrel::dialect
