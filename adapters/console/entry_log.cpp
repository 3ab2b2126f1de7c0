#include "adapters/console/entry_log.h"

#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/rotating_file_sink.h>

#include <fstream>
#include <mutex>
#include <string>
#include <utility>

#include "sabrel/platform/runtime_error.h"

namespace sabrel {
namespace {

constexpr std::string_view kContinuation = "\n    ";

std::unique_ptr<spdlog::formatter> EntryFormatter() {
  return std::make_unique<spdlog::pattern_formatter>("%Y-%m-%d %H:%M:%S.%e [%t] %n: %v",
                                                     spdlog::pattern_time_type::local, "\n");
}

// A process that died or a disk that filled up may have left half an entry behind; the next one
// starts a line.
void EndTornEntry(const std::filesystem::path& path) {
  std::error_code ignored;
  if (!std::filesystem::is_regular_file(path, ignored)) return;
  std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
  if (file.seekg(-1, std::ios::end) && file.get() != '\n') {
    file.seekp(0, std::ios::end);
    file.put('\n');
  }
}

}  // namespace

// The sink is used without a logger: a logger keeps failures to itself, a sink throws them.
class EntryLog::Destination {
 public:
  Destination(const EntryLogOptions& options, TerminalOutput& terminal)
      : options_(options), terminal_(terminal), formatter_(EntryFormatter()) {
    if (!options_.path.empty()) Guarded([this] { Open(); });
  }

  void Write(std::string_view kind, std::string_view text) {
    const std::string payload = VisibleText(text, kContinuation);
    const spdlog::details::log_msg entry(spdlog::string_view_t(kind.data(), kind.size()),
                                         spdlog::level::info, payload);
    const std::lock_guard lock(mutex_);
    if (options_.path.empty()) {
      spdlog::memory_buf_t line;
      formatter_->format(entry, line);
      terminal_.Put(std::string_view(line.data(), line.size()));
      return;
    }
    Guarded([&] {
      if (!sink_) Open();
      sink_->log(entry);
      sink_->flush();
    });
  }

 private:
  void Open() {
    EndTornEntry(options_.path);
    sink_ = std::make_unique<spdlog::sinks::rotating_file_sink_st>(
        options_.path.string(), options_.rotate_at_bytes, options_.rotated_files);
    sink_->set_formatter(EntryFormatter());
  }

  // A sink whose rotation failed may hold no file at all and must not be written to again.
  template <class Action>
  void Guarded(Action action) {
    try {
      action();
    } catch (const spdlog::spdlog_ex& failure) {
      sink_.reset();
      throw RuntimeError(
          RuntimeErrorNumber::kAccessFailure,
          "The log file \"" + options_.path.string() + "\" cannot be written: " + failure.what());
    }
  }

  EntryLogOptions options_;
  TerminalOutput& terminal_;
  std::mutex mutex_;
  std::unique_ptr<spdlog::formatter> formatter_;
  std::unique_ptr<spdlog::sinks::rotating_file_sink_st> sink_;
};

EntryLog::EntryLog(const EntryLogOptions& options, TerminalOutput& terminal)
    : destination_(std::make_unique<Destination>(options, terminal)) {}

EntryLog::~EntryLog() = default;

void EntryLog::Write(std::string_view kind, std::string_view text) {
  destination_->Write(kind, text);
}

}  // namespace sabrel
