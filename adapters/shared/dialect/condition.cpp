// Conditions: comparisons, and what is known of the types on their two sides.
#include <algorithm>
#include <array>
#include <utility>

#include "adapters/shared/dialect/rewriter.h"

namespace sabrel::dialect {

namespace {

// Functions whose type is the same whatever their arguments are.
constexpr std::array kNumberFunctions{
    std::string_view("COUNT"),  std::string_view("SUM"),   std::string_view("AVG"),
    std::string_view("LENGTH"), std::string_view("INSTR"), std::string_view("MOD"),
    std::string_view("ABS"),    std::string_view("SIGN"),  std::string_view("CEIL"),
    std::string_view("FLOOR"),  std::string_view("POWER"), std::string_view("TO_NUMBER"),
    std::string_view("EXTRACT")};
constexpr std::array kTextFunctions{
    std::string_view("UPPER"), std::string_view("LOWER"),  std::string_view("SUBSTR"),
    std::string_view("TRIM"),  std::string_view("LTRIM"),  std::string_view("RTRIM"),
    std::string_view("LPAD"),  std::string_view("RPAD"),   std::string_view("REPLACE"),
    std::string_view("CHR"),   std::string_view("CONCAT"), std::string_view("TO_CHAR")};

template <std::size_t kCount>
bool IsOneOf(std::string_view name, const std::array<std::string_view, kCount>& names) {
  return std::find(names.begin(), names.end(), name) != names.end();
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
    const std::size_t operation = at_;
    if (SkipWord(Word::kIs)) {
      SkipWord(Word::kNot);
      ExpectWord(Word::kNull, 908, "missing NULL keyword");
    } else if (SkipWord(Word::kIn)) {
      In(left);
    } else if (SkipWord(Word::kLike)) {
      Pattern(left, operation, is_negated);
    } else if (SkipWord(Word::kBetween)) {
      Between(left);
    } else {
      return;
    }
  }
}

void Rewriter::Between(const Operand& left) {
  const Operand low = Sum();
  ExpectWord(Word::kAnd, 905, "missing keyword AND of BETWEEN");
  const Operand high = Sum();
  const Type type = TypeOf(left);
  if (IsNumber(TypeOf(low)) || IsNumber(TypeOf(high))) MakeNumberForNumbers(left);
  for (const Operand& bound : {low, high}) {
    if (IsNumber(type) && TypeOf(bound) == Type::kTextConstant) MakeNumber(bound);
    if (type == Type::kColumn) CastBesideColumn(bound);
  }
  if (TypeOf(low) == Type::kColumn || TypeOf(high) == Type::kColumn) CastBesideColumn(left);
}

void Rewriter::In(const Operand& left) {
  const std::size_t open = at_;
  if (!IsSymbol('(')) {
    // Engines may take a bare name for a table.
    const Operand value = Sum();
    edits_.Wrap(value.first, value.last, {});
    return;
  }
  Parenthesis();
  bool has_numbers = true;
  bool has_texts = true;
  for (std::size_t i = open + 1; i + 1 < at_; ++i) {
    const Token& token = tokens_[i];
    has_numbers = has_numbers && (token.kind == TokenKind::kNumber || IsSymbol(token, ',') ||
                                  IsSymbol(token, '-') || IsSymbol(token, '+'));
    has_texts = has_texts && (token.kind == TokenKind::kText || IsSymbol(token, ','));
  }
  if (has_numbers) MakeNumberForNumbers(left);
  if (!has_texts || !IsNumber(TypeOf(left))) return;
  for (std::size_t i = open + 1; i + 1 < at_; ++i) {
    if (tokens_[i].kind == TokenKind::kText) MakeNumber({i, i});
  }
}

void Rewriter::MakeNumber(const Operand& operand) {
  if (compares_ && !engine_.CompareFunction().empty()) {
    edits_.Wrap(operand.first, operand.last, "TO_NUMBER");
    is_renamed_ = true;
  }
}

// `operand` is compared with numbers: what is or may be a text becomes one. A column stays, for the
// sake of its index.
void Rewriter::MakeNumberForNumbers(const Operand& operand) {
  const Type type = TypeOf(operand);
  const bool is_parameter = tokens_[operand.first].kind == TokenKind::kParameter;
  if (IsText(type) || type == Type::kUnknown || is_parameter) MakeNumber(operand);
}

// A number beside a column makes the engine compare numbers, whatever the column holds.
void Rewriter::CastBesideColumn(const Operand& number) {
  if (compares_ && !traits_.number_type.empty() && IsNumber(TypeOf(number))) {
    edits_.Cast(number.first, number.last, traits_.number_type);
    is_renamed_ = true;
  }
}

namespace {

// What an engine finds in an index for a constant pattern: its beginning, and whether that is all.
struct PatternBeginning {
  std::string text;
  bool is_all = false;  // but for one "%" at the end
};

PatternBeginning BeginningOf(const std::string& pattern) {
  const std::size_t end = std::min(pattern.find_first_of("%_"), pattern.size());
  return {pattern.substr(0, end), end + 1 >= pattern.size() && !pattern.ends_with('_')};
}

}  // namespace

// An engine that searches an index for what begins as a constant pattern does gets that beginning,
// in the text. All else is matched by a function where the engine has one: it can be stopped.
void Rewriter::Pattern(const Operand& left, std::size_t operation, bool is_negated) {
  const Lift lift = lift_;
  const std::size_t first = at_;
  const std::string_view function = engine_.PatternFunction();
  const bool is_constant = Here().kind == TokenKind::kText &&
                           (Ahead(1).kind != TokenKind::kSymbol || IsSymbol(Ahead(1), ')'));
  const PatternBeginning beginning = is_constant && !is_negated
                                         ? BeginningOf(ValueOfText(TextOf(sql_, Here())))
                                         : PatternBeginning();
  // A rule of a table looks at one row: no index serves it.
  const bool is_served = compares_ && !beginning.text.empty() && TypeOf(left) == Type::kColumn &&
                         Ahead(1).word != Word::kEscape;
  if (is_served) lift_ = Lift::kNever;
  const bool is_parameter = Here().kind == TokenKind::kParameter && TypeOf(left) == Type::kColumn;
  (void)Sum();
  const bool has_escape = IsWord(Word::kEscape);
  const std::size_t escape = at_;
  if (SkipWord(Word::kEscape)) {
    (void)Sum();
  } else if (!traits_.pattern_end.empty()) {
    edits_.AppendBehind(at_ - 1, traits_.pattern_end);
  }
  lift_ = lift;
  if (function.empty()) return;
  if (is_served && beginning.is_all) return;
  if (is_parameter && first + 1 == at_) return;
  is_renamed_ = true;
  if (is_served && edits_.AreUnchanged(left.first, left.last)) {
    const std::string column(
        sql_.substr(tokens_[left.first].begin, tokens_[left.last].end - tokens_[left.first].begin));
    const std::string pattern = TextConstant(ValueOfText(TextOf(sql_, tokens_[first])));
    edits_.Replace(first, TextConstant(beginning.text + "%") + " AND " + std::string(function) +
                              "(" + column + "," + pattern + ")");
    edits_.Wrap(left.first, first, "");
    return;
  }
  if (is_negated) edits_.Remove(operation - 1);
  edits_.Replace(operation, ",");
  if (has_escape) edits_.Replace(escape, ",");
  edits_.Wrap(left.first, at_ - 1, function);
  if (is_negated) edits_.AppendBehind(at_ - 1, "=0");
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
  if (TypeOf(left) == Type::kColumn) CastBesideColumn(right);
  if (TypeOf(right) == Type::kColumn) CastBesideColumn(left);
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
  if ((IsNumber(left) && IsText(right)) || (IsText(left) && IsNumber(right))) return true;
  const auto is_telling = [](Type t) { return t == Type::kTextConstant || IsNumber(t); };
  return (is_telling(left) && right == Type::kUnknown) ||
         (is_telling(right) && left == Type::kUnknown);
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
  if (operand.first == operand.last && first.kind == TokenKind::kNumber) {
    return Type::kNumberConstant;
  }
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
  if (is_name && first.word == Word::kRownum) return Type::kNumber;
  if (is_name && first.word != Word::kSystemDate) return Type::kColumn;
  const bool is_call = operand.first < operand.last && first.kind == TokenKind::kWord &&
                       IsSymbol(tokens_[operand.first + 1], '(');
  if (!is_call) return Type::kUnknown;
  const std::string name = Upper(first);
  if (IsOneOf(name, kNumberFunctions)) return Type::kNumber;
  return IsOneOf(name, kTextFunctions) ? Type::kText : Type::kUnknown;
}

}  // namespace sabrel::dialect
