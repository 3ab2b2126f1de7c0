// `now` and `range`: the server's time, and the dates of what was collected.
#include "cli/commands/commands.h"
#include "cli/commands/outcome.h"
#include "sabrel/core/gsabrel.h"

namespace sabrel::cli {
namespace {

Variant DateOrNull(const Date& date) { return date.IsZero() ? Variant(Null{}) : Variant(date); }

int Range(Context& context) {
  context.RequireServer();
  const Date oldest = GSabrel::GetRecordOldestDate();
  if (HasFailed()) return kFailed;
  const Date latest = GSabrel::GetRecordLatestDate();
  if (HasFailed()) return kFailed;
  PrintTable(context, {"OLDEST", "LATEST"}, {{DateOrNull(oldest), DateOrNull(latest)}});
  context.Out().Flush();
  if (latest.IsZero()) context.Note("No data was collected yet");
  return kDone;
}

}  // namespace

void AddDateCommands(CLI::App& parent, Context& context) {
  AddCommand(parent, context, "now", "Print the server's date and time, to the minute", "",
             [](Context& c) {
               c.RequireServer();
               return PrintAnswer(c, Variant(GSabrel::GetCurrentDateTime()));
             });
  AddCommand(parent, context, "range", "Print the oldest and the latest date of collected data",
             "  sabrel --format csv range", Range);
}

}  // namespace sabrel::cli
