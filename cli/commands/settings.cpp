// `value`, `week` and `email`: settings of the site.
#include <memory>

#include "cli/commands/commands.h"
#include "cli/commands/outcome.h"
#include "cli/commands/server_options.h"
#include "sabrel/core/gsabrel.h"

namespace sabrel::cli {
namespace {

struct ValueArguments {
  std::string name;
  std::string value;
  ServerOptions server;
};

int Value(Context& context, const ValueArguments& arguments) {
  context.RequireServer();
  const ServerOptions& server = arguments.server;
  const bool exists =
      GSabrel::SystemValueExists(arguments.name, arguments.value, server.host, server.port,
                                 server.user, PasswordOf(context, server), server.timeout_s);
  return PrintTruthAnswer(context, exists);
}

int Week(Context& context) {
  context.RequireServer();
  return PrintAnswer(context, Variant(GSabrel::SystemFirstDayOfWeek()));
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
  const auto arguments = std::make_shared<ValueArguments>();
  CLI::App& value = AddCommand(parent, context, "value", "Does a system variable have a value?",
                               "  sabrel value ReportLanguage Deutsch",
                               [arguments](Context& c) { return Value(c, *arguments); });
  value.add_option("NAME", arguments->name, "The variable")->required();
  value.add_option("VALUE", arguments->value, "The value")->required();
  AddServerOptions(value, arguments->server);
  AddTimeOut(value, arguments->server);

  AddCommand(parent, context, "week", "Print the first day of the week: 1 is Sunday, 7 Saturday",
             "", Week);
  AddCommand(parent, context, "email",
             "Can mail be sent: does the site have mails and this machine a mail client?", "",
             Email);
}

}  // namespace sabrel::cli
