// One instance of a module's state per thread.
//
// `ModuleState<T>()` makes a default-constructed `T` on a thread's first use; `UnloadThread` or
// thread exit destroys it, last made first. Only `.cpp` files ask for state; nothing of it is
// shared between threads.
#pragma once

#include <memory>

namespace sabrel {

namespace internal {

using StateDeleter = void (*)(void*) noexcept;
/// This thread's state with identity `key`; null when it was not made yet.
void* FindState(const void* key) noexcept;
void AddState(const void* key, void* state, StateDeleter destroy);

template <class T>
inline constexpr char kStateKey = 0;

}  // namespace internal

/// Cost: a look-up in a short list; one allocation on a thread's first use
template <class T>
[[nodiscard]] T& ModuleState() {
  const void* key = &internal::kStateKey<T>;
  if (void* found = internal::FindState(key)) return *static_cast<T*>(found);
  auto made = std::make_unique<T>();
  T& state = *made;
  internal::AddState(key, made.get(), [](void* p) noexcept { delete static_cast<T*>(p); });
  static_cast<void>(made.release());
  return state;
}

}  // namespace sabrel
