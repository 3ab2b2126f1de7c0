#include "adapters/sqlite/sqlite_rowlink.h"
#include "tests/contract/contract.h"
#include "tests/support/sample_site_copy.h"

namespace sabrel::testing {
namespace {

ContractEngine Sqlite() {
  ContractEngine engine;
  engine.name = "Sqlite";
  engine.exact_numbers_are_decimal = false;
  engine.make_site = [] {
    const auto folder = std::make_shared<TemporaryFolder>();
    CopySampleSite(SiteRelease::kCurrent, folder->Path("site"));
    return [folder] {
      ConnectionProfile profile;
      profile.Driver = "sqlite";
      profile.Database = folder->Path("site");
      return MakeSqliteRowlink(ProfileSet(profile));
    };
  };
  return engine;
}

INSTANTIATE_TEST_SUITE_P(Engines, Contract, ::testing::Values(Sqlite()), EngineName);

}  // namespace
}  // namespace sabrel::testing
