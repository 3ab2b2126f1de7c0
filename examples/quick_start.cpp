// The shortest host: asks a sample site that `sabrel site create site.db` made.
#include <iostream>

#include "adapters/console/console_platform.h"
#include "adapters/sqlite/sqlite_rowlink.h"
#include "sabrel/core/gsabrel.h"

int main(int argc, char** argv) {
  sabrel::InstallPlatform(sabrel::ConsolePlatform(
      [file = std::string(argc > 1 ? argv[1] : "site.db")] { return sabrel::OpenSite(file); }));
  const auto sql =
      "SELECT COUNT(*) FROM PM_REPORT WHERE Name <> " + sabrel::GSabrel::DBStr("O'Hara");
  std::cout << sabrel::GSabrel::ExecuteQueryReturningLong(sql) << " reports\n";
  return sabrel::GSabrel::SabrelErrorObject()->Number() == 0 ? 0 : 1;
}
