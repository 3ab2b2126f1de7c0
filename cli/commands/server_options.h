// The options with which an operation is sent to another Data Server than the profile's.
#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <string>

#include "cli/context.h"

namespace sabrel::cli {

struct ServerOptions {
  std::string host;
  std::int32_t port = 0;
  std::string user;
  std::string password_file;
  bool ask_password = false;
  std::int32_t timeout_s = 0;
};

/// `options` must outlive `command`.
void AddServerOptions(CLI::App& command, ServerOptions& options);
/// Stores it in `timeout_s`, whose value is shown as the default, and in the context.
void AddTimeOut(CLI::App& command, Context& context, std::int32_t& timeout_s);

/// From the file or the prompt; empty without either. Errors: 75
[[nodiscard]] std::string PasswordOf(Context& context, const ServerOptions& options);

}  // namespace sabrel::cli
