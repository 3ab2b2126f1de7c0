// Features of the site, and descriptors of connections, which carry some of them.
#include <gmock/gmock.h>

#include "sabrel/core/gsabrel.h"
#include "tests/support/outcome.h"
#include "tests/support/scripted_platform.h"

namespace sabrel {
namespace {

using testing::Has;
using testing::OutcomeOf;
using testing::Refuse;
using testing::Rows;
using testing::ScriptedPlatform;

Rows Count(std::int32_t count) { return {{"C"}, {{Variant(count)}}}; }
Rows Found() { return {{"X"}, {{Variant(1)}}}; }
Rows Nothing() { return {{"X"}, {}}; }

class Features : public ::testing::Test {
 protected:
  static std::string Enabled(const CFeatureManager& manager) {
    std::string names;
    for (const std::string_view name : kFeatureNames) {
      if (manager.IsFeatureEnabled(name)) names += std::string(name) + " ";
    }
    return names;
  }
  // The switch table says that these are on.
  void AnswerSwitches(const std::vector<Variant>& names) {
    platform.Answer(Count(1));
    Rows rows{{"FEATURE"}, {}};
    for (const Variant& name : names) rows.rows.push_back({name});
    platform.Answer(rows);
  }
  ScriptedPlatform platform;
};

TEST_F(Features, TheSwitchTableDecidesWhereThereIsOne) {
  EXPECT_FALSE(CFeatureManager().IsFeatureEnabled("Html_Help"));
  AnswerSwitches({Variant("Html_Help"), Variant("Unheard_Of"), Variant("express_reports"),
                  Variant("Html_Help")});
  const auto manager = GFeatureManager::FeatureManager();
  EXPECT_EQ(Enabled(*manager), "Express_Reports Html_Help ");
  EXPECT_FALSE(manager->IsFeatureEnabled("Unheard_Of"));
  const std::string told = platform.Conversation();
  EXPECT_TRUE(Has(told,
                  "query [SELECT Feature FROM PM_Feature_Changes WHERE Enabled = 'Y'] host= "
                  "port=0 user= password= timeout=60\n"));
  EXPECT_FALSE(Has(told, "PM_Groups")) << "nothing is derived";
  EXPECT_EQ(GFeatureManager::FeatureManager(), manager);
  EXPECT_EQ(platform.Conversation(), "");
  platform.Answer(Rows{{"FEATURE"}, {{Variant("SES_Group")}}});
  manager->Initialize();
  EXPECT_EQ(Enabled(*manager), "SES_Group ") << "starts over";
  for (const bool refused : {true, false}) {
    refused ? platform.Answer(Refuse(942))
            : platform.Answer(Rows{{"FEATURE"}, {{Variant("SES_Group")}, {Variant(Null{})}}});
    EXPECT_EQ(OutcomeOf([&] { return (manager->Initialize(), true); }).substr(0, 9),
              refused ? "raises 91" : "raises 94");
    EXPECT_EQ(Enabled(*manager), "");
  }
  EXPECT_EQ(platform.OpenCursors(), 0);
}

TEST_F(Features, AnOlderSiteIsProbedRuleByRule) {
  // Only the rule whose number is `found` finds what it looks for; 0 for none, -1 for all.
  const auto derive = [&](int found) {
    UnloadThread();
    static_cast<void>(platform.Conversation());
    platform.Answer(Count(0));
    for (int rule = 1; rule <= 24; ++rule) {
      const bool finds = found == rule || found < 0;
      const bool table =
          kFeatureRules[static_cast<std::size_t>(rule) - 1].probe == FeatureProbe::kTable;
      platform.Answer(table ? Count(finds ? 1 : 0) : finds ? Found() : Nothing());
    }
    return Enabled(*GFeatureManager::FeatureManager());
  };
  EXPECT_EQ(derive(0), "");
  const std::string told = platform.Conversation();
  std::size_t at = 0;
  for (const char* statement :
       {"'PM_FEATURE_CHANGES'",
        "[SELECT c.Category_Id FROM PM_GROUPS g, PM_GROUP_CATEGORIES gc, PM_CATEGORIES c WHERE "
        "g.Group_Active = 'Y' AND g.Group_ID = gc.Group_ID AND c.Category_ID = gc.Category_ID AND "
        "c.Category_Active = 'Y' AND c.CategoryFunction = 'ChanSetPlanCategory'] host= port=0 "
        "user= "
        "password= timeout=60\n",
        "= 'ConfidenceRptCategory']",
        "= 'CfgTemplateCategory']",
        "= 'ASCIIDataSourcesCategory']",
        "'PM_NOTE'",
        "[SELECT Group_Id FROM PM_Groups WHERE Group_Active = 'Y' AND Group_Name = 'CPFail']",
        "'EVDOPCMD']",
        "'DOCPFail']",
        "'External']",
        "'Graph']",
        "'Map']",
        "'PCMD']",
        "'SES']",
        "'Soft Alarms']",
        "'UDR']",
        "[SELECT * FROM PM_Tools WHERE Tool_Name = 'ServiceGradeKit.CToolEntry_ServiceGrade']",
        "'FutureImpactKit.CToolEntry_FutureImpact']",
        "'CapacityCalcKit.CToolEntry_CapacityCalc']",
        "'DailyNoticeKit.CToolEntry_DailyNotice']",
        "[SELECT a.TabName, a.TabLabel, c.App_Name, b.Control_Name FROM PM_APP_TABS a, PM_TABS b, "
        "PM_APP_NAMES c WHERE a.Active='Y' AND c.Active = 'Y' AND a.App_ID = c.App_ID AND a.Tab_ID "
        "= b.Tab_ID AND b.Control_Name = 'ReportPanes.XExpressReportPane']",
        "'EventPanes.XSnmpEventPane']",
        "'OptionPanes.XHelpFilesPane']",
        "[SELECT *  FROM Job_Type  WHERE Description = 'Aggregator']",
        "'ZR_LOCALES'"}) {
    at = told.find(statement, at);
    ASSERT_NE(at, std::string::npos) << statement;
  }
  for (int rule = 1; rule <= 24; ++rule) {
    EXPECT_EQ(derive(rule),
              std::string(kFeatureRules[static_cast<std::size_t>(rule) - 1].feature) + " ");
  }
  EXPECT_EQ(derive(-1),
            "Channel_Set_Plans_Category Confidence_Reports_Category Config_Reports_Categories "
            "DataSources_Categories Notes_Category CPFail_Group EVDO_PCMD_Group DOCPFail_Group "
            "External_Group Graph_Group Map_Group PCMD_Group SES_Group Soft_Alarms_Group UDR_Group "
            "Grade_of_Service_Defaults_Tool Impact_of_Future_Features_Tool "
            "Engineered_Capacity_Calculator_Tool Message_of_the_Day_Tool Express_Reports "
            "EN_SNMP_Support Help_Files_OptionsTab Aggregator_Job_Type Time_Zone_Scheduling ");
}

TEST_F(Features, AProbeThatFailsDoesNotEndTheDerivation) {
  platform.Answer(Count(0));
  platform.Answer(Refuse(942));
  platform.Answer(Found());
  EXPECT_EQ(Enabled(*GFeatureManager::FeatureManager()), "Confidence_Reports_Category ");
}

TEST_F(Features, TheSharedManagerIsKeptWhenItCannotBeFilled) {
  platform.Answer(Count(1));
  platform.Answer(Refuse(942));
  EXPECT_EQ(OutcomeOf([] { return GFeatureManager::FeatureManager() != nullptr; }).substr(0, 9),
            "raises 91");
  static_cast<void>(platform.Conversation());
  EXPECT_EQ(Enabled(*GFeatureManager::FeatureManager()), "");
  EXPECT_EQ(platform.Conversation(), "");
}

std::string Flags(const CConnection& c) {
  return std::string(c.IsEnterpriseServer() ? "E" : "-") + (c.SesEnabled() ? "S" : "-") +
         (c.SoftAlarmsEnabled() ? "A" : "-") + (c.AggregatorEnabled() ? "G" : "-") +
         (c.PCMDEnabled() ? "P" : "-");
}

TEST_F(Features, ADescriptorOwnsItsProfileAndReadsItsFlags) {
  const auto profile = std::make_shared<ConnectionProfile>(
      ConnectionProfile{"n", "d", "h", 5, "db", "u", "p", 7, 8});
  const ConnectionProfile given = *profile;
  const auto connection = GSabrel::CreateSMConnection(profile, "C:\\path", "Zürich");
  profile->Host = "changed";
  EXPECT_EQ(*connection->Profile(), given);
  EXPECT_EQ(connection->DestPath(), Variant("C:\\path"));
  EXPECT_EQ(Flags(*connection), "-----");
  EXPECT_EQ(platform.Conversation(), "");

  platform.Answer(
      Rows{{"Property", "Value"}, {{Variant("ProductType"), Variant("enterprise SERVER")}}});
  AnswerSwitches({Variant("SES_Group"), Variant("PCMD_Group"), Variant("Soft_Alarms_Group"),
                  Variant("Aggregator_Job_Type")});
  EXPECT_TRUE(connection->InitializeConnectionFeatures());
  EXPECT_EQ(Flags(*connection), "ESAGP");
  static_cast<void>(platform.Conversation());
  const auto copy = GSabrel::CopyConnection(connection);
  EXPECT_EQ(Flags(*copy), "ESAGP");
  EXPECT_EQ(copy->MachineName(), Variant("Zürich"));
  EXPECT_EQ(*copy->Profile(), given);
  EXPECT_NE(copy->Profile(), connection->Profile());
  EXPECT_EQ(platform.Conversation(), "") << "copying asks nobody";

  const auto bare = std::make_shared<CConnection>();
  EXPECT_EQ(bare->Profile(), nullptr);
  EXPECT_EQ(*GSabrel::CopyConnection(bare)->Profile(), ConnectionProfile{});
  for (const auto& fails :
       {std::function<bool()>(
            [] { return GSabrel::CreateSMConnection(nullptr, "", "") != nullptr; }),
        std::function<bool()>([] { return GSabrel::CopyConnection(nullptr) != nullptr; })}) {
    EXPECT_EQ(OutcomeOf(fails).substr(0, 9), "raises 91");
  }
}

TEST_F(Features, ADescriptorKeepsTheFlagsThatWereSetBeforeAFailure) {
  platform.Answer(
      Rows{{"Property", "Value"}, {{Variant("ProductType"), Variant("Enterprise Server")}}});
  platform.Answer(Count(1));
  platform.Answer(Refuse(942));
  CConnection connection;
  EXPECT_FALSE(connection.InitializeConnectionFeatures());
  EXPECT_EQ(Flags(connection), "E----");
  EXPECT_TRUE(connection.InitializeConnectionFeatures()) << "the manager is there, and empty";
  UnloadThread();
  platform.Answer(Rows{{"Property", "Value"}, {{Variant("ProductType"), Variant("Enterprise")}}});
  EXPECT_TRUE(CConnection().InitializeConnectionFeatures());
}

}  // namespace
}  // namespace sabrel
