// Who may read and write the files that hold data: their owner, or the owner's group as well.
#pragma once

#include <sys/stat.h>

#include <filesystem>

namespace sabrel {

enum class FileAccess { kOwner, kGroup };

[[nodiscard]] constexpr mode_t ModeOf(FileAccess access) noexcept {
  return access == FileAccess::kGroup ? 0660 : 0600;
}

/// `asked`, or kGroup where the folder of `path` hands its group on to new files (set-group-ID):
/// such a folder is one that a group works in.
[[nodiscard]] inline FileAccess AccessBeside(const std::filesystem::path& path, FileAccess asked) {
  const std::filesystem::path folder = path.parent_path();
  struct stat facts {};
  const bool found = ::stat(folder.empty() ? "." : folder.c_str(), &facts) == 0;
  return found && (facts.st_mode & S_ISGID) != 0 ? FileAccess::kGroup : asked;
}

/// Makes the new file of `descriptor`, which was created with the owner's mode, as wide as
/// `access` says. The umask has no say: the group was asked for. Returns false with errno set
[[nodiscard]] inline bool WidenTo(FileAccess access, int descriptor) noexcept {
  return access == FileAccess::kOwner || ::fchmod(descriptor, ModeOf(access)) == 0;
}

}  // namespace sabrel
