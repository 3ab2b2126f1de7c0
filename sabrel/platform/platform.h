// What stands behind the component on a real machine, and how a host says so.
//
// The host installs one factory per process before first use; a thread takes its platform from it
// on first use and keeps it until `UnloadThread`. Replacing the factory affects a thread after its
// `UnloadThread`. Members that serve the whole process are shared between the platforms that the
// factory makes; the Rowlink is the thread's own.
//
//   InstallPlatform([&] { return Platform{link(), services, application, registry, sheets}; });
#pragma once

#include <functional>
#include <memory>

#include "sabrel/platform/application.h"
#include "sabrel/platform/registry.h"
#include "sabrel/platform/rowlink.h"
#include "sabrel/platform/services.h"
#include "sabrel/platform/spreadsheet_application.h"

namespace sabrel {

struct Platform {
  std::shared_ptr<Rowlink> rowlink;
  std::shared_ptr<Services> services;
  std::shared_ptr<Application> application;
  std::shared_ptr<Registry> registry;
  std::shared_ptr<SpreadsheetApplication> spreadsheet;
};

using PlatformFactory = std::function<Platform()>;

/// Sets the factory; an empty one takes it away again. Any thread.
void InstallPlatform(PlatformFactory factory);

/// This thread's platform, made on first use.
/// Errors: 91 naming InstallPlatform when no factory is installed or it leaves a member out
[[nodiscard]] const Platform& CurrentPlatform();

/// For operations that answer a failure themselves: without a platform there is nothing to answer
/// with, and nothing to remember. Errors: as CurrentPlatform
void RequirePlatform();

/// Ends this thread's use of the component: shuts its connections down, destroys its module state,
/// last made first, its platform last. The next use starts afresh. A thread that exits without it
/// loses the same things but abandons its connections instead of shutting them down. Errors: none
void UnloadThread() noexcept;

}  // namespace sabrel
