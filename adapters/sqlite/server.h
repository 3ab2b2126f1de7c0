// The embedded server on one connection: Oracle's statements in, rows and effects out.
//
// Each request is one transaction: a statement that writes, draws a sequence or calls a routine
// that writes takes the write lock before it starts, so that nothing has to be tried twice, and is
// rolled back whole when it fails.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "adapters/shared/dialect/dialect.h"
#include "adapters/sqlite/connection.h"
#include "adapters/sqlite/date_text.h"
#include "adapters/sqlite/routines.h"
#include "adapters/sqlite/value.h"
#include "sabrel/platform/data_link.h"

namespace sabrel::sqlite {

/// What a session keeps whatever connection serves it.
struct SessionState {
  /// Last drawn value by sequence.
  std::unordered_map<std::string, std::int64_t> current_values;
  std::string date_format{kDefaultDateFormat};
};

/// What a query came to: a statement that still runs and stands on its first row, or all its rows.
struct QueryResult {
  std::vector<std::string> column_names;
  std::optional<Statement> running;
  std::optional<RowBlock> rows;
};

/// The dialect's questions, answered for this engine.
class SqliteDialect final : public dialect::Engine {
 public:
  SqliteDialect(Routines& routines, Connection& connection)
      : routines_(&routines), connection_(&connection) {}
  [[nodiscard]] Traits EngineTraits() const override {
    Traits traits;
    traits.number_type = "NUMERIC";
    traits.renames_in_tables = false;
    return traits;
  }
  [[nodiscard]] std::optional<RoutineFacts> FindRoutine(std::string_view name) const override;
  [[nodiscard]] bool KnowsFunction(std::string_view name) const override;
  [[nodiscard]] bool IsReservedWord(std::string_view word) const override;
  [[nodiscard]] CastParts PartsOfCast(std::string_view upper_name,
                                      const std::vector<std::string>& sizes) const override;
  [[nodiscard]] std::string NextValue(std::string_view sequence) const override;
  [[nodiscard]] std::string CurrentValue(std::string_view sequence) const override;
  [[nodiscard]] std::string SystemDate() const override { return "sabrel_sysdate()"; }
  [[nodiscard]] CallOpening RoutineCall(std::string_view name) const override;
  [[nodiscard]] std::string_view AddFunction() const override { return "sabrel_add"; }
  [[nodiscard]] std::string_view SubtractFunction() const override { return "sabrel_sub"; }
  [[nodiscard]] std::string_view DivideFunction() const override { return "sabrel_div"; }
  [[nodiscard]] std::string_view ConcatenateFunction() const override { return "sabrel_concat"; }
  [[nodiscard]] std::string_view SingleFunction() const override { return "sabrel_single"; }
  [[nodiscard]] std::string_view CompareFunction() const override { return "sabrel_compare"; }
  [[nodiscard]] std::string_view PatternFunction() const override { return "sabrel_like"; }
  [[nodiscard]] std::string_view FunctionName(std::string_view upper_name) const override {
    // The engine's own counts a date's bytes; checks of tables rely on it.
    return upper_name == "LENGTH" ? "sabrel_length" : "";
  }
  [[nodiscard]] std::vector<std::string_view> ConversionsOf(
      std::string_view table, const std::vector<std::string>& columns) const override;

 private:
  Routines* routines_;
  Connection* connection_;
};

class Server {
 public:
  Server(const std::string& path, std::shared_ptr<CancelSwitch> cancel_switch,
         std::shared_ptr<SessionState> session, Durability durability, Deadline deadline);
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  [[nodiscard]] Connection& Engine() noexcept { return connection_; }
  [[nodiscard]] Routines& Stored() noexcept { return routines_; }

  // Requests; `statement` is what RequireOneStatement returned. Errors: ServerFailure,
  // SyntaxFailure, connection 24.
  /// Returns the number of rows changed, or kUnknownRows.
  std::int64_t Execute(std::string_view statement);
  [[nodiscard]] QueryResult Query(std::string_view statement);
  [[nodiscard]] RoutineOutcome Call(const RoutineCall& call);
  void Write(const RowSet& rows);

  // Parts of requests, inside a transaction or before one.
  [[nodiscard]] dialect::Rewritten Compile(std::string_view statement) const;
  /// As Compile, for text that this server composed.
  [[nodiscard]] dialect::Rewritten CompileOwn(std::string_view statement) const;
  /// Prepares and binds the lifted constants. Errors: 14551 for a query of tables that calls a
  /// routine that writes, which could go on for ever
  [[nodiscard]] Statement Prepare(const dialect::Rewritten& rewritten);

  // What functions of SQL ask for.
  [[nodiscard]] std::int64_t NextValue(const std::string& sequence);
  [[nodiscard]] std::int64_t CurrentValue(const std::string& sequence);

 private:
  void RefuseWritingQuery(const dialect::Rewritten& rewritten);
  std::int64_t ExecuteStatement(std::string_view statement);
  void RunBlock(std::string_view block);
  void RunCallStep(const dialect::BlockStep& step);
  [[nodiscard]] std::vector<Value> EvaluateArguments(const std::vector<std::string>& expressions);
  [[nodiscard]] bool Writes(const dialect::BlockStep& step) const;
  /// CREATE and DROP of what the engine does not know itself, and of tables.
  void Define(dialect::StatementKind kind, std::string_view statement);
  static Value TakeArguments(std::span<const Value> arguments, void* server);

  Connection connection_;
  std::shared_ptr<SessionState> session_;
  Routines routines_;
  SqliteDialect dialect_;
  std::vector<Value> taken_arguments_;
};

/// Whether a column that was declared so holds dates.
[[nodiscard]] bool IsDateType(std::string_view declared);
[[nodiscard]] Value ValueOf(const dialect::Constant& constant);
/// Refuses parameters that the statement itself names: nobody gives their values. Throws
/// ServerFailure 1008.
void RequireBound(const Statement& statement, const dialect::Rewritten& rewritten);
/// `name` in double quotes.
[[nodiscard]] std::string QuotedName(std::string_view name);

}  // namespace sabrel::sqlite
