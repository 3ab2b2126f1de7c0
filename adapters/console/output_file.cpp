#include "adapters/console/output_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <fstream>
#include <optional>

#include "adapters/console/access_failure.h"

namespace sabrel {
namespace {

namespace fs = std::filesystem;

constexpr int kFlags = O_WRONLY | O_APPEND | O_CLOEXEC | O_NOCTTY;
// A longer first line is not read to judge a file.
constexpr std::size_t kLongestFirstLine = std::size_t{64} << 20U;
constexpr int kMostLinks = 40;
constexpr mode_t kPermissions = 0777;

bool IsSame(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

[[noreturn]] void RefuseReserved(const std::string& output, const std::string& what) {
  throw RuntimeError(RuntimeErrorNumber::kAccessFailure,
                     output + " is " + what + " too, which stays as it is; name another file");
}

// A file that comes to be in the meantime is opened, not replaced; so is the end of a link.
int OpenOrCreate(const fs::path& path, FileAccess access, bool& is_new) {
  constexpr int kAttempts = 8;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    int descriptor = ::open(path.c_str(), kFlags);
    if (descriptor >= 0 || errno != ENOENT) return descriptor;
    descriptor =
        ::open(ResolvedPath(path).c_str(), kFlags | O_CREAT | O_EXCL, ModeOf(FileAccess::kOwner));
    is_new = descriptor >= 0;
    if (is_new && !WidenTo(access, descriptor)) {
      const int reason = errno;
      ::close(descriptor);
      errno = reason;
      return -1;
    }
    if (is_new || errno != EEXIST) return descriptor;
  }
  errno = ELOOP;
  return -1;
}

// The standard stream that goes to the file, if one does.
std::optional<int> StandardStreamOf(const struct stat& facts) {
  for (const int stream : {STDOUT_FILENO, STDERR_FILENO}) {
    struct stat other {};
    if (::fstat(stream, &other) == 0 && IsSame(facts, other)) return stream;
  }
  return std::nullopt;
}

std::string FirstLine(std::istream& file) {
  std::string line;
  for (int byte = file.get(); byte != std::istream::traits_type::eof() && byte != '\n';
       byte = file.get()) {
    if (line.size() == kLongestFirstLine) return {};
    line += static_cast<char>(byte);
  }
  return line;
}

}  // namespace

fs::path ResolvedPath(fs::path path) {
  std::error_code failed;
  for (int links = 0; links < kMostLinks && fs::is_symlink(path, failed); ++links) {
    path = path.parent_path() / fs::read_symlink(path, failed);
  }
  fs::path whole = fs::weakly_canonical(fs::absolute(path, failed), failed);
  return failed ? path : whole;
}

void ReservedFiles::Add(const fs::path& path, std::string what) {
  if (path.empty()) return;
  const bool is_known = std::ranges::any_of(files_, [&](const auto& f) { return f.first == path; });
  if (!is_known) files_.emplace_back(path, std::move(what));
}

void ReservedFiles::RequireOther(const fs::path& path, const std::string& output) const {
  struct stat facts {};
  if (::stat(path.c_str(), &facts) == 0 && !S_ISREG(facts.st_mode)) return;
  for (const auto& [other, what] : files_) {
    if (ResolvedPath(other) == ResolvedPath(path)) RefuseReserved(output, what);
  }
}

void ReservedFiles::RequireOther(const struct stat& facts, const std::string& output) const {
  if (!S_ISREG(facts.st_mode)) return;
  for (const auto& [path, what] : files_) {
    struct stat other {};
    if (::stat(path.c_str(), &other) == 0 && IsSame(facts, other)) RefuseReserved(output, what);
  }
}

OutputFile::OutputFile(const fs::path& path, const OutputKind& kind,
                       const ReservedFiles& reserved) {
  // Before anything is created, and again with what was opened.
  reserved.RequireOther(path, kind.name);
  bool is_new = false;
  OutputFile opened;
  opened.descriptor_ = OpenOrCreate(path, kind.access, is_new);
  struct stat facts {};
  if (opened.descriptor_ < 0 || ::fstat(opened.descriptor_, &facts) != 0) {
    throw AccessFailure(kind.name, errno);
  }
  reserved.RequireOther(facts, kind.name);
  const std::optional<int> stream = StandardStreamOf(facts);
  if (S_ISREG(facts.st_mode) && stream) {
    // Through the stream's own descriptor, so that neither overwrites what the other wrote.
    opened = {};
    opened.descriptor_ = ::fcntl(*stream, F_DUPFD_CLOEXEC, 0);
    if (!opened.IsOpen()) throw AccessFailure(kind.name, errno);
  } else if (S_ISREG(facts.st_mode)) {
    opened.is_own_file_ = true;
    if (!is_new) opened.TakeOver(path, kind);
  }
  *this = std::move(opened);
}

void OutputFile::TakeOver(const fs::path& path, const OutputKind& kind) {
  struct stat facts {};
  ::fstat(descriptor_, &facts);
  if (facts.st_size > 0) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw AccessFailure(kind.name, errno);
    if (!kind.is_own(FirstLine(file)) || !IsAt(path)) {
      throw RuntimeError(RuntimeErrorNumber::kAccessFailure,
                         kind.name + " exists and is no " + kind.word +
                             " of this program; name another file or remove this one");
    }
  }
  const mode_t mode = facts.st_mode & kPermissions;
  const mode_t kept = mode & ModeOf(kind.access);
  if (mode != kept && ::fchmod(descriptor_, kept) != 0) {
    throw AccessFailure(
        kind.name + " may be read by others, which only its owner can change; name another file",
        errno);
  }
}

OutputFile::~OutputFile() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

OutputFile::OutputFile(OutputFile&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)), is_own_file_(other.is_own_file_) {}

OutputFile& OutputFile::operator=(OutputFile&& other) noexcept {
  std::swap(descriptor_, other.descriptor_);
  std::swap(is_own_file_, other.is_own_file_);
  return *this;
}

bool OutputFile::IsAt(const fs::path& path) const noexcept {
  struct stat own {};
  struct stat there {};
  return ::fstat(descriptor_, &own) == 0 && ::stat(path.c_str(), &there) == 0 && IsSame(own, there);
}

std::size_t OutputFile::Size() const noexcept {
  struct stat facts {};
  const bool known = is_own_file_ && ::fstat(descriptor_, &facts) == 0;
  return known ? static_cast<std::size_t>(facts.st_size) : 0;
}

int OutputFile::Write(std::string_view text) noexcept {
  while (!text.empty()) {
    const ssize_t written = ::write(descriptor_, text.data(), text.size());
    if (written >= 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

int OutputFile::Empty() noexcept {
  return !is_own_file_ || ::ftruncate(descriptor_, 0) == 0 ? 0 : errno;
}

void OutputFile::Lock() noexcept { static_cast<void>(::flock(descriptor_, LOCK_EX)); }

}  // namespace sabrel
