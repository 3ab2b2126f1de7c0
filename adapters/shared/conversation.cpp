#include "adapters/shared/conversation.h"

#include <algorithm>
#include <utility>

#include "adapters/shared/statement_secrets.h"
#include "sabrel/platform/runtime_error.h"
#include "sabrel/platform/utf8.h"

namespace sabrel {
namespace {

using Entry = ConversationEntry;

constexpr std::string_view kHidden = "***";
// Rows are handed to the listener when about this many bytes of them have gathered.
constexpr std::size_t kPartBytes = std::size_t{256} << 10U;

}  // namespace

class RecordingRowlink::Recorder {
 public:
  Recorder(std::shared_ptr<Rowlink> inner, std::shared_ptr<ConversationListener> listener)
      : inner_(std::move(inner)), listener_(std::move(listener)) {}

  [[nodiscard]] Rowlink& Inner() const { return *inner_; }

  void Hide(std::string_view secret) {
    if (secret.empty() || std::ranges::find(secrets_, secret) != secrets_.end()) return;
    secrets_.emplace_back(secret);
  }

  [[nodiscard]] Entry Start(Entry::Operation operation, std::string_view statement,
                            const DataServerAddress& address) {
    Hide(address.password);
    Entry entry;
    entry.id = ++entries_;
    entry.operation = operation;
    entry.statement = WithoutSecrets(statement);
    entry.address = address;
    entry.address.password.clear();
    return entry;
  }

  [[nodiscard]] bool IsSecret(const RoutineParameter& parameter) const {
    return ContainsIgnoringCase(parameter.name, "password") ||
           ContainsIgnoringCase(parameter.name, "pwd") ||
           std::ranges::find(secrets_, parameter.value) != secrets_.end();
  }

  // From here on `entry` is the answer's.
  void Sent(Entry& entry) const {
    listener_->Sent(entry);
    StartPart(entry);
  }
  void Answered(const Entry& entry) const { listener_->Answered(entry); }
  [[nodiscard]] bool WantsRows() const { return listener_->WantsRows(); }

  static void StartPart(Entry& entry) {
    Entry part;
    part.id = entry.id;
    part.operation = entry.operation;
    part.end = entry.end;
    part.continues = true;
    entry = std::move(part);
  }

  // For a `catch` only: tells the failure being handled.
  void Failed(Entry& entry) const {
    const RuntimeError failure = CurrentFailure();
    entry.end = Entry::End::kFailed;
    entry.failure = ConversationFailure{failure.Number(), failure.Source(),
                                        WithoutSecrets(failure.Description()), std::nullopt};
    if (CarriedCode(failure.Number()) == kDatabaseErrorCode) {
      DatabaseError error = inner_->LastDatabaseError();
      error.message = WithoutSecrets(error.message);
      error.detail = WithoutSecrets(error.detail);
      entry.failure->database = std::move(error);
    }
    Answered(entry);
  }

 private:
  // Only whole constants are replaced: a short password must not punch holes into other words.
  [[nodiscard]] std::string WithoutSecrets(std::string_view text) const {
    std::string cleaned = WithoutDeclaredPasswords(text);
    for (const std::string& secret : secrets_) {
      cleaned = ReplaceAll(cleaned, "'" + ReplaceAll(secret, "'", "''") + "'",
                           "'" + std::string(kHidden) + "'");
    }
    return cleaned;
  }

  std::shared_ptr<Rowlink> inner_;
  std::shared_ptr<ConversationListener> listener_;
  std::vector<std::string> secrets_;
  std::int64_t entries_ = 0;
};

namespace {

void AddCell(RowBlock& block, const Variant& value) {
  switch (value.kind()) {
    case VariantKind::kInt32: return block.AddInt32(value.Get<std::int32_t>());
    case VariantKind::kDouble: return block.AddDouble(value.Get<double>());
    case VariantKind::kDecimal: return block.AddDecimal(value.Get<Decimal>());
    case VariantKind::kDate: return block.AddDate(value.Get<Date>());
    case VariantKind::kString: return block.AddText(value.Get<std::string>());
    default: return block.AddNull();
  }
}

std::size_t BytesOf(const Variant& value) {
  const auto* text = value.GetIf<std::string>();
  return sizeof(Variant) + (text != nullptr ? text->size() : 0);
}

}  // namespace

class RecordingRowlink::LinkCursor final : public Cursor {
 public:
  LinkCursor(std::shared_ptr<Recorder> recorder, std::shared_ptr<Recordset> rows, Entry entry)
      : recorder_(std::move(recorder)), rows_(std::move(rows)), entry_(std::move(entry)) {
    const FieldList fields = rows_->Fields();
    for (std::int32_t i = 0; i < fields.Count(); ++i) names_.push_back(fields.Item(i).Name());
    entry_.columns = names_;
  }
  ~LinkCursor() override {
    rows_->Close();
    if (entry_.end == Entry::End::kOpen) Tell(Entry::End::kLeft);
  }
  LinkCursor(const LinkCursor&) = delete;
  LinkCursor& operator=(const LinkCursor&) = delete;

  const std::vector<std::string>& ColumnNames() const override { return names_; }

  bool Fetch(RowBlock& block, std::size_t byte_limit) override {
    if (failure_) std::rethrow_exception(failure_);
    while (!rows_->EndOfFile()) {
      if (block.Rows() > 0 && block.Bytes() >= byte_limit) return true;
      TakeRow(block);
      if (!MoveOn()) return true;
    }
    Tell(Entry::End::kDone);
    return false;
  }

 private:
  void TakeRow(RowBlock& block) {
    const FieldList fields = rows_->Fields();
    std::vector<Variant> row;
    for (std::int32_t i = 0; i < fields.Count(); ++i) {
      row.push_back(fields.Item(i).Value());
      AddCell(block, row.back());
      bytes_ += BytesOf(row.back());
    }
    block.EndRow();
    if (!recorder_->WantsRows()) return;
    entry_.rows.push_back(std::move(row));
    if (bytes_ >= kPartBytes) Tell(Entry::End::kOpen);
  }

  // A failure in moving on belongs behind the rows that came before it.
  [[nodiscard]] bool MoveOn() {
    try {
      rows_->MoveNext();
      return true;
    } catch (...) {
      failure_ = std::current_exception();
      recorder_->Failed(entry_);
      return false;
    }
  }

  void Tell(Entry::End end) {
    entry_.end = end;
    recorder_->Answered(entry_);
    Recorder::StartPart(entry_);
    bytes_ = 0;
  }

  std::shared_ptr<Recorder> recorder_;
  std::shared_ptr<Recordset> rows_;
  Entry entry_;
  std::vector<std::string> names_;
  std::exception_ptr failure_;
  std::size_t bytes_ = 0;
};

class RecordingRowlink::Link final : public DataLink {
 public:
  explicit Link(std::shared_ptr<Recorder> recorder) : recorder_(std::move(recorder)) {}

  std::unique_ptr<Cursor> Query(std::string_view sql, const DataServerAddress& address) override {
    Entry entry = recorder_->Start(Entry::Operation::kQuery, sql, address);
    recorder_->Sent(entry);
    auto rows = recorder_->Inner().MakeRecordset();
    try {
      Deref(rows).Open(sql, address.host, address.port, address.user, address.password,
                       address.timeout_s);
    } catch (...) {
      recorder_->Failed(entry);
      throw;
    }
    return std::make_unique<LinkCursor>(recorder_, std::move(rows), std::move(entry));
  }

  std::int64_t Execute(std::string_view sql, const DataServerAddress& address) override {
    std::int64_t rows_changed = kUnknownRows;
    Record(recorder_->Start(Entry::Operation::kRequest, sql, address), [&](Entry&) {
      rows_changed = Deref(recorder_->Inner().MakeRecordset())
                         .Execute(sql, address.host, address.port, address.user, address.password,
                                  address.timeout_s);
    });
    return rows_changed;
  }

  RoutineOutcome Call(const RoutineCall& call) override {
    Entry started = recorder_->Start(Entry::Operation::kCall, call.procedure, call.address);
    for (const RoutineParameter& parameter : call.parameters) {
      started.parameters.push_back(parameter);
      if (!parameter.value.empty() && recorder_->IsSecret(parameter)) {
        started.parameters.back().value = kHidden;
      }
    }
    RoutineOutcome outcome;
    Record(std::move(started), [&](Entry& entry) {
      const auto inner = recorder_->Inner().MakeProcedureCall();
      outcome = CallThrough(Deref(inner), call);
      entry.outcome = outcome;
    });
    return outcome;
  }

  void Write(const RowSet& rows) override {
    Entry started = recorder_->Start(Entry::Operation::kWrite, rows.table, {});
    started.row_set = rows;
    Record(std::move(started), [&](Entry&) {
      const auto inner = recorder_->Inner().MakeRowSetWriter();
      Deref(inner).Table(rows.table);
      for (const auto& column : rows.columns) inner->DeclareColumn(column.name, column.type_word);
      for (const std::string_view row : rows.rows) inner->AddRow(row);
      inner->Submit();
    });
  }

 private:
  template <class Operation>
  void Record(Entry entry, const Operation& operation) {
    recorder_->Sent(entry);
    try {
      operation(entry);
    } catch (...) {
      recorder_->Failed(entry);
      throw;
    }
    entry.end = Entry::End::kDone;
    recorder_->Answered(entry);
  }

  static RoutineOutcome CallThrough(ProcedureCall& inner, const RoutineCall& call) {
    inner.ProcedureName(call.procedure);
    inner.Host(call.address.host);
    inner.Port(call.address.port);
    inner.UserName(call.address.user);
    inner.Password(call.address.password);
    inner.TimeOut(call.address.timeout_s);
    for (const RoutineParameter& parameter : call.parameters) {
      inner.AppendParameter(parameter.value, parameter.type_word, parameter.name);
    }
    RoutineOutcome outcome;
    outcome.result = inner.Execute();
    // An in-argument reads as it was appended; saying nothing of it comes to the same.
    for (std::size_t i = 0; i < call.parameters.size(); ++i) {
      Variant value = inner.ParameterValue(static_cast<std::int32_t>(i));
      const bool unchanged = value == Variant(call.parameters[i].value);
      outcome.outputs.push_back(unchanged ? std::nullopt : std::optional(std::move(value)));
    }
    return outcome;
  }

  std::shared_ptr<Recorder> recorder_;
};

RecordingRowlink::RecordingRowlink(std::shared_ptr<Rowlink> inner,
                                   std::shared_ptr<ConversationListener> listener)
    : RecordingRowlink(std::make_shared<Recorder>(std::move(inner), std::move(listener))) {}

RecordingRowlink::RecordingRowlink(const std::shared_ptr<Recorder>& recorder)
    : LinkedRowlink(std::make_shared<Link>(recorder)), recorder_(recorder) {}

void RecordingRowlink::ShutDown() { recorder_->Inner().ShutDown(); }
std::int32_t RecordingRowlink::ConnectionErrorCode(std::int32_t number) const {
  return recorder_->Inner().ConnectionErrorCode(number);
}
DatabaseError RecordingRowlink::LastDatabaseError() const {
  return recorder_->Inner().LastDatabaseError();
}
void RecordingRowlink::Cancel() noexcept { recorder_->Inner().Cancel(); }
void RecordingRowlink::Hide(std::string_view secret) { recorder_->Hide(secret); }

std::string_view OperationWord(ConversationEntry::Operation operation) noexcept {
  switch (operation) {
    case Entry::Operation::kQuery: return "query";
    case Entry::Operation::kRequest: return "request";
    case Entry::Operation::kCall: return "call";
    case Entry::Operation::kWrite: return "write";
  }
  return "";
}

std::string_view EndWord(ConversationEntry::End end) noexcept {
  switch (end) {
    case Entry::End::kOpen: return "open";
    case Entry::End::kDone: return "done";
    case Entry::End::kLeft: return "left";
    case Entry::End::kFailed: return "failed";
  }
  return "";
}

}  // namespace sabrel
