// Changes of data: INSERT, UPDATE, DELETE.
#include "adapters/shared/dialect/rewriter.h"

namespace sabrel::dialect {

void Rewriter::Insert() {
  ++at_;
  if (IsWord(Word::kAll) || IsText(Here(), "FIRST")) {
    Fail(900, "INSERT into several tables is not supported");
  }
  ExpectWord(Word::kInto, 925, "missing INTO keyword");
  QualifiedName();
  AliasOfChangedTable();
  if (IsSymbol('(') && !IsSymbol(Ahead(1), '(') && Ahead(1).word != Word::kSelect &&
      Ahead(1).word != Word::kWith) {
    NameList();
  }
  if (SkipWord(Word::kValues)) {
    Values();
  } else if (IsQueryStart() || IsSymbol('(')) {
    const Level level(*this);
    (void)Query();
  } else {
    Fail(926, "missing VALUES keyword");
  }
}

void Rewriter::Values() {
  if (!IsSymbol('(')) Fail(906, "missing left parenthesis");
  const Level level(*this);
  ++at_;
  ExpressionList();
  if (!IsSymbol(')')) Fail(917, "missing comma");
  ++at_;
}

void Rewriter::Update() {
  ++at_;
  QualifiedName();
  AliasOfChangedTable();
  ExpectWord(Word::kSet, 971, "missing SET keyword");
  do {
    Assignment();
  } while (SkipSymbol(','));
  if (IsWord(Word::kWhere)) Where(nullptr);
}

void Rewriter::Assignment() {
  if (IsSymbol('(')) {
    NameList();
  } else {
    const std::size_t first = at_;
    QualifiedName();
    // Engines name the column alone.
    for (std::size_t i = first; i + 1 < at_; ++i) edits_.Remove(i);
  }
  ExpectSymbol('=', 927, "missing equal sign");
  (void)Sum();
}

void Rewriter::Delete() {
  ++at_;
  if (!SkipWord(Word::kFrom)) edits_.Replace(at_ - 1, "DELETE FROM");
  QualifiedName();
  AliasOfChangedTable();
  if (IsWord(Word::kWhere)) Where(nullptr);
}

// Oracle's alias stands bare, other engines want AS before it.
void Rewriter::AliasOfChangedTable() {
  const Token& alias = Here();
  if (alias.kind != TokenKind::kQuotedName &&
      (alias.kind != TokenKind::kWord || ContinuesFromClause(alias.word))) {
    return;
  }
  const std::string_view text = TextOf(sql_, alias);
  const std::string spelled = engine_.NameSpelling(text);
  edits_.Replace(at_++, "AS " + (spelled.empty() ? std::string(text) : spelled));
}

}  // namespace sabrel::dialect
