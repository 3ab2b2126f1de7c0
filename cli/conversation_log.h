// The conversation with the Data Server, shown on standard error, kept in a file and told to the
// log.
//
// Each statement is in the record and in the log before it is sent, so that one without an answer
// is seen there. A file that cannot be written any more does not disturb the operations: the
// failure is told at the end.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "adapters/console/output_file.h"
#include "adapters/shared/conversation.h"

namespace sabrel::cli {

struct ConversationLogOptions {
  /// On standard error.
  bool show = false;
  /// Empty keeps no file. An older record is replaced; any other file is refused.
  std::filesystem::path record = {};
  /// What the record may not be.
  ReservedFiles reserved = {};
  std::function<void()> before_showing = {};
  /// Writes an entry of the log; empty where no log was asked for.
  std::function<void(std::string_view)> log = {};
};

class ConversationLog final : public ConversationListener {
 public:
  /// Errors: 75 naming the file and the reason
  explicit ConversationLog(ConversationLogOptions options);

  void Sent(const ConversationEntry& entry) noexcept override;
  void Answered(const ConversationEntry& entry) noexcept override;
  [[nodiscard]] bool WantsRows() const noexcept override { return record_.IsOpen(); }

  /// Errors: 75 when record or log are not complete
  void RequireComplete() const;

 private:
  void Show(const ConversationEntry& entry) const;
  void Keep(const ConversationEntry& entry) noexcept;
  void Log(const std::string& text);
  void LogEnd(const ConversationEntry& entry);

  ConversationLogOptions options_;
  OutputFile record_;
  /// When each entry without an end was sent.
  std::map<std::int64_t, std::chrono::steady_clock::time_point> under_way_;
  int record_failure_ = 0;
  std::string log_failure_;
};

/// "query, time-out 60 s", the statement, and what is sent with it, a line each.
[[nodiscard]] std::string Described(const ConversationEntry& entry);

}  // namespace sabrel::cli
