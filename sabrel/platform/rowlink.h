// The seam to the Data Server: it makes the objects that carry statements, and knows about
// failures.
//
// One instance serves one thread. `MakeRecordset` and its siblings only make an object: the first
// statement connects.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "sabrel/platform/procedure_call.h"
#include "sabrel/platform/recordset.h"
#include "sabrel/platform/row_set_writer.h"
#include "sabrel/platform/runtime_error.h"

namespace sabrel {

/// What the server said of the last statement that it refused.
struct DatabaseError {
  /// The native number, positive: 1 for ORA-00001.
  std::int32_t native_number = 0;
  std::string source;
  std::string originator;
  std::string message;
  std::string detail;
};

class Rowlink {
 public:
  virtual ~Rowlink() = default;

  [[nodiscard]] virtual std::shared_ptr<Recordset> MakeRecordset() = 0;
  [[nodiscard]] virtual std::shared_ptr<ProcedureCall> MakeProcedureCall() = 0;
  [[nodiscard]] virtual std::shared_ptr<RowSetWriter> MakeRowSetWriter() = 0;

  /// Closes the connections of this thread; recordsets that are open keep theirs until they are
  /// closed, and the next statement connects again. Errors: may raise; the caller decides. Cost: no
  /// round trip that is waited for
  virtual void ShutDown() = 0;
  /// The connection-failure code that an error number carries, 0 when it carries none. Cost: none
  [[nodiscard]] virtual std::int32_t ConnectionErrorCode(std::int32_t number) const = 0;
  /// Details of the last database error on this thread; all empty before the first. Cost: none
  [[nodiscard]] virtual DatabaseError LastDatabaseError() const = 0;
  /// Asks the statements now running on this thread's connections to stop; they fail with native
  /// number 1013. The one function that any thread may call. Errors: none
  virtual void Cancel() noexcept = 0;
};

/// A Rowlink whose objects work through one DataLink: what adapters and test doubles derive from.
class LinkedRowlink : public Rowlink {
 public:
  [[nodiscard]] std::shared_ptr<Recordset> MakeRecordset() override;
  [[nodiscard]] std::shared_ptr<ProcedureCall> MakeProcedureCall() override;
  [[nodiscard]] std::shared_ptr<RowSetWriter> MakeRowSetWriter() override;
  /// By the usual numbering, see runtime_error.h.
  [[nodiscard]] std::int32_t ConnectionErrorCode(std::int32_t number) const override;

 protected:
  explicit LinkedRowlink(std::shared_ptr<DataLink> link) : link_(std::move(link)) {}
  [[nodiscard]] const std::shared_ptr<DataLink>& Link() const noexcept { return link_; }

 private:
  std::shared_ptr<DataLink> link_;
};

/// The failure to throw for `error`, which the adapter keeps as its last database error.
[[nodiscard]] RuntimeError DatabaseFailure(const DatabaseError& error);
/// The failure to throw when the connection fails; `description` says what happened and never holds
/// a password.
[[nodiscard]] RuntimeError ConnectionFailed(ConnectionFailure code, std::string description);

}  // namespace sabrel
