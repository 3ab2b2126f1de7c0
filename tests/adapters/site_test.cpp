#include "site/sample_site.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <set>
#include <sstream>
#include <utility>

#include "tests/adapters/sqlite_site.h"

namespace sabrel {
namespace {

using ::testing::ElementsAre;

std::string Built(const std::string& file, SiteRelease release) {
  sqlite::SiteBuilder site(file);
  for (const std::string_view statement : SampleSiteStatements(release)) site.Execute(statement);
  site.Finish();
  return file;
}

class Site : public testing::TemporaryFolder, public testing::Asking {
 public:
  explicit Site(SiteRelease release) : Asking(Built(File("sample.site"), release)) {}

  // The result of a call "Package.Name(7,'text',)".
  std::string Call(std::string_view text) {
    const auto call = link->MakeProcedureCall();
    call->ProcedureName(text.substr(0, text.find('(')));
    text = text.substr(text.find('(') + 1);
    while (!text.empty()) {
      const std::string_view argument = text.substr(0, text.find_first_of(",)"));
      text.remove_prefix(argument.size() + 1);
      const bool quoted = argument.starts_with('\'');
      call->AppendParameter(quoted ? argument.substr(1, argument.size() - 2) : argument,
                            quoted ? "string" : "integer", "");
    }
    return Tried([&] { return testing::Shown(call->Execute()); });
  }
  std::set<std::string> Objects() {
    std::set<std::string> names;
    for (const char* sql : {"SELECT object_type || ' ' || object_name FROM user_objects",
                            "SELECT table_name || '.' || column_name FROM user_tab_columns",
                            "SELECT package_name || '.' || object_name FROM user_arguments"}) {
      std::istringstream rows(Ask(sql));
      for (std::string row; std::getline(rows, row, ';');)
        names.insert(row.substr(1, row.size() - 2));
    }
    return names;
  }
};

TEST(SampleSite, TheOldReleaseLacksTheOptionalObjectsAndNothingElse) {
  const auto current = Site(SiteRelease::kCurrent).Objects();
  const auto old = Site(SiteRelease::kOld).Objects();
  std::vector<std::string> added;
  std::ranges::set_difference(current, old, std::back_inserter(added));
  EXPECT_THAT(added, ElementsAre("EA_CLIENT.ENTITY_HAS_EQUIV", "LENGTHYREPORT.LENGTHYREPORTS",
                                 "LENGTHYREPORT.REASON", "LUC_ENT_SYSTEM.RELEASE_NO",
                                 "LUC_ENT_SYSTEM.SYSTEM_ID", "LUC_ENT_SYSTEM.SYSTEM_NAME",
                                 "PACKAGE LENGTHYREPORT", "PM_FEATURE_CHANGES.ENABLED",
                                 "PM_FEATURE_CHANGES.FEATURE", "TABLE LUC_ENT_SYSTEM",
                                 "TABLE PM_FEATURE_CHANGES", "TASK_FILENAME.SIZEINROWS"));
  EXPECT_TRUE(std::ranges::includes(current, old));
}

TEST(SampleSite, RoutinesHaveTheirEffectOnTheTables) {
  // Calls and what they left behind, each on what those before it left; "moved" tells that the
  // entity update time did.
  const char* const rows[][2] = {
      {"EA_Client.Add_Common_Entity(,'New Market',3)", "100 moved"},
      {"EA_Client.Add_Common_Entity(,'Next Market',0)", "101 moved"},
      {"SELECT Id, Parent_Id FROM EA_COMMON_ENTITY WHERE Id >= 100 ORDER BY Id", "100|3;101|null"},
      {"EA_Client.Add_Common_Entity(,'New Market',3)", "ORA-1"},
      {"EA_Client.Reparent_Common_Entity(100,2)", "null moved"},
      {"EA_Client.Reparent_Common_Entity(101,100)", "null moved"},
      {"EA_Client.Reparent_Common_Entity(2,100)", "ORA-20023"},
      {"EA_Client.Reparent_Common_Entity(2,101)", "ORA-20023"},
      {"EA_Client.Reparent_Common_Entity(999,1)", "ORA-20022"},
      {"SELECT Id, Parent_Id FROM EA_COMMON_ENTITY WHERE Id >= 100 ORDER BY Id", "100|2;101|100"},
      {"EA_Client.Remove_Common_Entity(7)", "ORA-2292"},    // has equivalents
      {"EA_Client.Remove_Common_Entity(100)", "ORA-2292"},  // has a child
      {"EA_Client.Remove_Common_Entity(101)", "null moved"},
      {"EA_Client.Remove_Common_Entity(101)", "ORA-20022"},
      {"EA_DD.EA_Add_Entity_EQV(1,'New Market','CELL199')", "null moved"},
      {"EA_DD.EA_Add_Entity_EQV(1,'New Market','CELL199')", "ORA-1"},
      {"EA_DD.EA_Add_Entity_EQV(1,'Lost Market','CELL198')", "ORA-20022"},
      {"EA_EXP.Export_Required(,1,0,1,'2024-03-09 17:05:00')", "3"},
      {"EA_EXP.Export_Required(,1,2,1,'2024-03-09 17:05:00')", "1"},
      {"EA_EXP.Export_Required(,1,0,2,'2024-03-09 17:05:00')", "3"},
      {"EA_EXP.Clear_EXP_Required(1,'2024-03-09 17:05:00')", "null"},
      {"SELECT User_Id, COUNT(*) FROM EA_EXP_REQUIRED GROUP BY User_Id", "2|3"},
      {"EA_FindOrCreateUser('ANA','p','FALSE')", "'TRUE'"},
      {"EA_FindOrCreateUser('eve','','TRUE')", "'USER NAME AND PASSWORD REQUIRED'"},
      {"SELECT COUNT(*) FROM EA_USER", "5"},
      {"EA_FindOrCreateUser('eve','p','TRUE')", "'TRUE'"},
      {"EA_FindOrCreateUser('eve','p','FALSE')", "'TRUE'"},
      {"SELECT Name FROM EA_USER WHERE Id >= 100", "'eve'"},
      {"ZR_Query.CreateFQuery(77,2)", "ORA-2291"},
      {"ZR_Query.CreateFQuery(2,2)", "null"},
      {"SELECT MAX(Ordinal), MIN(StringData) FROM PM_StringTable WHERE Id >= 1000",
       "3|' AND (ATTEMPTS > 1000)'"},
      {"ZR_Query.CopyNFQuery(2,2)", "null"},
      {"LengthyReport.Reason('',1,40)", "'The report covers 40 days.'"},
      {"LengthyReport.LengthyReports('',3)",
       "'Half-Year Trends|Market Overview|Quarterly Failures|Site Ranking|and 1 more'"},
      {"FS_GetColumnLength(,'pm_stringtable','Nothing')", "null"},
      {"SELECT EA_Client.IsServerGroupDocumentValid(1,0,1,1) FROM DUAL", "null"},
      {"SELECT EA_Client.IsServerGroupDocumentValid(4,0,1,1) FROM DUAL",
       "'Server group Spare has no servers.'"},
      {"SELECT EA_Client.IsServerGroupDocumentValid(NULL,0,1,1) FROM DUAL",
       "'Server group (none) does not exist.'"},
      {"SELECT Last_Field_Update() FROM DUAL", "date 2024-02-20 15:42:10"},
  };
  Site site(SiteRelease::kCurrent);
  std::string before = site.Ask("SELECT Ea_Last_Entity_Update() FROM DUAL");
  for (const auto& [step, expected] : rows) {
    const bool is_query = std::string_view(step).starts_with("SELECT");
    std::string outcome = is_query ? site.Ask(step) : site.Call(step);
    const std::string now = site.Ask("SELECT Ea_Last_Entity_Update() FROM DUAL");
    if (std::exchange(before, now) != now) outcome += " moved";
    EXPECT_EQ(outcome, expected) << step;
  }
}

}  // namespace
}  // namespace sabrel
