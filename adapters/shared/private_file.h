// Files with passwords in them, which belong to one user.
#pragma once

#include <sys/stat.h>

#include <string>

namespace sabrel {

/// Whether the group or others may read the file or put another password into it. Pipes and
/// terminals hold none.
[[nodiscard]] inline bool IsOpenToOthers(const std::string& path) noexcept {
  constexpr mode_t kOthers = S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;
  struct stat facts {};
  return ::stat(path.c_str(), &facts) == 0 && S_ISREG(facts.st_mode) &&
         (facts.st_mode & kOthers) != 0;
}

}  // namespace sabrel
