#include "adapters/sqlite/connection.h"

#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <thread>
#include <utility>

#include "adapters/sqlite/access.h"
#include "adapters/sqlite/catalogue.h"
#include "adapters/sqlite/error_table.h"
#include "adapters/sqlite/failure.h"
#include "sabrel/platform/rowlink.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::sqlite {
namespace {

// A step of the engine handles up to a value of kLongestText, so few may pass without a check.
constexpr int kOperationsBetweenChecks = 100;

// The engine's LIKE takes time as its pattern is long, and cannot be stopped.
constexpr int kLongestPattern = 4000;

/// Refuses what the engine would take wrongly: it makes a missing file's journal, and calls a
/// folder "unable to open".
void RequireFile(const std::string& path) {
  struct stat facts {};
  if (::stat(path.c_str(), &facts) != 0) {
    throw ServerFailure(1157, "cannot open the file " + path + ": " + std::strerror(errno));
  }
  if (S_ISDIR(facts.st_mode)) {
    throw ServerFailure(1157, "cannot open the file " + path + ": it is a folder");
  }
  if (!S_ISREG(facts.st_mode)) {
    throw ServerFailure(1157, "cannot open the file " + path + ": it is no ordinary file");
  }
}

}  // namespace

/// What the engine keeps beside an open file.
class Connection::Journal {
 public:
  explicit Journal(const std::string& path)
      : log_(path + "-wal"),
        index_(path + "-shm"),
        was_there_(::access(log_.c_str(), F_OK) == 0 || ::access(index_.c_str(), F_OK) == 0) {}

  /// The engine leaves its journal beside a damaged file, which it cannot close in order.
  void RemoveIfNewAndEmpty() const noexcept {
    struct stat facts {};
    if (was_there_ || ::stat(log_.c_str(), &facts) != 0 || facts.st_size != 0) return;
    ::unlink(log_.c_str());
    ::unlink(index_.c_str());
  }

 private:
  std::string log_;
  std::string index_;
  bool was_there_;
};

void CancelSwitch::Add(Connection& connection) {
  const std::scoped_lock lock(mutex_);
  connections_.push_back(&connection);
}

void CancelSwitch::Remove(Connection& connection) {
  const std::scoped_lock lock(mutex_);
  std::erase(connections_, &connection);
}

void CancelSwitch::CancelAll() noexcept {
  const std::scoped_lock lock(mutex_);
  for (Connection* connection : connections_) {
    if (!connection->running_) continue;
    connection->cancelled_ = true;
    sqlite3_interrupt(connection->Handle());
  }
}

void Connection::Closer::operator()(sqlite3* handle) const noexcept { sqlite3_close(handle); }
void Connection::Closer::operator()(sqlite3_stmt* handle) const noexcept {
  sqlite3_finalize(handle);
}

Connection::Connection(const std::string& path, std::shared_ptr<CancelSwitch> cancel_switch,
                       Deadline deadline)
    : path_(path), cancel_switch_(std::move(cancel_switch)), registration_(*cancel_switch_, *this) {
  RequireFile(path_);
  journal_ = std::make_unique<const Journal>(path_);
  try {
    Open();
    const Operation opening(*this, deadline);
    RequireSite();
  } catch (...) {
    Abandon();
    throw;
  }
}

Connection::~Connection() {
  if (journal_ != nullptr) Abandon();
}

void Connection::Abandon() noexcept {
  kept_by_text_.clear();
  kept_.clear();
  handle_.reset();
  journal_->RemoveIfNewAndEmpty();
}

void Connection::Open() {
  sqlite3* handle = nullptr;
  const int code =
      sqlite3_open_v2(path_.c_str(), &handle, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
  handle_.reset(handle);  // where opening fails, too, there is one to close
  if (code != SQLITE_OK) {
    const int reason = handle != nullptr ? sqlite3_system_errno(handle) : 0;
    throw ServerFailure(1157,
                        "cannot open the file " + path_ + (reason != 0 ? ": " : "") +
                            (reason != 0 ? std::strerror(reason) : ""),
                        sqlite3_errstr(code));
  }
  sqlite3_extended_result_codes(Handle(), 1);
  sqlite3_busy_handler(
      Handle(),
      [](void* self, int waits) {
        return static_cast<Connection*>(self)->WaitForLock(waits) ? 1 : 0;
      },
      this);
  WatchStatements();
}

void Connection::WatchStatements() noexcept {
  sqlite3_progress_handler(
      Handle(), kOperationsBetweenChecks,
      [](void* self) { return static_cast<Connection*>(self)->MustStop() ? 1 : 0; }, this);
}

void Connection::StopWatching() noexcept {
  sqlite3_progress_handler(Handle(), 0, nullptr, nullptr);
}

// Reading before anything is set: what is no site must not be written to, nor get a journal beside
// it.
void Connection::RequireSite() {
  Statement mark = Prepare("PRAGMA application_id");
  if (!mark.Step() || mark.Column(0).integer != kSiteMark) {
    throw ServerFailure(1157, "the file " + path_ + " is not a site of this server");
  }
}

void Connection::Configure(Durability durability) {
  Run("PRAGMA synchronous=FULL; PRAGMA foreign_keys=ON; PRAGMA case_sensitive_like=ON;"
      "PRAGMA recursive_triggers=ON; PRAGMA trusted_schema=ON;"
      "PRAGMA journal_size_limit=67108864");
  if (durability == Durability::kAtTheEnd) Run("PRAGMA synchronous=OFF");
  sqlite3_limit(Handle(), SQLITE_LIMIT_ATTACHED, 0);
  sqlite3_limit(Handle(), SQLITE_LIMIT_LENGTH, static_cast<int>(kLongestText));
  sqlite3_limit(Handle(), SQLITE_LIMIT_LIKE_PATTERN_LENGTH, kLongestPattern);
  sqlite3_limit(Handle(), SQLITE_LIMIT_SQL_LENGTH, static_cast<int>(kLongestText));
  sqlite3_db_config(Handle(), SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
  sqlite3_db_config(Handle(), SQLITE_DBCONFIG_DQS_DDL, 0, nullptr);
  sqlite3_db_config(Handle(), SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  {
    Statement each =
        Prepare("SELECT name FROM sqlite_schema WHERE type = 'table' AND rootpage = 0");
    while (each.Step()) virtual_tables_.push_back(each.Column(0).text);
  }
  GuardStatements(*this);
  journal_.reset();
}

bool Connection::HasFunction(std::string_view upper_name) const noexcept {
  return std::find(functions_.begin(), functions_.end(), upper_name) != functions_.end();
}

bool Connection::HasVirtualTable(std::string_view name) const noexcept {
  return std::any_of(virtual_tables_.begin(), virtual_tables_.end(),
                     [name](const std::string& one) { return EqualIgnoringCase(one, name); });
}

void Connection::NoteSetColumn(std::string_view table, std::string_view column) {
  if (set_columns_ == nullptr) return;
  set_columns_->push_back({std::string(table), std::string(column)});
}

Statement Connection::Prepare(std::string_view sql, Verb verb) {
  if (verb != Verb::kOther) {
    last_change_ = verb;
    last_update_ = verb == Verb::kUpdate ? sql : std::string_view();
  }
  if (const auto found = kept_by_text_.find(sql); found != kept_by_text_.end()) {
    const auto entry = found->second;
    kept_by_text_.erase(found);
    Kept kept = std::move(*entry);
    kept_.erase(entry);
    return {*this, kept.handle.release(), std::move(kept.key), verb};
  }
  if (sql.size() > kLongestText) throw ServerFailure(1745, "the statement is too large");
  const bool keep = sql.size() <= kLongestKeptText;
  // Made first: once there is a handle, nothing may fail until a Statement owns it.
  std::string key = keep ? std::string(sql) : std::string();
  sqlite3_stmt* handle = nullptr;
  kept_failure_ = nullptr;
  const int code = sqlite3_prepare_v3(Handle(), sql.data(), static_cast<int>(sql.size()),
                                      keep ? SQLITE_PREPARE_PERSISTENT : 0, &handle, nullptr);
  if (code != SQLITE_OK) Fail(code, nullptr, verb);
  if (handle == nullptr) throw ServerFailure(900, "invalid SQL statement: it is empty");
  return {*this, handle, std::move(key), verb};
}

void Connection::KeepStatement(std::string key, sqlite3_stmt* handle) noexcept {
  Kept kept{std::move(key), std::unique_ptr<sqlite3_stmt, Closer>(handle)};
  // A statement that calls itself is prepared twice; the first to end is kept.
  if (kept.key.empty() || kept_by_text_.contains(kept.key)) return;
  const std::size_t before = kept_.size();
  try {
    kept_.push_front(std::move(kept));
    kept_by_text_.emplace(kept_.front().key, kept_.begin());
  } catch (...) {  // No memory to keep it: it is prepared again.
    if (kept_.size() > before) kept_.pop_front();
    return;
  }
  if (kept_.size() > kKeptStatements) {
    kept_by_text_.erase(kept_.back().key);
    kept_.pop_back();
  }
}

std::string_view Connection::DeclaredType(std::string_view table, const std::string& column) const {
  const char* type = nullptr;
  const int code =
      sqlite3_table_column_metadata(handle_.get(), nullptr, std::string(table).c_str(),
                                    column.c_str(), &type, nullptr, nullptr, nullptr, nullptr);
  return code == SQLITE_OK && type != nullptr ? std::string_view(type) : std::string_view();
}

void Connection::Run(const char* sql) {
  kept_failure_ = nullptr;
  const int code = sqlite3_exec(Handle(), sql, nullptr, nullptr, nullptr);
  if (code != SQLITE_OK) Fail(code, nullptr, Verb::kOther);
}

bool Connection::MustStop() const noexcept {
  if (!running_) return false;
  return cancelled_ || (deadline_ && std::chrono::steady_clock::now() >= *deadline_);
}

void Connection::RequireTimeLeft() {
  unchecked_bytes_ = 0;
  if (MustStop()) FailStopped({});
}

void Connection::FailStopped(const std::string& detail) {
  if (cancelled_) throw ServerFailure(1013, "user requested cancel of current operation", detail);
  throw ConnectionFailed(ConnectionFailure::kReceiveTimeOut,
                         "The statement took longer than the time-out allows.");
}

bool Connection::WaitForLock(int waits) noexcept {
  using std::chrono::milliseconds;
  const auto now = std::chrono::steady_clock::now();
  if (waits == 0) wait_started_ = now;
  if (MustStop()) return false;
  if (!deadline_ && now - wait_started_ >= kLongestWait) return false;
  auto pause = milliseconds(std::min(1 + waits, 20));
  if (deadline_) {
    pause = std::min(pause, std::chrono::ceil<milliseconds>(*deadline_ - now));
  }
  std::this_thread::sleep_for(pause);
  return true;
}

void Connection::Fail(int code, sqlite3_stmt* handle, Verb verb) {
  if (kept_failure_) std::rethrow_exception(std::exchange(kept_failure_, nullptr));
  std::string text = sqlite3_errmsg(Handle());
  const int plain = code & 0xFF;
  if ((plain == SQLITE_INTERRUPT || plain == SQLITE_BUSY) && MustStop()) {
    if (plain == SQLITE_BUSY && !cancelled_) {
      throw ConnectionFailed(ConnectionFailure::kReceiveTimeOut,
                             "Another session held the lock of the file " + path_ +
                                 " for as long as the time-out allows.");
    }
    FailStopped(text);
  }
  const int extended =
      code == SQLITE_ERROR || code > 0xFF ? code : sqlite3_extended_errcode(Handle());
  NativeError error =
      NativeErrorOf((extended & 0xFF) == plain ? extended : code, text,
                    extended == SQLITE_CONSTRAINT_FOREIGNKEY ? PreciseVerb(handle, verb) : verb);
  std::string message = error.message;
  if (plain == SQLITE_CORRUPT || plain == SQLITE_NOTADB || plain == SQLITE_CANTOPEN ||
      plain == SQLITE_READONLY || plain == SQLITE_IOERR || plain == SQLITE_FULL ||
      plain == SQLITE_BUSY) {
    message += " (" + path_ + ")";
    // Of a lock that is held the system says nothing more.
    const int reason = plain == SQLITE_BUSY ? 0 : sqlite3_system_errno(Handle());
    const bool is_full = reason == ENOSPC || reason == EFBIG || reason == EDQUOT;
    if (is_full && (plain == SQLITE_IOERR || plain == SQLITE_FULL)) {
      error.number = 1653;
      message = "unable to extend the file (" + path_ + ")";
    }
    if (reason != 0) message += std::string(": ") + std::strerror(reason);
  }
  // The engine quotes the place, which may be a constant.
  if (text.find("near \"") != std::string::npos) text = "syntax error";
  if (text.find("unrecognized token") != std::string::npos) text = "unrecognized token";
  ServerFailure failure(error.number, message, text);
  failure.Originator(path_);
  throw failure;
}

Verb Connection::PreciseVerb(sqlite3_stmt* handle, Verb verb) {
  const char* sql = sqlite3_sql(handle);
  if (verb == Verb::kOther) {  // a COMMIT: keys that are checked at the end
    verb = last_change_;
    sql = last_update_.c_str();
  }
  if (verb != Verb::kUpdate || sql == nullptr) return verb;
  // Which columns the statement sets is known to the engine's compiler alone.
  std::vector<SetColumn> columns;
  set_columns_ = &columns;
  sqlite3_stmt* again = nullptr;
  sqlite3_prepare_v2(Handle(), sql, -1, &again, nullptr);
  sqlite3_finalize(again);
  set_columns_ = nullptr;
  for (const auto& [table, column] : columns) {
    Statement references =
        Prepare("SELECT 1 FROM pragma_foreign_key_list(?1) WHERE UPPER(\"from\") = UPPER(?2)");
    references.Bind(1, std::string_view(table));
    references.Bind(2, std::string_view(column));
    if (references.Step()) return Verb::kUpdateOfReference;
  }
  return verb;
}

std::int64_t Connection::RowsChanged() const noexcept { return sqlite3_changes64(Handle()); }

bool Connection::InTransaction() const noexcept { return sqlite3_get_autocommit(Handle()) == 0; }

bool Connection::MayWrite() const noexcept {
  return sqlite3_txn_state(Handle(), nullptr) == SQLITE_TXN_WRITE;
}

void Connection::RollBack() noexcept {
  // A cancel that comes in between must not stop the clean-up: it holds for the failed statement
  // only.
  for (int attempt = 0; attempt < 3 && InTransaction(); ++attempt) {
    StopWatching();
    sqlite3_exec(Handle(), "ROLLBACK", nullptr, nullptr, nullptr);
    WatchStatements();
  }
  broken_ = broken_ || InTransaction();
}

Operation::Operation(Connection& connection, Deadline deadline) : connection_(&connection) {
  const std::scoped_lock lock(connection.cancel_switch_->mutex_);
  connection.deadline_ = deadline;
  connection.cancelled_ = false;
  connection.running_ = true;
}

Operation::~Operation() {
  const std::scoped_lock lock(connection_->cancel_switch_->mutex_);
  connection_->running_ = false;
  connection_->cancelled_ = false;
  connection_->deadline_.reset();
}

Transaction::Transaction(Connection& connection, Kind kind) : connection_(&connection) {
  RunWhole(kind == Kind::kWrite ? "BEGIN IMMEDIATE" : "BEGIN");
}

// The engine may ask whether to stop when such a statement is done, and then reports the failure
// of what it did: a change that is kept, a transaction that is open.
void Transaction::RunWhole(const char* sql) {
  Statement statement = connection_->Prepare(sql);
  const auto watch = [](Connection* connection) { connection->WatchStatements(); };
  connection_->StopWatching();
  const std::unique_ptr<Connection, decltype(watch)> watching_again(connection_, watch);
  statement.Step();
}

Transaction::~Transaction() {
  if (connection_->InTransaction()) connection_->RollBack();
  connection_->last_change_ = Verb::kOther;
}

void Transaction::Commit() { RunWhole("COMMIT"); }

}  // namespace sabrel::sqlite
