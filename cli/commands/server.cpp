// `server test`: does the session's Data Server answer?
#include <chrono>

#include "cli/commands/commands.h"
#include "cli/commands/outcome.h"
#include "sabrel/core/gsabrel.h"

namespace sabrel::cli {
namespace {

int Test(Context& context) {
  context.RequireServer();
  const auto start = std::chrono::steady_clock::now();
  const auto rows = GSabrel::ExecuteQuery("SELECT 1 FROM DUAL", false, "", 0, "", "", 0);
  if (!rows) return kFailed;
  rows->Close();
  const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(
      std::chrono::steady_clock::now() - start);
  const ConnectionProfile& profile = context.SessionProfile();
  PrintTable(context, {"PROFILE", "DRIVER", "DATABASE", "MILLISECONDS"},
             {{Variant(profile.Name), Variant(profile.Driver), Variant(profile.Database),
               Variant(static_cast<std::int32_t>(took.count()))}});
  return kDone;
}

}  // namespace

void AddServerCommands(CLI::App& parent, Context& context) {
  CLI::App* server = parent.add_subcommand("server", "Data Servers");
  server->require_subcommand(1);
  server->fallthrough();
  AddCommand(*server, context, "test",
             "Connect to the session's Data Server and ask it something; says how long that took, "
             "or what is wrong and what to do",
             "  sabrel --profile servers.ini server test\n"
             "  sabrel --profile servers.ini --profile-name plant server test",
             Test);
}

}  // namespace sabrel::cli
