// A whole platform for a program that is run from a terminal, around any connection to a Data
// Server.
//
//   sabrel::InstallPlatform(sabrel::ConsolePlatform([] { return sabrel::OpenSite("site.db"); }));
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "adapters/console/console_application.h"
#include "adapters/console/console_services.h"
#include "sabrel/platform/platform.h"

namespace sabrel {

struct ConsolePlatformOptions {
  ConsoleServicesOptions services;
  ConsoleApplicationOptions application;
  /// Exported registry text; without a file no key exists.
  std::string registry_file;
  /// Of the spreadsheet application; empty when it is not installed.
  std::string spreadsheet_version;
};

/// A factory whose platforms share services, application, registry and spreadsheet; `make_rowlink`
/// is called once a thread. Errors: of the log file and the registry file, here and not at first
/// use
[[nodiscard]] PlatformFactory ConsolePlatform(
    std::function<std::shared_ptr<Rowlink>()> make_rowlink, ConsolePlatformOptions options = {});

}  // namespace sabrel
