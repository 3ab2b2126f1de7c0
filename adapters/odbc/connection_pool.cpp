#include "adapters/odbc/connection_pool.h"

#include <algorithm>
#include <utility>

#include "adapters/odbc/driver.h"
#include "adapters/odbc/driver_state.h"
#include "adapters/odbc/reachability.h"

namespace sabrel::odbc {
namespace {

// How long a caller waits beyond a limit for the server to end the statement by itself, which
// keeps the connection.
constexpr std::chrono::milliseconds kGrace{200};

constexpr std::int32_t kCancelled = 1013;
constexpr const char* kCancelledText = "user requested cancel of current operation";

Meaning Failed(ConnectionFailure code) { return {0, code}; }

/// A connection attempt failed: asks the address why, where the driver did not say.
[[noreturn]] void ThrowConnectFailure(const Engine& engine, const ConnectionProfile& profile,
                                      const Diagnosis& diagnosis, Deadline deadline) {
  if (const auto login = engine.MeaningOfRefusedLogin(diagnosis)) {
    throw Refused(*login, diagnosis.message, diagnosis.state);
  }
  const Meaning meaning = engine.MeaningOf(diagnosis, Verb::kOther);
  const bool is_unclear = meaning.connection == ConnectionFailure::kRefusedOrSevered ||
                          meaning.connection == ConnectionFailure::kConnectTimeOut;
  if (!is_unclear) {
    const bool has_driver = !IsOfDriverManager(diagnosis.state);
    throw Refused(meaning,
                  has_driver
                      ? diagnosis.message
                      : "the ODBC driver \"" + profile.Driver +
                            "\" is not there (odbcinst -q -d lists what is): " + diagnosis.message,
                  diagnosis.state);
  }
  std::optional<ConnectionFailure> code;
  if (const std::string file = engine.SocketFile(profile); !file.empty()) {
    code = ReachabilityOfSocket(file, deadline);
  } else if (!profile.Host.empty()) {
    code = ReachabilityOf(profile.Host, profile.Port, deadline);
  }
  throw Refused(Failed(code.value_or(*meaning.connection)), diagnosis.message, diagnosis.state);
}

}  // namespace

void CancelSwitch::Add(Worker& worker) {
  const std::lock_guard lock(mutex_);
  workers_.push_back(&worker);
}

void CancelSwitch::Remove(Worker& worker) {
  const std::lock_guard lock(mutex_);
  std::erase(workers_, &worker);
}

void CancelSwitch::CancelAll() noexcept {
  const std::lock_guard lock(mutex_);
  for (Worker* const worker : workers_) worker->Cancel();
}

ConnectionPool::ConnectionPool(const Engine& engine, ConnectionProfile profile,
                               SectionSettings section, Opening opening,
                               std::shared_ptr<CancelSwitch> cancel)
    : engine_(engine),
      profile_(std::move(profile)),
      section_(std::move(section)),
      opening_(opening),
      cancel_(std::move(cancel)) {
  if (profile_.Port == 0) profile_.Port = engine.UsualPort();
  address_ = profile_.Host + ":" + std::to_string(profile_.Port);
  idle_.reserve(kMostIdle);  // GiveBack cannot report that there is no memory
}

ConnectionPool::Place ConnectionPool::Take() {
  if (!idle_.empty()) {
    Place place = std::move(idle_.back());
    idle_.pop_back();
    return place;
  }
  return {std::make_unique<Worker>(address_), false, settings_};
}

void ConnectionPool::GiveBack(Place place) noexcept {
  const bool serves = place.is_connected && place.settings == settings_;
  if (!closed_ && serves && idle_.size() < kMostIdle) idle_.push_back(std::move(place));
}

void ConnectionPool::Close() noexcept {
  closed_ = true;
  idle_.clear();
}

// NOLINTBEGIN(clang-analyzer-cplusplus.NewDeleteLeaks): where connecting throws, the place goes.
Lease::Lease(std::shared_ptr<ConnectionPool> pool) : pool_(std::move(pool)), place_(pool_->Take()) {
  if (!place_.is_connected) Connect();
}
// NOLINTEND(clang-analyzer-cplusplus.NewDeleteLeaks)

Lease::~Lease() {
  // A cancelling may still be on its way: it would hit the next statement, or the end of a
  // transaction.
  if (was_cancelled_) place_.is_connected = false;
  if (place_.worker) pool_->GiveBack(std::move(place_));
}

void Lease::RunWatched(Worker::Task task, Deadline deadline, ConnectionFailure code) {
  class Watch {
   public:
    Watch(CancelSwitch& cancel, Worker& worker) : cancel_(cancel), worker_(worker) {
      cancel_.Add(worker_);
    }
    ~Watch() { cancel_.Remove(worker_); }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

   private:
    CancelSwitch& cancel_;
    Worker& worker_;
  };
  RequireFewLeftBehind(pool_->address_);
  const Watch watch(*pool_->cancel_, *place_.worker);
  const auto patience = deadline ? Deadline(*deadline + kGrace) : deadline;
  Worker::End end = Worker::End::kDone;
  try {
    end = place_.worker->Run(std::move(task), patience, code);
  } catch (...) {
    was_cancelled_ = was_cancelled_ || place_.worker->WasCancelled();
    throw;
  }
  was_cancelled_ = was_cancelled_ || place_.worker->WasCancelled();
  if (end == Worker::End::kDone) return;
  place_.is_connected = false;
  if (end == Worker::End::kCancelled) throw Refused({kCancelled, std::nullopt}, kCancelledText);
  throw Refused(Failed(code), code == ConnectionFailure::kConnectTimeOut
                                  ? "the server did not take the connection in time"
                                  : "the server did not answer in time");
}

void Lease::Connect() {
  const Deadline deadline = DeadlineIn(pool_->profile_.ConnectTimeout);
  RunWatched(
      [&engine = pool_->engine_, profile = pool_->profile_, section = pool_->section_,
       opening = pool_->opening_, deadline](Workplace& here) {
        try {
          here.connection =
              std::make_unique<Connection>(engine, profile, section, opening, here.cancel_point);
        } catch (const DriverFailure& failure) {
          ThrowConnectFailure(engine, profile, failure.What(), deadline);
        }
      },
      deadline, ConnectionFailure::kConnectTimeOut);
  place_.is_connected = true;
}

void Lease::Do(Worker::Task task, Deadline deadline, Verb verb) {
  try {
    RunWatched(std::move(task), deadline, ConnectionFailure::kReceiveTimeOut);
  } catch (const DriverFailure& failure) {
    const Diagnosis& diagnosis = failure.What();
    Meaning meaning = pool_->engine_.MeaningOf(diagnosis, verb);
    // The driver may be out of step where it was cancelled between two calls.
    if (was_cancelled_ && meaning.native_number == kUndescribed) {
      throw Refused({kCancelled, std::nullopt}, kCancelledText, diagnosis.state);
    }
    // The server ends a statement alike when its time is over and when it was asked to.
    constexpr std::chrono::milliseconds kEarly{100};
    if (meaning.native_number == kCancelled && deadline && !was_cancelled_ &&
        std::chrono::steady_clock::now() + kEarly >= *deadline) {
      meaning = Failed(ConnectionFailure::kReceiveTimeOut);
    }
    if (meaning.connection && meaning.connection != ConnectionFailure::kReceiveTimeOut) {
      place_.is_connected = false;
      pool_->DropIdle();
    }
    throw Refused(meaning, diagnosis.message, diagnosis.state);
  }
}

void Lease::KeepDateFormat(std::string format) {
  pool_->section_.DateFormat = std::move(format);
  place_.settings = ++pool_->settings_;
  pool_->DropIdle();
}

void Lease::DropStatement() noexcept {
  if (place_.worker && place_.is_connected) place_.worker->DropStatement();
}

}  // namespace sabrel::odbc
