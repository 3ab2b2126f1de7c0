// Files that a program writes, opened so that no other file is lost to them.
//
// Whatever is named by mistake - the site, a profile file, a script - stays as it is: a file that
// exists is continued or replaced only when its first line shows that it is an older output of the
// same kind, and never when the program reads or writes it as something else, however the name is
// spelled. New files are created with their final rights. Pipes and devices are written as they
// are.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "adapters/shared/file_access.h"

struct stat;

namespace sabrel {

/// Where `path` leads, in full: also when nothing is there yet, and when links lead to nothing.
/// Errors: none; what the system cannot resolve stays as it is
[[nodiscard]] std::filesystem::path ResolvedPath(std::filesystem::path path);

/// Files that an output must not be.
class ReservedFiles {
 public:
  /// `what` says what the file is, "the profile file"; it need not exist. Empty paths are ignored,
  /// and those that were added before.
  void Add(const std::filesystem::path& path, std::string what);
  /// Before a file is created: refuses `path` when it leads where one of them is or would be,
  /// however it is spelled. What is there and no file - a terminal, /dev/null - is shared freely.
  /// Errors: 75 naming `output` ("The log file x"), the other file and the remedy
  void RequireOther(const std::filesystem::path& path, const std::string& output) const;
  /// The same for a file that has been opened, through links or not. Errors: as above
  void RequireOther(const struct stat& facts, const std::string& output) const;

 private:
  std::vector<std::pair<std::filesystem::path, std::string>> files_;
};

struct OutputKind {
  /// For messages, with the path: "The record x".
  std::string name;
  /// "record"
  std::string word;
  FileAccess access = FileAccess::kOwner;
  /// Whether an existing file with this first line (without its line break) is of this kind.
  std::function<bool(std::string_view)> is_own;
};

class OutputFile {
 public:
  OutputFile() = default;
  /// Opens `path` for writing at its end, or creates it. An existing file loses the rights that go
  /// beyond the kind's access. Waits for the reader of a pipe.
  /// Errors: 75 naming the file and the reason: it is reserved, of another kind, cannot be opened,
  /// or others may read it and only its owner can change that
  OutputFile(const std::filesystem::path& path, const OutputKind& kind,
             const ReservedFiles& reserved);
  ~OutputFile();
  OutputFile(OutputFile&& other) noexcept;
  OutputFile& operator=(OutputFile&& other) noexcept;

  [[nodiscard]] bool IsOpen() const noexcept { return descriptor_ >= 0; }
  /// A file of its own: neither a pipe or device, nor where standard output or error go.
  [[nodiscard]] bool IsOwnFile() const noexcept { return is_own_file_; }
  /// Whether `path` still names the file.
  [[nodiscard]] bool IsAt(const std::filesystem::path& path) const noexcept;
  /// Of a file of its own, else 0.
  [[nodiscard]] std::size_t Size() const noexcept;

  /// In one system call where the system takes it in one. Returns 0 or the system's error number
  [[nodiscard]] int Write(std::string_view text) noexcept;
  /// Of a file of its own: drops what it holds. Returns 0 or the system's error number
  [[nodiscard]] int Empty() noexcept;
  /// Keeps other processes that ask for it waiting until this object closes.
  void Lock() noexcept;

 private:
  void TakeOver(const std::filesystem::path& path, const OutputKind& kind);

  int descriptor_ = -1;
  bool is_own_file_ = false;
};

}  // namespace sabrel
