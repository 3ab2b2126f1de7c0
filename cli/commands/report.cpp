// `report`: what to ask before a report runs.
#include <memory>
#include <optional>

#include "cli/commands/commands.h"
#include "cli/commands/outcome.h"
#include "sabrel/core/gsabrel.h"

namespace sabrel::cli {
namespace {

struct ReportArguments {
  std::optional<std::int32_t> id;
  std::optional<std::int32_t> job;
};

constexpr const char* kSpreadsheetRemedy =
    "give --spreadsheet VERSION, for example --spreadsheet 12.0";

void RequireOne(const ReportArguments& arguments, const std::string& command,
                const std::string& id) {
  if (arguments.id.has_value() == arguments.job.has_value()) {
    throw UsageError("report " + command + " takes either " + id + " or --job JOB");
  }
}

// The check takes whatever goes wrong for a report that may run; a refusal of the server is all
// that can be learned of it.
bool SameError(const DatabaseError& a, const DatabaseError& b) {
  return a.native_number == b.native_number && a.message == b.message && a.detail == b.detail;
}

int Lengthy(Context& context, const ReportArguments& arguments) {
  RequireOne(arguments, "lengthy", "ID");
  context.RequireServer();
  const auto rowlink = CurrentPlatform().rowlink;
  const DatabaseError before = rowlink->LastDatabaseError();
  const bool declined = arguments.job ? GSabrel::IsLengthyReportGroup(*arguments.job)
                                      : GSabrel::IsLengthyReport(*arguments.id);
  RequireNotCancelled(context);
  if (HasFailed()) return kFailed;
  const DatabaseError after = rowlink->LastDatabaseError();
  if (!GSabrel::LengthyReportsConfigured()) {
    context.Note("The site has no package LengthyReport: every report may run");
  } else if (!SameError(before, after)) {
    context.Note("The check failed, so the report may run: " + after.message);
  }
  context.Print(Variant(declined ? "declined" : "run"));
  return declined ? kFalse : kDone;
}

int TaskTooBig(Context& context, std::int32_t task) {
  try {
    return PrintTruthAnswer(context, GSabrel::ReportTooBigForXL(std::to_string(task)));
  } catch (const RuntimeError& failure) {
    constexpr auto kNoApplication =
        static_cast<std::int32_t>(RuntimeErrorNumber::kCannotCreateObject);
    if (failure.Number() != kNoApplication) throw;
    throw UsageError("Task " + std::to_string(task) +
                     " is judged by the spreadsheet application's version; " + kSpreadsheetRemedy);
  }
}

int TooBig(Context& context, const ReportArguments& arguments) {
  RequireOne(arguments, "too-big", "TASK");
  context.RequireServer();
  if (arguments.id) return TaskTooBig(context, *arguments.id);
  if (context.options.spreadsheet.empty()) {
    context.Note(std::string("A report whose size needs the spreadsheet application's version is "
                             "not counted; ") +
                 kSpreadsheetRemedy);
  }
  const Variant count(GSabrel::JobReportsTooBigForXL(std::to_string(*arguments.job)));
  RequireNotCancelled(context);
  return PrintAnswer(context, count);
}

int Limit(Context& context, std::int32_t rows) {
  if (context.options.spreadsheet.empty()) {
    throw UsageError(std::string("No spreadsheet application is named; ") + kSpreadsheetRemedy);
  }
  return context.PrintTruth(GSabrel::TestRowLimit(rows).Get<bool>());
}

int Needs(Context& context, std::int32_t group) {
  context.RequireServer();
  const bool plans = GSabrel::IsCspNeeded(group);
  if (HasFailed()) return kFailed;
  const bool scopes = GSabrel::IsDtsNeeded(group);
  if (HasFailed()) return kFailed;
  PrintTable(context, {"WHAT", "NEEDED"},
             {{Variant("channel-set plans"), TruthCell(context, plans)},
              {Variant("data scopes"), TruthCell(context, scopes)}});
  return kDone;
}

void AddLengthy(CLI::App& report, Context& context) {
  const auto arguments = std::make_shared<ReportArguments>();
  CLI::App& lengthy = AddCommand(
      report, context, "lengthy",
      "Ask whether a lengthy report, or a job with lengthy reports, is to run",
      "  sabrel report lengthy 5\n"
      "  sabrel --answer no report lengthy --job 3\n\n"
      "Prints `run` (exit status 0) or `declined` (exit status 1). --answer yes|no answers. There "
      "is no\n"
      "  question about a report that is not lengthy or that cannot be checked: it may run.",
      [arguments](Context& c) { return Lengthy(c, *arguments); });
  lengthy.add_option("ID", arguments->id, "Id of the report");
  lengthy.add_option("--job", arguments->job, "Id of a job, for all its reports");
}

void AddTooBig(CLI::App& report, Context& context) {
  const auto arguments = std::make_shared<ReportArguments>();
  CLI::App& too_big = AddCommand(
      report, context, "too-big",
      "Is a finished report too big for the spreadsheet application? Of a job: how many are?",
      "  sabrel --spreadsheet 11.0 report too-big 2\n"
      "  sabrel --spreadsheet 12.0 report too-big --job 1\n\n"
      "A report of the job that cannot be checked is not counted.",
      [arguments](Context& c) { return TooBig(c, *arguments); });
  too_big.add_option("TASK", arguments->id, "Id of the task that made the report");
  too_big.add_option("--job", arguments->job, "Id of a job");
}

}  // namespace

void AddReportCommands(CLI::App& parent, Context& context) {
  CLI::App* report = parent.add_subcommand("report", "What to ask before a report runs");
  report->require_subcommand(1);
  report->fallthrough();
  AddLengthy(*report, context);
  AddTooBig(*report, context);

  const auto rows = std::make_shared<std::int32_t>(0);
  CLI::App& limit = AddCommand(*report, context, "limit",
                               "Are that many rows too many for the spreadsheet application (see "
                               "--spreadsheet)? Asks no server",
                               "  sabrel --spreadsheet 11.0 report limit 65001",
                               [rows](Context& c) { return Limit(c, *rows); });
  limit.add_option("ROWS", *rows, "How many")->required();

  const auto group = std::make_shared<std::int32_t>(0);
  CLI::App& needs =
      AddCommand(*report, context, "needs",
                 "Print whether reports of a job group need channel-set plans or "
                 "data scopes",
                 "  sabrel report needs 3", [group](Context& c) { return Needs(c, *group); });
  needs.add_option("GROUP", *group, "Id of the job group")->required();
}

}  // namespace sabrel::cli
