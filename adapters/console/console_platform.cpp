#include "adapters/console/console_platform.h"

#include <utility>

#include "adapters/console/configured_spreadsheet.h"
#include "adapters/console/registry_file.h"

namespace sabrel {

PlatformFactory ConsolePlatform(std::function<std::shared_ptr<Rowlink>()> make_rowlink,
                                ConsolePlatformOptions options) {
  auto services = std::make_shared<ConsoleServices>(std::move(options.services));
  auto application = std::make_shared<ConsoleApplication>(std::move(options.application));
  auto registry = options.registry_file.empty()
                      ? std::make_shared<RegistryFile>()
                      : std::make_shared<RegistryFile>(options.registry_file);
  auto spreadsheet = std::make_shared<ConfiguredSpreadsheet>(options.spreadsheet_version);
  return [=, make_rowlink = std::move(make_rowlink)] {
    return Platform{make_rowlink(), services, application, registry, spreadsheet};
  };
}

}  // namespace sabrel
