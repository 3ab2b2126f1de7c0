#include "adapters/odbc/engine.h"

#include "sabrel/platform/utf8.h"

namespace sabrel::odbc {

const Engine* EngineForDriver(std::string_view driver) {
  struct Row {
    std::string_view part;
    const Engine& (*engine)();
  };
  static constexpr Row kRows[] = {{"postgres", PostgresqlEngine},
                                  {"psqlodbc", PostgresqlEngine},
                                  {"oracle", OracleEngine},
                                  {"sqora", OracleEngine},
                                  {"oraodbc", OracleEngine}};
  for (const Row& row : kRows) {
    if (ContainsIgnoringCase(driver, row.part)) return &row.engine();
  }
  return nullptr;
}

}  // namespace sabrel::odbc
