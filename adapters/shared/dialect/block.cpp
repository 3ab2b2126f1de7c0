// Blocks and stored routines: BEGIN, steps that end in ";", END. Variables and control flow are
// refused.
#include <algorithm>
#include <utility>

#include "adapters/shared/dialect/cursor.h"

namespace sabrel::dialect {
namespace {

constexpr std::int32_t kCompilationError = 6550;

void RefuseControlFlow(const Cursor& cursor) {
  constexpr std::string_view kRefused[] = {
      "DECLARE", "IF",   "LOOP",  "FOR",   "WHILE", "CASE",    "EXCEPTION", "RAISE",  "GOTO",
      "EXIT",    "OPEN", "FETCH", "CLOSE", "BEGIN", "EXECUTE", "FORALL",    "PRAGMA", "CONTINUE"};
  if (std::any_of(std::begin(kRefused), std::end(kRefused),
                  [&](std::string_view word) { return cursor.IsText(word); })) {
    cursor.Fail("blocks hold calls and statements only");
  }
}

bool StartsStatement(const Cursor& cursor) {
  switch (cursor.Here().word) {
    case Word::kSelect:
    case Word::kWith:
    case Word::kInsert:
    case Word::kUpdate:
    case Word::kDelete:
    case Word::kCommit:
    case Word::kRollback:
    case Word::kSavepoint: return true;
    default: return cursor.IsText("MERGE");
  }
}

void ParseArguments(Cursor& cursor, BlockStep& step) {
  if (cursor.SkipSymbol(')')) return;
  do {
    std::string name;
    if (cursor.Here().kind == TokenKind::kWord && cursor.Ahead().kind == TokenKind::kSymbol &&
        cursor.Ahead().symbol == kArrow) {
      name = cursor.HereText();
      cursor.Skip();
      cursor.Skip();
    } else if (!step.names.empty() && !step.names.back().empty()) {
      cursor.Fail("a positional argument may not follow a named one");
    }
    std::string argument(cursor.Expression());
    if (argument.empty()) cursor.Fail("an argument is missing");
    step.arguments.push_back(std::move(argument));
    step.names.push_back(std::move(name));
  } while (cursor.SkipSymbol(','));
  cursor.ExpectSymbol(')', "the list of arguments is not closed");
}

BlockStep ParseStep(Cursor& cursor) {
  RefuseControlFlow(cursor);
  BlockStep step;
  if (StartsStatement(cursor)) {
    step.statement = cursor.Statement();
    return step;
  }
  step.is_call = true;
  const std::string_view what = "a call or a statement is missing";
  do {
    step.name += step.name.empty() ? "" : ".";
    step.name += cursor.HereText();
    (void)cursor.Name(what);
  } while (cursor.SkipSymbol('.'));
  if (cursor.SkipSymbol('(')) ParseArguments(cursor, step);
  if (cursor.IsSymbol(kAssignment)) {
    cursor.Fail("assignments are not supported: blocks hold calls and statements only");
  }
  return step;
}

void ExpectEnd(Cursor& cursor) {
  cursor.ExpectWord(Word::kEnd, "END is missing");
  if (!cursor.IsSymbol(';')) (void)cursor.QualifiedName("\";\" is missing");
  cursor.ExpectSymbol(';', "\";\" is missing");
  if (!cursor.AtEnd()) cursor.Fail("text behind END;");
}

std::string ParseType(Cursor& cursor) {
  std::string type;
  if (cursor.Here().kind == TokenKind::kWord) type = cursor.HereText();
  std::transform(type.begin(), type.end(), type.begin(), AsciiUpper);
  if (type.empty()) cursor.Fail("a type is missing");
  cursor.Skip();
  if (cursor.SkipSymbol('(')) {
    do {
      (void)cursor.Integer();
    } while (cursor.SkipSymbol(','));
    if (!cursor.SkipText("CHAR")) cursor.SkipText("BYTE");
    cursor.ExpectSymbol(')', "\")\" of a type is missing");
  }
  return type;
}

RoutineArgument ParseArgument(Cursor& cursor) {
  RoutineArgument argument;
  argument.name = cursor.HereText();
  (void)cursor.Name("the name of an argument is missing");
  const bool is_in = cursor.SkipWord(Word::kIn);
  if (cursor.SkipText("OUT")) argument.direction = is_in ? Direction::kInOut : Direction::kOut;
  argument.type = ParseType(cursor);
  if (cursor.IsWord(Word::kDefault) || cursor.IsSymbol(kAssignment)) {
    cursor.Fail("default values of arguments are not supported");
  }
  return argument;
}

}  // namespace

std::vector<BlockStep> ParseBlock(std::string_view block) {
  Cursor cursor(block, kCompilationError);
  if (cursor.IsWord(Word::kDeclare)) RefuseControlFlow(cursor);
  cursor.ExpectWord(Word::kBegin, "BEGIN is missing");
  std::vector<BlockStep> steps;
  while (!cursor.IsWord(Word::kEnd)) {
    if (!cursor.SkipWord(Word::kNull)) steps.push_back(ParseStep(cursor));
    cursor.ExpectSymbol(';', "\";\" is missing");
  }
  ExpectEnd(cursor);
  return steps;
}

RoutineDefinition ParseCreateRoutine(std::string_view statement) {
  Cursor cursor(statement, kCompilationError);
  RoutineDefinition routine;
  cursor.ExpectWord(Word::kCreate, "CREATE is missing");
  if (cursor.SkipWord(Word::kOr)) {
    cursor.ExpectWord(Word::kReplace, "REPLACE is missing");
    routine.or_replace = true;
  }
  routine.is_function = cursor.SkipWord(Word::kFunction);
  if (!routine.is_function) cursor.ExpectWord(Word::kProcedure, "PROCEDURE is missing");
  routine.name = cursor.Name("the routine's name is missing");
  if (cursor.SkipSymbol('.')) {
    routine.package = std::exchange(routine.name, cursor.Name("the routine's name is missing"));
  }
  if (cursor.SkipSymbol('(')) {
    do {
      routine.arguments.push_back(ParseArgument(cursor));
    } while (cursor.SkipSymbol(','));
    cursor.ExpectSymbol(')', "the list of arguments is not closed");
  }
  if (routine.is_function) {
    cursor.ExpectWord(Word::kReturn, "RETURN is missing");
    routine.result_type = ParseType(cursor);
    cursor.SkipText("DETERMINISTIC");
  }
  if (!cursor.SkipWord(Word::kIs)) cursor.ExpectWord(Word::kAs, "AS is missing");
  cursor.ExpectWord(Word::kBegin, "BEGIN is missing: declarations are not supported");
  while (!cursor.IsWord(Word::kEnd)) {
    RefuseControlFlow(cursor);
    const std::string_view step = cursor.Statement();
    if (step.empty()) cursor.Fail("a statement is missing");
    cursor.ExpectSymbol(';', "\";\" is missing");
    if (step.size() != 4 || FindWord(step) != Word::kNull) routine.body.emplace_back(step);
  }
  ExpectEnd(cursor);
  return routine;
}

}  // namespace sabrel::dialect
