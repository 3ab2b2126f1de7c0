#include "adapters/odbc/odbc_link.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <utility>
#include <vector>

#include "adapters/odbc/wide_text.h"
#include "adapters/shared/oracle_prefix.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::odbc {
namespace {

/// Runs `work`; what the server refuses becomes the last database error and the failure that
/// callers know.
template <class Work>
auto Reporting(DatabaseError& last_error, const ConnectionPool& pool, Work&& work) {
  const auto refuse = [&](std::int32_t number, const std::string& message, std::string detail) {
    const std::string prefix = message.starts_with("ORA-") ? "" : OraclePrefix(number);
    last_error = {number, std::string(pool.Server().ServerName()), pool.Origin(), prefix + message,
                  std::move(detail)};
  };
  try {
    return work();
  } catch (const Refused& refused) {
    if (refused.What().connection) {
      throw ConnectionFailed(*refused.What().connection,
                             "The Data Server at " + pool.Address() + ": " + refused.Message());
    }
    refuse(refused.What().native_number, refused.Message(),
           refused.State().empty() ? "" : "SQLSTATE " + refused.State());
  } catch (const dialect::SyntaxFailure& failure) {
    refuse(failure.native_number, failure.message, {});
  }
  throw DatabaseFailure(last_error);
}

/// Rows on their way from a worker's thread; shared with it, since it may be left behind.
struct Block {
  RowBlock rows{0};
  std::vector<std::string> names;
  bool has_more = false;
};

void FetchInto(Block& block, Workplace& here, std::size_t byte_limit) {
  try {
    block.has_more = here.statement->Fetch(block.rows, byte_limit);
  } catch (...) {
    here.statement.reset();
    throw;
  }
  here.is_read = !block.has_more;
}

/// Rows of a statement: the first ones are there already, and where there are more the statement
/// still runs, on a connection of its own.
class OdbcCursor final : public Cursor {
 public:
  OdbcCursor(std::shared_ptr<ConnectionPool> pool, std::optional<Lease> lease, Block first,
             std::shared_ptr<DatabaseError> last_error, std::int32_t timeout_s, Deadline deadline)
      : pool_(std::move(pool)),
        lease_(std::move(lease)),
        first_(std::move(first)),
        last_error_(std::move(last_error)),
        timeout_s_(timeout_s),
        opening_(deadline) {}
  ~OdbcCursor() override { Finish(); }
  OdbcCursor(const OdbcCursor&) = delete;
  OdbcCursor& operator=(const OdbcCursor&) = delete;

  [[nodiscard]] const std::vector<std::string>& ColumnNames() const override {
    return first_.names;
  }

  bool Fetch(RowBlock& block, std::size_t byte_limit) override {
    if (first_.rows.Rows() > 0 || !lease_) {
      block = std::exchange(first_.rows, RowBlock(first_.names.size()));
      if (!lease_ || block.Bytes() >= byte_limit) {
        bytes_ += block.Bytes();
        return lease_.has_value();
      }
    }
    // The query and the blocks that its opening reads share one limit; each later one has its own.
    const Deadline deadline = bytes_ < Recordset::kOpenBytes ? opening_ : DeadlineIn(timeout_s_);
    const auto next = std::make_shared<Block>();
    next->rows = std::move(block);
    try {
      Reporting(*last_error_, *pool_, [&] {
        lease_->Do([next, byte_limit](Workplace& here) { FetchInto(*next, here, byte_limit); },
                   deadline);
      });
    } catch (...) {
      Finish();
      throw;
    }
    block = std::move(next->rows);
    bytes_ += block.Bytes();
    if (!next->has_more) lease_.reset();
    return next->has_more;
  }

 private:
  void Finish() noexcept {
    if (lease_) lease_->DropStatement();
    lease_.reset();
  }

  std::shared_ptr<ConnectionPool> pool_;
  std::optional<Lease> lease_;
  Block first_;
  std::shared_ptr<DatabaseError> last_error_;
  std::int32_t timeout_s_;
  Deadline opening_;
  std::size_t bytes_ = 0;  // that were handed out
};

bool IsNumber(std::string_view text) {
  text = TrimBlanks(text);
  if (text.starts_with('+')) text.remove_prefix(1);
  double number = 0.0;
  const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
  return read.ptr == text.data() + text.size() && !text.empty() && std::isfinite(number);
}

/// Throws where a call cannot be sent.
void CheckParameters(const RoutineCall& call) {
  bool is_sendable = IsSendableText(call.procedure);
  for (const RoutineParameter& parameter : call.parameters) {
    is_sendable = is_sendable && IsSendableText(parameter.value);
  }
  if (!is_sendable) throw dialect::SyntaxFailure{911, "invalid character in a call's parameter"};
  for (const RoutineParameter& parameter : call.parameters) {
    if (!parameter.value.empty() && EqualIgnoringCase(parameter.type_word, "integer") &&
        !IsNumber(parameter.value)) {
      throw dialect::SyntaxFailure{
          6502, "PL/SQL: numeric or value error: character to number conversion"};
    }
  }
}

/// Whether the first parameter stands for a function's result.
bool HasResultPosition(const RoutineCall& call, const Signature& signature) {
  return signature.is_function && call.parameters.size() == signature.arguments.size() + 1;
}

/// The in-values of all arguments in order.
std::vector<std::optional<std::string>> InValues(const RoutineCall& call,
                                                 const Signature& signature) {
  const std::size_t first = HasResultPosition(call, signature) ? 1 : 0;
  std::vector<std::optional<std::string>> values(signature.arguments.size());
  if (call.parameters.size() != values.size() + first) {
    throw Refused({6550, {}}, "PLS-00306: wrong number or types of arguments in call to '" +
                                  UpperCase(call.procedure) + "'");
  }
  for (std::size_t i = 0; i < values.size(); ++i) {
    const std::string& value = call.parameters[first + i].value;
    const bool is_in = signature.arguments[i].direction != dialect::Direction::kOut;
    if (is_in && !value.empty()) values[i] = value;
  }
  return values;
}

/// `row` is the result and the out arguments in order.
RoutineOutcome OutcomeOf(const RoutineCall& call, const Signature& signature, const RowBlock& row) {
  RoutineOutcome outcome;
  std::size_t column = 0;
  outcome.result = signature.is_function ? row.Cell(0, column++) : Variant(Null{});
  outcome.outputs.resize(call.parameters.size());
  const std::size_t first = HasResultPosition(call, signature) ? 1 : 0;
  if (first == 1) outcome.outputs[0] = outcome.result;
  for (std::size_t i = 0; i < signature.arguments.size(); ++i) {
    if (signature.arguments[i].direction == dialect::Direction::kIn) continue;
    outcome.outputs[first + i] = row.Cell(0, column++);
  }
  return outcome;
}

}  // namespace

OdbcLink::OdbcLink(ProfileSet profiles, std::shared_ptr<DatabaseError> last_error, Opening opening)
    : profiles_(std::move(profiles)),
      opening_(opening),
      cancel_(std::make_shared<CancelSwitch>()),
      last_error_(std::move(last_error)) {}

OdbcLink::Target OdbcLink::Find(const DataServerAddress& address) {
  const auto [profile, section, address_replaced] = profiles_.Resolve(address);
  const Engine* const engine = EngineForDriver(profile.Driver);
  if (engine == nullptr) {
    throw ConnectionFailed(ConnectionFailure::kHostUnknown,
                           "The connection profile \"" + profile.Name + "\" wants the driver \"" +
                               profile.Driver +
                               "\"; by its name it is no ODBC driver of PostgreSQL or Oracle "
                               "(odbcinst -q -d lists those installed) and not \"sqlite\".");
  }
  if (const std::string obstacle = ObstacleToTls(profile, section); !obstacle.empty()) {
    throw ConnectionFailed(ConnectionFailure::kRefusedOrSevered,
                           "The connection profile \"" + profile.Name + "\": " + obstacle);
  }
  Key key{profile.Driver,   profile.Host,     profile.Port, profile.Database,
          profile.UserName, profile.Password, section};
  auto& pool = pools_[std::move(key)];
  if (!pool) pool = std::make_shared<ConnectionPool>(*engine, profile, section, opening_, cancel_);
  pool->ConnectTimeout(profile.ConnectTimeout);
  return {pool, profile.ReceiveTimeout};
}

std::unique_ptr<Cursor> OdbcLink::Query(std::string_view sql, const DataServerAddress& address) {
  const Target target = Find(address);
  const Engine& engine = target.pool->Server();
  return Reporting(*last_error_, *target.pool, [&]() -> std::unique_ptr<Cursor> {
    const std::string_view statement = dialect::RequireOneStatement(sql);
    const bool alters_session = dialect::KindOf(statement) == dialect::StatementKind::kAlterSession;
    if (alters_session) AlterSession(statement, target);
    const Compiled compiled = alters_session ? Compiled() : engine.Compile(statement);
    const auto block = std::make_shared<Block>();
    if (compiled.text.empty()) {
      return std::make_unique<OdbcCursor>(target.pool, std::nullopt, std::move(*block), last_error_,
                                          0, Deadline());
    }
    std::optional<Lease> lease(target.pool);
    const Deadline deadline = DeadlineIn(target.timeout_s);
    lease->Do(
        [block, compiled, timeout_s = target.timeout_s](Workplace& here) {
          here.statement = here.connection->Query(compiled, timeout_s);
          block->names = here.statement->ColumnNames();
          block->rows = RowBlock(block->names.size());
          FetchInto(*block, here, Recordset::kBlockBytes);
        },
        deadline, VerbOf(dialect::KindOf(statement)));
    if (engine.FoldsToLowerCase()) {
      for (std::string& name : block->names) {
        if (name == LowerCase(name)) name = UpperCase(name);
      }
    }
    if (!block->has_more) lease.reset();
    return std::make_unique<OdbcCursor>(target.pool, std::move(lease), std::move(*block),
                                        last_error_, target.timeout_s, deadline);
  });
}

std::int64_t OdbcLink::Execute(std::string_view sql, const DataServerAddress& address) {
  const Target target = Find(address);
  return Reporting(*last_error_, *target.pool, [&]() -> std::int64_t {
    const std::string_view statement = dialect::RequireOneStatement(sql);
    if (dialect::KindOf(statement) == dialect::StatementKind::kAlterSession) {
      AlterSession(statement, target);
      return kUnknownRows;
    }
    const std::u16string text = ToWide(target.pool->Server().Compile(statement).text);
    if (text.empty()) return kUnknownRows;
    const auto rows_changed = std::make_shared<std::int64_t>(kUnknownRows);
    Lease(target.pool)
        .Do([text, rows_changed, timeout_s = target.timeout_s](
                Workplace& here) { *rows_changed = here.connection->Execute(text, timeout_s); },
            DeadlineIn(target.timeout_s), VerbOf(dialect::KindOf(statement)));
    return dialect::CountsRows(statement) ? *rows_changed : kUnknownRows;
  });
}

void OdbcLink::AlterSession(std::string_view statement, const Target& target) {
  const std::u16string text = ToWide(target.pool->Server().Compile(statement).text);
  Lease lease(target.pool);
  lease.Do([text, timeout_s = target.timeout_s](
               Workplace& here) { (void)here.connection->Execute(text, timeout_s); },
           DeadlineIn(target.timeout_s));
  auto format = dialect::ParseAlterSession(statement).date_format;
  if (format) lease.KeepDateFormat(*std::move(format));
}

void OdbcLink::ExecuteNative(std::string_view sql) {
  const Target target = Find({});
  Reporting(*last_error_, *target.pool, [&] {
    Lease(target.pool)
        .Do([text = ToWide(sql), timeout_s = target.timeout_s](
                Workplace& here) { here.connection->Execute(text, timeout_s); },
            DeadlineIn(target.timeout_s));
  });
}

RoutineOutcome OdbcLink::Call(const RoutineCall& call) {
  struct Answer {
    Signature signature;
    RowBlock row{0};
  };
  const Target target = Find(call.address);
  return Reporting(*last_error_, *target.pool, [&] {
    CheckParameters(call);
    const auto answer = std::make_shared<Answer>();
    Lease(target.pool)
        .Do(
            [answer, call, timeout_s = target.timeout_s](Workplace& here) {
              auto signature =
                  here.connection->Find(call.procedure, call.parameters.size(), timeout_s);
              if (!signature) {
                throw Refused({6550, {}},
                              "PLS-00201: identifier '" + call.procedure + "' must be declared");
              }
              answer->signature = *std::move(signature);
              try {
                const auto values = InValues(call, answer->signature);
                answer->row = here.connection->Call(answer->signature, values, timeout_s);
              } catch (...) {
                here.connection->ForgetRoutines();  // another may have taken its place
                throw;
              }
            },
            DeadlineIn(target.timeout_s));
    return OutcomeOf(call, answer->signature, answer->row);
  });
}

void OdbcLink::Write(const RowSet& rows) {
  const Target target = Find({});
  Reporting(*last_error_, *target.pool, [&] {
    std::string sql = "INSERT INTO " + rows.table + " (";
    std::string values = "(";
    for (std::size_t i = 0; i < rows.columns.size(); ++i) {
      sql += (i > 0 ? "," : "") + rows.columns[i].name;
      values += i > 0 ? ",NULL" : "NULL";
    }
    values += ")";
    // One row of nulls, compiled for the names' sake; its values are then taken off again.
    sql += ") VALUES " + values;
    std::string head = target.pool->Server().Compile(dialect::RequireOneStatement(sql)).text;
    if (!head.ends_with(values)) throw dialect::SyntaxFailure{903, "invalid table name"};
    head.resize(head.size() - values.size());
    for (const std::string_view row : rows.rows) {
      if (!IsSendableText(row)) throw dialect::SyntaxFailure{911, "invalid character in a row"};
    }
    Lease(target.pool)
        .Do([head, copy = std::make_shared<const RowSet>(rows), timeout_s = target.timeout_s](
                Workplace& here) { here.connection->Write(head, *copy, timeout_s); },
            DeadlineIn(target.timeout_s), Verb::kInsert);
  });
}

OdbcLink::~OdbcLink() { ShutDown(); }

void OdbcLink::ShutDown() noexcept {
  for (auto& [key, pool] : pools_) pool->Close();
  pools_.clear();
  AwaitEndingWorkers();
}

}  // namespace sabrel::odbc
