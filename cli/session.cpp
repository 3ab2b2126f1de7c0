#include "cli/session.h"

#include <utility>

#include "adapters/console/configured_spreadsheet.h"
#include "adapters/console/console_application.h"
#include "adapters/console/registry_file.h"
#include "adapters/servers/server_rowlink.h"
#include "sabrel/platform/platform.h"
#include "sabrel/platform/runtime_error.h"

namespace sabrel::cli {
namespace {

ProfileSet ProfilesOf(const Options& options, std::vector<std::string>& warnings) {
  if (options.profile_file.empty()) {
    ConnectionProfile site;
    site.Name = "site";
    site.Driver = "sqlite";
    site.Database = options.site;
    return ProfileSet(std::move(site));
  }
  ProfileFile file = ReadProfileFile(options.profile_file);
  warnings = std::move(file.warnings);
  if (!options.profile_name.empty()) {
    try {
      file.profiles.UseForSession(options.profile_name);
    } catch (const RuntimeError& unknown) {
      throw UsageError(unknown.Description());
    }
  }
  return std::move(file.profiles);
}

}  // namespace

ConnectionProfile SessionProfileOf(const Options& options) {
  std::vector<std::string> ignored;
  return ProfilesOf(options, ignored).Session();
}

ConnectionProfile InstallSession(const Options& options,
                                 std::shared_ptr<AttentiveServices> services,
                                 std::shared_ptr<ConversationLog> conversation,
                                 Interrupts& interrupts, std::function<void()> on_failed_query) {
  std::vector<std::string> warnings;
  ProfileSet profiles = ProfilesOf(options, warnings);
  for (const std::string& warning : warnings) {
    services->ShowMessage(warning, kBoxExclamation, "sabrel");
  }
  ConsoleApplicationOptions application;
  application.product_name = "sabrel";
  application.on_notify = std::move(on_failed_query);
  Platform shared;
  shared.services = std::move(services);
  shared.application = std::make_shared<ConsoleApplication>(std::move(application));
  shared.registry = options.registry.empty() ? std::make_shared<RegistryFile>()
                                             : std::make_shared<RegistryFile>(options.registry);
  shared.spreadsheet = std::make_shared<ConfiguredSpreadsheet>(options.spreadsheet);
  InstallPlatform([=, &interrupts] {
    Platform platform = shared;
    platform.rowlink = MakeServerRowlink(profiles);
    if (conversation) {
      auto recording = std::make_shared<RecordingRowlink>(platform.rowlink, conversation);
      for (const ConnectionProfile& profile : profiles.All()) recording->Hide(profile.Password);
      platform.rowlink = std::move(recording);
    }
    interrupts.Watch(platform.rowlink);
    return platform;
  });
  return profiles.Session();
}

}  // namespace sabrel::cli
