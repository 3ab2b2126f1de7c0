#include "cli/conversation_log.h"

#include <cerrno>
#include <cstdio>
#include <iomanip>
#include <sstream>
#include <utility>

#include "adapters/console/access_failure.h"
#include "adapters/console/terminal.h"

namespace sabrel::cli {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::string_view kContinuation = "\n     ";

std::string FailureText(const ConversationFailure& failure) {
  if (failure.database) {
    return "database error " + std::to_string(failure.database->native_number) + ": " +
           failure.database->message;
  }
  const std::int32_t connection = CarriedConnectionCode(failure.number);
  return (connection != 0 ? "connection error " + std::to_string(connection)
                          : "error " + std::to_string(failure.number)) +
         ": " + failure.description;
}

std::string Seconds(Clock::duration time) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(3) << std::chrono::duration<double>(time).count() << " s";
  return text.str();
}

}  // namespace

ConversationLog::ConversationLog(ConversationLogOptions options) : options_(std::move(options)) {
  if (options_.record.empty()) return;
  // A record holds data: nobody else is to read it.
  const std::string name = "The record " + options_.record.string();
  record_ = OutputFile(options_.record, {name, "record", FileAccess::kOwner, StartsRecord},
                       options_.reserved);
  if (const int failure = record_.Empty(); failure != 0) throw AccessFailure(name, failure);
}

std::string Described(const ConversationEntry& entry) {
  std::string text(OperationWord(entry.operation));
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

void ConversationLog::Show(const ConversationEntry& entry) const {
  options_.before_showing();
  std::fputs(("  -- " + Described(entry)).c_str(), stderr);
  std::fflush(stderr);
}

void ConversationLog::Keep(const ConversationEntry& entry) noexcept {
  if (!record_.IsOpen() || record_failure_ != 0) return;
  try {
    record_failure_ = record_.Write(EntryLine(entry));
  } catch (...) {
    record_failure_ = ENOMEM;
  }
}

void ConversationLog::Log(const std::string& text) {
  try {
    options_.log(text);
  } catch (const RuntimeError& failure) {
    if (log_failure_.empty()) log_failure_ = failure.Description();
  }
}

void ConversationLog::LogEnd(const ConversationEntry& entry) {
  const auto started = under_way_.extract(entry.id);
  const std::string time =
      started.empty() ? "" : " after " + Seconds(Clock::now() - started.mapped());
  const std::string number = std::to_string(entry.id);
  Log(entry.failure ? "Failed " + number + time + ": " + FailureText(*entry.failure)
                    : "Done " + number + time);
}

void ConversationLog::Sent(const ConversationEntry& entry) noexcept {
  Keep(entry);
  try {
    if (options_.show) Show(entry);
    if (!options_.log) return;
    std::string text = Described(entry);
    text.pop_back();
    Log("Sending " + std::to_string(entry.id) + ": " + text);
    under_way_.emplace(entry.id, Clock::now());
  } catch (...) {  // Out of memory: the statement goes its way unseen.
    std::fputs("  -- a statement that is too long to show\n", stderr);
  }
}

void ConversationLog::Answered(const ConversationEntry& entry) noexcept {
  Keep(entry);
  try {
    if (options_.log && entry.end != ConversationEntry::End::kOpen) LogEnd(entry);
  } catch (...) {  // Out of memory: nothing is left to tell it with.
  }
}

void ConversationLog::RequireComplete() const {
  if (record_failure_ != 0) {
    throw AccessFailure("The record " + options_.record.string() + " is not complete",
                        record_failure_);
  }
  if (!log_failure_.empty()) {
    throw RuntimeError(RuntimeErrorNumber::kAccessFailure, log_failure_);
  }
}

}  // namespace sabrel::cli
