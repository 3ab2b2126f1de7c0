// What this process holds, for tests that compare it with what it held before.
#pragma once

#include <unistd.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace sabrel::testing {

[[nodiscard]] inline std::size_t EntriesIn(const char* folder) {
  return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
}
/// Less the one that reads the folder.
[[nodiscard]] inline std::size_t OpenDescriptors() { return EntriesIn("/proc/self/fd") - 1; }
/// Less the thread sanitizer's own.
[[nodiscard]] inline std::size_t RunningThreads() {
#ifdef __SANITIZE_THREAD__
  return EntriesIn("/proc/self/task") - 1;
#else
  return EntriesIn("/proc/self/task");
#endif
}

/// The address sanitizer does, so that it knows who uses it.
#ifdef __SANITIZE_ADDRESS__
inline constexpr bool kKeepsFreedMemory = true;
#else
inline constexpr bool kKeepsFreedMemory = false;
#endif

[[nodiscard]] inline std::size_t ResidentBytes() {
  std::size_t all_pages = 0;
  std::size_t resident_pages = 0;
  std::ifstream("/proc/self/statm") >> all_pages >> resident_pages;
  return resident_pages * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

}  // namespace sabrel::testing
