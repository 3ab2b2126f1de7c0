#include "fuzz/site.h"

#include "adapters/console/console_platform.h"
#include "adapters/sqlite/sqlite_rowlink.h"
#include "fuzz/target.h"
#include "sabrel/platform/platform.h"

namespace sabrel::fuzz {

void UsePlatform() {
  static const bool installed = [] {
    const std::string path = TemporaryPath("empty.site");
    sqlite::CreateDatabase(path);
    ConsolePlatformOptions options;
    options.services.locale = LocaleFacts{};
    InstallPlatform(ConsolePlatform([path] { return OpenSite(path); }, options));
    return true;
  }();
  static_cast<void>(installed);
}

std::optional<Variant> FirstValue(std::string_view sql) {
  const auto rows = CurrentPlatform().rowlink->MakeRecordset();
  try {
    rows->Open(sql, "", 0, "", "", 0);
  } catch (const RuntimeError& failure) {
    Require(CarriedCode(failure.Number()) == kDatabaseErrorCode, "is refused as a database error",
            failure.Description());
    return std::nullopt;
  }
  if (rows->EndOfFile()) return std::nullopt;
  return rows->Fields().Item(0).Value();
}

}  // namespace sabrel::fuzz
