#include "cli/context.h"

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <utility>

#include "adapters/console/access_failure.h"
#include "adapters/console/terminal.h"
#include "adapters/shared/private_file.h"
#include "cli/row_printer.h"
#include "cli/session.h"
#include "sabrel/core/gsabrel.h"

namespace sabrel::cli {
namespace {

constexpr std::streamsize kMostPasswordBytes = 64 << 10;

void PutError(std::string_view text) {
  std::fputs((VisibleText(text, "\n") + "\n").c_str(), stderr);
}

std::string NumberedText(std::int32_t number, const std::string& description) {
  const std::int32_t code = CarriedCode(number);
  return (code != 0 ? "Sabrel error " + std::to_string(code) : "Error " + std::to_string(number)) +
         ": " + description;
}

// What an operation ends with that goes on without the rows of a failed query: its own failures do
// not tell why.
bool MissesRows(const CErrorObject& end) {
  if (end.IsDBError() || end.IsConnectionError()) return false;
  const auto is = [&end](RuntimeErrorNumber number) {
    return end.Number() == static_cast<std::int32_t>(number);
  };
  return CarriedCode(end.Number()) != 0 || is(RuntimeErrorNumber::kObjectNotSet) ||
         is(RuntimeErrorNumber::kDivisionByZero);
}

}  // namespace

std::string_view KindText(EDBErrorType type) noexcept {
  switch (type) {
    case dbeUniqueConstraintViolated: return "unique constraint violated";
    case dbeIntegrityConstraintViolated_ParentKeyNotFound: return "parent key not found";
    case dbeIntegrityConstraintViolated_ChildRecordFound: return "child record found";
    case dbeNone:
    case dbeUnknown: break;
  }
  return "";
}

Context::Context(Interrupts& interrupts) : interrupts_(interrupts) {}

Context::~Context() {
  interrupts_.Watch(nullptr);
  UnloadThread();
  InstallPlatform({});
}

void Context::StartSession() {
  if (services_) return;
  const SessionProfiles profiles = ReadSessionProfiles(options);
  reserved_ = InputsOf(options, profiles.set);
  auto services = OpenOutputs(reserved_);
  reserved_.Add(options.log, "the log");
  reserved_.Add(options.record, "the record");
  profiles_ = profiles.set;
  InstallSession(options, profiles, services, conversation_, interrupts_, [this] {
    if (!failed_query_) failed_query_ = *GSabrel::SabrelErrorObject();
  });
  services_ = std::move(services);
}

// Nothing is written or emptied before everything has been opened.
std::shared_ptr<AttentiveServices> Context::OpenOutputs(const ReservedFiles& inputs) {
  ConsoleServicesOptions console;
  console.answer = options.answer;
  console.trace = options.trace;
  console.wait_for_answer = [this](int input) { return interrupts_.WaitForInput(input); };
  console.log.path = options.log;
  console.log.access = options.shared ? FileAccess::kGroup : FileAccess::kOwner;
  console.log.reserved = inputs;
  console.log.reserved.Add(options.record, "the record");
  auto services = std::make_shared<ConsoleServices>(console);
  const bool has_log = !options.log.empty();
  if (options.show_sql || has_log || !options.record.empty()) {
    ConversationLogOptions conversation;
    conversation.show = options.show_sql;
    conversation.record = options.record;
    conversation.reserved = inputs;
    conversation.reserved.Add(options.log, "the log");
    conversation.before_showing = [this] { StopProgress(); };
    if (has_log) {
      conversation.log = [services](std::string_view text) { services->WriteServerEntry(text); };
    }
    conversation_ = std::make_shared<ConversationLog>(std::move(conversation));
  }
  return std::make_shared<AttentiveServices>(
      std::move(services), [this] { StopProgress(); }, [this] { return interrupts_.Cancelled(); });
}

void Context::RequireServer() const {
  if (options.site.empty() && options.profile_file.empty()) {
    throw UsageError(
        "No Data Server is named: give --site FILE or --profile FILE, or set SABREL_SITE");
  }
}

int Context::Run(const Action& run_action) {
  interrupts_.StartCommand();
  int status = kFailed;
  try {
    StartSession();
    services_->ForgetBoxes();
    ForgetFailures();
    status = Attempt(run_action);
  } catch (const UsageError& wrong) {
    status = kWrongUsage;
    PutError("sabrel: " + std::string(wrong.what()));
  } catch (const OutputClosed&) {
    throw;
  } catch (const OutputCancelled&) {
    progress_.reset();
    out_.Flush();
  } catch (...) {
    progress_.reset();
    out_.Drop();
    const RuntimeError failure = CurrentFailure();
    status = services_ ? Report(CErrorObject(failure)) : kFailed;
    if (!services_) PutError("sabrel: " + failure.Description());
  }
  progress_.reset();
  if (!interrupts_.Cancelled()) return status;
  if (status > kFalse || (services_ && services_->WasQuestionCutOff())) {
    PutError("Cancelled.");
    status = interrupts_.Ending() ? kTerminated : kCancelled;
  }
  interrupts_.StartCommand();
  return status;
}

int Context::Attempt(const Action& run_action) {
  progress_ = std::make_unique<Progress>();
  const int status = run_action(*this);
  progress_.reset();
  if (services_->WasQuestionCutOff()) {  // What follows from the answer "No" was not asked for.
    out_.Drop();
    throw OutputCancelled();
  }
  out_.Flush();
  const auto failure = GSabrel::SabrelErrorObject();
  return failure->Number() == 0 ? status : Report(*failure);
}

int Context::Step(std::string_view name, const std::function<void()>& work) {
  ForgetFailures();
  std::optional<CErrorObject> failure;
  try {
    work();
    failure = *GSabrel::SabrelErrorObject();
  } catch (...) {
    failure.emplace(CurrentFailure());
  }
  if (interrupts_.Cancelled()) throw OutputCancelled();
  int status = kDone;
  if (failure->Number() != 0) {
    StopProgress();
    PutError(std::string(name) + " failed:");
    status = Report(*failure);
  }
  ForgetFailures();
  return status;
}

void Context::ForgetFailures() {
  GSabrel::ClearConnectionError();
  failed_query_.reset();
}

int Context::Report(const CErrorObject& end) {
  const CErrorObject& failure = failed_query_ && MissesRows(end) ? *failed_query_ : end;
  const bool connection = failure.IsConnectionError();
  const bool known = connection || failure.IsDBError();
  const std::string text =
      known ? failure.Text() : NumberedText(failure.Number(), failure.Description());
  if (!services_->HasShown(known ? text : failure.Description())) PutError(text);
  if (connection && !failure.Description().empty()) PutError("Reason: " + failure.Description());
  const std::string_view kind = KindText(failure.DBErrorType());
  if (failure.IsDBError() && !kind.empty()) PutError("Kind: " + std::string(kind));
  return connection ? kNoConnection : kFailed;
}

int Context::Tell(std::string_view text) {
  try {
    out_.Write(text);
    out_.Flush();
    return kDone;
  } catch (const RuntimeError& failure) {
    PutError(NumberedText(failure.Number(), failure.Description()));
    return kFailed;
  }
}

void Context::Print(const Variant& value) {
  switch (options.format) {
    case Format::kTable: out_.Write(TableText(value)); break;
    case Format::kCsv: out_.Write(CsvText(value)); break;
    case Format::kJson: out_.Write(JsonText(value)); break;
  }
  out_.Write("\n");
}

int Context::PrintTruth(bool truth) {
  if (options.format == Format::kTable) {
    out_.Write(truth ? "yes\n" : "no\n");
  } else {
    Print(Variant(truth));
  }
  return truth ? kDone : kFalse;
}

void Context::PrintRows(Recordset& rows) {
  std::vector<std::string> names;
  const FieldList fields = rows.Fields();
  for (std::int32_t i = 0; i < fields.Count(); ++i) names.push_back(fields.Item(i).Name());
  if (out_.IsTerminal()) StopProgress();
  const auto printer = MakeRowPrinter(options.format, out_, names);
  std::vector<Variant> values(names.size());
  std::int64_t count = 0;
  for (; !rows.EndOfFile(); rows.MoveNext()) {
    if (interrupts_.Cancelled()) {
      rows.Close();
      throw OutputCancelled();
    }
    for (std::size_t i = 0; i < values.size(); ++i) {
      values[i] = fields.Item(static_cast<std::int32_t>(i)).Value();
    }
    printer->Row(values);
    ++count;
    if (progress_) progress_->Rows(count);
  }
  printer->End();
  out_.Flush();
  rows.Close();
  progress_.reset();
  Note(std::to_string(count) + (count == 1 ? " row" : " rows"));
}

void Context::Advance(const char* what, std::size_t done, std::size_t total) {
  if (progress_) progress_->Bytes(what, done, total);
}

void Context::StopProgress() {
  if (progress_) progress_->Stop();
}

bool Context::HasShownBox() const { return services_ && services_->HasShownAny(); }

void Context::Hide(std::string_view secret) {
  auto* recording = dynamic_cast<RecordingRowlink*>(CurrentPlatform().rowlink.get());
  if (recording != nullptr) recording->Hide(secret);
}

void Context::Note(std::string_view text) { PutError(text); }

void Context::RequireCompleteRecord() const {
  if (conversation_) conversation_->RequireComplete();
}

std::string ReadPasswordFile(Context& context, const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::string password(kMostPasswordBytes + 1, '\0');
  file.getline(password.data(), kMostPasswordBytes + 1);
  if (file.fail() && file.gcount() == kMostPasswordBytes) {
    throw RuntimeError(RuntimeErrorNumber::kInvalidFileFormat,
                       "The first line of the password file " + path +
                           " has no end within 64 KiB; name a file whose first line is the "
                           "password");
  }
  if (file.fail() && !file.eof()) throw AccessFailure("The password file " + path, errno);
  const auto line_break = file.eof() ? 0 : 1;
  password.resize(static_cast<std::size_t>(file.gcount() - line_break));
  if (IsOpenToOthers(path)) {
    context.Note("Warning: others can read or change the password file " + path +
                 "; chmod 600 helps");
  }
  if (password.ends_with('\r')) password.pop_back();
  return password;
}

}  // namespace sabrel::cli
