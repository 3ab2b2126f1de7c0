// What every command works with: the options, the session, the output, and the rule of exit
// statuses.
//
// A command is parsed first and run afterwards; it does its work inside `Run`, which clears the
// error object, turns every failure into a message and an exit status, and knows about Ctrl-C. The
// session - platform, profiles, Rowlink - is made when the first command needs it.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "adapters/console/console_services.h"
#include "adapters/shared/profiles.h"
#include "cli/attentive_services.h"
#include "cli/cell_text.h"
#include "cli/conversation_log.h"
#include "cli/exit_status.h"
#include "cli/interrupts.h"
#include "cli/output.h"
#include "cli/progress.h"
#include "sabrel/core/error_object.h"
#include "sabrel/platform/recordset.h"

namespace sabrel::cli {

inline constexpr std::int32_t kDefaultTimeout_s = 60;

struct Options {
  std::string site;
  std::string profile_file;
  std::string profile_name;
  std::string registry;
  std::string log;
  std::string record;
  /// Of the profiles and of `query` and `request`; 0 is no limit. Without one, what a profile does
  /// not say and what those two send is kDefaultTimeout_s.
  std::optional<std::int32_t> timeout_s;
  /// Version of the spreadsheet application; empty when it is not installed.
  std::string spreadsheet;
  /// Further files that the command line reads or makes: no output may be one of them.
  std::vector<std::string> inputs;
  bool shared = false;
  bool trace = false;
  bool show_sql = false;
  Format format = Format::kTable;
  AnswerMode answer = AnswerMode::kAsk;
};

class Context;
/// Does a command's work and returns kDone, kFalse or another exit status. Errors: RuntimeError,
/// UsageError
using Action = std::function<int(Context&)>;

class Context {
 public:
  explicit Context(Interrupts& interrupts);
  ~Context();
  Context(const Context&) = delete;
  Context& operator=(const Context&) = delete;

  /// Runs `action` as one command and returns the exit status; says on standard error what failed.
  /// Errors: OutputClosed
  int Run(const Action& action);

  /// Does one of several steps of a command: what it fails with is told on standard error and does
  /// not keep later steps from running. Returns kDone, kNoConnection or kFailed.
  /// Errors: OutputCancelled
  int Step(std::string_view name, const std::function<void()>& work);

  /// For actions that talk to the Data Server. Errors: UsageError when no server was named
  void RequireServer() const;

  /// Prints help, for which there is no session. Returns kDone or kFailed. Errors: OutputClosed
  int Tell(std::string_view text);

  // Results, in the form that was asked for.
  void Print(const Variant& value);
  /// Prints yes or no and returns kDone or kFalse.
  int PrintTruth(bool truth);
  /// Prints all rows, closes the recordset and tells their number.
  void PrintRows(Recordset& rows);
  /// How far a long work is, see Progress::Bytes.
  void Advance(const char* what, std::size_t done, std::size_t total);
  /// Before anything else is written to the terminal.
  void StopProgress();
  /// A line for the person, on standard error.
  void Note(std::string_view text);

  /// Whether a message box told the person something since the command started.
  [[nodiscard]] bool HasShownBox() const;

  /// Keeps a password out of --show-sql and --record; for one that travels as an argument. Inside
  /// an action only.
  void Hide(std::string_view secret);

  /// Of the server that serves what names no other one; inside an action only.
  [[nodiscard]] const ConnectionProfile& SessionProfile() const { return Profiles().Session(); }
  /// The same with its section's settings, and the other known servers.
  [[nodiscard]] const ProfileSet& Profiles() const { return profiles_.value(); }

  /// What no file that a command writes may be: what this run reads, and its record and log.
  [[nodiscard]] const ReservedFiles& Reserved() const noexcept { return reserved_; }
  /// One more for later commands, see ReservedFiles::Add.
  void Reserve(const std::string& path, std::string what) { reserved_.Add(path, std::move(what)); }

  [[nodiscard]] Output& Out() noexcept { return out_; }
  [[nodiscard]] Interrupts& Signals() noexcept { return interrupts_; }
  /// Errors: 75 when the record or the log is not complete
  void RequireCompleteRecord() const;

  Options options;
  /// The command that the parser found.
  Action action;
  /// The command's own --timeout, where it has one.
  std::optional<std::int32_t> command_timeout_s;
  /// Set instead by a command that runs commands of its own, each with `Run`.
  Action session;

 private:
  void StartSession();
  [[nodiscard]] std::shared_ptr<AttentiveServices> OpenOutputs(const ReservedFiles& inputs);
  int Attempt(const Action& action);
  void ForgetFailures();
  int Report(const CErrorObject& end);

  Interrupts& interrupts_;
  Output out_{1};
  ReservedFiles reserved_;
  std::shared_ptr<AttentiveServices> services_;
  std::shared_ptr<ConversationLog> conversation_;
  std::unique_ptr<Progress> progress_;
  std::optional<ProfileSet> profiles_;
  std::optional<CErrorObject> failed_query_;
};

/// "unique constraint violated"; empty for errors that callers need not tell apart.
[[nodiscard]] std::string_view KindText(EDBErrorType type) noexcept;

/// The first line of the file. Errors: 75; 321 when that line does not end. A file that others can
/// read is told as a warning to `context`
[[nodiscard]] std::string ReadPasswordFile(Context& context, const std::string& path);

}  // namespace sabrel::cli
