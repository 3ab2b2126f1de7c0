// `week` and `email`: settings of the site.
#include "cli/argument.h"
#include "cli/commands/commands.h"
#include "cli/commands/outcome.h"
#include "sabrel/core/gsabrel.h"

namespace sabrel::cli {
namespace {

int Week(Context& context) {
  context.RequireServer();
  return PrintAnswer(context, ParseArgument(GSabrel::SystemFirstDayOfWeek()));
}

int Email(Context& context) {
  context.RequireServer();
  const bool enabled = GSabrel::EmailEnabled();
  if (HasFailed()) return kFailed;
  if (!enabled) {
    context.Note(GSabrel::DoesTableExist("PM_EMAIL")
                     ? "No mail client is registered on this machine (see `sabrel registry`)"
                     : "The site has no table PM_EMAIL");
  }
  return context.PrintTruth(enabled);
}

}  // namespace

void AddSettingCommands(CLI::App& parent, Context& context) {
  AddCommand(parent, context, "week", "Print the first day of the week: 1 is Sunday, 7 Saturday",
             "", Week);
  AddCommand(parent, context, "email",
             "Can mail be sent: does the site have mails and this machine a mail client?", "",
             Email);
}

}  // namespace sabrel::cli
