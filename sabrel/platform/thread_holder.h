// Internal: everything that a thread's use of the component has made.
//
// Holders live in a map by thread id, whose mutex is taken at a thread's first use and at its end
// only; a thread finds its own through a plain thread-local pointer. Under mingw a thread-local
// object with a destructor loses its storage before its destructor runs, so nothing but a guard
// without members has one.
#pragma once

#include <optional>
#include <vector>

#include "sabrel/platform/module_state.h"
#include "sabrel/platform/platform.h"

namespace sabrel::internal {

struct ThreadHolder {
  struct State {
    const void* key;
    void* object;
    StateDeleter destroy;
  };
  std::vector<State> states;
  std::optional<Platform> platform;
  /// Being ended: its thread is still there.
  bool ending = false;
};

/// Null before this thread's first use and after its end.
[[nodiscard]] ThreadHolder* FindThreadHolder() noexcept;
/// Makes the holder on first use.
[[nodiscard]] ThreadHolder& OwnThreadHolder();

}  // namespace sabrel::internal
