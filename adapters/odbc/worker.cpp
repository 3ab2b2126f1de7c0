#include "adapters/odbc/worker.h"

#include <pthread.h>
#include <signal.h>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <exception>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

#include "sabrel/platform/rowlink.h"

namespace sabrel::odbc {
namespace {

constexpr int kMostLeftBehind = 2;

/// Workers left behind, by address. Never destroyed: they may return while the process ends.
/// An address is entered when its first worker is made, so that counting needs no memory.
class LeftBehind {
 public:
  static LeftBehind& Instance() {
    static LeftBehind* const instance = new LeftBehind;
    return *instance;
  }

  void Enter(const std::string& address) {
    const std::lock_guard lock(mutex_);
    entries_.try_emplace(address);
  }
  void Add(const std::string& address, ConnectionFailure code) noexcept {
    const std::lock_guard lock(mutex_);
    Entry& entry = entries_.find(address)->second;
    ++entry.count;
    entry.last_code = code;
    ++all_;
  }
  void Remove(const std::string& address) noexcept {
    const std::lock_guard lock(mutex_);
    --entries_.find(address)->second.count;
    --all_;
  }
  [[nodiscard]] std::optional<ConnectionFailure> CodeOfFull(const std::string& address) {
    const std::lock_guard lock(mutex_);
    const auto found = entries_.find(address);
    if (found == entries_.end() || found->second.count < kMostLeftBehind) return std::nullopt;
    return found->second.last_code;
  }
  [[nodiscard]] int All() const noexcept { return all_; }

 private:
  struct Entry {
    int count = 0;
    ConnectionFailure last_code = ConnectionFailure::kReceiveTimeOut;
  };
  std::mutex mutex_;
  std::map<std::string, Entry> entries_;
  std::atomic<int> all_ = 0;
};

/// Threads of workers that were told to end. Joined when nothing is left to do for them but what
/// the driver's libraries do at a thread's end. Never destroyed, as above.
class Ending {
 public:
  static Ending& Instance() {
    static Ending* const instance = new Ending;
    return *instance;
  }

  using Threads = std::map<std::thread::id, std::thread>;
  /// Room for one thread, made while there is memory: a destructor cannot report that there is
  /// none.
  using Slot = Threads::node_type;
  static Slot MakeSlot() {
    Threads one;
    one.try_emplace(std::thread::id());
    return one.extract(one.begin());
  }

  void Add(std::thread thread, Slot slot) noexcept {
    JoinEnded();
    const std::lock_guard lock(mutex_);
    slot.key() = thread.get_id();
    slot.mapped() = std::move(thread);
    threads_.insert(std::move(slot));
  }
  /// The thread that calls is about to return.
  void HasEnded() noexcept {
    const std::lock_guard lock(mutex_);
    ended_.insert(threads_.extract(std::this_thread::get_id()));
    if (threads_.empty()) none_.notify_all();
  }
  void Await(std::chrono::milliseconds patience) noexcept {
    {
      std::unique_lock lock(mutex_);
      none_.wait_for(lock, patience, [this] { return threads_.empty(); });
    }
    JoinEnded();
  }

 private:
  void JoinEnded() noexcept {
    Threads ended;
    {
      const std::lock_guard lock(mutex_);
      ended.swap(ended_);
    }
    for (auto& [id, thread] : ended) thread.join();
  }

  std::mutex mutex_;
  std::condition_variable none_;
  Threads threads_;
  Threads ended_;
};

/// Starts a thread that takes no signals: those belong to the host's own threads.
template <class Work>
std::thread StartQuietly(Work work) {
  sigset_t all;
  sigset_t before;
  ::sigfillset(&all);
  ::pthread_sigmask(SIG_SETMASK, &all, &before);
  std::thread thread;
  try {
    thread = std::thread(std::move(work));
  } catch (...) {
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    throw;
  }
  ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
  return thread;
}

}  // namespace

struct Worker::State {
  struct Job {
    Task task;
    std::exception_ptr failure;
    bool done = false;
  };
  std::string address;
  std::mutex mutex;
  std::condition_variable has_work;
  std::condition_variable has_news;  // for the one that waits in Run
  std::deque<std::shared_ptr<Job>> jobs;
  Ending::Slot slot = Ending::MakeSlot();
  bool drops_statement = false;
  bool ends = false;
  bool left_behind = false;
  bool cancelling = false;
  std::optional<std::chrono::steady_clock::time_point> cancelled_at;
  Workplace workplace;  // the thread's; its cancel point is any thread's
};

Worker::Worker(std::string address) : state_(std::make_shared<State>()) {
  state_->address = std::move(address);
  LeftBehind::Instance().Enter(state_->address);
  thread_ = StartQuietly([state = state_] { Live(state); });
}

Worker::~Worker() {
  const std::lock_guard lock(state_->mutex);
  if (state_->left_behind) {
    thread_.detach();
  } else {
    Ending::Instance().Add(std::move(thread_), std::move(state_->slot));
  }
  state_->ends = true;
  state_->has_work.notify_one();
}

void Worker::Live(const std::shared_ptr<State>& state) noexcept {
  std::unique_lock lock(state->mutex);
  while (true) {
    state->has_work.wait(
        lock, [&] { return !state->jobs.empty() || state->drops_statement || state->ends; });
    if (std::exchange(state->drops_statement, false)) {
      lock.unlock();
      state->workplace.statement.reset();
      lock.lock();
      // What waited behind was reported as late: it must not run any more.
      if (state->left_behind) break;
      continue;
    }
    if (state->jobs.empty()) break;
    const std::shared_ptr<State::Job> job = std::move(state->jobs.front());
    state->jobs.pop_front();
    lock.unlock();
    try {
      job->task(state->workplace);
    } catch (...) {
      job->failure = std::current_exception();
    }
    job->task = nullptr;  // what it owns ends on this thread
    lock.lock();
    job->done = true;
    state->has_news.notify_one();
    if (state->workplace.is_read) {
      lock.unlock();
      state->workplace.statement.reset();
      state->workplace.is_read = false;
      lock.lock();
    }
    if (state->left_behind) break;
  }
  state->jobs.clear();
  lock.unlock();
  state->workplace.statement.reset();
  state->workplace.connection.reset();
  lock.lock();
  if (state->left_behind) {
    LeftBehind::Instance().Remove(state->address);
  } else {
    Ending::Instance().HasEnded();
  }
}

Worker::End Worker::Run(Task task, Deadline deadline, ConnectionFailure code) {
  const auto job = std::make_shared<State::Job>();
  job->task = std::move(task);
  std::unique_lock lock(state_->mutex);
  state_->cancelled_at.reset();
  state_->jobs.push_back(job);
  state_->has_work.notify_one();
  while (!job->done) {
    Deadline until = deadline;
    if (state_->cancelled_at) {
      const auto patience = *state_->cancelled_at + kCancelPatience;
      if (!until || patience < *until) until = patience;
    }
    if (!until) {
      state_->has_news.wait(lock);
      continue;
    }
    if (state_->has_news.wait_until(lock, *until) != std::cv_status::timeout || job->done) continue;
    const auto now = std::chrono::steady_clock::now();
    const bool is_cancelled =
        state_->cancelled_at && *state_->cancelled_at + kCancelPatience <= now;
    const bool is_late = deadline && *deadline <= now;
    if (!is_cancelled && !is_late) continue;
    LeaveBehind(code);
    return is_late ? End::kTimeOut : End::kCancelled;
  }
  if (job->failure) std::rethrow_exception(job->failure);
  return End::kDone;
}

void Worker::LeaveBehind(ConnectionFailure code) noexcept {
  state_->left_behind = true;
  state_->ends = true;
  LeftBehind::Instance().Add(state_->address, code);
}

void Worker::DropStatement() noexcept {
  const std::lock_guard lock(state_->mutex);
  state_->drops_statement = true;
  state_->has_work.notify_one();
}

void Worker::Cancel() noexcept {
  {
    const std::lock_guard lock(state_->mutex);
    if (!state_->cancelled_at) state_->cancelled_at = std::chrono::steady_clock::now();
    state_->has_news.notify_one();
    if (std::exchange(state_->cancelling, true)) return;
  }
  try {
    // The driver asks the server on a connection of its own, which may take as long as any.
    StartQuietly([state = state_] {
      state->workplace.cancel_point->Cancel();
      const std::lock_guard lock(state->mutex);
      state->cancelling = false;
    }).detach();
  } catch (...) {
    const std::lock_guard lock(state_->mutex);
    state_->cancelling = false;
  }
}

bool Worker::WasCancelled() const noexcept {
  const std::lock_guard lock(state_->mutex);
  return state_->cancelled_at.has_value();
}

void RequireFewLeftBehind(const std::string& address) {
  const auto code = LeftBehind::Instance().CodeOfFull(address);
  if (!code) return;
  throw ConnectionFailed(*code, "The Data Server at " + address +
                                    " does not answer: earlier requests still wait for it.");
}

void AwaitEndingWorkers() noexcept {
  constexpr std::chrono::milliseconds kPatience{200};
  Ending::Instance().Await(kPatience);
}

int WorkersLeftBehind() noexcept { return LeftBehind::Instance().All(); }

}  // namespace sabrel::odbc
