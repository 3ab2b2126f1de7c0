// Definitions: constants stay where they are, names that the engine reserves are quoted, and what
// only Oracle writes about a column is taken out where it changes nothing.
#include "adapters/shared/dialect/rewriter.h"

namespace sabrel::dialect {

void Rewriter::Copy() {
  for (; Here().kind != TokenKind::kEnd; ++at_) {
    if (IsSymbol(';')) Fail(900, "a definition that holds statements is not supported");
    const TokenKind kind = Here().kind;
    if (kind == TokenKind::kText || kind == TokenKind::kNumber) {
      edits_.SetConstant(at_, false, false);  // q'[...]' is Oracle's alone
    }
  }
}

void Rewriter::Definition() {
  may_lift_ = false;
  const Word verb = Here().word;
  std::size_t object = at_ + 1;
  if (verb == Word::kCreate && Ahead(1).word == Word::kOr) {
    if (!IsText(Ahead(2), "REPLACE")) Fail(905, "missing keyword REPLACE");
    object += 2;
  }
  if (verb == Word::kCreate && Ahead(1).word == Word::kUnique) ++object;
  const Word word = tokens_[object].word;
  if (word == Word::kTable) {
    at_ = object + 1;
    if (verb == Word::kCreate) return CreateTable();
    if (verb == Word::kAlter) return AlterTable();
    if (verb == Word::kDrop) return DropTable();
    if (!traits_.takes_truncate) {
      edits_.Replace(object - 1, "DELETE FROM");  // TRUNCATE TABLE
      edits_.Remove(object);
    }
    return QualifiedName();
  }
  if (verb == Word::kCreate && word == Word::kView) {
    at_ = object + 1;
    QualifiedName();
    if (IsSymbol('(')) NameList();
    ExpectWord(Word::kAs, 905, "missing keyword AS");
    (void)Query();
    // Whoever reads a view only reads.
    if (!sequences_.empty()) Fail(2287, "sequence number not allowed here");
    if (writes_) Fail(14551, "cannot perform a DML operation inside a query");
    return;
  }
  if (verb == Word::kCreate && word == Word::kIndex) {
    at_ = object + 1;
    QualifiedName();
    ExpectWord(Word::kOn, 969, "missing ON keyword");
    QualifiedName();
    ExpectSymbol('(', 906, "missing left parenthesis");
    OrderList(false);
    return ExpectSymbol(')', 907, "missing right parenthesis");
  }
  Copy();
}

void Rewriter::DropTable() {
  QualifiedName();
  const std::size_t first = at_;
  if (SkipText("CASCADE")) {
    if (!SkipText("CONSTRAINTS")) Fail(905, "missing keyword CONSTRAINTS");
    edits_.AppendBehind(first - 1, traits_.drop_end);
  }
  SkipText("PURGE");
  for (std::size_t i = first; i < at_; ++i) edits_.Remove(i);
}

void Rewriter::AlterTable() {
  QualifiedName();
  if (!SkipText("ADD")) {
    if (IsText(Here(), "MODIFY")) {
      Fail(900, "MODIFY is not supported; add a column, copy the values, drop the old column");
    }
    if (SkipWord(Word::kDrop) && SkipText("COLUMN")) Name();
    return Copy();
  }
  const bool has_parenthesis = SkipSymbol('(');
  if (has_parenthesis) edits_.Remove(at_ - 1);
  TableItem();
  if (!has_parenthesis) return;
  if (IsSymbol(',')) Fail(900, "one column at a time can be added");
  ExpectSymbol(')', 907, "missing right parenthesis");
  edits_.Remove(at_ - 1);
}

void Rewriter::CreateTable() {
  QualifiedName();
  if (SkipWord(Word::kAs)) {
    (void)Query();
    return;
  }
  ExpectSymbol('(', 906, "missing left parenthesis");
  do {
    TableItem();
  } while (SkipSymbol(','));
  ExpectSymbol(')', 907, "missing right parenthesis");
}

void Rewriter::TableItem() {
  const bool is_constraint = IsWord(Word::kConstraint) || IsWord(Word::kCheck) ||
                             IsWord(Word::kUnique) ||
                             (IsWord(Word::kPrimary) && IsText(Ahead(1), "KEY")) ||
                             (IsWord(Word::kForeign) && IsText(Ahead(1), "KEY"));
  if (!is_constraint) {
    const std::string name = Upper(Here());
    Name();
    const bool is_date = ColumnType();
    columns_.push_back({name, at_ - 1});
    return ColumnRules(is_date);
  }
  ColumnRules();
}

// A primary key takes no null, which other engines want to be told of each column.
void Rewriter::PrimaryKey() {
  at_ += 2;
  const std::size_t list = at_;
  if (!IsSymbol('(')) {
    if (!columns_.empty()) RefuseNull(columns_.back());
    return;
  }
  NameList();
  for (std::size_t i = list + 1; i + 1 < at_; i += 2) {
    for (const Column& column : columns_) {
      if (column.name == Upper(tokens_[i])) RefuseNull(column);
    }
  }
}

void Rewriter::RefuseNull(const Column& column) {
  if (traits_.keys_take_nulls) edits_.Append(column.last_token, " NOT NULL");
}

// Whether the column holds dates.
bool Rewriter::ColumnType() {
  const std::size_t first = at_;
  const WrittenType type = ReadType();
  SpellType(first, type);
  return type.name == "DATE" || type.name == "TIMESTAMP";
}

// VARCHAR2(20 CHAR), NUMBER(10,2), TIMESTAMP WITH TIME ZONE, up to the column's rules.
Rewriter::WrittenType Rewriter::ReadType() {
  if (Here().kind != TokenKind::kWord) Fail(902, "invalid datatype");
  WrittenType type{Upper(tokens_[at_++]), {}};
  while (SkipText("VARYING") || SkipText("PRECISION") || SkipText("RAW")) {
    type.name += ' ' + Upper(tokens_[at_ - 1]);
  }
  if (SkipSymbol('(')) TypeSizes(type.sizes);
  return type;
}

void Rewriter::SpellType(std::size_t first, const WrittenType& type) {
  std::string spelled = engine_.TypeSpelling(type.name, type.sizes);
  if (spelled.empty()) return;
  edits_.Replace(first, std::move(spelled));
  for (std::size_t i = first + 1; i < at_; ++i) edits_.Remove(i);
}

void Rewriter::TypeSizes(std::vector<std::string>& sizes) {
  std::string sign;
  while (Here().kind == TokenKind::kNumber || IsSymbol(',') || IsSymbol('-') || IsSymbol('*')) {
    if (IsSymbol('*')) edits_.Replace(at_, "38");  // NUMBER(*,0): as precise as there is
    if (IsSymbol('-')) sign = "-";
    if (IsSymbol('*') || Here().kind == TokenKind::kNumber) {
      sizes.push_back(IsSymbol('*') ? "38" : sign + std::string(TextOf(sql_, Here())));
    }
    ++at_;
  }
  if (SkipText("BYTE") || SkipText("CHAR")) edits_.Remove(at_ - 1);
  ExpectSymbol(')', 907, "missing right parenthesis");
}

void Rewriter::Default(bool is_date) {
  const Operand value = Sum();
  const bool is_null = value.first == value.last && tokens_[value.first].word == Word::kNull;
  const std::string_view renamed = engine_.FunctionName("TO_DATE");
  const bool is_text = is_date && !value.is_date && !is_null;
  if (is_text) edits_.Wrap(value.first, value.last, renamed.empty() ? "TO_DATE" : renamed);
  edits_.Wrap(value.first, value.last, {});
}

void Rewriter::ColumnRules(bool is_date) {
  while (!IsSymbol(',') && !IsSymbol(')') && Here().kind != TokenKind::kEnd) {
    if (IsWord(Word::kPrimary)) {
      PrimaryKey();
    } else if (SkipWord(Word::kDefault)) {
      Default(is_date);
    } else if (SkipWord(Word::kCheck)) {
      if (!IsSymbol('(')) Fail(906, "missing left parenthesis");
      Parenthesis();
    } else if (SkipText("REFERENCES")) {
      QualifiedName();
      if (IsSymbol('(')) NameList();
    } else if (SkipWord(Word::kConstraint)) {
      Name();
    } else if (IsSymbol('(')) {
      NameList();  // of UNIQUE, FOREIGN KEY
    } else if (SkipText("ENABLE") || SkipText("VALIDATE")) {
      edits_.Remove(at_ - 1);
    } else if (Here().kind == TokenKind::kWord && !IsText(Here(), "DISABLE")) {
      ++at_;
    } else {
      Fail(900, "not supported in a column's definition");
    }
  }
}

}  // namespace sabrel::dialect
