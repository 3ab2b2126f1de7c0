// `value`: has a system variable a value?
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

}  // namespace

void AddValueCommand(CLI::App& parent, Context& context) {
  const auto arguments = std::make_shared<ValueArguments>();
  CLI::App& value = AddCommand(parent, context, "value", "Does a system variable have a value?",
                               "  sabrel value ReportLanguage Deutsch",
                               [arguments](Context& c) { return Value(c, *arguments); });
  value.add_option("NAME", arguments->name, "The variable")->required()->check(QuotableName());
  value.add_option("VALUE", arguments->value, "The value")->required()->check(QuotableName());
  AddServerOptions(value, arguments->server);
  AddTimeOut(value, context, arguments->server.timeout_s);
}

}  // namespace sabrel::cli
