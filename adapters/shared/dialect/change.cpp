// Changes of data: INSERT, UPDATE, DELETE; and FOR UPDATE.
#include <algorithm>

#include "adapters/shared/dialect/rewriter.h"

namespace sabrel::dialect {

void Rewriter::Insert() {
  ++at_;
  if (IsWord(Word::kAll) || IsText(Here(), "FIRST")) {
    Fail(900, "INSERT into several tables is not supported");
  }
  ExpectWord(Word::kInto, 925, "missing INTO keyword");
  QualifiedName();
  const std::string table = Upper(tokens_[at_ - 1]);
  AliasOfChangedTable();
  std::vector<std::string> columns;
  if (IsSymbol('(') && !IsSymbol(Ahead(1), '(') && Ahead(1).word != Word::kSelect &&
      Ahead(1).word != Word::kWith) {
    const std::size_t list = at_;
    NameList();
    columns = NamesIn(list);
  }
  const Conversions conversions = engine_.ConversionsOf(table, columns);
  if (SkipWord(Word::kValues)) {
    Values(conversions);
  } else if (IsQueryStart() || IsSymbol('(')) {
    const Level level(*this);
    const std::size_t first = at_;
    const std::size_t first_text = texts_.size();
    (void)Query();
    KeepTexts(first_text);
    AssignRows(first, at_ - 1, conversions);
  } else {
    Fail(926, "missing VALUES keyword");
  }
}

void Rewriter::Values(const Conversions& conversions) {
  if (!IsSymbol('(')) Fail(906, "missing left parenthesis");
  const Level level(*this);
  ++at_;
  std::size_t column = 0;
  do {
    const std::size_t first = at_;
    Condition();
    Assign(first, at_ - 1, column < conversions.size() ? conversions[column] : std::string_view());
    ++column;
  } while (SkipSymbol(','));
  if (!IsSymbol(')')) Fail(917, "missing comma");
  ++at_;
}

void Rewriter::Update() {
  ++at_;
  QualifiedName();
  const std::string table = Upper(tokens_[at_ - 1]);
  AliasOfChangedTable();
  ExpectWord(Word::kSet, 971, "missing SET keyword");
  do {
    Assignment(table);
  } while (SkipSymbol(','));
  if (IsWord(Word::kWhere)) Where(nullptr);
}

void Rewriter::Assignment(std::string_view table) {
  const std::size_t target = at_;
  std::vector<std::string> columns;
  if (IsSymbol('(')) {
    NameList();
    columns = NamesIn(target);
  } else {
    QualifiedName();
    // Engines name the column alone.
    for (std::size_t i = target; i + 1 < at_; ++i) edits_.Remove(i);
    columns = {Upper(tokens_[at_ - 1])};
  }
  ExpectSymbol('=', 927, "missing equal sign");
  const Operand value = Sum();
  const Conversions conversions = engine_.ConversionsOf(table, columns);
  if (columns.size() > 1) {
    if (IsSymbol(tokens_[value.first], '(')) {
      AssignRows(value.first + 1, value.last - 1, conversions);
    }
  } else if (!value.is_date) {
    Assign(value.first, value.last, conversions.empty() ? std::string_view() : conversions[0]);
  }
}

// The last names of "(a, t.b)", which starts at `first` and ends here.
std::vector<std::string> Rewriter::NamesIn(std::size_t first) const {
  std::vector<std::string> names;
  for (std::size_t i = first + 1; i < at_; ++i) {
    if (IsSymbol(tokens_[i], ',') || IsSymbol(tokens_[i], ')')) {
      names.push_back(Upper(tokens_[i - 1]));
    }
  }
  return names;
}

void Rewriter::Assign(std::size_t first, std::size_t last, std::string_view conversion) {
  if (conversion.empty()) return KeepText(first, last);
  edits_.Wrap(first, last, conversion);
}

// A query whose rows are assigned, column by column.
void Rewriter::AssignRows(std::size_t first, std::size_t last, const Conversions& conversions) {
  const bool has_any = std::any_of(conversions.begin(), conversions.end(),
                                   [](std::string_view one) { return !one.empty(); });
  if (!has_any) return;
  std::string names;
  std::string values;
  for (std::size_t i = 0; i < conversions.size(); ++i) {
    const std::string name = "c" + std::to_string(i + 1);
    names += (i > 0 ? "," : "") + name;
    values += (i > 0 ? "," : "");
    values += conversions[i].empty() ? name : std::string(conversions[i]) + "(" + name + ")";
  }
  edits_.Open(first,
              composed_.emplace_back("WITH " + std::string(kAssignedRows) + "(" + names + ") AS "));
  edits_.AppendBehind(last, ") SELECT " + values + " FROM " + std::string(kAssignedRows));
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

void Rewriter::ForUpdate() {
  const std::size_t first = at_++;
  if (depth_ != 0) Fail(907, "missing right parenthesis");
  ExpectWord(Word::kUpdate, 933, "SQL command not properly ended");
  if (SkipText("OF")) LockedTables();
  if (SkipText("WAIT")) {
    if (traits_.locks_rows) Fail(900, "WAIT is not supported; write NOWAIT");
    if (Here().kind != TokenKind::kNumber) Fail(30005, "missing WAIT interval");
    ++at_;
  } else if (!SkipText("NOWAIT") && SkipText("SKIP") && !SkipText("LOCKED")) {
    Fail(905, "missing keyword LOCKED");
  }
  writes_ = true;
  if (traits_.locks_rows) return;
  for (std::size_t i = first; i < at_; ++i) edits_.Remove(i);
}

// Oracle names columns of the tables to lock, other engines the tables.
void Rewriter::LockedTables() {
  const std::size_t of = at_ - 1;
  bool has_tables = true;
  do {
    const std::size_t first = at_;
    QualifiedName();
    has_tables = has_tables && at_ > first + 1;
    for (std::size_t i = at_ - 2; i < at_; ++i) edits_.Remove(i);
  } while (SkipSymbol(','));
  if (has_tables) return;
  for (std::size_t i = of; i < at_; ++i) edits_.Remove(i);
}

}  // namespace sabrel::dialect
