#include "adapters/odbc/odbc_rowlink.h"
#include "tests/contract/contract.h"
#include "tests/support/postgresql_server.h"

namespace sabrel::testing {
namespace {

ContractEngine Postgresql() {
  ContractEngine engine;
  engine.name = "Postgresql";
  engine.make_site = []() -> std::function<std::shared_ptr<Rowlink>()> {
    if (!PostgresqlServer()) return nullptr;
    const auto database = std::make_shared<PostgresqlDatabase>();
    // Users are looked up under this account, whose password only a profile of its own has.
    ConnectionProfile profile = database->Profile();
    profile.UserName = kOtherPostgresqlUser;
    return [database, profile] { return MakeOdbcRowlink(ProfileSet(profile)); };
  };
  return engine;
}

INSTANTIATE_TEST_SUITE_P(Engines, Contract, ::testing::Values(Postgresql()), EngineName);

}  // namespace
}  // namespace sabrel::testing
