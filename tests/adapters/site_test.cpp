#include "site/sample_site.h"

#include <gtest/gtest.h>

#include <utility>

#include "adapters/sqlite/server.h"
#include "tests/adapters/sqlite_site.h"
#include "tests/support/cut_off.h"

namespace sabrel {
namespace {

class Site : public testing::TemporaryFolder, public testing::Asking {
 public:
  explicit Site(SiteRelease release) : Asking(Copied(release)) {}
  std::string Copied(SiteRelease release) const {
    testing::CopySampleSite(release, Path("sample.site"));
    return Path("sample.site");
  }
};

TEST(SampleSite, TheOldReleaseLacksTheOptionalObjectsAndNothingElse) {
  Site current(SiteRelease::kCurrent);
  Site old(SiteRelease::kOld);
  const std::pair<std::string, const char*> more_rows[] = {
      {"user_objects", "3"},
      {"user_objects WHERE object_name IN ('LENGTHYREPORT','LUC_ENT_SYSTEM')", "2"},
      {"user_objects WHERE object_name = 'PM_FEATURE_CHANGES'", "1"},
      {"user_tab_columns", "6"},
      {"user_tab_columns WHERE table_name = 'TASK_FILENAME' AND column_name = 'SIZEINROWS'", "1"},
      {"user_arguments WHERE position = 0", "3"},
      {"user_arguments WHERE object_name = 'ENTITY_HAS_EQUIV' AND position = 0", "1"},
  };
  for (const auto& [from, more] : more_rows) {
    const std::string in_old = old.Ask("SELECT COUNT(*) FROM " + from);
    EXPECT_EQ(current.Ask("SELECT COUNT(*) - " + in_old + " FROM " + from), more) << from;
  }
}

TEST(SampleSite, RoutinesHaveTheirEffectOnTheTables) {
  // Calls and what they left behind, each on what those before it left; "moved" tells that the
  // entity update time did.
  const char* const rows[][2] = {
      {"SELECT EA_Client.Add_Common_Entity('New Market',3) FROM DUAL", "100 moved"},
      {"SELECT EA_Client.Add_Common_Entity('Next Market',0) FROM DUAL", "101 moved"},
      {"SELECT EA_Client.Add_Common_Entity('New Market',3) FROM DUAL", "ORA-1"},
      {"BEGIN EA_Client.Reparent_Common_Entity(100,2); END;", " moved"},
      {"BEGIN EA_Client.Reparent_Common_Entity(101,100); END;", " moved"},
      {"BEGIN EA_Client.Reparent_Common_Entity(2,101); END;", "ORA-20023"},
      {"BEGIN EA_Client.Remove_Common_Entity(7); END;", "ORA-2292"},    // has equivalents
      {"BEGIN EA_Client.Remove_Common_Entity(100); END;", "ORA-2292"},  // has a child
      {"BEGIN EA_DD.EA_Add_Entity_EQV(1,'New Market','CELL199'); END;", " moved"},
      {"BEGIN EA_DD.EA_Add_Entity_EQV(1,'New Market','CELL199'); END;", "ORA-1"},
      {"BEGIN EA_DD.EA_Add_Entity_EQV(1,'Lost Market','CELL198'); END;", "ORA-20022"},
      {"SELECT EA_FindOrCreateUser('eve','','TRUE') FROM DUAL",
       "'USER NAME AND PASSWORD REQUIRED'"},
      {"SELECT COUNT(*) FROM EA_USER", "5"},
      {"SELECT FS_GetColumnLength('pm_stringtable','Nothing') FROM DUAL", "null"},
      {"SELECT EA_Client.IsServerGroupDocumentValid(4,0,1,1) FROM DUAL",
       "'Server group Spare has no servers.'"},
      {"SELECT EA_Client.IsServerGroupDocumentValid(NULL,0,1,1) FROM DUAL",
       "'Server group (none) does not exist.'"},
      {"SELECT Last_Field_Update() FROM DUAL", "date 2024-02-20 15:42:10"},
  };
  Site site(SiteRelease::kCurrent);
  std::string before = site.Ask("SELECT Ea_Last_Entity_Update() FROM DUAL");
  for (const auto& [step, expected] : rows) {
    std::string outcome = site.Ask(step);
    const std::string now = site.Ask("SELECT Ea_Last_Entity_Update() FROM DUAL");
    if (std::exchange(before, now) != now) outcome += " moved";
    EXPECT_EQ(outcome, expected) << step;
  }
}

TEST(SampleSite, EachStatementCutOffAnywhereIsReadOrRefused) {
  testing::TemporaryFolder folder;
  testing::CopySampleSite(SiteRelease::kCurrent, folder.Path("sample.site"));
  const sqlite::Server server(folder.Path("sample.site"), std::make_shared<sqlite::CancelSwitch>(),
                              std::make_shared<sqlite::SessionState>(),
                              sqlite::Durability::kEachCommit, {});
  const auto compile = [&](std::string_view text) { (void)server.Compile(text); };
  for (const std::string_view sql : SampleSiteStatements(SiteRelease::kCurrent)) {
    testing::ReadCutOff(sql, compile);
  }
}

}  // namespace
}  // namespace sabrel
