// `features` and `connection`: what is switched on at the site.
#include <algorithm>
#include <memory>

#include "cli/commands/commands.h"
#include "cli/commands/outcome.h"
#include "sabrel/core/gsabrel.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::cli {
namespace {

constexpr std::string_view kSwitchTable = "PM_Feature_Changes";

std::string_view ProbeWord(FeatureProbe probe) {
  switch (probe) {
    case FeatureProbe::kCategory: return "category";
    case FeatureProbe::kGroup: return "group";
    case FeatureProbe::kTool: return "tool";
    case FeatureProbe::kTab: return "tab";
    case FeatureProbe::kJobType: return "job type";
    case FeatureProbe::kTable: break;
  }
  return "table";
}

// What decides about a feature where there is no switch table.
std::string RuleText(std::string_view feature) {
  const auto* const rule = std::ranges::find(kFeatureRules, feature, &FeatureRule::feature);
  if (rule == kFeatureRules.end()) return "no rule";
  return std::string(ProbeWord(rule->probe)) + " " + std::string(rule->argument);
}

bool IsOnTheList(std::string_view feature) {
  return std::ranges::any_of(
      kFeatureNames, [feature](std::string_view name) { return EqualIgnoringCase(name, feature); });
}

struct FeatureArguments {
  std::string name;
  bool refresh = false;
};

// A probe that failed has shown a box and counts as a no, which the table must not pass off as one.
int Outcome(Context& context) {
  RequireNotCancelled(context);
  if (HasFailed()) return kFailed;
  if (!context.HasShownBox()) return kDone;
  context.Note("A probe failed; a feature that it decides about counts as not configured.");
  return kFailed;
}

int PrintFeatures(Context& context, const CFeatureManager& manager, bool has_switches) {
  NamedValues switched;
  if (has_switches) manager.LoadFeatures(switched);
  std::vector<std::vector<Variant>> rows;
  for (const std::string_view name : kFeatureNames) {
    const bool enabled = manager.IsFeatureEnabled(name);
    const bool configured = has_switches ? switched.Contains(name) : enabled;
    rows.push_back({Variant(name), TruthCell(context, configured), TruthCell(context, enabled),
                    Variant(has_switches ? "switch table" : RuleText(name))});
  }
  for (const auto& other : switched) {
    if (IsOnTheList(other.name)) continue;
    rows.push_back({Variant(other.name), TruthCell(context, true), TruthCell(context, false),
                    Variant("switch table; not on the list")});
  }
  PrintTable(context, {"NAME", "CONFIGURED", "ENABLED", "BY"}, rows);
  context.Out().Flush();
  return Outcome(context);
}

int Features(Context& context, const FeatureArguments& arguments) {
  context.RequireServer();
  // A server that does not answer this would fail each of the probes.
  const bool has_switches = GSabrel::DoesTableExist(kSwitchTable);
  if (HasFailed()) return kFailed;
  const auto manager = GFeatureManager::FeatureManager();
  if (arguments.refresh) manager->Initialize();
  if (arguments.name.empty()) return PrintFeatures(context, *manager, has_switches);
  const int status = Outcome(context);
  return status == kDone ? context.PrintTruth(manager->IsFeatureEnabled(arguments.name)) : status;
}

struct ConnectionArguments {
  std::string dest_path;
  std::string machine;
  bool copy = false;
};

void PrintConnection(Context& context, const CConnection& connection) {
  const ConnectionProfile& profile = *connection.Profile();
  PrintTable(
      context, {"SETTING", "VALUE"},
      {
          {Variant("Name"), Variant(profile.Name)},
          {Variant("Driver"), Variant(profile.Driver)},
          {Variant("Host"), Variant(profile.Host)},
          {Variant("Port"), Variant(profile.Port)},
          {Variant("Database"), Variant(profile.Database)},
          {Variant("UserName"), Variant(profile.UserName)},
          {Variant("ConnectTimeout"), Variant(profile.ConnectTimeout)},
          {Variant("ReceiveTimeout"), Variant(profile.ReceiveTimeout)},
          {Variant("DestPath"), connection.DestPath()},
          {Variant("MachineName"), connection.MachineName()},
          {Variant("IsEnterpriseServer"), TruthCell(context, connection.IsEnterpriseServer())},
          {Variant("SesEnabled"), TruthCell(context, connection.SesEnabled())},
          {Variant("SoftAlarmsEnabled"), TruthCell(context, connection.SoftAlarmsEnabled())},
          {Variant("AggregatorEnabled"), TruthCell(context, connection.AggregatorEnabled())},
          {Variant("PCMDEnabled"), TruthCell(context, connection.PCMDEnabled())},
      });
  context.Out().Flush();
}

int Connection(Context& context, const ConnectionArguments& arguments) {
  context.RequireServer();
  static_cast<void>(GSabrel::DoesTableExist(kSwitchTable));
  if (HasFailed()) return kFailed;
  auto connection = GSabrel::CreateSMConnection(
      std::make_shared<const ConnectionProfile>(context.SessionProfile()), arguments.dest_path,
      arguments.machine);
  const bool initialized = connection->InitializeConnectionFeatures();
  if (arguments.copy) connection = GSabrel::CopyConnection(connection);
  PrintConnection(context, *connection);
  const int status = Outcome(context);
  if (initialized || status != kDone) return status;
  context.Note("The flags could not be read; false stands for not known.");
  return kFailed;
}

}  // namespace

void AddFeatureCommands(CLI::App& parent, Context& context) {
  const auto arguments = std::make_shared<FeatureArguments>();
  CLI::App& features = AddCommand(
      parent, context, "features",
      "Print which features are switched on at the site and what decides that, or ask for one",
      "  sabrel features\n"
      "  sabrel features SES_Group",
      [arguments](Context& c) { return Features(c, *arguments); });
  features.add_option("NAME", arguments->name, "Is this one enabled?");
  features.add_flag("--refresh", arguments->refresh,
                    "Find out anew: a shell remembers the features, and until `reset` the tables");

  const auto connection_arguments = std::make_shared<ConnectionArguments>();
  CLI::App& connection = AddCommand(
      parent, context, "connection",
      "Make a descriptor of the session's connection, as tools hand it on, and print it",
      "  sabrel connection --dest-path /var/transfer --machine north",
      [connection_arguments](Context& c) { return Connection(c, *connection_arguments); });
  connection.add_option("--dest-path", connection_arguments->dest_path, "Its destination path");
  connection.add_option("--machine", connection_arguments->machine, "Its machine's name");
  connection.add_flag("--copy", connection_arguments->copy, "Print a copy of it instead");
}

}  // namespace sabrel::cli
