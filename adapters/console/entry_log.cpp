#include "adapters/console/entry_log.h"

#include <spdlog/pattern_formatter.h>

#include <algorithm>
#include <fstream>
#include <mutex>
#include <string>
#include <utility>

#include "adapters/console/access_failure.h"

namespace sabrel {
namespace {

constexpr std::string_view kContinuation = "\n    ";

std::unique_ptr<spdlog::formatter> EntryFormatter() {
  return std::make_unique<spdlog::pattern_formatter>("%Y-%m-%d %H:%M:%S.%e [%t] %n: %v",
                                                     spdlog::pattern_time_type::local, "\n");
}

// Whether `line` starts as the formatter's entries do: 2024-03-09 17:05:00.123 [42] trace: ...
bool IsEntry(std::string_view line) {
  constexpr std::string_view kPattern = "0000-00-00 00:00:00.000 [";
  const auto is_digit = [](char c) { return c >= '0' && c <= '9'; };
  const auto fits = [&](char c, char pattern) {
    return pattern == '0' ? is_digit(c) : c == pattern;
  };
  if (line.size() < kPattern.size() ||
      !std::ranges::equal(line.substr(0, kPattern.size()), kPattern, fits)) {
    return false;
  }
  line.remove_prefix(kPattern.size());
  const std::size_t thread = line.find_first_not_of("0123456789");
  return thread != 0 && thread != std::string_view::npos && line.substr(thread).starts_with("] ") &&
         line.find(": ", thread) != std::string_view::npos;
}

// A process that died or a disk that filled up may have left half an entry.
bool EndsTorn(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return file.seekg(-1, std::ios::end) && file.get() != '\n';
}

}  // namespace

class EntryLog::Destination {
 public:
  Destination(const EntryLogOptions& options, TerminalOutput& terminal)
      : options_(options), terminal_(terminal), formatter_(EntryFormatter()) {
    if (!options_.path.empty()) Open();
  }

  void Write(std::string_view kind, std::string_view text) {
    const std::string payload = VisibleText(text, kContinuation);
    const spdlog::details::log_msg entry(spdlog::string_view_t(kind.data(), kind.size()),
                                         spdlog::level::info, payload);
    const std::lock_guard lock(mutex_);
    spdlog::memory_buf_t buffer;
    formatter_->format(entry, buffer);
    const std::string_view line(buffer.data(), buffer.size());
    if (options_.path.empty()) return terminal_.Put(line);
    if (!file_.IsOpen()) Open();
    while (file_.Size() > 0 && file_.Size() + line.size() > options_.rotate_at_bytes) PutAside();
    if (const int failure = file_.Write(line); failure != 0) {
      file_ = {};
      throw AccessFailure(Name(options_.path) + " cannot be written", failure);
    }
  }

 private:
  static std::string Name(const std::filesystem::path& path) {
    return "The log file \"" + path.string() + "\"";
  }

  // The log itself, or the `number`th that was put aside.
  [[nodiscard]] std::filesystem::path Path(std::size_t number) const {
    if (number == 0) return options_.path;
    std::filesystem::path path = options_.path;
    path.replace_filename(options_.path.stem().string() + "." + std::to_string(number) +
                          options_.path.extension().string());
    return path;
  }

  [[nodiscard]] OutputFile Opened(const std::filesystem::path& path) const {
    return {path, {Name(path), "log", options_.access, IsEntry}, options_.reserved};
  }

  void Open() {
    std::error_code ignored;  // Opening the file reports the failure.
    std::filesystem::create_directories(options_.path.parent_path(), ignored);
    // A new folder has the bit of the one it was made in.
    options_.access = AccessBeside(ResolvedPath(options_.path), options_.access);
    file_ = Opened(options_.path);
    if (!file_.IsOwnFile()) return;
    RequireOwnFilesAside();
    if (file_.Size() > 0 && EndsTorn(options_.path)) static_cast<void>(file_.Write("\n"));
  }

  // Rotation overwrites the files with these names: they must be logs. Older logs get the present
  // one's permissions.
  void RequireOwnFilesAside() const {
    for (std::size_t i = 1; i <= options_.rotated_files; ++i) {
      const std::filesystem::path path = Path(i);
      options_.reserved.RequireOther(path, Name(path));
      std::error_code ignored;
      const auto status = std::filesystem::symlink_status(path, ignored);
      if (!std::filesystem::exists(status)) continue;
      if (!std::filesystem::is_regular_file(status)) {
        throw RuntimeError(RuntimeErrorNumber::kAccessFailure,
                           Name(path) + " is no file; name another log or remove this");
      }
      static_cast<void>(Opened(path));
    }
  }

  // Of processes that share the log one puts it aside, the others follow.
  void PutAside() {
    OutputFile full = std::exchange(file_, {});
    full.Lock();
    if (full.IsAt(options_.path)) {
      RequireOwnFilesAside();
      if (options_.rotated_files == 0) static_cast<void>(full.Empty());
      for (std::size_t i = options_.rotated_files; i > 0; --i) {
        std::error_code failed;
        if (!std::filesystem::exists(Path(i - 1), failed)) continue;
        std::filesystem::rename(Path(i - 1), Path(i), failed);
        if (failed) throw AccessFailure(Name(Path(i - 1)) + " cannot be put aside", failed.value());
      }
    }
    Open();
  }

  EntryLogOptions options_;
  TerminalOutput& terminal_;
  std::mutex mutex_;
  std::unique_ptr<spdlog::formatter> formatter_;
  OutputFile file_;
};

EntryLog::EntryLog(const EntryLogOptions& options, TerminalOutput& terminal)
    : destination_(std::make_unique<Destination>(options, terminal)) {}

EntryLog::~EntryLog() = default;

void EntryLog::Write(std::string_view kind, std::string_view text) {
  destination_->Write(kind, text);
}

}  // namespace sabrel
