// The program `sabrel`: the component's operations from a terminal.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <map>
#include <optional>
#include <sstream>

#include "cli/commands/commands.h"
#include "cli/context.h"
#include "sabrel/platform/runtime_error.h"

namespace sabrel::cli {
namespace {

constexpr const char* kFooter =
    "Examples:\n"
    "  sabrel site create plant.site\n"
    "  export SABREL_SITE=plant.site\n"
    "  sabrel query \"SELECT Group_Id, Group_Name FROM PM_Groups\"\n"
    "  sabrel --format json function --as long FS_GetColumnLength PM_REPORT NAME\n"
    "  sabrel shell\n\n"
    "Exit status: 0 done or true, 1 false, 2 wrong usage, 3 no connection, 4 failed,\n"
    "  130 cancelled with Ctrl-C.\n\n"
    "Results: a table marks null with \u2205. CSV (RFC 4180, lines end in LF) leaves null empty "
    "and writes the\n"
    "  empty text as \"\". JSON is an array of objects; columns of one name are NAME and NAME_2; "
    "a\n"
    "  double has the digits that read back as the same double, a decimal of more than 15 digits\n"
    "  is a string, so that no reader rounds it. Dates are 2024-03-09T17:05:00. Row counts,\n"
    "  messages and progress go to standard error.\n\n"
    "A profile file (--profile) has a line [name] per Data Server and lines Setting = value "
    "behind:\n"
    "  Driver (sqlite, or an ODBC driver as `odbcinst -q -d` lists it: PostgreSQL's or Oracle's),\n"
    "  Host, Port, Database (file, database or service), UserName, Password, ConnectTimeout and\n"
    "  ReceiveTimeout in seconds (0 for no limit), DateFormat (DD-MON-RR where it is left out),\n"
    "  SslMode (require, verify-ca or verify-full) and SslRootCert.";

// What is wrong with a version, or nothing.
std::string VersionFault(const std::string& text) {
  const bool starts = !text.empty() && text[0] >= '0' && text[0] <= '9';
  const bool is_number = text.find_first_not_of("0123456789.") == std::string::npos &&
                         text.find('.') == text.rfind('.');
  if (starts && is_number) return {};
  return "'" + text + "' is no version; write it as 12.0";
}

// The option's word is one of `words`, in any case.
template <typename Value>
void TakeWord(CLI::Option& option, const std::map<std::string, Value>& words) {
  option.transform(CLI::Transformer(words, CLI::ignore_case).description(""));
  // What is added last looks at the word first.
  option.transform(CLI::IsMember(words, CLI::ignore_case).description(""));
}

void AddOptions(CLI::App& app, Options& options) {
  static const std::map<std::string, AnswerMode> answers = {
      {"yes", AnswerMode::kYes}, {"no", AnswerMode::kNo}, {"ask", AnswerMode::kAsk}};
  CLI::Option* site = app.add_option("--site", options.site,
                                     "File with an embedded Data Server (default: $SABREL_SITE)");
  CLI::Option* profile =
      app.add_option("--profile", options.profile_file, "File with connection profiles");
  profile->excludes(site);
  app.add_option("--profile-name", options.profile_name,
                 "Which of them is the session's (default: the first)")
      ->needs(profile);
  app.add_option("--registry", options.registry, "Registry settings, as an exported .reg file");
  app.add_option("--spreadsheet", options.spreadsheet,
                 "Version of the installed spreadsheet application, 12.0 (default: none)")
      ->check(CLI::Validator(VersionFault, ""));
  TakeWord(*app.add_option("--format", options.format, "table, csv or json (default: table)"),
           FormatWords());
  TakeWord(*app.add_option("--answer", options.answer,
                           "Answer to questions: yes, no or ask (default: ask)"),
           answers);
  app.add_option("--timeout", options.timeout_s,
                 "Seconds until an answer is given up, 0 for no limit; in place of the profile's "
                 "ReceiveTimeout (default: 60 where the profile has none)")
      ->check(CLI::Range(0, 1000000));
  app.add_flag("--show-sql", options.show_sql,
               "Show each statement, argument and time-out that is sent, without passwords");
  app.add_option("--record", options.record,
                 "Keep what is sent and answered, as JSON lines; replaces an older record only");
  app.add_flag("--trace", options.trace,
               "Write trace lines; those of `validate` show the user's password");
  app.add_option("--log", options.log,
                 "File for log and trace lines (default: standard error), with each statement, as "
                 "--show-sql shows it, before it is sent");
  app.add_flag("--shared", options.shared,
               "Let the group read and write a new site and the log, as in a folder with the "
               "set-group-ID bit (default: the owner only)");
}

// A site of the environment is a default only: a profile file takes its place.
void ReadEnvironment(Options& options) {
  const char* site = std::getenv("SABREL_SITE");
  if (site != nullptr && options.site.empty() && options.profile_file.empty()) options.site = site;
}

// The exit status when there is no command to run: help or the version was asked for, or the words
// are wrong. Errors: OutputClosed
std::optional<int> Parse(CLI::App& app, Context& context, int argc, char** argv) {
  try {
    ParseWords(app, {argv + 1, argv + argc});
    return std::nullopt;
  } catch (const CLI::ParseError& end) {
    std::ostringstream text;
    return app.exit(end, text, std::cerr) == 0 ? context.Tell(text.str()) : kWrongUsage;
  }
}

int RunProgram(int argc, char** argv) {
  Interrupts interrupts;
  Context context(interrupts);
  CLI::App app("Sabrel: sends SQL text to a Data Server and prints what comes back.", "sabrel");
  app.set_version_flag("--version", "sabrel " SABREL_VERSION);
  app.get_formatter()->column_width(28);
  app.require_subcommand(1);
  AddOptions(app, context.options);
  AddSiteCommands(app, context);
  AddSessionCommands(app, context);
  AddShellCommand(app, context);
  app.footer(kFooter);  // Commands take over what their parser has when they are added.

  int status = kDone;
  try {
    if (const auto ended = Parse(app, context, argc, argv)) return *ended;
    ReadEnvironment(context.options);
    context.options.inputs = FilesOf(app, {"FILE", "--password-file"});
    if (context.command_timeout_s) context.options.timeout_s = context.command_timeout_s;
    status = context.session ? context.session(context) : context.Run(context.action);
    context.RequireCompleteRecord();
  } catch (const OutputClosed&) {
    return kOutputClosed;
  } catch (...) {
    context.Note("sabrel: " + CurrentFailure().Description());
    return kFailed;
  }
  return status;
}

// A closed descriptor would become the program's next file or pipe, and what goes to and comes from
// the caller would land there. Standard input is held for writing and standard output for reading,
// so that their use still fails.
bool HoldStandardDescriptors() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::fcntl(descriptor, F_GETFD) >= 0 || errno != EBADF) continue;
    const int mode = descriptor == STDOUT_FILENO ? O_RDONLY : O_WRONLY;
    if (::open("/dev/null", mode) != descriptor) return false;
  }
  return true;
}

}  // namespace
}  // namespace sabrel::cli

int main(int argc, char** argv) {
  if (!sabrel::cli::HoldStandardDescriptors()) return sabrel::cli::kFailed;
  // A reader that goes away is noticed where it matters: when standard output is written.
  std::signal(SIGPIPE, SIG_IGN);
  try {
    return sabrel::cli::RunProgram(argc, argv);
  } catch (...) {
    std::fprintf(stderr, "sabrel: %s\n", sabrel::CurrentFailure().Description().c_str());
    return sabrel::cli::kFailed;
  }
}
