// Blocks and stored routines: BEGIN, steps that end in ";", END. Variables and control flow are
// refused.
#include <algorithm>
#include <utility>

#include "adapters/shared/dialect/token_reader.h"

namespace sabrel::dialect {
namespace {

constexpr std::int32_t kCompilationError = 6550;

void RefuseControlFlow(const TokenReader& reader) {
  constexpr std::string_view kRefused[] = {
      "DECLARE", "IF",   "LOOP",  "FOR",   "WHILE", "CASE",    "EXCEPTION", "RAISE",  "GOTO",
      "EXIT",    "OPEN", "FETCH", "CLOSE", "BEGIN", "EXECUTE", "FORALL",    "PRAGMA", "CONTINUE"};
  if (std::any_of(std::begin(kRefused), std::end(kRefused),
                  [&](std::string_view word) { return reader.IsText(word); })) {
    reader.Fail("blocks hold calls and statements only");
  }
}

bool StartsStatement(const TokenReader& reader) {
  switch (reader.Here().word) {
    case Word::kSelect:
    case Word::kWith:
    case Word::kInsert:
    case Word::kUpdate:
    case Word::kDelete:
    case Word::kCommit:
    case Word::kRollback:
    case Word::kSavepoint: return true;
    default: return reader.IsText("MERGE");
  }
}

void ParseArguments(TokenReader& reader, BlockStep& step) {
  if (reader.SkipSymbol(')')) return;
  do {
    std::string name;
    if (reader.Here().kind == TokenKind::kWord && reader.Ahead().kind == TokenKind::kSymbol &&
        reader.Ahead().symbol == kArrow) {
      name = reader.HereText();
      reader.Skip();
      reader.Skip();
    } else if (!step.names.empty() && !step.names.back().empty()) {
      reader.Fail("a positional argument may not follow a named one");
    }
    std::string argument(reader.Expression());
    if (argument.empty()) reader.Fail("an argument is missing");
    step.arguments.push_back(std::move(argument));
    step.names.push_back(std::move(name));
  } while (reader.SkipSymbol(','));
  reader.ExpectSymbol(')', "the list of arguments is not closed");
}

BlockStep ParseStep(TokenReader& reader) {
  RefuseControlFlow(reader);
  BlockStep step;
  if (StartsStatement(reader)) {
    step.statement = reader.Statement();
    return step;
  }
  step.is_call = true;
  const std::string_view what = "a call or a statement is missing";
  do {
    step.name += step.name.empty() ? "" : ".";
    step.name += reader.HereText();
    (void)reader.Name(what);
  } while (reader.SkipSymbol('.'));
  if (reader.SkipSymbol('(')) ParseArguments(reader, step);
  if (reader.IsSymbol(kAssignment)) {
    reader.Fail("assignments are not supported: blocks hold calls and statements only");
  }
  return step;
}

void ExpectEnd(TokenReader& reader) {
  reader.ExpectWord(Word::kEnd, "END is missing");
  if (!reader.IsSymbol(';')) (void)reader.QualifiedName("\";\" is missing");
  reader.ExpectSymbol(';', "\";\" is missing");
  if (!reader.AtEnd()) reader.Fail("text behind END;");
}

std::string ParseType(TokenReader& reader) {
  std::string type;
  if (reader.Here().kind == TokenKind::kWord) type = reader.HereText();
  std::transform(type.begin(), type.end(), type.begin(), AsciiUpper);
  if (type.empty()) reader.Fail("a type is missing");
  reader.Skip();
  if (reader.SkipSymbol('(')) {
    do {
      (void)reader.Integer();
    } while (reader.SkipSymbol(','));
    if (!reader.SkipText("CHAR")) reader.SkipText("BYTE");
    reader.ExpectSymbol(')', "\")\" of a type is missing");
  }
  return type;
}

RoutineArgument ParseArgument(TokenReader& reader) {
  RoutineArgument argument;
  argument.name = reader.HereText();
  (void)reader.Name("the name of an argument is missing");
  const bool is_in = reader.SkipWord(Word::kIn);
  if (reader.SkipText("OUT")) argument.direction = is_in ? Direction::kInOut : Direction::kOut;
  argument.type = ParseType(reader);
  if (reader.IsWord(Word::kDefault) || reader.IsSymbol(kAssignment)) {
    reader.Fail("default values of arguments are not supported");
  }
  return argument;
}

}  // namespace

std::vector<BlockStep> ParseBlock(std::string_view block) {
  TokenReader reader(block, kCompilationError);
  if (reader.IsWord(Word::kDeclare)) RefuseControlFlow(reader);
  reader.ExpectWord(Word::kBegin, "BEGIN is missing");
  std::vector<BlockStep> steps;
  while (!reader.IsWord(Word::kEnd)) {
    if (!reader.SkipWord(Word::kNull)) steps.push_back(ParseStep(reader));
    reader.ExpectSymbol(';', "\";\" is missing");
  }
  ExpectEnd(reader);
  return steps;
}

RoutineDefinition ParseCreateRoutine(std::string_view statement) {
  TokenReader reader(statement, kCompilationError);
  RoutineDefinition routine;
  reader.ExpectWord(Word::kCreate, "CREATE is missing");
  if (reader.SkipWord(Word::kOr)) {
    reader.ExpectWord(Word::kReplace, "REPLACE is missing");
    routine.or_replace = true;
  }
  routine.is_function = reader.SkipWord(Word::kFunction);
  if (!routine.is_function) reader.ExpectWord(Word::kProcedure, "PROCEDURE is missing");
  routine.name = reader.Name("the routine's name is missing");
  if (reader.SkipSymbol('.')) {
    routine.package = std::exchange(routine.name, reader.Name("the routine's name is missing"));
  }
  if (reader.SkipSymbol('(')) {
    do {
      routine.arguments.push_back(ParseArgument(reader));
    } while (reader.SkipSymbol(','));
    reader.ExpectSymbol(')', "the list of arguments is not closed");
  }
  if (routine.is_function) {
    reader.ExpectWord(Word::kReturn, "RETURN is missing");
    routine.result_type = ParseType(reader);
    reader.SkipText("DETERMINISTIC");
  }
  if (!reader.SkipWord(Word::kIs)) reader.ExpectWord(Word::kAs, "AS is missing");
  reader.ExpectWord(Word::kBegin, "BEGIN is missing: declarations are not supported");
  while (!reader.IsWord(Word::kEnd)) {
    RefuseControlFlow(reader);
    const std::string_view step = reader.Statement();
    if (step.empty()) reader.Fail("a statement is missing");
    reader.ExpectSymbol(';', "\";\" is missing");
    if (step.size() != 4 || FindWord(step) != Word::kNull) routine.body.emplace_back(step);
  }
  ExpectEnd(reader);
  return routine;
}

}  // namespace sabrel::dialect
