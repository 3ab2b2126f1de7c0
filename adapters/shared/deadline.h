// When a request has to be over.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace sabrel {

/// None: no limit.
using Deadline = std::optional<std::chrono::steady_clock::time_point>;

/// None for 0 seconds or less.
[[nodiscard]] inline Deadline DeadlineIn(std::int32_t seconds) {
  if (seconds <= 0) return std::nullopt;
  return std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
}

}  // namespace sabrel
