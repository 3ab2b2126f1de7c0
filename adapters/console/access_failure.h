// Failures of files and terminals, with the numbers that callers may test for.
#pragma once

#include <cstdint>
#include <string>
#include <system_error>

#include "sabrel/platform/runtime_error.h"

namespace sabrel {

/// A file or terminal that cannot be opened, read or written.
inline constexpr std::int32_t kAccessFailure = 75;
/// A file whose contents are not what they should be.
inline constexpr std::int32_t kInvalidFileFormat = 321;
/// A program that is not installed cannot be started.
inline constexpr std::int32_t kCannotCreateObject = 429;

/// "<what>: <the system's words for error_number>"
[[nodiscard]] inline RuntimeError AccessFailure(const std::string& what, int error_number) {
  return {kAccessFailure, "Sabrel", what + ": " + std::generic_category().message(error_number)};
}

}  // namespace sabrel
