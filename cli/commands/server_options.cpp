#include "cli/commands/server_options.h"

#include "adapters/console/password_prompt.h"

namespace sabrel::cli {

void AddServerOptions(CLI::App& command, ServerOptions& options) {
  command.add_option("--host", options.host, "Another Data Server than the profile's");
  command.add_option("--port", options.port, "Its port")->check(CLI::Range(0, 65535));
  command.add_option("--user", options.user, "Another user than the profile's");
  command.add_option("--password-file", options.password_file,
                     "File whose first line is that user's password");
  command.add_flag("--ask-password", options.ask_password, "Ask for the password, without echo");
}

void AddTimeOut(CLI::App& command, ServerOptions& options) {
  command.add_option("--timeout", options.timeout_s, "Seconds; 0 is the profile's setting")
      ->check(CLI::Range(0, 1000000))
      ->capture_default_str();
}

std::string PasswordOf(Context& context, const ServerOptions& options) {
  if (!options.password_file.empty()) return ReadPasswordFile(context, options.password_file);
  if (!options.ask_password) return {};
  context.StopProgress();
  return PromptWithoutEcho("Password: ");
}

}  // namespace sabrel::cli
