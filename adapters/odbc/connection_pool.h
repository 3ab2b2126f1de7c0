// The connections of one thread to one server as one user.
//
// A request borrows a worker with its connection and gives it back; rows that are still being read
// keep theirs, since a failing statement would end their cursor on the server. Mostly one
// connection serves everything.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "adapters/odbc/engine.h"
#include "adapters/odbc/worker.h"
#include "sabrel/platform/connection_profile.h"

namespace sabrel::odbc {

/// What the server or the way to it refused, in callers' numbers.
class Refused : public std::exception {
 public:
  Refused(Meaning meaning, std::string message, std::string state = {})
      : meaning_(meaning), message_(std::move(message)), state_(std::move(state)) {}
  [[nodiscard]] const Meaning& What() const noexcept { return meaning_; }
  [[nodiscard]] const std::string& Message() const noexcept { return message_; }
  /// The SQLSTATE that the driver gave, if any.
  [[nodiscard]] const std::string& State() const noexcept { return state_; }
  [[nodiscard]] const char* what() const noexcept override { return message_.c_str(); }

 private:
  Meaning meaning_;
  std::string message_;
  std::string state_;
};

/// The workers of a thread that work for a request now, which Cancel may stop.
class CancelSwitch {
 public:
  void Add(Worker& worker);
  void Remove(Worker& worker);
  /// Any thread.
  void CancelAll() noexcept;

 private:
  std::mutex mutex_;
  std::vector<Worker*> workers_;
};

class ConnectionPool {
 public:
  static constexpr std::size_t kMostIdle = 4;

  ConnectionPool(const Engine& engine, ConnectionProfile profile, SectionSettings section,
                 Opening opening, std::shared_ptr<CancelSwitch> cancel);

  /// Time-outs may change from request to request.
  void ConnectTimeout(std::int32_t seconds) noexcept { profile_.ConnectTimeout = seconds; }
  [[nodiscard]] const Engine& Server() const noexcept { return engine_; }
  /// "host:port", and what errors call their origin: "host:port/database".
  [[nodiscard]] const std::string& Address() const noexcept { return address_; }
  [[nodiscard]] std::string Origin() const { return address_ + "/" + profile_.Database; }

  /// Closes the idle connections now, the borrowed ones when they come back.
  void Close() noexcept;

 private:
  friend class Lease;
  struct Place {
    std::unique_ptr<Worker> worker;
    bool is_connected = false;
    int settings = 0;  // version of the pool's that its session has
  };
  [[nodiscard]] Place Take();
  void GiveBack(Place place) noexcept;
  /// A connection was severed: the idle ones are as dead.
  void DropIdle() noexcept { idle_.clear(); }

  const Engine& engine_;
  ConnectionProfile profile_;
  SectionSettings section_;
  int settings_ = 0;  // counts changes of section_
  Opening opening_;
  std::shared_ptr<CancelSwitch> cancel_;
  std::string address_;
  std::vector<Place> idle_;
  bool closed_ = false;
};

/// A borrowed connection.
class Lease {
 public:
  /// Connects where that is to be done, within the profile's own limit for it. Errors: as Do
  explicit Lease(std::shared_ptr<ConnectionPool> pool);
  /// Gives the connection back, or drops it where a request was cancelled or left it unusable.
  ~Lease();
  Lease(Lease&&) noexcept = default;
  Lease& operator=(Lease&&) = delete;
  Lease(const Lease&) = delete;
  Lease& operator=(const Lease&) = delete;

  /// Runs `task` on the connection's thread until `deadline`. `task` must own all that it refers
  /// to, since it may outlive the call. `verb` tells errors apart. Errors: Refused; the last code
  /// of an address where too many workers were left behind
  void Do(Worker::Task task, Deadline deadline, Verb verb = Verb::kOther);
  /// Ends the statement whose rows were being read, without waiting.
  void DropStatement() noexcept;
  /// This connection's session has another date format now: so do those that are made from here
  /// on, and no older one serves another request.
  void KeepDateFormat(std::string format);

 private:
  void Connect();
  void RunWatched(Worker::Task task, Deadline deadline, ConnectionFailure code);

  std::shared_ptr<ConnectionPool> pool_;
  ConnectionPool::Place place_;
  bool was_cancelled_ = false;  // ever
};

}  // namespace sabrel::odbc
