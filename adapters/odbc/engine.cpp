#include "adapters/odbc/engine.h"

#include "adapters/shared/driver_kind.h"

namespace sabrel::odbc {

const Engine* EngineForDriver(std::string_view driver) {
  switch (KindOfDriver(driver)) {
    case DriverKind::kPostgresql: return &PostgresqlEngine();
    case DriverKind::kOracle: return &OracleEngine();
    case DriverKind::kEmbedded:
    case DriverKind::kUnknown: break;
  }
  return nullptr;
}

}  // namespace sabrel::odbc
