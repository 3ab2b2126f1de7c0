// The conversation with the Data Server, shown on standard error and kept in a file.
//
// A file that cannot be written any more does not disturb the operations: the failure is told at
// the end.
#pragma once

#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <string>

#include "adapters/shared/conversation.h"

namespace sabrel::cli {

class ConversationLog final : public ConversationListener {
 public:
  /// `record` empty keeps no file. An older record is replaced; any other file is refused.
  /// Errors: 75 naming the file and the reason
  ConversationLog(bool show, std::filesystem::path record, std::function<void()> before_showing);

  void Sent(const ConversationEntry& entry) noexcept override;
  void Answered(const ConversationEntry& entry) noexcept override;

  /// Errors: 75 when the record is not complete
  void RequireComplete() const;

 private:
  bool show_;
  std::filesystem::path path_;
  std::ofstream record_;
  std::function<void()> before_showing_;
  int failure_ = 0;
};

/// "query (time-out 60 s)" and the statement behind, a line each.
[[nodiscard]] std::string Described(const ConversationEntry& entry);

}  // namespace sabrel::cli
