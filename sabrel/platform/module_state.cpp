#include "sabrel/platform/module_state.h"

#include "sabrel/platform/thread_holder.h"

namespace sabrel::internal {

void* FindState(const void* key) noexcept {
  ThreadHolder* holder = FindThreadHolder();
  if (holder == nullptr) return nullptr;
  for (const ThreadHolder::State& state : holder->states) {
    if (state.key == key) return state.object;
  }
  return nullptr;
}

void AddState(const void* key, void* state, StateDeleter destroy) {
  OwnThreadHolder().states.push_back({key, state, destroy});
}

}  // namespace sabrel::internal
