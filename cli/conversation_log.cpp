#include "cli/conversation_log.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <utility>

#include "adapters/console/access_failure.h"
#include "adapters/console/terminal.h"

namespace sabrel::cli {
namespace {

constexpr std::string_view kContinuation = "\n     ";

// What was typed behind --record by mistake - the site, say - must not be lost to it.
void RequireRecordOrNothing(const std::filesystem::path& path) {
  std::error_code ignored;
  if (!std::filesystem::is_regular_file(path, ignored)) return;
  std::ifstream file(path, std::ios::binary);
  const int first = file.get();
  if (first != std::ifstream::traits_type::eof() && first != '{') {
    throw RuntimeError(RuntimeErrorNumber::kAccessFailure,
                       "The file " + path.string() +
                           " exists and is no record; name another file or remove this one");
  }
}

}  // namespace

ConversationLog::ConversationLog(bool show, std::filesystem::path record,
                                 std::function<void()> before_showing)
    : show_(show), path_(std::move(record)), before_showing_(std::move(before_showing)) {
  if (path_.empty()) return;
  RequireRecordOrNothing(path_);
  // A record holds data: nobody else is to read it.
  const int descriptor = ::open(path_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  if (descriptor < 0) throw AccessFailure("The record " + path_.string(), errno);
  ::close(descriptor);
  record_.open(path_, std::ios::binary);
  if (!record_) throw AccessFailure("The record " + path_.string(), errno);
}

std::string Described(const ConversationEntry& entry) {
  std::string text = "  -- " + std::string(OperationWord(entry.operation));
  const DataServerAddress& address = entry.address;
  if (!address.host.empty()) text += ", host " + address.host;
  if (address.port != 0) text += ", port " + std::to_string(address.port);
  if (!address.user.empty()) text += ", user " + address.user;
  if (entry.operation != ConversationEntry::Operation::kWrite) {
    text += address.timeout_s == 0 ? ", profile's time-out"
                                   : ", time-out " + std::to_string(address.timeout_s) + " s";
  }
  text += "\n     " + VisibleText(entry.statement, kContinuation) + "\n";
  for (std::size_t i = 0; i < entry.parameters.size(); ++i) {
    const RoutineParameter& parameter = entry.parameters[i];
    text += "     " + std::to_string(i) + ": " + parameter.type_word + " ";
    text += parameter.value.empty() ? "null" : "'" + VisibleText(parameter.value, " ") + "'";
    text += parameter.name.empty() ? "\n" : " (" + parameter.name + ")\n";
  }
  for (const RowSet::Column& column : entry.row_set.columns) {
    text += "     column " + column.name + " " + column.type_word + "\n";
  }
  for (const std::string_view row : entry.row_set.rows) {
    text += "     row " + VisibleText(row, kContinuation) + "\n";
  }
  return VisibleText(text, "\n");
}

void ConversationLog::Sent(const ConversationEntry& entry) noexcept {
  if (!show_) return;
  try {
    before_showing_();
    std::fputs(Described(entry).c_str(), stderr);
    std::fflush(stderr);
  } catch (...) {  // Out of memory: the statement goes its way unseen.
    std::fputs("  -- a statement that is too long to show\n", stderr);
  }
}

void ConversationLog::Answered(const ConversationEntry& entry) noexcept {
  if (path_.empty() || failure_ != 0) return;
  try {
    errno = 0;
    WriteEntry(record_, entry);
    record_.flush();
    if (!record_) failure_ = errno != 0 ? errno : EIO;
  } catch (...) {
    failure_ = ENOMEM;
  }
}

void ConversationLog::RequireComplete() const {
  if (failure_ != 0) {
    throw AccessFailure("The record " + path_.string() + " is not complete", failure_);
  }
}

}  // namespace sabrel::cli
