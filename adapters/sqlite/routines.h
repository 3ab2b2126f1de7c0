// Stored functions and procedures: rows of the catalogue, compiled when first used.
//
// A body is a sequence of statements in Oracle's language with named parameters, run in order. A
// SELECT assigns its first row to the variables that its columns name: arguments, RETURN_VALUE (a
// function's result) or local ones; no row assigns nothing. A variable that nothing assigned is
// null.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "adapters/shared/dialect/dialect.h"
#include "adapters/sqlite/connection.h"
#include "adapters/sqlite/value.h"

namespace sabrel::sqlite {

class Server;

struct Routine {
  struct Step {
    dialect::Rewritten statement;
    /// Variables in the order of the parameters behind the constants.
    std::vector<std::string> variables;
  };
  std::string name;  // qualified, upper case
  bool is_function = false;
  std::string result_type;
  std::vector<dialect::RoutineArgument> arguments;  // names upper case
  std::vector<Step> steps;
  bool writes = false;

  [[nodiscard]] bool HasOutArguments() const noexcept;
};

struct RoutineResult {
  Value result;
  /// Per argument, its value after the run.
  std::vector<Value> arguments;
};

class Routines {
 public:
  static constexpr int kDeepestCall = 50;

  explicit Routines(Server& server) : server_(&server) {}

  /// Nothing when there is no such routine. Compiled routines are kept until any routine is created
  /// or dropped.
  [[nodiscard]] std::shared_ptr<const Routine> Find(std::string_view upper_name);
  /// Runs inside the caller's transaction. Errors: 36 for calls nested too deep, the body's
  [[nodiscard]] RoutineResult Run(const Routine& routine, std::vector<Value> arguments);

  void Create(const dialect::RoutineDefinition& definition);
  void Drop(const std::string& upper_name);

  /// Routines, or tables that they name, are others now: every connection compiles them anew.
  void CountChange();
  /// Drops what was compiled: a change of the catalogue was taken back.
  void Forget() noexcept {
    kept_.clear();
    version_ = 0;
    checked_ = false;
  }
  /// To be called at the start of a request: kept routines may be outdated from now on.
  void MayBeOutdated() noexcept { checked_ = false; }

 private:
  void ForgetOutdated();
  [[nodiscard]] std::int64_t IdOf(std::string_view upper_name);
  void Load(Routine& routine, std::int64_t id);
  [[nodiscard]] Statement PrepareStep(const Routine& routine, const Routine::Step& step);

  Server* server_;
  std::unordered_map<std::string, std::shared_ptr<const Routine>> kept_;
  std::int64_t version_ = 0;
  bool checked_ = false;
  int depth_ = 0;
};

/// Replaces each named parameter of `text` by a numbered one behind the first `constants`, and
/// tells their names in upper case: the engine would number them among the constants.
[[nodiscard]] std::vector<std::string> NumberVariables(std::string& text, std::size_t constants);

}  // namespace sabrel::sqlite
