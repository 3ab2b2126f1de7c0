// A connection to a database server; all of it is used by its worker only.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "adapters/odbc/cancel_point.h"
#include "adapters/odbc/engine.h"
#include "adapters/odbc/statement.h"
#include "sabrel/platform/connection_profile.h"
#include "sabrel/platform/data_link.h"

namespace sabrel::odbc {

/// What a connection finds: a site, or a database that is to become one.
enum class Opening : std::uint8_t { kSite, kBare };

class Connection {
 public:
  /// Connects, the driver being told to give up soon after the profile's connect time-out.
  /// Errors: DriverFailure
  Connection(const Engine& engine, const ConnectionProfile& profile, const SectionSettings& section,
             Opening opening, std::shared_ptr<CancelPoint> cancel_point);
  /// Disconnects.
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  /// Sends a statement and drops what it returns; returns the number of rows changed, which is of
  /// no meaning for statements that change none. Cost: one round trip. Errors: DriverFailure
  std::int64_t Execute(const std::u16string& text, std::int32_t timeout_s);
  /// A statement that runs; it must end before the connection does. Cost: one round trip, one more
  /// at its end where rows come through a cursor, and one for a question not asked before
  [[nodiscard]] std::unique_ptr<Statement> Query(const Compiled& statement, std::int32_t timeout_s);

  /// The description of a routine, asked for once; nothing where there is none, or where
  /// several have the name and none takes `arguments` of them (one more: a result position).
  [[nodiscard]] std::optional<Signature> Find(const std::string& name, std::size_t arguments,
                                              std::int32_t timeout_s);
  void ForgetRoutines() noexcept { routines_.clear(); }

  /// Calls a routine; `values` are the in-values of all its arguments in order, nothing for null.
  /// Returns one row: a function's result, then the out arguments in order.
  [[nodiscard]] RowBlock Call(const Signature& signature,
                              const std::vector<std::optional<std::string>>& values,
                              std::int32_t timeout_s);
  /// Writes all rows in one transaction. `head` is the server's `INSERT INTO t (a, b) VALUES `;
  /// pieces are checked already. Errors: DriverFailure, after everything was rolled back
  void Write(std::string_view head, const RowSet& rows, std::int32_t timeout_s);

  /// Calls as `{? = call name(?, ?)}` whatever the engine prefers, and appends the row that Call
  /// returns. Cost: preparing, one round trip. Errors: DriverFailure
  void CallBound(const Signature& signature, const std::vector<std::optional<std::string>>& values,
                 std::int32_t timeout_s, RowBlock& row);
  /// Writes as arrays of parameters whatever the engine prefers, in whatever transaction is open.
  /// Cost: preparing and one round trip for each array. Errors: DriverFailure
  void WriteArrays(std::string_view head, const RowSet& rows, std::int32_t timeout_s);

 private:
  [[nodiscard]] std::unique_ptr<Statement> Run(const std::string& text, std::int32_t timeout_s);
  [[nodiscard]] bool IsSo(const std::string& question, std::int32_t timeout_s);
  void CallByText(const Signature& signature, const std::vector<std::optional<std::string>>& values,
                  std::int32_t timeout_s, RowBlock& row);
  void WriteManyRows(std::string_view head, const RowSet& rows, std::int32_t timeout_s);
  void SetAutocommit(bool on);
  void EndTransaction(bool commit);

  const Engine& engine_;
  std::shared_ptr<CancelPoint> cancel_point_;
  void* handle_ = nullptr;
  std::map<std::string, std::vector<Signature>, std::less<>> routines_;
  std::map<std::string, bool> answers_;  // to questions of compiled statements
};

}  // namespace sabrel::odbc
