// Expressions and conditions. What an operator means comes from Oracle: + - and || bind alike and
// from the left, a quotient of whole numbers keeps its fraction, and an operand of + or - may be a
// date.
#include <array>

#include "adapters/shared/dialect/rewriter.h"

namespace sabrel::dialect {
namespace {

bool IsAggregate(std::string_view upper_name) {
  constexpr std::array kAggregates{
      std::string_view("COUNT"),    std::string_view("MAX"),     std::string_view("MIN"),
      std::string_view("SUM"),      std::string_view("AVG"),     std::string_view("LISTAGG"),
      std::string_view("STDDEV"),   std::string_view("MEDIAN"),  std::string_view("WM_CONCAT"),
      std::string_view("VARIANCE"), std::string_view("COLLECT"), std::string_view("XMLAGG")};
  for (const std::string_view name : kAggregates) {
    if (name == upper_name) return true;
  }
  return false;
}

// "2024-03-09" for a pattern of "0000-00-00".
bool HasForm(std::string_view text, std::string_view pattern) {
  if (text.size() != pattern.size()) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool is_digit = text[i] >= '0' && text[i] <= '9';
    if (pattern[i] == '0' ? !is_digit : text[i] != pattern[i]) return false;
  }
  return true;
}

// The empty text constant is Oracle's NULL.
bool IsEmptyText(std::string_view token_text) {
  constexpr std::size_t kLongestEmpty = 6;  // nq'[]'
  return token_text.size() <= kLongestEmpty && ValueOfText(token_text).empty();
}

}  // namespace

void Rewriter::Condition() {
  do {
    Predicate();
  } while (SkipWord(Word::kAnd) || SkipWord(Word::kOr));
}

void Rewriter::Predicate() {
  while (SkipWord(Word::kNot)) {
  }
  Comparison();
}

void Rewriter::Comparison() {
  if (SkipWord(Word::kExists)) {
    if (!IsSymbol('(')) Fail(906, "missing left parenthesis");
    Parenthesis();
    return;
  }
  (void)Sum();
  while (true) {
    const bool is_negated =
        IsWord(Word::kNot) && (Ahead(1).word == Word::kIn || Ahead(1).word == Word::kLike ||
                               Ahead(1).word == Word::kBetween);
    if (is_negated) ++at_;
    if (SkipSymbol(kNotEqual)) {
      edits_.Replace(at_ - 1, "<>");
      SkipWord(Word::kAny) || SkipWord(Word::kAll);
      (void)Sum();
    } else if (SkipSymbol('=') || SkipSymbol('<') || SkipSymbol('>') || SkipSymbol(kLessOrEqual) ||
               SkipSymbol(kGreaterOrEqual)) {
      SkipWord(Word::kAny) || SkipWord(Word::kAll);
      (void)Sum();
    } else if (SkipWord(Word::kIs)) {
      SkipWord(Word::kNot);
      ExpectWord(Word::kNull, 908, "missing NULL keyword");
    } else if (SkipWord(Word::kIn)) {
      if (IsSymbol('(')) {
        Parenthesis();
      } else {
        (void)Sum();
      }
    } else if (SkipWord(Word::kLike)) {
      (void)Sum();
      if (SkipWord(Word::kEscape)) (void)Sum();
    } else if (SkipWord(Word::kBetween)) {
      (void)Sum();
      ExpectWord(Word::kAnd, 905, "missing keyword AND of BETWEEN");
      (void)Sum();
    } else {
      return;
    }
  }
}

Rewriter::Operand Rewriter::Sum() {
  Operand left = Product();
  while (IsSymbol('+') || IsSymbol('-') || IsSymbol(kConcatenation)) {
    const std::size_t operation = at_++;
    left = Combine(left, operation, Product());
  }
  return left;
}

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
  std::string_view function;
  switch (tokens_[operation].symbol) {
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
  if (!function.empty() && (!result.is_number || tokens_[operation].symbol == '/')) {
    edits_.Replace(operation, ",");
    edits_.Wrap(left.first, right.last, function);
    return result;
  }
  // The engine's own operators bind || before * and / before + and -.
  switch (tokens_[operation].symbol) {
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
  return result;
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
  operand.first = first;
  return operand;
}

Rewriter::Operand Rewriter::Primary() {
  const std::size_t first = at_;
  const Token& token = Here();
  bool is_number = false;
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
      Parenthesis();
      break;
    case TokenKind::kWord:
      switch (token.word) {
        case Word::kNull: ++at_; break;
        case Word::kCase: Case(); break;
        case Word::kCast: Cast(); break;
        case Word::kDate:
        case Word::kTimestamp:
          if (Ahead(1).kind == TokenKind::kText) {
            DateConstant();
          } else {
            NameOrCall();
          }
          break;
        case Word::kInterval:
          if (Ahead(1).kind == TokenKind::kText) Fail(900, "INTERVAL constants are not supported");
          NameOrCall();
          break;
        case Word::kPrior: Fail(900, "CONNECT BY is not supported");
        case Word::kRownum:
          Fail(900,
               "ROWNUM is supported only as \"ROWNUM <= constant\", joined by AND, in the WHERE "
               "clause of an outermost SELECT");
        default: NameOrCall(); break;
      }
      break;
    default: Fail(936, "missing expression");
  }
  if (IsSymbol('(') && IsSymbol(Ahead(1), '+') && IsSymbol(Ahead(2), ')')) {
    Fail(900, "the outer join mark (+) is not supported; write LEFT JOIN");
  }
  return {first, at_ - 1, Shape::kAtom, is_number};
}

void Rewriter::Parenthesis() {
  const Level level(*this);
  ExpectSymbol('(', 906, "missing left parenthesis");
  if (IsQueryStart()) {
    Query();
  } else {
    ExpressionList();
  }
  ExpectSymbol(')', 907, "missing right parenthesis");
}

void Rewriter::ExpressionList() {
  do {
    Condition();
  } while (SkipSymbol(','));
}

void Rewriter::OrderList() {
  const Lift lift = lift_;
  lift_ = Lift::kNever;
  do {
    (void)Sum();
    SkipWord(Word::kAsc) || SkipWord(Word::kDesc);
    if (SkipText("NULLS") && !SkipText("FIRST") && !SkipText("LAST")) Fail(905, "missing keyword");
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
    Condition();
  } while (IsWord(Word::kWhen));
  if (SkipWord(Word::kElse)) Condition();
  ExpectWord(Word::kEnd, 905, "missing keyword END");
}

void Rewriter::Cast() {
  if (!IsSymbol(Ahead(1), '(')) return NameOrCall();
  const Level level(*this);
  if (lift_ == Lift::kInCalls) lift_ = Lift::kAlways;
  at_ += 2;
  Condition();
  ExpectWord(Word::kAs, 905, "missing keyword AS");
  if (IsWord(Word::kDate) || IsWord(Word::kTimestamp)) {
    Fail(900, "CAST to a date is not supported; write TO_DATE");
  }
  ColumnType();
  ExpectSymbol(')', 907, "missing right parenthesis");
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

void Rewriter::NameOrCall() {
  const std::size_t first = at_;
  if (IsReservedByOracle(Here().word) && Here().word != Word::kReplace) {
    Fail(936, "missing expression");
  }
  if (IsWord(Word::kSystemDate) && !IsSymbol(Ahead(1), '.') && !IsSymbol(Ahead(1), '(')) {
    edits_.Replace(at_++, engine_.SystemDate());
    return;
  }
  ++at_;
  while (IsSymbol('.')) {
    ++at_;
    if (SkipSymbol('*')) {  // t.* of a select list
      return QuoteReserved(first, at_ - 3);
    }
    const Token& part = Here();
    if (part.kind != TokenKind::kWord && part.kind != TokenKind::kQuotedName) {
      Fail(936, "missing name behind \".\"");
    }
    ++at_;
  }
  const std::size_t last = at_ - 1;
  const bool is_sequence = last > first && (tokens_[last].word == Word::kNextval ||
                                            tokens_[last].word == Word::kCurrval);
  if (is_sequence) {
    const std::string_view name =
        sql_.substr(tokens_[first].begin, tokens_[last - 2].end - tokens_[first].begin);
    const bool draws = tokens_[last].word == Word::kNextval;
    writes_ = writes_ || draws;
    edits_.Replace(first, draws ? engine_.NextValue(name) : engine_.CurrentValue(name));
    for (std::size_t i = first + 1; i <= last; ++i) edits_.Remove(i);
    return;
  }
  if (IsSymbol('(') && !(IsSymbol(Ahead(1), '+') && IsSymbol(Ahead(2), ')'))) {
    return Call(first, last);
  }
  QuoteReserved(first, last);
}

void Rewriter::QuoteReserved(std::size_t first, std::size_t last) {
  for (std::size_t i = first; i <= last; i += 2) {
    if (tokens_[i].kind == TokenKind::kWord && engine_.IsReservedWord(Upper(tokens_[i]))) {
      edits_.Quote(i);
    }
  }
}

void Rewriter::CallName(std::size_t first, std::size_t last) {
  std::string name = Upper(tokens_[first]);
  for (std::size_t i = first + 2; i <= last; i += 2) name += "." + Upper(tokens_[i]);
  if (first == last) {
    if (facts_ != nullptr && IsAggregate(name)) facts_->has_aggregate = true;
    const std::string_view renamed = engine_.FunctionName(name);
    if (!renamed.empty()) return edits_.Replace(first, std::string(renamed));
  }
  const std::optional<Engine::RoutineFacts> facts = engine_.FindRoutine(name);
  if (!facts) {
    if (first == last) return;
    std::string shown;
    for (std::size_t i = first; i <= last; i += 2) {
      shown += (i == first ? "\"" : ".\"") + Upper(tokens_[i]) + "\"";
    }
    throw SyntaxFailure{904, shown + ": invalid identifier"};
  }
  writes_ = writes_ || facts->writes;
  const std::string_view written =
      sql_.substr(tokens_[first].begin, tokens_[last].end - tokens_[first].begin);
  Engine::CallOpening opening = engine_.RoutineCall(written);
  const bool has_arguments = !IsSymbol(Ahead(1), ')');
  if (opening.comma_before_arguments && has_arguments) opening.text += ',';
  edits_.Replace(first, std::move(opening.text));
  for (std::size_t i = first + 1; i <= last + 1; ++i) edits_.Remove(i);  // and its "("
}

void Rewriter::Call(std::size_t first, std::size_t last) {
  CallName(first, last);
  {
    const Level level(*this);
    if (lift_ == Lift::kInCalls) lift_ = Lift::kAlways;
    ++at_;
    if (!IsSymbol(')')) Arguments();
    ExpectSymbol(')', 907, "missing right parenthesis");
  }
  if (IsWord(Word::kOver) && IsSymbol(Ahead(1), '(')) Window();
}

void Rewriter::Arguments() {
  if (SkipSymbol('*')) return;
  if (SkipWord(Word::kUnique)) {
    edits_.Replace(at_ - 1, "DISTINCT");
  } else if (!SkipWord(Word::kDistinct) && SkipWord(Word::kAll)) {
    edits_.Remove(at_ - 1);
  }
  ExpressionList();
}

void Rewriter::Window() {
  const Level level(*this);
  if (facts_ != nullptr) facts_->has_aggregate = true;
  lift_ = Lift::kNever;
  at_ += 2;
  if (SkipText("PARTITION")) {
    ExpectWord(Word::kBy, 905, "missing keyword BY");
    ExpressionList();
  }
  if (SkipWord(Word::kOrder)) {
    ExpectWord(Word::kBy, 905, "missing keyword BY");
    OrderList();
  }
  while (!IsSymbol(')') && Here().kind != TokenKind::kEnd) ++at_;  // ROWS BETWEEN ...
  ExpectSymbol(')', 907, "missing right parenthesis");
}

}  // namespace sabrel::dialect
