// Memory that runs out when it is told to: of this thread, in C++ and in the embedded database.
//
//   FailAllocations(7, false);  Operation();  const bool met = StopFailing();
#pragma once

#include <cstddef>

namespace sabrel::testing {

/// Has the n-th allocation of this thread from here on fail, and all after it when it is
/// `for_good`.
void FailAllocations(std::size_t n, bool for_good) noexcept;
/// Back to normal; whether any allocation failed.
bool StopFailing() noexcept;
/// Allocations of the whole process that were not freed.
[[nodiscard]] std::size_t LiveAllocations() noexcept;
/// Has the embedded database fail along; before its first use.
void FailDatabaseToo();

}  // namespace sabrel::testing
