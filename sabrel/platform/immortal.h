// A static object that is made without allocation and never destroyed.
//
// What a failure for want of memory needs must not need memory itself, and what a thread needs at
// its end must outlive the process's static objects.
//
//   static internal::Immortal<Process> process;  return *process;
#pragma once

#include <cstddef>
#include <new>
#include <utility>

namespace sabrel::internal {

template <class T>
class Immortal {
 public:
  template <class... Arguments>
  explicit Immortal(Arguments&&... arguments)
      : object_(::new (storage_) T{std::forward<Arguments>(arguments)...}) {}
  Immortal(const Immortal&) = delete;
  Immortal& operator=(const Immortal&) = delete;
  [[nodiscard]] T& operator*() const noexcept { return *object_; }

 private:
  alignas(T) std::byte storage_[sizeof(T)];
  T* object_;
};

}  // namespace sabrel::internal
