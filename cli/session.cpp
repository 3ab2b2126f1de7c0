#include "cli/session.h"

#include <utility>

#include "adapters/console/configured_spreadsheet.h"
#include "adapters/console/console_application.h"
#include "adapters/console/registry_file.h"
#include "adapters/servers/server_rowlink.h"
#include "sabrel/platform/platform.h"
#include "sabrel/platform/runtime_error.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::cli {
SessionProfiles ReadSessionProfiles(const Options& options) {
  if (options.profile_file.empty()) {
    ConnectionProfile site;
    site.Name = "site";
    site.Driver = "sqlite";
    site.Database = options.site;
    site.ReceiveTimeout = options.timeout_s.value_or(kDefaultTimeout_s);
    return {ProfileSet(std::move(site))};
  }
  ProfileFile file = ReadProfileFile(options.profile_file, kDefaultTimeout_s);
  if (options.timeout_s) file.profiles.ReceiveTimeout(*options.timeout_s);
  if (!options.profile_name.empty()) {
    try {
      file.profiles.UseForSession(options.profile_name);
    } catch (const RuntimeError& unknown) {
      throw UsageError(unknown.Description());
    }
  }
  return {std::move(file.profiles), std::move(file.warnings)};
}

ReservedFiles InputsOf(const Options& options, const ProfileSet& profiles) {
  ReservedFiles inputs;
  for (const ConnectionProfile& profile : profiles.All()) {
    if (profile.Database.empty() || !EqualIgnoringCase(profile.Driver, "sqlite")) continue;
    inputs.Add(profile.Database, "the session's site");
    // Beside the file that a link leads to, and beside the link where that comes to be a file.
    for (const std::string& site : {profile.Database, ResolvedPath(profile.Database).string()}) {
      for (const char* suffix : {"-wal", "-shm", "-journal"}) {
        inputs.Add(site + suffix, "part of the session's site");
      }
    }
  }
  for (const SectionSettings& section : profiles.Sections()) {
    inputs.Add(section.SslRootCert, "a certificate of the profile file");
  }
  inputs.Add(options.profile_file, "the profile file");
  inputs.Add(options.registry, "the registry file");
  for (const std::string& input : options.inputs) inputs.Add(input, "a file of this command");
  inputs.Add("/dev/stdin", "standard input");
  return inputs;
}

void InstallSession(const Options& options, const SessionProfiles& profiles,
                    std::shared_ptr<AttentiveServices> services,
                    std::shared_ptr<ConversationLog> conversation, Interrupts& interrupts,
                    std::function<void()> on_failed_query) {
  for (const std::string& warning : profiles.warnings) {
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
  InstallPlatform([=, &interrupts, profiles = profiles.set] {
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
}

}  // namespace sabrel::cli
