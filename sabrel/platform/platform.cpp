#include "sabrel/platform/platform.h"

#include <memory>
#include <mutex>
#include <thread>
#include <unordered_map>
#include <utility>

#include "sabrel/platform/immortal.h"
#include "sabrel/platform/runtime_error.h"
#include "sabrel/platform/thread_holder.h"

namespace sabrel {
namespace {

using internal::ThreadHolder;

struct Process {
  std::mutex mutex;
  PlatformFactory factory;
  std::unordered_map<std::thread::id, std::unique_ptr<ThreadHolder>> holders;
};

// Never destroyed: a thread may end after the process's static objects are gone.
Process& TheProcess() noexcept {
  static internal::Immortal<Process> process;
  return *process;
}

thread_local ThreadHolder* own_holder = nullptr;

void EndThread() noexcept;

struct ThreadExitGuard {
  ThreadExitGuard() = default;
  ThreadExitGuard(const ThreadExitGuard&) = delete;
  ThreadExitGuard& operator=(const ThreadExitGuard&) = delete;
  ~ThreadExitGuard() { EndThread(); }
  void Arm() noexcept {}
};
thread_local ThreadExitGuard exit_guard;

// Ends everything that a holder has, last made first, the platform last. What ends may use the
// component and thereby make anew what has ended; a few rounds of that are followed.
void Drain(ThreadHolder& holder) noexcept {
  constexpr int kMostRounds = 8;
  for (int round = 0; round < kMostRounds; ++round) {
    while (!holder.states.empty()) {
      const ThreadHolder::State last = holder.states.back();
      holder.states.pop_back();
      last.destroy(last.object);
    }
    if (!holder.platform) return;
    const Platform ended = *std::exchange(holder.platform, std::nullopt);
  }
}

void EndThread() noexcept {
  Process& process = TheProcess();
  ThreadHolder* holder = nullptr;
  {
    const std::scoped_lock lock(process.mutex);
    const auto found = process.holders.find(std::this_thread::get_id());
    if (found == process.holders.end() || found->second->ending) return;
    holder = found->second.get();
    holder->ending = true;
  }
  Drain(*holder);
  std::unique_ptr<ThreadHolder> ended;
  {
    const std::scoped_lock lock(process.mutex);
    const auto found = process.holders.find(std::this_thread::get_id());
    ended = std::move(found->second);
    process.holders.erase(found);
    own_holder = nullptr;
  }
}

bool IsComplete(const Platform& platform) {
  return platform.rowlink && platform.services && platform.application && platform.registry &&
         platform.spreadsheet;
}

Platform MakePlatform() {
  PlatformFactory factory;
  {
    Process& process = TheProcess();
    const std::scoped_lock lock(process.mutex);
    factory = process.factory;
  }
  if (!factory) {
    throw RuntimeError(RuntimeErrorNumber::kObjectNotSet,
                       "Sabrel has no platform: call sabrel::InstallPlatform before first use");
  }
  Platform made = factory();
  if (!IsComplete(made)) {
    throw RuntimeError(RuntimeErrorNumber::kObjectNotSet,
                       "The platform given to sabrel::InstallPlatform leaves a member out");
  }
  return made;
}

}  // namespace

namespace internal {

ThreadHolder* FindThreadHolder() noexcept { return own_holder; }

ThreadHolder& OwnThreadHolder() {
  if (own_holder != nullptr) return *own_holder;
  auto made = std::make_unique<ThreadHolder>();
  std::unique_ptr<ThreadHolder> stale;
  {
    Process& process = TheProcess();
    const std::scoped_lock lock(process.mutex);
    std::unique_ptr<ThreadHolder>& slot = process.holders[std::this_thread::get_id()];
    // An id is given again when its thread is gone: what a late use left there is not this
    // thread's.
    const bool is_own = slot && slot->ending;
    if (!is_own) stale = std::exchange(slot, std::move(made));
    own_holder = slot.get();
  }
  exit_guard.Arm();
  if (stale) Drain(*stale);
  return *own_holder;
}

}  // namespace internal

void InstallPlatform(PlatformFactory factory) {
  Process& process = TheProcess();
  {
    const std::scoped_lock lock(process.mutex);
    process.factory.swap(factory);
  }
  // The old factory ends here, outside the lock: what it holds may use the component.
}

void RequirePlatform() { static_cast<void>(CurrentPlatform()); }

const Platform& CurrentPlatform() {
  const ThreadHolder* known = internal::FindThreadHolder();
  if (known != nullptr && known->platform) return *known->platform;
  return RaisingRuntimeErrors([]() -> const Platform& {
    ThreadHolder& holder = internal::OwnThreadHolder();
    holder.platform = MakePlatform();
    return *holder.platform;
  });
}

void UnloadThread() noexcept {
  if (own_holder != nullptr && own_holder->platform) {
    try {
      const Platform platform = *own_holder->platform;
      platform.rowlink->ShutDown();
    } catch (...) {
      // Connections that cannot be closed are abandoned.
    }
  }
  EndThread();
}

}  // namespace sabrel
