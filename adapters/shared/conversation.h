// What was said between the component and a Data Server, kept entry by entry.
//
// `RecordingRowlink` stands between the component and any Rowlink: everything passes through
// unchanged, and a listener hears each statement before it is sent and each answer as it arrives.
// Entries can be written as lines of JSON and read back with every value of the kind it had, so
// that a scripted double answers a test with what a real server once said. Each entry is told in
// parts: the request before it is sent, so that a server that never answers leaves its trace, then
// the answer, a long one in several parts, so that listening takes constant memory.
//
// Refuses to hold a secret: addresses have no password, and a password that stands as a constant,
// as a parameter or after IDENTIFIED BY is replaced by "***".
#pragma once

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sabrel/platform/rowlink.h"

namespace sabrel {

struct ConversationFailure {
  std::int32_t number = 0;
  std::string source;
  std::string description;
  /// What the server said, when it refused.
  std::optional<DatabaseError> database;
};

struct ConversationEntry {
  enum class Operation { kQuery, kRequest, kCall, kWrite };
  /// kLeft: the rows were closed before their end.
  enum class End { kOpen, kDone, kLeft, kFailed };

  /// Counts from 1; the parts of one entry share it.
  std::int64_t id = 0;
  Operation operation = Operation::kQuery;
  /// SQL text, name of the routine or name of the table.
  std::string statement;
  /// Its password is empty, always.
  DataServerAddress address;
  std::vector<RoutineParameter> parameters;
  /// Of kWrite: the columns and row texts that were sent.
  RowSet row_set;

  std::vector<std::string> columns;
  std::vector<std::vector<Variant>> rows;
  RoutineOutcome outcome;
  End end = End::kOpen;
  std::optional<ConversationFailure> failure;
  /// A part of the answer: holds id and operation, and of the rest what was answered. The columns
  /// come with its first part.
  bool continues = false;
};

/// "query", "request", "call", "write"
[[nodiscard]] std::string_view OperationWord(ConversationEntry::Operation operation) noexcept;
/// "open", "done", "left", "failed"
[[nodiscard]] std::string_view EndWord(ConversationEntry::End end) noexcept;

class ConversationListener {
 public:
  virtual ~ConversationListener() = default;
  /// The request, before it is sent; its end is kOpen. Errors: none; a failure to listen must not
  /// change what is listened to
  virtual void Sent(const ConversationEntry& entry) noexcept = 0;
  /// An answer, or a part of one (`continues`): all but the last part have the end kOpen.
  /// Errors: none
  virtual void Answered(const ConversationEntry& entry) noexcept = 0;
  /// Whether answers are to come with their rows, which costs a copy of each.
  [[nodiscard]] virtual bool WantsRows() const noexcept { return true; }
};

/// Passes everything on to `inner`. One per thread, as the Rowlink that it stands before.
class RecordingRowlink final : public LinkedRowlink {
 public:
  RecordingRowlink(std::shared_ptr<Rowlink> inner, std::shared_ptr<ConversationListener> listener);

  void ShutDown() override;
  [[nodiscard]] std::int32_t ConnectionErrorCode(std::int32_t number) const override;
  [[nodiscard]] DatabaseError LastDatabaseError() const override;
  void Cancel() noexcept override;

  /// A text that no entry may show, besides the passwords that pass by in addresses. Empty is
  /// ignored.
  void Hide(std::string_view secret);

 private:
  class Recorder;
  class Link;
  class LinkCursor;
  explicit RecordingRowlink(const std::shared_ptr<Recorder>& recorder);
  std::shared_ptr<Recorder> recorder_;
};

/// `entry`, or one part of it, as one line with its line break.
[[nodiscard]] std::string EntryLine(const ConversationEntry& entry);

/// The entries in the order of their first parts, parts put together again. An entry cut off by the
/// end of the program has the end kOpen; a last line without its line break is ignored, if it
/// starts as an entry does. Errors: 321 naming the line that is none of EntryLine's, and why: what
/// is missing, unknown, given twice, of another kind or range than EntryLine writes, or continues
/// nothing. 75 when `in` cannot be read
[[nodiscard]] std::vector<ConversationEntry> ReadEntries(std::istream& in);

/// Whether `line`, without its line break, can be the first line of a record.
[[nodiscard]] bool StartsRecord(std::string_view line) noexcept;

}  // namespace sabrel
