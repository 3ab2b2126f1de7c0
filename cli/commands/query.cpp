// `query` and `request`: one statement.
#include <memory>
#include <optional>

#include "adapters/shared/dialect/dialect.h"
#include "cli/commands/commands.h"
#include "cli/commands/server_options.h"
#include "cli/shell_words.h"
#include "sabrel/core/gsabrel.h"
#include "sabrel/core/query_execution.h"

namespace sabrel::cli {
namespace {

struct StatementArguments {
  std::string sql;
  ServerOptions server;

  StatementArguments() { server.timeout_s = kDefaultTimeout_s; }
};

// What starts with no known verb is left to the server, which says what is wrong with it.
bool IsRequest(std::string_view sql) {
  try {
    const dialect::StatementKind kind = dialect::KindOf(sql);
    return kind == dialect::StatementKind::kOther ? StartsWithVerb(sql)
                                                  : kind != dialect::StatementKind::kSelect;
  } catch (const dialect::SyntaxFailure&) {
    return false;
  }
}

// The command's own time-out holds before the program's.
std::int32_t TimeOutOf(const Context& context, const StatementArguments& arguments) {
  if (context.command_timeout_s) return *context.command_timeout_s;
  return context.options.timeout_s.value_or(arguments.server.timeout_s);
}

int Request(Context& context, const StatementArguments& arguments) {
  context.RequireServer();
  const ServerOptions& server = arguments.server;
  const std::string password = PasswordOf(context, server);
  const std::int64_t rows =
      MSabrel::ExecuteRequest(arguments.sql, server.host, server.port, server.user, password,
                              TimeOutOf(context, arguments));
  context.StopProgress();
  context.Note(rows < 0    ? "Done."
               : rows == 1 ? "1 row changed"
                           : std::to_string(rows) + " rows changed");
  return kDone;
}

int Query(Context& context, const StatementArguments& arguments) {
  if (IsRequest(arguments.sql)) return Request(context, arguments);
  context.RequireServer();
  const ServerOptions& server = arguments.server;
  const std::string password = PasswordOf(context, server);
  const auto rows = GSabrel::ExecuteQuery(arguments.sql, false, server.host, server.port,
                                          server.user, password, TimeOutOf(context, arguments));
  if (!rows) return kFailed;
  context.PrintRows(*rows);
  return kDone;
}

using Sending = int (*)(Context&, const StatementArguments&);

void AddStatementCommand(CLI::App& parent, Context& context, const std::string& name,
                         const std::string& description, const std::string& examples,
                         Sending send) {
  const auto arguments = std::make_shared<StatementArguments>();
  CLI::App& command = AddCommand(parent, context, name, description, examples,
                                 [arguments, send](Context& c) { return send(c, *arguments); });
  command.add_option("SQL", arguments->sql, "The statement")->required();
  AddServerOptions(command, arguments->server);
  AddTimeOut(command, context, arguments->server.timeout_s);
}

int Run(Context& context, const std::string& sql, Sending send) {
  StatementArguments arguments;
  arguments.sql = sql;
  context.command_timeout_s.reset();
  return send(context, arguments);
}

}  // namespace

int RunQuery(Context& context, const std::string& sql) { return Run(context, sql, Query); }

int RunRequest(Context& context, const std::string& sql) { return Run(context, sql, Request); }

void AddQueryCommands(CLI::App& parent, Context& context) {
  AddStatementCommand(parent, context, "query",
                      "Send a statement and print its rows, or how many rows it changed",
                      "  sabrel query \"SELECT Group_Id, Group_Name FROM PM_Groups\"\n"
                      "  sabrel --format csv query \"SELECT * FROM PM_REPORT\" > reports.csv",
                      Query);
  AddStatementCommand(
      parent, context, "request", "Send a statement and say how many rows it changed",
      "  sabrel request \"UPDATE PM_REPORT SET Name = 'Losses' WHERE Id = 5\"", Request);
}

}  // namespace sabrel::cli
