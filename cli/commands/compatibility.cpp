// `compat`, `network-release` and `module-version`: which releases fit, which there are.
#include <memory>

#include "cli/commands/commands.h"
#include "cli/commands/outcome.h"
#include "sabrel/core/gsabrel.h"

namespace sabrel::cli {
namespace {

int Compatible(Context& context) {
  context.RequireServer();
  const bool compatible = GSabrel::IsClientServerCompatible();
  RequireNotCancelled(context);
  return PrintTruthAnswer(context, compatible);
}

int NetworkRelease(Context& context, const std::string& key) {
  context.RequireServer();
  const bool supported = GSabrel::IsLucentVersionSupported(key);
  RequireNotCancelled(context);
  return PrintTruthAnswer(context, supported);
}

struct ModuleVersion {
  std::int32_t module = 0;
  std::int32_t version = 0;
};

int VersionName(Context& context, const ModuleVersion& wanted) {
  context.RequireServer();
  const std::string name = GSabrel::GetModuleVersionName(wanted.module, wanted.version);
  // The operation's own text does not tell what was looked for.
  if (CarriedCode(GSabrel::SabrelErrorObject()->Number()) == sabNoDataError) {
    context.Note("There is no version " + std::to_string(wanted.version) + " of module " +
                 std::to_string(wanted.module));
  }
  return PrintAnswer(context, Variant(name));
}

}  // namespace

void AddCompatibilityCommands(CLI::App& parent, Context& context) {
  AddCommand(parent, context, "compat",
             "Do this client and the server fit together? Asks when they may not",
             "  sabrel --answer yes compat", Compatible);

  const auto key = std::make_shared<std::string>();
  CLI::App& release = AddCommand(
      parent, context, "network-release",
      "Does the installed system support a network release? (a shell remembers the "
      "releases)",
      "  sabrel network-release R17", [key](Context& c) { return NetworkRelease(c, *key); });
  release.add_option("KEY", *key, "R and the number, in any case")->required();

  const auto arguments = std::make_shared<ModuleVersion>();
  CLI::App& module =
      AddCommand(parent, context, "module-version", "Print the name of a module's version",
                 "  sabrel module-version 1 2",
                 [arguments](Context& c) { return VersionName(c, *arguments); });
  module.add_option("MODULE", arguments->module, "Id of the module")->required();
  module.add_option("VERSION", arguments->version, "Id of its version")->required();
}

}  // namespace sabrel::cli
