#include "adapters/shared/driver_kind.h"

#include "sabrel/platform/utf8.h"

namespace sabrel {

DriverKind KindOfDriver(std::string_view driver) {
  struct Row {
    std::string_view part;
    DriverKind kind;
  };
  static constexpr Row kRows[] = {{"postgres", DriverKind::kPostgresql},
                                  {"psqlodbc", DriverKind::kPostgresql},
                                  {"oracle", DriverKind::kOracle},
                                  {"sqora", DriverKind::kOracle},
                                  {"oraodbc", DriverKind::kOracle}};
  if (EqualIgnoringCase(driver, "sqlite")) return DriverKind::kEmbedded;
  for (const Row& row : kRows) {
    if (ContainsIgnoringCase(driver, row.part)) return row.kind;
  }
  return DriverKind::kUnknown;
}

}  // namespace sabrel
