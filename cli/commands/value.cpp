// `sequence`, `now` and `range`: single values that the server gives.
#include <memory>

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

void AddValueCommands(CLI::App& parent, Context& context) {
  const auto name = std::make_shared<std::string>();
  CLI::App& sequence =
      AddCommand(parent, context, "sequence", "Draw the next value of a sequence",
                 "  sabrel sequence PM_StringTable_SQ", [name](Context& c) {
                   c.RequireServer();
                   return PrintAnswer(c, Variant(GSabrel::GetNextInSequence(*name)));
                 });
  sequence.add_option("NAME", *name, "The sequence")->required();

  AddCommand(parent, context, "now", "Print the server's date and time, to the minute", "",
             [](Context& c) {
               c.RequireServer();
               return PrintAnswer(c, Variant(GSabrel::GetCurrentDateTime()));
             });
  AddCommand(parent, context, "range", "Print the oldest and the latest date of collected data",
             "  sabrel --format csv range", Range);
}

}  // namespace sabrel::cli
