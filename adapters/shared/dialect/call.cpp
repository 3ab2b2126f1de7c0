// Names and calls: columns, sequences, stored routines, functions that the engine calls otherwise.
#include <algorithm>
#include <array>
#include <utility>

#include "adapters/shared/dialect/rewriter.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::dialect {

bool IsAggregate(std::string_view upper_name) {
  constexpr std::array kAggregates{
      std::string_view("COUNT"),    std::string_view("MAX"),     std::string_view("MIN"),
      std::string_view("SUM"),      std::string_view("AVG"),     std::string_view("LISTAGG"),
      std::string_view("STDDEV"),   std::string_view("MEDIAN"),  std::string_view("WM_CONCAT"),
      std::string_view("VARIANCE"), std::string_view("COLLECT"), std::string_view("XMLAGG"),
      std::string_view("CORR")};
  constexpr std::array kBeginnings{
      std::string_view("STDDEV_"), std::string_view("VAR_"),        std::string_view("COVAR_"),
      std::string_view("REGR_"),   std::string_view("STRING_AGG"),  std::string_view("ARRAY_AGG"),
      std::string_view("BOOL_"),   std::string_view("GROUP_CONCAT")};
  for (const std::string_view beginning : kBeginnings) {
    if (upper_name.starts_with(beginning)) return true;
  }
  for (const std::string_view name : kAggregates) {
    if (name == upper_name) return true;
  }
  return false;
}

namespace {

// Engines may have functions of several values with the names of these aggregates.
bool TakesOneArgument(std::string_view upper_name) {
  return upper_name == "COUNT" || upper_name == "MAX" || upper_name == "MIN" ||
         upper_name == "SUM" || upper_name == "AVG";
}

}  // namespace

void Rewriter::Name() {
  const Token& name = Here();
  const bool is_free_word = name.kind == TokenKind::kWord && !IsReservedByOracle(name.word);
  if (!is_free_word && name.kind != TokenKind::kQuotedName) {
    Fail(name.kind == TokenKind::kWord ? 903 : 900, "a name is missing");
  }
  SpellName(at_++);
}

void Rewriter::QualifiedName() {
  Name();
  while (SkipSymbol('.')) Name();
}

void Rewriter::NameList() {
  ExpectSymbol('(', 906, "missing left parenthesis");
  do {
    const std::size_t first = at_;
    QualifiedName();
    for (std::size_t i = first; i + 1 < at_; ++i) edits_.Remove(i);
  } while (SkipSymbol(','));
  ExpectSymbol(')', 907, "missing right parenthesis");
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
      return SpellNames(first, at_ - 3);
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
  SpellNames(first, last);
}

// Whether the column is one call of an aggregate, as MAX(a), MAX(a) m or MAX(a) AS m.
bool Rewriter::IsAggregateCall(std::size_t first, std::size_t end) const {
  if (tokens_[first].kind != TokenKind::kWord || !IsSymbol(tokens_[first + 1], '(')) return false;
  if (!IsAggregate(Upper(tokens_[first]))) return false;
  int depth = 0;
  for (std::size_t i = first + 1; i < end; ++i) {
    if (IsSymbol(tokens_[i], '(')) ++depth;
    if (!IsSymbol(tokens_[i], ')') || --depth > 0) continue;
    const std::size_t left = end - (i + 1);
    return left < 2 || (left == 2 && tokens_[i + 1].word == Word::kAs);
  }
  return false;
}

// a, t.a, t.*
bool Rewriter::IsPlainColumn(std::size_t first) const {
  const Token& last = tokens_[at_ - 1];
  for (std::size_t i = first; i + 1 < at_; ++i) {
    if ((i - first) % 2 == 1 ? !IsSymbol(tokens_[i], '.') : IsSymbol(tokens_[i], '-')) return false;
  }
  if (last.kind == TokenKind::kQuotedName || IsSymbol(last, '*')) return true;
  const bool is_pseudo_column = last.word == Word::kNextval || last.word == Word::kCurrval ||
                                (last.word == Word::kSystemDate && first + 1 == at_);
  return last.kind == TokenKind::kWord && last.word != Word::kNull && !is_pseudo_column;
}

// Oracle names a column by its expression without blanks, in upper case.
void Rewriter::KeepColumnName(std::size_t first) {
  const Word last = tokens_[at_ - 1].word;
  if (last == Word::kNextval || last == Word::kCurrval) first = at_ - 1;
  std::string name;
  for (std::size_t i = first; i < at_; ++i) {
    const Token& token = tokens_[i];
    const bool parts_words =
        i > first && token.kind == TokenKind::kWord && tokens_[i - 1].kind != TokenKind::kSymbol;
    const bool follows_word =
        i > first && tokens_[i - 1].kind == TokenKind::kWord && token.kind != TokenKind::kSymbol;
    if (parts_words || follows_word) name += ' ';
    if (token.kind == TokenKind::kQuotedName) {
      name += ValueOfName(sql_, token);
    } else {
      name += token.kind == TokenKind::kWord ? Upper(token) : std::string(TextOf(sql_, token));
    }
  }
  std::erase(name, '"');
  const std::string quoted = "\"" + UpperCase(name) + "\"";
  const std::string spelled = engine_.NameSpelling(quoted);
  edits_.AppendBehind(at_ - 1, " AS " + (spelled.empty() ? quoted : spelled));
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

void Rewriter::SpellName(std::size_t token) {
  std::string spelled = engine_.NameSpelling(TextOf(sql_, tokens_[token]));
  if (!spelled.empty()) edits_.Replace(token, std::move(spelled));
}

void Rewriter::SpellNames(std::size_t first, std::size_t last) {
  for (std::size_t i = first; i <= last; i += 2) SpellName(i);
}

void Rewriter::CallName(std::size_t first, std::size_t last) {
  std::string name = Upper(tokens_[first]);
  for (std::size_t i = first + 2; i <= last; i += 2) name += "." + Upper(tokens_[i]);
  if (first == last) {
    if (facts_ != nullptr && IsAggregate(name)) facts_->has_aggregate = true;
    const std::string_view renamed = engine_.FunctionName(name);
    if (!renamed.empty() && (!is_table_ || traits_.renames_in_tables)) {
      is_renamed_ = true;
      return edits_.Replace(first, std::string(renamed));
    }
  }
  const std::optional<Engine::RoutineFacts> facts = engine_.FindRoutine(name);
  if (!facts) {
    if (first == last && engine_.KnowsFunction(name)) {
      if (tokens_[first].kind == TokenKind::kQuotedName) SpellName(first);
      return;
    }
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
    const bool keeps_texts = first < last || KeepsTexts(Upper(tokens_[first]));
    const std::size_t count = IsSymbol(')') ? 0 : Arguments(keeps_texts);
    if (first == last && count != 1 && TakesOneArgument(Upper(tokens_[first]))) {
      Fail(909, "invalid number of arguments");
    }
    ExpectSymbol(')', 907, "missing right parenthesis");
  }
  if (IsWord(Word::kOver) && IsSymbol(Ahead(1), '(')) return Window();
  const bool is_aggregate = first == last && IsAggregate(Upper(tokens_[first]));
  if (facts_ != nullptr && is_aggregate) facts_->makes_one_row = true;
}

// DECODE(a, 1, b, NULL, c, d) becomes CASE with the same operands at the same places, so that only
// the result that is wanted is computed. Oracle compares in the type of the first value searched;
// where that is not known by a constant the engine's own DECODE must do.
void Rewriter::Decode(std::size_t name) {
  const std::vector<DecodeArgument> arguments = DecodeArguments();
  Type type = Type::kUnknown;
  bool may_be_null = false;
  for (std::size_t i = 1; i + 1 < arguments.size(); i += 2) {
    const DecodeArgument& searched = arguments[i];
    may_be_null = may_be_null || searched.is_null || searched.type == Type::kUnknown;
    if (type != Type::kUnknown || searched.is_null) continue;
    if (searched.type == Type::kUnknown) break;
    type = searched.type;
  }
  for (std::size_t i = 2; i < arguments.size(); ++i) {
    const bool is_result = i % 2 == 0 || i + 1 == arguments.size();
    if (is_result) KeepText(arguments[i].first, arguments[i].last, true);
  }
  const bool is_text = type == Type::kText;
  std::string_view convert = is_text ? "TO_CHAR" : "TO_NUMBER";
  if (const auto renamed = engine_.FunctionName(convert); !renamed.empty()) convert = renamed;
  if (type == Type::kUnknown) return;
  const auto compare_with = [&](const DecodeArgument& argument) {
    if (argument.type != type && !argument.is_null) {
      edits_.Wrap(argument.first, argument.last, convert);
    }
    if (may_be_null && argument.type != type) {
      edits_.Wrap(argument.first, argument.last, "COALESCE(");
      edits_.AppendBehind(argument.last, "," + std::string(engine_.NoValue(is_text)) + ")");
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

std::vector<Rewriter::DecodeArgument> Rewriter::DecodeArguments() {
  std::vector<DecodeArgument> arguments;
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
  return arguments;
}

// Whether an engine may read text constants among the arguments by its own rules: it brings them to
// the type of another one or, for a routine, to that of a parameter.
bool Rewriter::KeepsTexts(std::string_view upper_name) const {
  return upper_name == "GREATEST" || upper_name == "LEAST" ||
         engine_.FunctionName(upper_name).empty();
}

// How many there are.
std::size_t Rewriter::Arguments(bool keeps_texts) {
  if (SkipSymbol('*')) return 1;
  if (SkipWord(Word::kUnique)) {
    edits_.Replace(at_ - 1, "DISTINCT");
  } else if (!SkipWord(Word::kDistinct) && SkipWord(Word::kAll)) {
    edits_.Remove(at_ - 1);
  }
  std::size_t count = 0;
  do {
    const std::size_t first = at_;
    Condition();
    if (keeps_texts) KeepText(first, at_ - 1, true);
    ++count;
  } while (SkipSymbol(','));
  return count;
}

void Rewriter::Window() {
  const Level level(*this);
  if (facts_ != nullptr) facts_->has_aggregate = true;
  lift_ = Lift::kNever;
  at_ += 2;
  if (SkipText("PARTITION")) {
    ExpectWord(Word::kBy, 905, "missing keyword BY");
    (void)ExpressionList();
  }
  if (SkipWord(Word::kOrder)) {
    ExpectWord(Word::kBy, 905, "missing keyword BY");
    OrderList();
  }
  // ROWS BETWEEN 1 PRECEDING AND CURRENT ROW; a call would not have been looked at.
  while (!IsSymbol('(') && !IsSymbol(')') && Here().kind != TokenKind::kEnd) ++at_;
  ExpectSymbol(')', 907, "missing right parenthesis");
}

}  // namespace sabrel::dialect
