#include "sabrel/platform/platform.h"

#include <memory>
#include <mutex>
#include <thread>
#include <unordered_map>
#include <utility>

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
Process& TheProcess() {
  static Process& process = *new Process;
  return process;
}

thread_local ThreadHolder* own_holder = nullptr;

struct ThreadExitGuard {
  ThreadExitGuard() = default;
  ThreadExitGuard(const ThreadExitGuard&) = delete;
  ThreadExitGuard& operator=(const ThreadExitGuard&) = delete;
  ~ThreadExitGuard() { UnloadThread(); }
  void Arm() noexcept {}
};
thread_local ThreadExitGuard exit_guard;

bool IsComplete(const Platform& platform) {
  return platform.rowlink && platform.services && platform.application && platform.registry &&
         platform.spreadsheet;
}

}  // namespace

namespace internal {

ThreadHolder* FindThreadHolder() noexcept { return own_holder; }

ThreadHolder& OwnThreadHolder() {
  if (own_holder == nullptr) {
    Process& process = TheProcess();
    const std::scoped_lock lock(process.mutex);
    std::unique_ptr<ThreadHolder>& slot = process.holders[std::this_thread::get_id()];
    if (!slot) slot = std::make_unique<ThreadHolder>();
    own_holder = slot.get();
    exit_guard.Arm();
  }
  return *own_holder;
}

}  // namespace internal

void InstallPlatform(PlatformFactory factory) {
  Process& process = TheProcess();
  const std::scoped_lock lock(process.mutex);
  process.factory = std::move(factory);
}

bool IsPlatformInstalled() noexcept {
  if (own_holder != nullptr && own_holder->platform) return true;
  Process& process = TheProcess();
  const std::scoped_lock lock(process.mutex);
  return static_cast<bool>(process.factory);
}

const Platform& CurrentPlatform() {
  ThreadHolder& holder = internal::OwnThreadHolder();
  if (!holder.platform) {
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
    holder.platform = std::move(made);
  }
  return *holder.platform;
}

void UnloadThread() noexcept {
  Process& process = TheProcess();
  std::unique_ptr<ThreadHolder> ended;
  ThreadHolder* holder = nullptr;
  {
    const std::scoped_lock lock(process.mutex);
    const auto found = process.holders.find(std::this_thread::get_id());
    if (found == process.holders.end()) return;
    holder = found->second.get();
  }
  // The holder stays findable meanwhile: a state's destructor may use the platform or even make
  // another state.
  while (!holder->states.empty()) {
    const ThreadHolder::State last = holder->states.back();
    holder->states.pop_back();
    last.destroy(last.object);
  }
  {
    const std::scoped_lock lock(process.mutex);
    const auto found = process.holders.find(std::this_thread::get_id());
    ended = std::move(found->second);
    process.holders.erase(found);
  }
  own_holder = nullptr;
}

}  // namespace sabrel
