// One connection of the engine to one file.
//
// Every call of the engine goes through here: its result code is checked in one place
// (Connection::Fail), time-outs and cancelling reach every running statement, and prepared
// statements are kept for the next use of the same text.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <exception>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "adapters/shared/deadline.h"
#include "adapters/shared/verb.h"
#include "adapters/sqlite/statement.h"

struct sqlite3;
struct sqlite3_stmt;

namespace sabrel::sqlite {

class Connection;

/// Whether a commit waits until the disk has it; without, whoever makes the file brings it to the
/// disk at the end.
enum class Durability { kEachCommit, kAtTheEnd };

/// The connections that Cancel may stop; shared by a thread's rowlink and its connections.
class CancelSwitch {
 public:
  /// A connection is registered for as long as this lives.
  class Registration {
   public:
    Registration(CancelSwitch& to, Connection& connection) : switch_(to), connection_(connection) {
      switch_.Add(connection_);
    }
    ~Registration() { switch_.Remove(connection_); }
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

   private:
    CancelSwitch& switch_;
    Connection& connection_;
  };

  /// Any thread.
  void CancelAll() noexcept;

 private:
  friend class Operation;
  void Add(Connection& connection);
  void Remove(Connection& connection);
  std::mutex mutex_;
  std::vector<Connection*> connections_;
};

class Connection {
 public:
  static constexpr std::size_t kKeptStatements = 64;
  static constexpr std::size_t kLongestKeptText = 2048;
  /// Of a statement, and of a value.
  static constexpr std::size_t kLongestText = std::size_t{64} << 20U;
  /// For the write lock, where no time-out holds.
  static constexpr std::chrono::seconds kLongestWait{30};

  /// Opens the existing file `path` as a site; waits for the file's lock until `deadline`.
  /// Errors: ServerFailure naming file and reason; connection 24
  Connection(const std::string& path, std::shared_ptr<CancelSwitch> cancel_switch,
             Deadline deadline);
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  [[nodiscard]] sqlite3* Handle() const noexcept { return handle_.get(); }
  [[nodiscard]] const std::string& Path() const noexcept { return path_; }

  /// Prepares one statement of the engine, or takes it from the cache.
  [[nodiscard]] Statement Prepare(std::string_view sql, Verb verb = Verb::kOther);
  /// The type that a table's column was declared with; empty for what is none.
  [[nodiscard]] std::string_view DeclaredType(std::string_view table,
                                              const std::string& column) const;
  /// Runs statements of this server's own, without rows.
  void Run(const char* sql);

  /// Sets what statements rely on, and what they may reach. To be called when all functions are
  /// registered: this reads the schema, and the engine checks the calls in its expressions by the
  /// functions that it knows then.
  void Configure(Durability durability);

  /// A function of a running statement has handled `bytes` more. Functions call this as they go,
  /// since the engine asks for the time-out and for Cancel between its own steps only.
  /// Errors: as a statement that is stopped, 1013 or connection 24
  void Worked(std::size_t bytes) {
    unchecked_bytes_ += bytes;
    if (unchecked_bytes_ >= kBytesBetweenChecks) RequireTimeLeft();
  }

  /// Whether this server has a function of that name (upper case); Register adds its functions.
  [[nodiscard]] bool HasFunction(std::string_view upper_name) const noexcept;
  void AddFunction(const char* name) { functions_.emplace_back(name); }
  /// Whether an older program made the table `name` of one of the engine's modules.
  [[nodiscard]] bool HasVirtualTable(std::string_view name) const noexcept;
  /// A column that the statement sets which is being prepared.
  void NoteSetColumn(std::string_view table, std::string_view column);

  /// `format` is what DateFormat tells from now on, whatever it is changed to; it must live as long
  /// as this.
  void FollowDateFormat(const std::string& format) noexcept { date_format_ = &format; }
  /// The session's format for dates where a statement names none; empty without a session.
  [[nodiscard]] std::string_view DateFormat() const noexcept {
    return date_format_ == nullptr ? std::string_view() : *date_format_;
  }

  /// Keeps a failure that happened inside a function of a running statement; it replaces the
  /// engine's own.
  void Keep(std::exception_ptr failure) noexcept { kept_failure_ = std::move(failure); }
  /// The one place where a result code becomes a failure. `handle` is the failing statement, null
  /// when there is none.
  [[noreturn]] void Fail(int code, sqlite3_stmt* handle, Verb verb);

  /// Of the INSERT, UPDATE or DELETE that ended last, without those that its triggers changed.
  [[nodiscard]] std::int64_t RowsChanged() const noexcept;
  [[nodiscard]] bool InTransaction() const noexcept;
  /// Whether the open transaction holds the write lock.
  [[nodiscard]] bool MayWrite() const noexcept;
  /// Ends an open transaction without keeping it. Errors: none
  void RollBack() noexcept;
  /// Whether a clean-up failed; such a connection is not used again.
  [[nodiscard]] bool IsBroken() const noexcept { return broken_; }

 private:
  friend class Statement;
  friend class Operation;
  friend class CancelSwitch;
  friend class Transaction;

  static constexpr std::size_t kBytesBetweenChecks = std::size_t{256} << 10U;

  /// The engine's handles end with their owners, whatever fails in between.
  struct Closer {
    void operator()(sqlite3* handle) const noexcept;
    void operator()(sqlite3_stmt* handle) const noexcept;
  };

  class Journal;
  void Open();
  void RequireSite();
  /// Closes what could not be opened as a site.
  void Abandon() noexcept;
  /// Makes the engine ask MustStop while a statement runs.
  void WatchStatements() noexcept;
  void StopWatching() noexcept;
  void KeepStatement(std::string key, sqlite3_stmt* handle) noexcept;
  [[nodiscard]] bool MustStop() const noexcept;
  void RequireTimeLeft();
  [[noreturn]] void FailStopped(const std::string& detail);
  [[nodiscard]] bool WaitForLock(int waits) noexcept;
  [[nodiscard]] Verb PreciseVerb(sqlite3_stmt* handle, Verb verb);

  struct Kept {
    std::string key;
    std::unique_ptr<sqlite3_stmt, Closer> handle;
  };
  std::string path_;
  std::shared_ptr<CancelSwitch> cancel_switch_;
  std::unique_ptr<const Journal> journal_;  // until the connection is configured
  std::unique_ptr<sqlite3, Closer> handle_;
  const std::string* date_format_ = nullptr;
  std::list<Kept> kept_;  // last used first
  std::unordered_map<std::string_view, std::list<Kept>::iterator> kept_by_text_;
  std::vector<std::string_view> functions_;
  std::vector<std::string> virtual_tables_;
  struct SetColumn {
    std::string table;
    std::string column;
  };
  std::vector<SetColumn>* set_columns_ = nullptr;  // where PreciseVerb wants them
  std::exception_ptr kept_failure_;
  // Of the open transaction; the text of an UPDATE tells what it sets.
  Verb last_change_ = Verb::kOther;
  std::string last_update_;
  Deadline deadline_;
  std::chrono::steady_clock::time_point wait_started_;
  std::size_t unchecked_bytes_ = 0;
  std::atomic<bool> running_ = false;
  std::atomic<bool> cancelled_ = false;
  bool broken_ = false;
  CancelSwitch::Registration registration_;
};

/// The time during which a connection works for one request: its deadline holds and Cancel reaches
/// it.
class Operation {
 public:
  Operation(Connection& connection, Deadline deadline);
  ~Operation();
  Operation(const Operation&) = delete;
  Operation& operator=(const Operation&) = delete;

 private:
  Connection* connection_;
};

/// A transaction that is rolled back unless it was committed.
class Transaction {
 public:
  enum class Kind { kRead, kWrite };
  /// Waits for the lock as long as the operation may last; begins and ends without being stopped.
  Transaction(Connection& connection, Kind kind);
  ~Transaction();
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  void Commit();

 private:
  void RunWhole(const char* sql);
  Connection* connection_;
};

}  // namespace sabrel::sqlite
