#include "adapters/shared/dialect/rewriter.h"

#include <utility>

#include "sabrel/platform/utf8.h"

namespace sabrel::dialect {

Rewriter::Rewriter(std::string_view sql, const Engine& engine)
    : sql_(sql),
      engine_(engine),
      traits_(engine.EngineTraits()),
      tokens_(Tokenize(sql)),
      edits_(sql, tokens_, traits_.keeps_comments),
      at_(tokens_),
      may_lift_(traits_.lifts_constants) {
  for (const Token& token : tokens_) {
    if (token.kind == TokenKind::kParameter) may_lift_ = false;
    if (token.kind == TokenKind::kStray) {
      throw SyntaxFailure{911, "invalid character" + PlaceOf(sql, token)};
    }
  }
}

Rewritten Rewriter::Run(StatementKind kind) {
  // Checks of a table are also read by tools that know the engine but not this server's functions.
  is_table_ = kind == StatementKind::kCreateTable || IsText(Here(), "ALTER");
  compares_ = !is_table_;
  switch (kind) {
    case StatementKind::kSelect: has_few_rows_ = Query().has_one_row || has_few_rows_; break;
    case StatementKind::kInsert: Insert(); break;
    case StatementKind::kUpdate: Update(); break;
    case StatementKind::kDelete: Delete(); break;
    case StatementKind::kCreateTable:
    case StatementKind::kOtherDefinition: Definition(); break;
    case StatementKind::kTransaction: Copy(); break;
    default: Fail(900, "invalid SQL statement");
  }
  if (IsWord(Word::kReturning)) Fail(900, "RETURNING is not supported");
  Rewritten rewritten = Finish(kind);
  rewritten.has_few_rows = has_few_rows_;
  if (!has_few_rows_) rewritten.look_up = std::move(look_up_);
  return rewritten;
}

Rewritten Rewriter::RunExpression() {
  Condition();
  return Finish(StatementKind::kOther);
}

Rewritten Rewriter::Finish(StatementKind kind) {
  if (Here().kind != TokenKind::kEnd) {
    if (IsSymbol(')')) Fail(933, "a right parenthesis without its left one");
    Fail(933, "SQL command not properly ended");
  }
  Rewritten rewritten;
  rewritten.kind = kind;
  edits_.Render(rewritten);
  rewritten.writes =
      writes_ || (kind != StatementKind::kSelect && kind != StatementKind::kTransaction &&
                  kind != StatementKind::kOther);
  return rewritten;
}

bool Rewriter::IsText(const Token& token, std::string_view upper) const {
  return token.kind == TokenKind::kWord && EqualIgnoringCase(TextOf(sql_, token), upper);
}

bool Rewriter::SkipText(std::string_view upper) {
  if (!IsText(Here(), upper)) return false;
  ++at_;
  return true;
}

void Rewriter::ExpectSymbol(char symbol, std::int32_t native_number, std::string_view what) {
  if (!SkipSymbol(symbol)) Fail(native_number, what);
}

void Rewriter::ExpectWord(Word word, std::int32_t native_number, std::string_view what) {
  if (!SkipWord(word)) Fail(native_number, what);
}

void Rewriter::Fail(std::int32_t native_number, std::string_view what) const {
  throw SyntaxFailure{native_number, std::string(what) + PlaceOf(sql_, Here())};
}

std::string Engine::NameSpelling(std::string_view written) const {
  if (written.starts_with('"') || !IsReservedWord(UpperCase(written))) return {};
  return '"' + std::string(written) + '"';
}

Rewritten Rewrite(std::string_view statement, const Engine& engine) {
  Rewriter rewriter(statement, engine);
  return rewriter.Run(KindOf(statement));
}

Rewritten RewriteExpression(std::string_view expression, const Engine& engine) {
  Rewriter rewriter(expression, engine);
  return rewriter.RunExpression();
}

}  // namespace sabrel::dialect
