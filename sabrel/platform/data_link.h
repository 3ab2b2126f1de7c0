// What an adapter does for the shared recordset, procedure call and row-set writer.
//
// The three objects that the component works with are the same for every Data Server; this is the
// narrow side that differs. An adapter implements four calls, a test double answers them from a
// script. Addresses come as the caller gave them: an empty host is the session's profile, port 0,
// an empty user or password and time-out 0 that profile's setting; time-outs are seconds. A failure
// is thrown as RuntimeError: `kCodeBase + kDatabaseErrorCode` for what the server refused (details
// stay readable as the last database error), `kCodeBase + kConnectionErrorBase + code` for a
// connection failure.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sabrel/platform/row_block.h"
#include "sabrel/platform/row_text.h"
#include "sabrel/platform/variant.h"

namespace sabrel {

/// Where a statement goes.
struct DataServerAddress {
  std::string host;
  std::int32_t port = 0;
  std::string user;
  std::string password;
  std::int32_t timeout_s = 0;
};

/// The rows of one running statement, in blocks, forward only.
class Cursor {
 public:
  virtual ~Cursor() = default;
  [[nodiscard]] virtual const std::vector<std::string>& ColumnNames() const = 0;
  /// Appends at least one row to `block`, then more until it holds about `byte_limit` bytes, or
  /// until the rows end. Returns false when they have ended; the statement is then finished and
  /// must not be asked again. Cost: at most one round trip. Errors: the statement's, or code 24
  /// when the time-out passes
  virtual bool Fetch(RowBlock& block, std::size_t byte_limit) = 0;
};

/// One appended parameter: the value as text (empty is null), the type word ("integer", "string"),
/// a name.
struct RoutineParameter {
  std::string value;
  std::string type_word;
  std::string name;
};

/// A call of a stored routine. One parameter more than the routine declares, and it being a
/// function, makes parameter 0 the result position.
struct RoutineCall {
  std::string procedure;
  DataServerAddress address;
  std::vector<RoutineParameter> parameters;
};

struct RoutineOutcome {
  /// The function's result; null for a procedure.
  Variant result;
  /// One per appended parameter: a value for out parameters and the result position, nothing for
  /// the others.
  std::vector<std::optional<Variant>> outputs;
};

/// Rows for one table in one request.
struct RowSet {
  struct Column {
    std::string name;
    std::string type_word;  // "INT" or "STRING"
  };
  std::string table;
  std::vector<Column> columns;
  RowTexts rows;
};

/// Of a request whose server does not count rows.
inline constexpr std::int64_t kUnknownRows = -1;

class DataLink {
 public:
  virtual ~DataLink() = default;
  /// Sends a statement that returns rows. Errors: 911 before sending, for text that cannot be sent
  [[nodiscard]] virtual std::unique_ptr<Cursor> Query(std::string_view sql,
                                                      const DataServerAddress& address) = 0;
  /// Sends a statement without rows (rows that come all the same are dropped); one transaction, one
  /// round trip. Returns how many rows it inserted, updated or deleted, kUnknownRows for a
  /// statement of another kind.
  virtual std::int64_t Execute(std::string_view sql, const DataServerAddress& address) = 0;
  /// Calls a routine. Errors: 6550 before sending, for an unknown routine or a wrong count
  [[nodiscard]] virtual RoutineOutcome Call(const RoutineCall& call) = 0;
  /// Writes all rows or none, on the session's own connection; one request.
  virtual void Write(const RowSet& rows) = 0;
};

}  // namespace sabrel
