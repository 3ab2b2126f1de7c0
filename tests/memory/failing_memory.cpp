#include "tests/memory/failing_memory.h"

#include <sqlite3.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace sabrel::testing {
namespace {

thread_local std::size_t until_failure = 0;
thread_local bool fails_for_good = false;
thread_local bool failed = false;
std::atomic<std::size_t> live = 0;
sqlite3_mem_methods database;

bool Fails() noexcept {
  if (until_failure == 0 || --until_failure > 0) return false;
  if (fails_for_good) until_failure = 1;
  return failed = true;
}

void* Allocate(std::size_t size, std::size_t alignment) {
  void* memory = nullptr;
  if (!Fails()) {
    memory = alignment == 0 ? std::malloc(size) : std::aligned_alloc(alignment, size);
  }
  if (memory == nullptr) throw std::bad_alloc();
  ++live;
  return memory;
}

void Free(void* memory) noexcept {
  if (memory != nullptr) --live;
  std::free(memory);
}

}  // namespace

void FailAllocations(std::size_t n, bool for_good) noexcept {
  until_failure = n;
  fails_for_good = for_good;
  failed = false;
}

bool StopFailing() noexcept {
  until_failure = 0;
  return failed;
}

std::size_t LiveAllocations() noexcept { return live; }

void FailDatabaseToo() {
  sqlite3_config(SQLITE_CONFIG_GETMALLOC, &database);
  sqlite3_mem_methods failing = database;
  failing.xMalloc = [](int size) -> void* { return Fails() ? nullptr : database.xMalloc(size); };
  failing.xRealloc = [](void* memory, int size) -> void* {
    return Fails() ? nullptr : database.xRealloc(memory, size);
  };
  sqlite3_config(SQLITE_CONFIG_MALLOC, &failing);
}

}  // namespace sabrel::testing

using sabrel::testing::Allocate;
using sabrel::testing::Free;

// Forms for arrays and those that throw nothing come here too.
void* operator new(std::size_t size) { return Allocate(size, 0); }
void* operator new(std::size_t size, std::align_val_t alignment) {
  const auto step = static_cast<std::size_t>(alignment);
  return Allocate((size + step - 1) / step * step, step);
}
void operator delete(void* memory) noexcept { Free(memory); }
void operator delete(void* memory, std::size_t) noexcept { Free(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { Free(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { Free(memory); }
