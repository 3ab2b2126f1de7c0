// `query` and `request`: one statement.
#include <memory>

#include "cli/commands/commands.h"
#include "cli/commands/server_options.h"
#include "sabrel/core/gsabrel.h"

namespace sabrel::cli {
namespace {

struct QueryArguments {
  std::string sql;
  ServerOptions server;

  QueryArguments() { server.timeout_s = 60; }
};

int Query(Context& context, const QueryArguments& arguments) {
  context.RequireServer();
  const ServerOptions& server = arguments.server;
  const std::string password = PasswordOf(context, server);
  const auto rows = GSabrel::ExecuteQuery(arguments.sql, false, server.host, server.port,
                                          server.user, password, server.timeout_s);
  if (!rows) return kFailed;
  context.PrintRows(*rows);
  return kDone;
}

}  // namespace

int RunQuery(Context& context, const std::string& sql) {
  QueryArguments arguments;
  arguments.sql = sql;
  return Query(context, arguments);
}

int RunRequest(Context& context, const std::string& sql) {
  context.RequireServer();
  GSabrel::ExecuteRequest(sql);
  return kDone;
}

void AddQueryCommands(CLI::App& parent, Context& context) {
  const auto arguments = std::make_shared<QueryArguments>();
  CLI::App& query =
      AddCommand(parent, context, "query", "Send a statement that returns rows, and print them",
                 "  sabrel query \"SELECT Group_Id, Group_Name FROM PM_Groups\"\n"
                 "  sabrel --format csv query \"SELECT * FROM PM_REPORT\" > reports.csv",
                 [arguments](Context& c) { return Query(c, *arguments); });
  query.add_option("SQL", arguments->sql, "The statement")->required();
  AddServerOptions(query, arguments->server);
  AddTimeOut(query, arguments->server);

  const auto request_sql = std::make_shared<std::string>();
  CLI::App& request =
      AddCommand(parent, context, "request", "Send a statement that returns no rows",
                 "  sabrel request \"UPDATE PM_REPORT SET Name = 'Losses' WHERE Id = 5\"",
                 [request_sql](Context& c) { return RunRequest(c, *request_sql); });
  request.add_option("SQL", *request_sql, "The statement")->required();
}

}  // namespace sabrel::cli
