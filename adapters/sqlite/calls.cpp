// Calls of stored routines: from procedure-call objects and from blocks.
#include <algorithm>
#include <utility>

#include "adapters/sqlite/access.h"
#include "adapters/sqlite/failure.h"
#include "adapters/sqlite/functions.h"
#include "adapters/sqlite/server.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::sqlite {
namespace {

using dialect::Direction;

[[noreturn]] void ThrowUnknown(std::string_view name) {
  throw ServerFailure(6550, "PLS-00201: identifier '" + std::string(name) + "' must be declared");
}

[[noreturn]] void ThrowWrongCount(std::string_view name) {
  throw ServerFailure(
      6550, "PLS-00306: wrong number or types of arguments in call to '" + std::string(name) + "'");
}

/// A parameter's text as a value of its type word.
Value ParameterValue(const RoutineParameter& parameter) {
  const Value text = TextValue(parameter.value);
  if (text.IsNull() || !EqualIgnoringCase(parameter.type_word, "integer")) return text;
  if (auto number = NumberFrom(parameter.value)) return *number;
  throw ServerFailure(6502, "PL/SQL: numeric or value error: character to number conversion");
}

void RequireSendable(const RoutineCall& call) {
  const auto is_sendable = [](std::string_view text) { return IsSendableText(text); };
  bool sendable = is_sendable(call.procedure);
  for (const RoutineParameter& parameter : call.parameters) {
    sendable = sendable && is_sendable(parameter.value) && is_sendable(parameter.name);
  }
  if (!sendable) throw ServerFailure(911, "invalid character in a call's parameter");
}

/// For each argument of `routine` the index of the step's expression; throws for what does not fit.
std::vector<std::size_t> MatchArguments(const Routine& routine, const dialect::BlockStep& step) {
  std::vector<std::size_t> matched(routine.arguments.size(), step.arguments.size());
  if (step.arguments.size() != routine.arguments.size()) ThrowWrongCount(routine.name);
  for (std::size_t i = 0; i < step.arguments.size(); ++i) {
    std::size_t place = i;
    if (i < step.names.size() && !step.names[i].empty()) {
      place = 0;
      while (place < matched.size() &&
             !EqualIgnoringCase(routine.arguments[place].name, step.names[i])) {
        ++place;
      }
    }
    if (place >= matched.size() || matched[place] != step.arguments.size()) {
      ThrowWrongCount(routine.name);
    }
    matched[place] = i;
  }
  return matched;
}

}  // namespace

RoutineOutcome Server::Call(const RoutineCall& call) {
  routines_.MayBeOutdated();
  RequireSendable(call);
  const auto routine = routines_.Find(UpperCase(TrimBlanks(call.procedure)));
  if (!routine) ThrowUnknown(call.procedure);
  const std::size_t declared = routine->arguments.size();
  const std::size_t given = call.parameters.size();
  const bool has_result_position = routine->is_function && given == declared + 1;
  if (given != declared && !has_result_position) ThrowWrongCount(routine->name);
  const std::size_t first = has_result_position ? 1 : 0;
  std::vector<Value> arguments;
  for (std::size_t i = 0; i < declared; ++i) {
    const bool is_out = routine->arguments[i].direction == Direction::kOut;
    arguments.push_back(is_out ? Value{} : ParameterValue(call.parameters[first + i]));
  }
  Transaction transaction(connection_,
                          routine->writes ? Transaction::Kind::kWrite : Transaction::Kind::kRead);
  const RoutineResult result = routines_.Run(*routine, std::move(arguments));
  transaction.Commit();

  RoutineOutcome outcome;
  outcome.result = ToVariant(result.result);
  outcome.outputs.resize(given);
  if (has_result_position) outcome.outputs[0] = outcome.result;
  for (std::size_t i = 0; i < declared; ++i) {
    if (routine->arguments[i].direction == Direction::kIn) continue;
    outcome.outputs[first + i] = ToVariant(result.arguments[i]);
  }
  return outcome;
}

bool Server::Writes(const dialect::BlockStep& step) const {
  if (!step.is_call) return Compile(step.statement).writes;
  const auto facts = dialect_.FindRoutine(UpperCase(step.name));
  if (facts && facts->writes) return true;
  return std::any_of(step.arguments.begin(), step.arguments.end(), [this](const auto& expression) {
    return Compile("SELECT " + expression + " FROM DUAL").writes;
  });
}

void Server::RunBlock(std::string_view block) {
  const std::vector<dialect::BlockStep> steps = dialect::ParseBlock(block);
  const bool writes =
      std::any_of(steps.begin(), steps.end(), [this](const auto& step) { return Writes(step); });
  Transaction transaction(connection_,
                          writes ? Transaction::Kind::kWrite : Transaction::Kind::kRead);
  for (const dialect::BlockStep& step : steps) {
    if (step.is_call) {
      RunCallStep(step);
      continue;
    }
    const dialect::Rewritten rewritten = Compile(step.statement);
    if (rewritten.kind != dialect::StatementKind::kInsert &&
        rewritten.kind != dialect::StatementKind::kUpdate &&
        rewritten.kind != dialect::StatementKind::kDelete) {
      throw ServerFailure(6550, "PLS-00103: a block is made of calls, INSERT, UPDATE and DELETE");
    }
    Prepare(rewritten).RunToEnd();
  }
  transaction.Commit();
}

void Server::RunCallStep(const dialect::BlockStep& step) {
  const std::string name = UpperCase(step.name);
  const auto routine = routines_.Find(name);
  if (!routine && name == "RAISE_APPLICATION_ERROR") {
    std::vector<Value> arguments = EvaluateArguments(step.arguments);
    if (arguments.size() < 2) ThrowWrongCount(name);
    Statement raise = connection_.Prepare("SELECT RAISE_APPLICATION_ERROR(?1, ?2)");
    raise.Bind(1, arguments[0]);
    raise.Bind(2, arguments[1]);
    raise.Step();
    return;
  }
  if (!routine) ThrowUnknown(step.name);
  if (routine->is_function) {
    throw ServerFailure(6550, "PLS-00221: '" + name + "' is not a procedure or is undefined");
  }
  const std::vector<std::size_t> matched = MatchArguments(*routine, step);
  if (routine->HasOutArguments()) {
    throw ServerFailure(6550,
                        "PLS-00363: an expression cannot be used as an assignment target in a "
                        "call to '" +
                            name + "'");
  }
  const std::vector<Value> given = EvaluateArguments(step.arguments);
  std::vector<Value> arguments;
  for (const std::size_t index : matched) arguments.push_back(given[index]);
  static_cast<void>(routines_.Run(*routine, std::move(arguments)));
}

std::vector<Value> Server::EvaluateArguments(const std::vector<std::string>& expressions) {
  taken_arguments_.clear();
  if (expressions.empty()) return {};
  // As arguments of a function their constants are lifted, so that calls share one prepared
  // statement.
  std::string sql = "SELECT sabrel_arguments(";
  for (std::size_t i = 0; i < expressions.size(); ++i) sql += (i > 0 ? "," : "") + expressions[i];
  sql += ") FROM DUAL";
  for (const std::string& expression : expressions) RefuseOwnNames(expression);
  Statement evaluate = Prepare(CompileOwn(sql));
  evaluate.Step();
  return std::exchange(taken_arguments_, {});
}

Value Server::TakeArguments(std::span<const Value> arguments, void* server) {
  static_cast<Server*>(server)->taken_arguments_.assign(arguments.begin(), arguments.end());
  return {};
}

}  // namespace sabrel::sqlite
