// `query` and `request`: one statement.
#include <memory>

#include "adapters/console/password_prompt.h"
#include "cli/commands/commands.h"
#include "sabrel/core/gsabrel.h"

namespace sabrel::cli {
namespace {

struct QueryArguments {
  std::string sql;
  std::string host;
  std::int32_t port = 0;
  std::string user;
  std::string password_file;
  bool ask_password = false;
  std::int32_t timeout_s = 60;
};

int Query(Context& context, const QueryArguments& arguments) {
  context.RequireServer();
  std::string password;
  if (!arguments.password_file.empty()) {
    password = ReadPasswordFile(context, arguments.password_file);
  } else if (arguments.ask_password) {
    context.StopProgress();
    password = PromptWithoutEcho("Password: ");
  }
  const auto rows = GSabrel::ExecuteQuery(arguments.sql, false, arguments.host, arguments.port,
                                          arguments.user, password, arguments.timeout_s);
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
  query.add_option("--host", arguments->host, "Another Data Server than the profile's");
  query.add_option("--port", arguments->port, "Its port")->check(CLI::Range(0, 65535));
  query.add_option("--user", arguments->user, "Another user than the profile's");
  query.add_option("--password-file", arguments->password_file,
                   "File whose first line is that user's password");
  query.add_flag("--ask-password", arguments->ask_password, "Ask for the password, without echo");
  query.add_option("--timeout", arguments->timeout_s, "Seconds; 0 is the profile's setting")
      ->check(CLI::Range(0, 1000000))
      ->capture_default_str();

  const auto request_sql = std::make_shared<std::string>();
  CLI::App& request =
      AddCommand(parent, context, "request", "Send a statement that returns no rows",
                 "  sabrel request \"UPDATE PM_REPORT SET Name = 'Losses' WHERE Id = 5\"",
                 [request_sql](Context& c) { return RunRequest(c, *request_sql); });
  request.add_option("SQL", *request_sql, "The statement")->required();
}

}  // namespace sabrel::cli
