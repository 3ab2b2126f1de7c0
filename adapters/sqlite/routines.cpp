#include "adapters/sqlite/routines.h"

#include <algorithm>
#include <utility>

#include "adapters/sqlite/failure.h"
#include "adapters/sqlite/server.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::sqlite {
namespace {

constexpr std::string_view kResultVariable = "RETURN_VALUE";

std::string_view DirectionName(dialect::Direction direction) {
  switch (direction) {
    case dialect::Direction::kOut: return "OUT";
    case dialect::Direction::kInOut: return "IN/OUT";
    case dialect::Direction::kIn: break;
  }
  return "IN";
}

dialect::Direction DirectionFrom(std::string_view name) {
  if (name == "OUT") return dialect::Direction::kOut;
  return name == "IN/OUT" ? dialect::Direction::kInOut : dialect::Direction::kIn;
}

bool IsNameCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
         c == '$' || c == '#';
}

/// Offset behind the quoted text or comment that starts at `at`; `at` itself when none does.
std::size_t BehindQuoted(std::string_view text, std::size_t at) {
  const auto behind = [text](std::string_view closing, std::size_t from) {
    const std::size_t found = text.find(closing, from);
    return found == std::string_view::npos ? text.size() : found + closing.size();
  };
  if (text[at] == '\'' || text[at] == '"') return behind(text.substr(at, 1), at + 1);
  if (text.substr(at, 2) == "--") return behind("\n", at);
  if (text.substr(at, 2) == "/*") return behind("*/", at + 2);
  return at;
}

/// Where `failure` does not know a column that has an argument's name: tells how that is written.
void RefuseBareArgument(const Routine& routine, const ServerFailure& failure) {
  constexpr std::int32_t kInvalidIdentifier = 904;
  if (failure.Error().native_number != kInvalidIdentifier) return;
  const std::string message = UpperCase(failure.Error().message);
  for (const dialect::RoutineArgument& argument : routine.arguments) {
    if (!message.ends_with(": " + argument.name)) continue;
    throw ServerFailure(kInvalidIdentifier,
                        "invalid identifier: " + argument.name +
                            "; in a body a parameter is written :" + argument.name);
  }
}

class DepthGuard {
 public:
  explicit DepthGuard(int& depth) : depth_(&depth) { ++depth; }
  ~DepthGuard() { --*depth_; }
  DepthGuard(const DepthGuard&) = delete;
  DepthGuard& operator=(const DepthGuard&) = delete;

 private:
  int* depth_;
};

std::pair<std::string_view, std::string_view> SplitName(std::string_view name) {
  const std::size_t dot = name.find('.');
  if (dot == std::string_view::npos) return {"", name};
  return {name.substr(0, dot), name.substr(dot + 1)};
}

}  // namespace

bool Routine::HasOutArguments() const noexcept {
  return std::any_of(arguments.begin(), arguments.end(), [](const auto& argument) {
    return argument.direction != dialect::Direction::kIn;
  });
}

std::vector<std::string> NumberVariables(std::string& text, std::size_t constants) {
  std::vector<std::string> variables;
  std::string numbered;
  for (std::size_t at = 0; at < text.size();) {
    if (const std::size_t behind = BehindQuoted(text, at); behind > at) {
      numbered.append(text, at, behind - at);
      at = behind;
      continue;
    }
    std::size_t end = at + 1;
    if (text[at] == ':') {
      while (end < text.size() && IsNameCharacter(text[end])) ++end;
    }
    if (end == at + 1) {
      numbered += text[at++];
      continue;
    }
    std::string name = UpperCase(std::string_view(text).substr(at + 1, end - at - 1));
    auto known = std::find(variables.begin(), variables.end(), name);
    if (known == variables.end()) known = variables.insert(known, std::move(name));
    numbered +=
        '?' + std::to_string(constants + 1 + static_cast<std::size_t>(known - variables.begin()));
    at = end;
  }
  text = std::move(numbered);
  return variables;
}

std::shared_ptr<const Routine> Routines::Find(std::string_view upper_name) {
  ForgetOutdated();
  const std::string name(upper_name);
  if (const auto found = kept_.find(name); found != kept_.end()) return found->second;
  const std::int64_t id = IdOf(upper_name);
  if (id == 0) return kept_[name] = nullptr;
  auto routine = std::make_shared<Routine>();
  routine->name = name;
  // Whoever calls this routine while it is compiled must take it for one that writes.
  routine->writes = true;
  kept_[name] = routine;
  try {
    Load(*routine, id);
  } catch (...) {
    kept_.erase(name);
    throw;
  }
  routine->writes = std::any_of(routine->steps.begin(), routine->steps.end(),
                                [](const Routine::Step& step) { return step.statement.writes; });
  return routine;
}

void Routines::ForgetOutdated() {
  if (checked_) return;
  Statement version = server_->Engine().Prepare("SELECT version FROM sabrel_catalogue");
  version.Step();
  const std::int64_t now = version.Column(0).integer;
  if (now != version_) kept_.clear();
  version_ = now;
  checked_ = true;
}

void Routines::CountChange() {
  Statement count = server_->Engine().Prepare("UPDATE sabrel_catalogue SET version = version + 1");
  count.Step();
  kept_.clear();
  checked_ = false;
}

std::int64_t Routines::IdOf(std::string_view upper_name) {
  const auto [package, name] = SplitName(upper_name);
  Statement find = server_->Engine().Prepare(
      "SELECT routine_id FROM sabrel_routine WHERE package = ?1 AND name = ?2");
  find.Bind(1, package);
  find.Bind(2, name);
  return find.Step() ? find.Column(0).integer : 0;
}

void Routines::Load(Routine& routine, std::int64_t id) {
  Connection& engine = server_->Engine();
  {
    Statement facts =
        engine.Prepare("SELECT is_function, result_type FROM sabrel_routine WHERE routine_id = ?1");
    facts.Bind(1, id);
    facts.Step();
    routine.is_function = facts.Column(0).integer != 0;
    routine.result_type = facts.Column(1).text;
  }
  {
    Statement arguments = engine.Prepare(
        "SELECT name, direction, type FROM sabrel_argument WHERE routine_id = ?1 ORDER BY "
        "position");
    arguments.Bind(1, id);
    while (arguments.Step()) {
      routine.arguments.push_back({UpperCase(arguments.Column(0).text),
                                   DirectionFrom(arguments.Column(1).text),
                                   arguments.Column(2).text});
    }
  }
  std::vector<std::string> body;
  {
    Statement steps =
        engine.Prepare("SELECT statement FROM sabrel_body WHERE routine_id = ?1 ORDER BY step");
    steps.Bind(1, id);
    while (steps.Step()) body.push_back(steps.Column(0).text);
  }
  for (const std::string& text : body) {
    Routine::Step step;
    step.statement = server_->Compile(text);
    step.variables = NumberVariables(step.statement.text, step.statement.constants.size());
    routine.steps.push_back(std::move(step));
  }
}

Statement Routines::PrepareStep(const Routine& routine, const Routine::Step& step) {
  try {
    return server_->Prepare(step.statement);
  } catch (const ServerFailure& failure) {
    RefuseBareArgument(routine, failure);
    throw;
  }
}

RoutineResult Routines::Run(const Routine& routine, std::vector<Value> arguments) {
  if (depth_ >= kDeepestCall) {
    throw ServerFailure(36, "maximum number of recursive SQL levels (50) exceeded");
  }
  if (routine.writes && !server_->Engine().MayWrite()) {
    throw ServerFailure(14551, "cannot perform a DML operation inside a query: " + routine.name);
  }
  const DepthGuard guard(depth_);
  const std::string_view date_format = server_->Engine().DateFormat();
  std::unordered_map<std::string, Value> variables;
  for (std::size_t i = 0; i < routine.arguments.size(); ++i) {
    const dialect::RoutineArgument& argument = routine.arguments[i];
    if (argument.direction == dialect::Direction::kOut) continue;
    variables[argument.name] = ArgumentFor(argument.type, std::move(arguments[i]), date_format);
  }
  for (const Routine::Step& step : routine.steps) {
    Statement statement = PrepareStep(routine, step);
    int index = static_cast<int>(step.statement.constants.size());
    for (const std::string& name : step.variables) {
      const auto found = variables.find(name);
      statement.Bind(++index, found == variables.end() ? Value{} : found->second);
    }
    if (step.statement.kind != dialect::StatementKind::kSelect) {
      statement.RunToEnd();
    } else if (statement.Step()) {
      for (int column = 0; column < statement.Columns(); ++column) {
        variables[UpperCase(statement.ColumnName(column))] = statement.Column(column);
      }
    }
  }
  RoutineResult result;
  if (routine.is_function) {
    result.result =
        CoerceTo(routine.result_type, variables[std::string(kResultVariable)], date_format);
  }
  for (const dialect::RoutineArgument& argument : routine.arguments) {
    result.arguments.push_back(CoerceTo(argument.type, variables[argument.name], date_format));
  }
  return result;
}

void Routines::Create(const dialect::RoutineDefinition& definition) {
  const std::string name =
      definition.package.empty() ? definition.name : definition.package + "." + definition.name;
  Connection& engine = server_->Engine();
  if (IdOf(name) != 0) {
    if (!definition.or_replace) {
      throw ServerFailure(955, "name is already used by an existing object: " + name);
    }
    Drop(name);
  }
  Statement insert = engine.Prepare(
      "INSERT INTO sabrel_routine (package, name, is_function, result_type)"
      " VALUES (?1, ?2, ?3, ?4) RETURNING routine_id");
  insert.Bind(1, std::string_view(definition.package));
  insert.Bind(2, std::string_view(definition.name));
  insert.Bind(3, std::int64_t{definition.is_function ? 1 : 0});
  insert.Bind(4, std::string_view(definition.result_type));
  insert.Step();
  const std::int64_t id = insert.Column(0).integer;
  insert.Step();
  std::int64_t position = 0;
  for (const dialect::RoutineArgument& argument : definition.arguments) {
    Statement add = engine.Prepare("INSERT INTO sabrel_argument VALUES (?1, ?2, ?3, ?4, ?5)");
    add.Bind(1, id);
    add.Bind(2, ++position);
    add.Bind(3, std::string_view(argument.name));
    add.Bind(4, DirectionName(argument.direction));
    add.Bind(5, std::string_view(argument.type));
    add.Step();
  }
  std::int64_t step = 0;
  for (const std::string& text : definition.body) {
    Statement add = engine.Prepare("INSERT INTO sabrel_body VALUES (?1, ?2, ?3)");
    add.Bind(1, id);
    add.Bind(2, ++step);
    add.Bind(3, std::string_view(text));
    add.Step();
  }
  CountChange();
  // Compiling tells now what would fail at the first call.
  const auto compiled = Find(name);
  for (const Routine::Step& one : compiled->steps) {
    const auto kind = one.statement.kind;
    if (kind != dialect::StatementKind::kSelect && VerbOf(kind) == Verb::kOther) {
      throw ServerFailure(6550, "PLS-00103: a body is made of SELECT, INSERT, UPDATE and DELETE");
    }
    try {
      static_cast<void>(server_->Prepare(one.statement));
    } catch (const ServerFailure& failure) {
      // Anything else may be right by the first call: the body's tables may be made later.
      RefuseBareArgument(*compiled, failure);
    }
  }
}

void Routines::Drop(const std::string& upper_name) {
  const std::int64_t id = IdOf(upper_name);
  if (id == 0) throw ServerFailure(4043, "object " + upper_name + " does not exist");
  Statement drop = server_->Engine().Prepare("DELETE FROM sabrel_routine WHERE routine_id = ?1");
  drop.Bind(1, id);
  drop.Step();
  CountChange();
}

}  // namespace sabrel::sqlite
