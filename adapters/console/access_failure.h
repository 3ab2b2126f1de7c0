// Failures of files and terminals.
#pragma once

#include <string>
#include <system_error>

#include "sabrel/platform/runtime_error.h"

namespace sabrel {

/// "<what>: <the system's words for error_number>"
[[nodiscard]] inline RuntimeError AccessFailure(const std::string& what, int error_number) {
  return {RuntimeErrorNumber::kAccessFailure,
          what + ": " + std::generic_category().message(error_number)};
}

}  // namespace sabrel
