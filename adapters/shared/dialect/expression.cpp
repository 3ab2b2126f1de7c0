// Expressions and conditions. What an operator means comes from Oracle: + - and || bind alike and
// from the left, a quotient of whole numbers keeps its fraction, and an operand of + or - may be a
// date.
#include <algorithm>
#include <array>
#include <utility>

#include "adapters/shared/dialect/rewriter.h"

namespace sabrel::dialect {

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

namespace {

// Functions whose type is the same whatever their arguments are.
constexpr std::array kNumberFunctions{
    std::string_view("COUNT"),  std::string_view("SUM"),   std::string_view("AVG"),
    std::string_view("LENGTH"), std::string_view("INSTR"), std::string_view("MOD"),
    std::string_view("ABS"),    std::string_view("SIGN"),  std::string_view("CEIL"),
    std::string_view("FLOOR"),  std::string_view("POWER"), std::string_view("TO_NUMBER")};
constexpr std::array kTextFunctions{
    std::string_view("UPPER"), std::string_view("LOWER"),  std::string_view("SUBSTR"),
    std::string_view("TRIM"),  std::string_view("LTRIM"),  std::string_view("RTRIM"),
    std::string_view("LPAD"),  std::string_view("RPAD"),   std::string_view("REPLACE"),
    std::string_view("CHR"),   std::string_view("CONCAT"), std::string_view("TO_CHAR")};

template <std::size_t kCount>
bool IsOneOf(std::string_view name, const std::array<std::string_view, kCount>& names) {
  return std::find(names.begin(), names.end(), name) != names.end();
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
  const Operand left = Sum();
  while (true) {
    if (OrderComparison(left)) continue;
    const bool is_negated =
        IsWord(Word::kNot) && (Ahead(1).word == Word::kIn || Ahead(1).word == Word::kLike ||
                               Ahead(1).word == Word::kBetween);
    if (is_negated) ++at_;
    if (SkipWord(Word::kIs)) {
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

// `left` = < > <= >= <> ..., where one stands here.
bool Rewriter::OrderComparison(const Operand& left) {
  const std::size_t operation = at_;
  if (!SkipSymbol('=') && !SkipSymbol('<') && !SkipSymbol('>') && !SkipSymbol(kLessOrEqual) &&
      !SkipSymbol(kGreaterOrEqual) && !SkipSymbol(kNotEqual)) {
    return false;
  }
  const char symbol = tokens_[operation].symbol;
  if (symbol == kNotEqual) edits_.Replace(operation, "<>");
  if (IsWord(Word::kAny) || IsWord(Word::kAll) || IsText(Here(), "SOME")) {
    if (IsSymbol(Ahead(1), '(')) {
      Quantified(operation);
      return true;
    }
  }
  const Operand right = Sum();
  const std::string_view compare = engine_.CompareFunction();
  if (compares_ && !compare.empty() && NeedConversion(TypeOf(left), TypeOf(right))) {
    std::string sign(TextOf(sql_, tokens_[operation]));
    if (symbol == kNotEqual) sign = "<>";
    edits_.Replace(operation, ",");
    edits_.Wrap(left.first, right.last, compare);
    edits_.AppendBehind(right.last, sign + "0");
    is_renamed_ = true;
  }
  return true;
}

// = ANY (...) and <> ALL (...) are IN and NOT IN.
void Rewriter::Quantified(std::size_t operation) {
  const char symbol = tokens_[operation].symbol;
  const bool is_all = IsWord(Word::kAll);
  if (is_all ? symbol != kNotEqual : symbol != '=') {
    Fail(900, "only = ANY and <> ALL are supported");
  }
  edits_.Replace(operation, is_all ? " NOT IN" : " IN");
  edits_.Remove(at_++);
  Parenthesis();
}

// Whether the engine would compare values of unlike types. It converts beside a bare column by
// itself, and an index on that column goes on to serve.
bool Rewriter::NeedConversion(Type left, Type right) {
  const auto is_number = [](Type t) { return t == Type::kNumber || t == Type::kNumberConstant; };
  const auto is_text = [](Type t) { return t == Type::kText || t == Type::kTextConstant; };
  if ((is_number(left) && is_text(right)) || (is_text(left) && is_number(right))) return true;
  return (left == Type::kTextConstant && right == Type::kUnknown) ||
         (right == Type::kTextConstant && left == Type::kUnknown);
}

Rewriter::Type Rewriter::TypeOf(Operand operand) const {
  if (operand.function.empty()) {
    while (operand.first < operand.last && IsSymbol(tokens_[operand.first], '(') &&
           IsSymbol(tokens_[operand.last], ')')) {
      ++operand.first;
      --operand.last;
    }
  }
  const Token& first = tokens_[operand.first];
  if (operand.is_number) return Type::kNumberConstant;
  if (operand.first == operand.last && first.kind == TokenKind::kText) return Type::kTextConstant;
  if (operand.first == operand.last && first.kind == TokenKind::kParameter) return Type::kColumn;
  if (!operand.function.empty()) {
    return operand.function == engine_.ConcatenateFunction() ? Type::kText : Type::kUnknown;
  }
  if (operand.shape == Shape::kProduct) return Type::kNumber;
  bool is_name = true;  // a, t.a
  for (std::size_t i = operand.first; i <= operand.last && is_name; ++i) {
    const bool is_dot = (i - operand.first) % 2 == 1;
    is_name =
        is_dot ? IsSymbol(tokens_[i], '.')
               : tokens_[i].kind == TokenKind::kWord || tokens_[i].kind == TokenKind::kQuotedName;
  }
  if (is_name && first.word != Word::kSystemDate) return Type::kColumn;
  const bool is_call = operand.first < operand.last && first.kind == TokenKind::kWord &&
                       IsSymbol(tokens_[operand.first + 1], '(');
  if (!is_call) return Type::kUnknown;
  const std::string name = Upper(first);
  if (IsOneOf(name, kNumberFunctions)) return Type::kNumber;
  return IsOneOf(name, kTextFunctions) ? Type::kText : Type::kUnknown;
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
    // A chain becomes one call: nested calls would exhaust the engine's parser.
    constexpr int kMostArguments = 100;
    result.function = function;
    edits_.Replace(operation, ",");
    if (symbol != '/' && left.function == function && left.arguments < kMostArguments) {
      result.arguments = left.arguments + 1;
      edits_.Extend(left.last, right.last);
      is_renamed_ = true;
    } else {
      result.arguments = 2;
      edits_.Wrap(left.first, right.last, function);
    }
    return result;
  }
  // The engine's own operators bind || before * and / before + and -.
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
    case TokenKind::kWord:
      switch (token.word) {
        case Word::kNull: ++at_; break;
        case Word::kCase: Case(); break;
        case Word::kCast: Cast(); break;
        case Word::kDate:
        case Word::kTimestamp:
          if (Ahead(1).kind == TokenKind::kText) {
            DateConstant();
            is_date = true;
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
        default:
          is_date = token.word == Word::kSystemDate ||
                    (IsSymbol(Ahead(1), '(') && IsText(token, "TO_DATE"));
          NameOrCall();
          break;
      }
      break;
    default: Fail(936, "missing expression");
  }
  if (IsSymbol('(') && IsSymbol(Ahead(1), '+') && IsSymbol(Ahead(2), ')')) {
    Fail(900, "the outer join mark (+) is not supported; write LEFT JOIN");
  }
  return {first, at_ - 1, Shape::kAtom, is_number, is_date};
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

void Rewriter::ExpressionList() {
  do {
    Condition();
  } while (SkipSymbol(','));
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
    } else if (places_nulls) {
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
    return UseSequence(first, last);
  }
  if (IsSymbol('(') && !(IsSymbol(Ahead(1), '+') && IsSymbol(Ahead(2), ')'))) {
    return Call(first, last);
  }
  QuoteReserved(first, last);
}

// All uses of a sequence in one row are one value in Oracle; engines draw at each.
void Rewriter::UseSequence(std::size_t first, std::size_t last) {
  const std::string_view name =
      sql_.substr(tokens_[first].begin, tokens_[last - 2].end - tokens_[first].begin);
  const bool draws = tokens_[last].word == Word::kNextval;
  SequenceUse use{{}, draws};
  for (std::size_t i = first; i < last; i += 2) use.name += Upper(tokens_[i]) + ".";
  for (const SequenceUse& other : sequences_) {
    if (other.name == use.name && (other.draws || draws)) {
      Fail(900, "NEXTVAL is supported only once per sequence in a statement");
    }
  }
  sequences_.push_back(std::move(use));
  writes_ = writes_ || draws;
  edits_.Replace(first, draws ? engine_.NextValue(name) : engine_.CurrentValue(name));
  for (std::size_t i = first + 1; i <= last; ++i) edits_.Remove(i);
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
  if (first == last && IsText(tokens_[first], "DECODE")) return Decode(first);
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

// DECODE(a, 1, b, NULL, c, d) becomes CASE with the same operands at the same places, so that only
// the result that is wanted is computed. Oracle compares in the type of the first value searched;
// where that is not known by a constant the engine's own DECODE must do.
void Rewriter::Decode(std::size_t name) {
  struct Argument {
    std::size_t first;
    std::size_t last;
    Type type;
    bool is_null;
  };
  std::vector<Argument> arguments;
  {
    const Level level(*this);
    if (lift_ == Lift::kInCalls) lift_ = Lift::kAlways;
    do {
      const std::size_t first = ++at_;
      Condition();
      const std::size_t constant = first + (IsSymbol(tokens_[first], '-') ? 1 : 0);
      const bool is_one = constant + 1 == at_;
      const Token& token = tokens_[constant];
      const bool is_text = token.kind == TokenKind::kText;
      const bool is_null =
          is_one && (token.word == Word::kNull || (is_text && IsEmptyText(TextOf(sql_, token))));
      Type type = Type::kUnknown;
      if (is_one && token.kind == TokenKind::kNumber) type = Type::kNumber;
      if (is_one && is_text && !is_null) type = Type::kText;
      arguments.push_back({first, at_ - 1, type, is_null});
    } while (IsSymbol(','));
    ExpectSymbol(')', 907, "missing right parenthesis");
  }
  Type type = Type::kUnknown;
  bool may_be_null = false;
  for (std::size_t i = 1; i + 1 < arguments.size(); i += 2) {
    const Argument& searched = arguments[i];
    may_be_null = may_be_null || searched.is_null || searched.type == Type::kUnknown;
    if (type != Type::kUnknown || searched.is_null) continue;
    if (searched.type == Type::kUnknown) break;
    type = searched.type;
  }
  const bool is_text = type == Type::kText;
  const std::string_view convert = is_text ? "TO_CHAR" : "TO_NUMBER";
  if (type == Type::kUnknown) return;
  const auto compare_with = [&](const Argument& argument) {
    if (argument.type != type && !argument.is_null) {
      edits_.Wrap(argument.first, argument.last, convert);
    }
    if (may_be_null && argument.type != type) {
      edits_.Wrap(argument.first, argument.last, "COALESCE(");
      edits_.AppendBehind(argument.last, "," + std::string(engine_.NoValue()) + ")");
    }
  };
  edits_.Replace(name, "CASE ");
  edits_.Remove(name + 1);
  compare_with(arguments[0]);
  for (std::size_t i = 1; i < arguments.size(); ++i) {
    const bool is_default = i % 2 == 1 && i + 1 == arguments.size();
    const bool is_searched = i % 2 == 1 && !is_default;
    edits_.Replace(arguments[i].first - 1,
                   is_default ? " ELSE " : (is_searched ? " WHEN " : " THEN "));
    if (is_searched) compare_with(arguments[i]);
  }
  edits_.Replace(at_ - 1, " END");
  is_renamed_ = true;
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
