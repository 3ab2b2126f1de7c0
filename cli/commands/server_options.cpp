#include "cli/commands/server_options.h"

#include <string>

#include "adapters/console/password_prompt.h"

namespace sabrel::cli {
namespace {

constexpr std::int32_t kLongestTimeout_s = 1000000;

}  // namespace

void AddServerOptions(CLI::App& command, ServerOptions& options) {
  command.add_option("--host", options.host, "Another Data Server than the profile's");
  command.add_option("--port", options.port, "Its port")->check(CLI::Range(0, 65535));
  command.add_option("--user", options.user, "Another user than the profile's");
  command.add_option("--password-file", options.password_file,
                     "File whose first line is that user's password");
  command.add_flag("--ask-password", options.ask_password, "Ask for the password, without echo");
}

void AddTimeOut(CLI::App& command, Context& context, std::int32_t& timeout_s) {
  command
      .add_option_function<std::int32_t>(
          "--timeout",
          [&context, &timeout_s](const std::int32_t& seconds) {
            timeout_s = seconds;
            context.command_timeout_s = seconds;
          },
          "Seconds until the answer is given up, 0 for no limit; inside the shell at most the "
          "session's")
      ->check(CLI::Range(0, kLongestTimeout_s))
      ->default_str(std::to_string(timeout_s));
}

std::string PasswordOf(Context& context, const ServerOptions& options) {
  if (!options.password_file.empty()) return ReadPasswordFile(context, options.password_file);
  if (!options.ask_password) return {};
  context.StopProgress();
  return PromptWithoutEcho("Password: ");
}

}  // namespace sabrel::cli
