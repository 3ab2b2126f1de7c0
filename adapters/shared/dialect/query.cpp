// Queries, clause by clause.
#include <algorithm>
#include <charconv>
#include <utility>

#include "adapters/shared/dialect/rewriter.h"

namespace sabrel::dialect {

Rewriter::QueryShape Rewriter::Query() {
  QueryShape shape;
  SelectFacts* const outer_facts = facts_;
  facts_ = nullptr;
  SelectFacts counted;  // of the SELECT that counts its rows, if one does
  const bool is_outermost = depth_ == 0;
  bool has_set_operator = false;
  const std::size_t first_text = texts_.size();
  With();
  while (true) {
    if (IsSymbol('(')) {
      shape = QueryInParentheses(!has_set_operator);
    } else {
      SelectFacts facts;
      SelectCore(facts, shape);
      if (facts.row_limit || facts.numbers_rows) counted = std::move(facts);
    }
    if (IsWord(Word::kMinus)) edits_.Replace(at_, "EXCEPT");
    if (!SkipWord(Word::kUnion) && !SkipWord(Word::kMinus) && !SkipWord(Word::kIntersect) &&
        !SkipWord(Word::kExcept)) {
      break;
    }
    SkipWord(Word::kAll);
    has_set_operator = true;
  }
  bool is_ordered = false;
  if (IsWord(Word::kOrder)) {
    shape.is_ordered = true;
    is_ordered = true;
    ++at_;
    ExpectWord(Word::kBy, 924, "missing BY keyword");
    OrderList();
  }
  if (IsWord(Word::kOffset) || IsWord(Word::kFetch)) {
    is_ordered = true;
    shape.is_ordered = false;  // and cut
    FetchFirst();
  }
  RequireCountableRows(counted, is_ordered || has_set_operator);
  if (counted.row_limit) {
    edits_.AppendBehind(at_ - 1, " LIMIT " + std::to_string(*counted.row_limit));
    shape.has_one_row = shape.has_one_row || *counted.row_limit <= 1;
  }
  if (IsWord(Word::kFor)) ForUpdate();
  facts_ = outer_facts;
  if (has_set_operator) shape.has_one_row = false;
  if (has_set_operator) KeepTexts(first_text);
  if (has_set_operator && is_outermost) look_up_.reset();
  return shape;
}

Rewriter::QueryShape Rewriter::QueryInParentheses(bool is_first) {
  const Level level(*this);
  const std::size_t open = at_++;
  const QueryShape shape = Query();
  ExpectSymbol(')', 907, "missing right parenthesis");
  if (traits_.takes_query_in_parentheses) return shape;
  const bool is_whole = is_first && (IsSymbol(')') || Here().kind == TokenKind::kEnd);
  if (is_whole) {
    edits_.Remove(open);
    edits_.Remove(at_ - 1);
  } else {
    edits_.Replace(open, "SELECT * FROM (");
  }
  return shape;
}

void Rewriter::With() {
  if (!SkipWord(Word::kWith)) return;
  do {
    Name();
    if (IsSymbol('(')) NameList();
    ExpectWord(Word::kAs, 905, "missing keyword AS");
    const Lift lift = lift_;
    if (!IsSymbol('(')) Fail(906, "missing left parenthesis");
    Parenthesis();
    lift_ = lift;
  } while (SkipSymbol(','));
}

void Rewriter::SelectCore(SelectFacts& facts, QueryShape& shape) {
  const Lift lift = lift_;
  ExpectWord(Word::kSelect, 928, "missing SELECT keyword");
  if (SkipWord(Word::kUnique)) {
    edits_.Replace(at_ - 1, "DISTINCT");
    facts.is_distinct = true;
  } else if (SkipWord(Word::kDistinct)) {
    facts.is_distinct = true;
  } else {
    SkipWord(Word::kAll);
  }
  lift_ = Lift::kInCalls;
  facts_ = &facts;
  const std::size_t item = at_;
  shape.has_one_column = SelectList() == 1;
  facts_ = nullptr;
  const std::size_t from = at_;
  ExpectWord(Word::kFrom, 923, "FROM keyword not found where expected");
  lift_ = Lift::kAlways;
  FromList(facts);
  KeepOrder(facts);
  const bool is_one_row = IsText(tokens_[from + 1], "DUAL") && at_ == from + 2;
  const bool is_outermost = depth_ == 0;
  if (is_outermost) look_up_ = KeyLookUp{OnlyTable(from + 1), {}};
  if (IsWord(Word::kWhere)) Where(&facts);
  if (is_outermost && (look_up_->table.empty() || look_up_->columns.empty())) look_up_.reset();
  if (IsWord(Word::kConnect) || IsWord(Word::kStart)) Fail(900, "CONNECT BY is not supported");
  const bool is_grouped = IsWord(Word::kGroup);
  if (is_grouped || IsWord(Word::kHaving)) GroupBy(facts);
  if (is_outermost) RequireGroupedColumns(facts);
  shape.has_one_row = is_one_row || (!is_grouped && IsAggregateCall(item, from));
  lift_ = lift;
}

// The number of columns; 0 where "*" hides it.
std::size_t Rewriter::SelectList() {
  const bool was_renamed = is_renamed_;
  std::size_t columns = 0;
  bool has_all = false;
  do {
    const std::size_t first = at_;
    ++columns;
    if (SkipSymbol('*')) {
      has_all = true;
      continue;
    }
    is_renamed_ = false;
    Condition();
    if (const std::size_t text = TextConstantIn(first, at_ - 1); text != 0) texts_.push_back(text);
    const bool is_all = IsSymbol(tokens_[at_ - 1], '*');
    has_all = has_all || is_all;
    if (!is_all && facts_ != nullptr && IsPlainColumn(first)) facts_->columns.push_back(at_ - 1);
    const bool has_as = SkipWord(Word::kAs);
    if (Here().kind == TokenKind::kQuotedName ||
        (Here().kind == TokenKind::kWord && !IsReservedByOracle(Here().word))) {
      Name();
    } else if (has_as) {
      Fail(923, "missing name of a column");
    } else if (is_renamed_ || !(traits_.names_columns || IsPlainColumn(first))) {
      KeepColumnName(first);
    }
  } while (SkipSymbol(','));
  is_renamed_ = was_renamed;
  return has_all ? 0 : columns;
}

void Rewriter::FromList(SelectFacts& facts) {
  do {
    TableReference(facts);
    while (JoinWords()) {
      TableReference(facts);
      if (SkipWord(Word::kOn)) {
        Condition();
      } else if (SkipWord(Word::kUsing)) {
        NameList();
      }
    }
  } while (SkipSymbol(','));
}

bool Rewriter::JoinWords() {
  const std::size_t first = at_;
  SkipWord(Word::kNatural);
  if (SkipWord(Word::kLeft) || SkipWord(Word::kRight) || SkipWord(Word::kFull)) {
    SkipWord(Word::kOuter);
  } else {
    SkipWord(Word::kInner) || SkipWord(Word::kCross);
  }
  if (SkipWord(Word::kJoin)) return true;
  if (at_ != first) Fail(905, "missing keyword JOIN");
  return false;
}

void Rewriter::TableReference(SelectFacts& facts) {
  bool is_query = false;
  ++facts.sources;
  if (IsSymbol('(')) {
    const Level level(*this);
    ++at_;
    is_query = IsQueryStart();
    if (is_query) {
      if (Query().is_ordered) facts.ordered_queries.push_back(at_ - 1);
    } else {
      FromList(facts);
    }
    ExpectSymbol(')', 907, "missing right parenthesis");
  } else {
    QualifiedName();
    if (IsSymbol('(')) Fail(900, "a table function is not supported");
  }
  const std::size_t end = at_;
  TableAlias();
  if (is_query && at_ == end && traits_.wants_table_aliases) {
    edits_.AppendBehind(end - 1, " sabrel_" + std::to_string(++table_aliases_));
  }
}

void Rewriter::TableAlias() {
  if (Here().kind == TokenKind::kQuotedName ||
      (Here().kind == TokenKind::kWord && !ContinuesFromClause(Here().word))) {
    Name();
  }
}

void Rewriter::Where(SelectFacts* facts) {
  const bool is_outermost = facts != nullptr && depth_ == 0;
  const std::size_t where = at_++;
  bool has_or = false;
  std::size_t connective = where;
  std::size_t limit_connective = where;
  while (true) {
    if (facts != nullptr && RowLimit(*facts)) {
      limit_connective = connective;
    } else {
      const std::size_t predicate = at_;
      Predicate();
      std::string column = is_outermost ? EqualColumn(predicate) : std::string();
      if (!column.empty()) look_up_->columns.push_back(std::move(column));
    }
    connective = at_;
    if (SkipWord(Word::kOr)) {
      has_or = true;
    } else if (!SkipWord(Word::kAnd)) {
      break;
    }
  }
  if (is_outermost && has_or) look_up_->columns.clear();
  if (facts == nullptr || !facts->row_limit) return;
  if (has_or) Fail(900, "ROWNUM beside OR is not supported");
  // A first condition takes the AND behind it along; an only one takes the WHERE.
  const std::size_t behind = facts->rownum_token + 3;
  const bool takes_next = limit_connective == where && tokens_[behind].word == Word::kAnd;
  edits_.Remove(takes_next ? behind : limit_connective);
}

// Engines may forget the order of what they join.
void Rewriter::KeepOrder(const SelectFacts& facts) {
  if (facts.sources < 2 || traits_.takes_fetch_first) return;
  for (const std::size_t last : facts.ordered_queries) edits_.AppendBehind(last, " LIMIT -1");
}

// The table that is all of FROM, from `first` to here; empty where there is more than one.
std::string Rewriter::OnlyTable(std::size_t first) const {
  std::string name(TextOf(sql_, tokens_[first]));
  std::size_t last = first;
  for (; IsSymbol(tokens_[last + 1], '.'); last += 2) {
    name += "." + std::string(TextOf(sql_, tokens_[last + 2]));
  }
  const bool has_alias = at_ == last + 2;
  return !IsSymbol(tokens_[first], '(') && (at_ == last + 1 || has_alias) ? name : std::string();
}

// The column of "a = 1" or "t.a = 'x'", which reach from `first` to here.
std::string Rewriter::EqualColumn(std::size_t first) const {
  if (IsSymbol(tokens_[first + 1], '.')) first += 2;
  const Token& column = tokens_[first];
  const bool is_name = column.kind == TokenKind::kWord || column.kind == TokenKind::kQuotedName;
  const bool is_equal = is_name && at_ == first + 3 && IsSymbol(tokens_[first + 1], '=');
  if (!is_equal) return {};
  const TokenKind constant = tokens_[first + 2].kind;
  const bool is_constant = constant == TokenKind::kNumber || constant == TokenKind::kText;
  return is_constant ? std::string(TextOf(sql_, column)) : std::string();
}

bool Rewriter::RowLimit(SelectFacts& facts) {
  const Token& comparison = Ahead(1);
  if (!IsWord(Word::kRownum) || facts.row_limit || Ahead(2).kind != TokenKind::kNumber) {
    return false;
  }
  const bool is_below = IsSymbol(comparison, '<');
  const bool is_first_only = IsSymbol(comparison, '=') && TextOf(sql_, Ahead(2)) == "1";
  if (!is_below && !is_first_only && !IsSymbol(comparison, kLessOrEqual)) return false;
  const Token& behind = Ahead(3);
  if (behind.kind == TokenKind::kSymbol && behind.symbol != ')') return false;
  const std::string_view digits = TextOf(sql_, Ahead(2));
  std::int64_t limit = 0;
  const auto parsed = std::from_chars(digits.data(), digits.data() + digits.size(), limit);
  if (parsed.ec != std::errc() || parsed.ptr != digits.data() + digits.size()) return false;
  if (is_below) limit = std::max<std::int64_t>(limit - 1, 0);
  facts.row_limit = limit;
  facts.rownum_token = at_;
  if (depth_ == 0) has_few_rows_ = limit <= Rewritten::kFewRows;
  for (int i = 0; i < 3; ++i) edits_.Remove(at_++);
  return true;
}

// Oracle counts the rows before it sorts, groups and joins them to others; other engines behind
// that.
void Rewriter::RequireCountableRows(const SelectFacts& facts, bool has_order_or_set_operator) {
  if (!facts.row_limit && !facts.numbers_rows) return;
  if (!has_order_or_set_operator && !facts.has_aggregate && !facts.is_grouped &&
      !facts.is_distinct) {
    return;
  }
  at_ = facts.rownum_token;
  Fail(900,
       "ROWNUM is not supported beside ORDER BY, GROUP BY, DISTINCT, aggregates, FETCH and set "
       "operators; select from a query in parentheses");
}

void Rewriter::GroupBy(SelectFacts& facts) {
  facts.is_grouped = true;
  for (int part = 0; part < 2; ++part) {
    if (SkipWord(Word::kGroup)) {
      ExpectWord(Word::kBy, 924, "missing BY keyword");
      lift_ = Lift::kNever;
      facts.group_by = at_;
      ExpressionList();
      facts.group_end = at_;
      lift_ = Lift::kAlways;
    } else if (SkipWord(Word::kHaving)) {
      Condition();
    }
  }
}

// A column beside aggregates must be grouped; engines may take it from any row. One that stands in
// an expression is left to them.
void Rewriter::RequireGroupedColumns(const SelectFacts& facts) {
  if (!facts.makes_one_row && facts.group_end == 0) return;
  for (const std::size_t column : facts.columns) {
    bool is_grouped = tokens_[column].word == Word::kRownum;
    for (std::size_t i = facts.group_by; i < facts.group_end && !is_grouped; ++i) {
      const TokenKind kind = tokens_[i].kind;
      is_grouped = (kind == TokenKind::kWord || kind == TokenKind::kQuotedName) &&
                   Upper(tokens_[i]) == Upper(tokens_[column]);
    }
    if (is_grouped) continue;
    at_ = column;
    if (facts.group_end == 0) Fail(937, "not a single-group group function");
    Fail(979, "not a GROUP BY expression");
  }
}

// [OFFSET n ROWS] [FETCH FIRST|NEXT [m] ROWS ONLY] becomes LIMIT m [OFFSET n].
void Rewriter::FetchFirst() {
  const std::size_t first = at_;
  std::string offset;
  std::string limit = "-1";
  const auto row_word = [this] { return SkipText("ROWS") || SkipText("ROW"); };
  const auto count = [this](std::string& text) {
    if (Here().kind != TokenKind::kNumber && Here().kind != TokenKind::kParameter) return false;
    text = TextOf(sql_, tokens_[at_++]);
    return true;
  };
  if (SkipWord(Word::kOffset)) {
    if (!count(offset) || !row_word()) Fail(905, "missing keyword in OFFSET n ROWS");
  }
  if (SkipWord(Word::kFetch)) {
    if (!SkipText("FIRST") && !SkipText("NEXT")) Fail(905, "missing keyword FIRST");
    if (!count(limit)) limit = "1";
    if (!row_word() || !SkipText("ONLY")) Fail(900, "only FETCH FIRST n ROWS ONLY is supported");
  }
  std::int64_t rows = -1;
  std::from_chars(limit.data(), limit.data() + limit.size(), rows);
  if (depth_ == 0) has_few_rows_ = rows >= 0 && rows <= Rewritten::kFewRows;
  if (traits_.takes_fetch_first) return;
  edits_.Replace(first, "LIMIT " + limit + (offset.empty() ? "" : " OFFSET " + offset));
  for (std::size_t i = first + 1; i < at_; ++i) edits_.Remove(i);
}

}  // namespace sabrel::dialect
