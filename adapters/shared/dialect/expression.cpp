// Expressions. What an operator means comes from Oracle: + - and || bind alike and from the left, a
// quotient of whole numbers keeps its fraction, and an operand of + or - may be a date.
#include <algorithm>
#include <array>
#include <utility>

#include "adapters/shared/dialect/rewriter.h"

namespace sabrel::dialect {

bool HasForm(std::string_view text, std::string_view pattern) {
  if (text.size() != pattern.size()) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool is_digit = text[i] >= '0' && text[i] <= '9';
    if (pattern[i] == '0' ? !is_digit : text[i] != pattern[i]) return false;
  }
  return true;
}

Rewriter::Operand Rewriter::Sum() {
  Operand left = Product();
  while (IsSymbol('+') || IsSymbol('-') || IsSymbol(kConcatenation)) {
    const std::size_t operation = at_++;
    left = Combine(left, operation, Product());
  }
  return left;
}

void Rewriter::RefuseDate() const { Fail(932, "inconsistent datatypes: expected NUMBER got DATE"); }

Rewriter::Operand Rewriter::Product() {
  Operand left = Unary();
  while (IsSymbol('*') || IsSymbol('/')) {
    const std::size_t operation = at_++;
    left = Combine(left, operation, Unary());
  }
  return left;
}

Rewriter::Operand Rewriter::Combine(const Operand& left, std::size_t operation,
                                    const Operand& right) {
  Operand result{left.first, right.last, Shape::kAtom, left.is_number && right.is_number};
  const char symbol = tokens_[operation].symbol;
  if (left.is_date || right.is_date) {
    if (symbol == '*' || symbol == '/') RefuseDate();
    if (symbol == '+' || symbol == '-') result.is_date = left.is_date != right.is_date;
  }
  std::string_view function;
  switch (symbol) {
    case '+': function = engine_.AddFunction(); break;
    case '-': function = engine_.SubtractFunction(); break;
    case '/': function = engine_.DivideFunction(); break;
    case kConcatenation:
      function = engine_.ConcatenateFunction();
      result.is_number = false;
      break;
    default: break;
  }
  // The engine's operators do for numbers; only the quotient of two whole constants would lose its
  // fraction.
  if (!function.empty() && (!result.is_number || symbol == '/')) {
    if (symbol == kConcatenation) {
      if (left.function != function) MakeText(left);
      MakeText(right);
    }
    CombineByFunction(left, operation, function, result);
  } else {
    CombineByOperator(left, operation, right, result);
  }
  return result;
}

void Rewriter::CombineByFunction(const Operand& left, std::size_t operation,
                                 std::string_view function, Operand& result) {
  // A chain becomes one call: nested calls would exhaust the engine's parser.
  constexpr int kMostArguments = 100;
  const bool is_chain = !IsSymbol(tokens_[operation], '/') && left.function == function &&
                        left.arguments < kMostArguments;
  result.function = function;
  result.arguments = is_chain ? left.arguments + 1 : 2;
  edits_.Replace(operation, ",");
  if (is_chain) {
    edits_.Extend(left.last, result.last, function);
    is_renamed_ = true;
  } else {
    edits_.Wrap(left.first, result.last, function);
  }
}

// The engine's own operators bind || before * and / before + and -.
void Rewriter::CombineByOperator(const Operand& left, std::size_t operation, const Operand& right,
                                 Operand& result) {
  const char symbol = tokens_[operation].symbol;
  if (traits_.integers_overflow && (symbol == '*' || result.is_number)) {
    const std::string sign(1, symbol);
    if (symbol == '*') edits_.Replace(operation, "*1.0*");
    if (symbol == '+' || symbol == '-') edits_.Replace(operation, sign + "0.0" + sign);
  }
  switch (symbol) {
    case '/':
      edits_.Replace(operation, "*1.0/");  // whole numbers would lose the fraction
      [[fallthrough]];
    case '*': result.shape = Shape::kProduct; break;
    case kConcatenation:
      if (left.shape == Shape::kSum || left.shape == Shape::kProduct) {
        edits_.Wrap(left.first, left.last, {});
      }
      if (right.shape == Shape::kProduct) edits_.Wrap(right.first, right.last, {});
      result.shape = Shape::kChain;
      break;
    default: result.shape = Shape::kSum; break;
  }
}

void Rewriter::MakeText(const Operand& operand) {
  if (traits_.text_function.empty()) return;
  const Type type = TypeOf(operand);
  if (type == Type::kText || type == Type::kTextConstant) return;
  edits_.Wrap(operand.first, operand.last, traits_.text_function);
}

// The text constant that is all of these tokens but parentheses; 0 without one, since no operand
// starts a statement.
std::size_t Rewriter::TextConstantIn(std::size_t first, std::size_t last) const {
  while (first < last && IsSymbol(tokens_[first], '(') && IsSymbol(tokens_[last], ')')) {
    ++first;
    --last;
  }
  const bool is_text = first == last && tokens_[first].kind == TokenKind::kText;
  return is_text && !IsEmptyText(TextOf(sql_, tokens_[first])) ? first : 0;
}

// A text constant stays a text in engines that would read it by their own rules.
void Rewriter::KeepText(std::size_t first, std::size_t last, bool keeps_numbers) {
  if (traits_.text_constant_end.empty()) return;
  const std::size_t text = TextConstantIn(first, last);
  if (text == 0) return;
  const std::string value = ValueOfText(TextOf(sql_, tokens_[text]));
  const bool is_number = value.find_first_not_of("0123456789.+-eE ") == std::string::npos;
  if (keeps_numbers && is_number) return;
  edits_.Replace(text, TextConstant(value) + std::string(traits_.text_constant_end));
}

// The same of items of select lists, from the `first` that was noted.
void Rewriter::KeepTexts(std::size_t first) {
  for (std::size_t i = first; i < texts_.size(); ++i) KeepText(texts_[i], texts_[i]);
}

Rewriter::Operand Rewriter::Unary() {
  if (IsSymbol('-') && Ahead(1).kind == TokenKind::kNumber && may_lift_ && lift_ == Lift::kAlways) {
    const std::size_t sign = at_;
    edits_.Remove(sign);
    edits_.SetConstant(sign + 1, true, true);
    at_ += 2;
    return {sign, sign + 1, Shape::kAtom, true};
  }
  const std::size_t first = at_;
  while (SkipSymbol('-') || SkipSymbol('+')) {
  }
  Operand operand = Primary();
  if (operand.is_date && first != operand.first) RefuseDate();
  operand.first = first;
  return operand;
}

Rewriter::Operand Rewriter::Primary() {
  const std::size_t first = at_;
  const Token& token = Here();
  bool is_number = false;
  bool is_date = false;
  switch (token.kind) {
    case TokenKind::kNumber:
      edits_.SetConstant(at_++, may_lift_ && lift_ == Lift::kAlways);
      is_number = true;
      break;
    case TokenKind::kText:
      if (IsEmptyText(TextOf(sql_, token))) {
        edits_.Replace(at_, "NULL");
      } else {
        edits_.SetConstant(at_, may_lift_ && lift_ == Lift::kAlways);
      }
      ++at_;
      break;
    case TokenKind::kParameter: ++at_; break;
    case TokenKind::kQuotedName: NameOrCall(); break;
    case TokenKind::kSymbol:
      if (token.symbol != '(') Fail(936, "missing expression");
      Parenthesis(true);
      break;
    case TokenKind::kWord: is_date = WordOperand(); break;
    default: Fail(936, "missing expression");
  }
  if (IsSymbol('(') && IsSymbol(Ahead(1), '+') && IsSymbol(Ahead(2), ')')) {
    Fail(900, "the outer join mark (+) is not supported; write LEFT JOIN");
  }
  return {first, at_ - 1, Shape::kAtom, is_number, is_date};
}

bool Rewriter::WordOperand() {
  const Token& word = Here();
  const bool has_text = Ahead(1).kind == TokenKind::kText;
  switch (word.word) {
    case Word::kNull: ++at_; return false;
    case Word::kCase: Case(); return false;
    case Word::kCast: Cast(); return false;
    case Word::kDate:
    case Word::kTimestamp:
      if (!has_text) break;
      DateConstant();
      return true;
    case Word::kInterval:
      if (has_text) Fail(900, "INTERVAL constants are not supported");
      break;
    case Word::kPrior: Fail(900, "CONNECT BY is not supported");
    case Word::kRownum: NumberRows(); return false;
    default: break;
  }
  if (IsText(word, "EXTRACT") && IsSymbol(Ahead(1), '(') && Ahead(3).word == Word::kFrom) {
    Extract();
    return false;
  }
  const bool is_date =
      word.word == Word::kSystemDate || (IsSymbol(Ahead(1), '(') && IsText(word, "TO_DATE"));
  NameOrCall();
  return is_date;
}

void Rewriter::Parenthesis(bool is_scalar) {
  const Level level(*this);
  const std::size_t open = at_;
  ExpectSymbol('(', 906, "missing left parenthesis");
  QueryShape shape{false, true};
  if (IsQueryStart()) {
    shape = Query();
  } else {
    ExpressionList();
  }
  ExpectSymbol(')', 907, "missing right parenthesis");
  const std::string_view single = engine_.SingleFunction();
  if (!is_scalar || single.empty() || !shape.has_one_column || shape.has_one_row) return;
  edits_.Replace(open, "(WITH sabrel_one(v) AS (");
  edits_.Replace(at_ - 1, ") SELECT " + std::string(single) + "(v) FROM sabrel_one)");
  is_renamed_ = true;
}

// How many there are.
std::size_t Rewriter::ExpressionList() {
  std::size_t count = 0;
  do {
    Condition();
    ++count;
  } while (SkipSymbol(','));
  return count;
}

// Oracle sorts nulls behind all values, and before them where it sorts downwards.
void Rewriter::OrderList(bool places_nulls) {
  const Lift lift = lift_;
  lift_ = Lift::kNever;
  do {
    (void)Sum();
    const bool is_descending = !SkipWord(Word::kAsc) && SkipWord(Word::kDesc);
    if (SkipText("NULLS")) {
      if (!SkipText("FIRST") && !SkipText("LAST")) Fail(905, "missing keyword");
    } else if (places_nulls && traits_.sorts_nulls_first) {
      edits_.AppendBehind(at_ - 1, is_descending ? " NULLS FIRST" : " NULLS LAST");
    }
  } while (SkipSymbol(','));
  lift_ = lift;
}

void Rewriter::Case() {
  const Level level(*this);
  ++at_;
  if (!IsWord(Word::kWhen)) Condition();
  do {
    ExpectWord(Word::kWhen, 905, "missing keyword WHEN");
    Condition();
    ExpectWord(Word::kThen, 905, "missing keyword THEN");
    const std::size_t value = at_;
    Condition();
    KeepText(value, at_ - 1, true);
  } while (IsWord(Word::kWhen));
  if (SkipWord(Word::kElse)) {
    const std::size_t value = at_;
    Condition();
    KeepText(value, at_ - 1, true);
  }
  ExpectWord(Word::kEnd, 905, "missing keyword END");
}

void Rewriter::Cast() {
  if (!IsSymbol(Ahead(1), '(')) return NameOrCall();
  const Level level(*this);
  if (lift_ == Lift::kInCalls) lift_ = Lift::kAlways;
  const std::size_t open = at_ + 1;
  at_ += 2;
  Condition();
  const std::size_t as = at_;
  ExpectWord(Word::kAs, 905, "missing keyword AS");
  if (IsWord(Word::kDate) || IsWord(Word::kTimestamp)) {
    Fail(900, "CAST to a date is not supported; write TO_DATE");
  }
  const WrittenType type = ReadType();
  const Engine::CastParts parts = engine_.PartsOfCast(type.name, type.sizes);
  if (parts.before.empty()) {
    SpellType(as + 1, type);
  } else {
    edits_.Replace(open, "(" + parts.before);
    edits_.Replace(as, parts.behind);
    for (std::size_t i = as + 1; i < at_; ++i) edits_.Remove(i);
    is_renamed_ = true;
  }
  ExpectSymbol(')', 907, "missing right parenthesis");
}

// EXTRACT(YEAR FROM date) is TO_NUMBER(TO_CHAR(date, 'YYYY')), known to be a number outside too.
void Rewriter::Extract() {
  constexpr std::pair<std::string_view, std::string_view> kFields[] = {
      {"YEAR", "YYYY"}, {"MONTH", "MM"},  {"DAY", "DD"},
      {"HOUR", "HH24"}, {"MINUTE", "MI"}, {"SECOND", "SS"}};
  const auto* const field =
      std::find_if(std::begin(kFields), std::end(kFields),
                   [&](const auto& known) { return IsText(Ahead(2), known.first); });
  if (field == std::end(kFields)) Fail(907, "missing right parenthesis");
  const Level level(*this);
  const auto spelled = [this](const char* name) {
    const std::string_view renamed = engine_.FunctionName(name);
    return std::string(renamed.empty() ? name : renamed);
  };
  edits_.Replace(at_, "CAST(" + spelled("TO_NUMBER") + "(" + spelled("TO_CHAR"));
  edits_.Remove(at_ + 2);
  edits_.Remove(at_ + 3);
  at_ += 4;
  (void)Sum();
  ExpectSymbol(')', 907, "missing right parenthesis");
  edits_.Replace(at_ - 1, ",'" + std::string(field->second) + "')) AS NUMERIC)");
  is_renamed_ = true;
}

void Rewriter::NumberRows() {
  if (facts_ == nullptr) {
    Fail(900,
         "ROWNUM is supported only in a select list, and as \"ROWNUM <= constant\", joined by AND, "
         "in the WHERE clause of a SELECT");
  }
  facts_->numbers_rows = true;
  facts_->rownum_token = at_;
  // A number of Oracle's, which is no whole number of an engine.
  edits_.Replace(at_++, "CAST(ROW_NUMBER() OVER () AS NUMERIC)");
  is_renamed_ = true;
}

void Rewriter::DateConstant() {
  const bool is_date = IsWord(Word::kDate);
  const std::string value = ValueOfText(TextOf(sql_, tokens_[at_ + 1]));
  if (!HasForm(value, is_date ? "0000-00-00" : "0000-00-00 00:00:00")) {
    Fail(1861, "the constant does not have the form of a date");
  }
  const std::string_view renamed = engine_.FunctionName("TO_DATE");
  edits_.Replace(at_, std::string(renamed.empty() ? "TO_DATE" : renamed) + "('" + value +
                          (is_date ? "','YYYY-MM-DD')" : "','YYYY-MM-DD HH24:MI:SS')"));
  edits_.Remove(at_ + 1);
  at_ += 2;
}

}  // namespace sabrel::dialect
