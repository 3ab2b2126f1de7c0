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
  const std::string category =
      "SELECT c.Category_Id FROM PM_GROUPS g, PM_GROUP_CATEGORIES gc, PM_CATEGORIES c WHERE "
      "g.Group_Active = 'Y' AND g.Group_ID = gc.Group_ID AND c.Category_ID = gc.Category_ID AND "
      "c.Category_Active = 'Y' AND c.CategoryFunction = ";
  const std::string group =
      "SELECT Group_Id FROM PM_Groups WHERE Group_Active = 'Y' AND Group_Name = ";
  const std::string tool = "SELECT * FROM PM_Tools WHERE Tool_Name = ";
  const std::string tab =
      "SELECT a.TabName, a.TabLabel, c.App_Name, b.Control_Name FROM PM_APP_TABS a, PM_TABS b, "
      "PM_APP_NAMES c WHERE a.Active='Y' AND c.Active = 'Y' AND a.App_ID = c.App_ID AND a.Tab_ID = "
      "b.Tab_ID AND b.Control_Name = ";
  const std::string job_type = "SELECT *  FROM Job_Type  WHERE Description = ";
  const std::string table = "SELECT COUNT(table_name) FROM user_tables\r\n    WHERE table_name = ";
  const struct {
    const std::string& probe;
    const char* argument;
    const char* feature;
  } rules[] = {
      {table, "PM_FEATURE_CHANGES", ""},
      {category, "ChanSetPlanCategory", "Channel_Set_Plans_Category"},
      {category, "ConfidenceRptCategory", "Confidence_Reports_Category"},
      {category, "CfgTemplateCategory", "Config_Reports_Categories"},
      {category, "ASCIIDataSourcesCategory", "DataSources_Categories"},
      {table, "PM_NOTE", "Notes_Category"},
      {group, "CPFail", "CPFail_Group"},
      {group, "EVDOPCMD", "EVDO_PCMD_Group"},
      {group, "DOCPFail", "DOCPFail_Group"},
      {group, "External", "External_Group"},
      {group, "Graph", "Graph_Group"},
      {group, "Map", "Map_Group"},
      {group, "PCMD", "PCMD_Group"},
      {group, "SES", "SES_Group"},
      {group, "Soft Alarms", "Soft_Alarms_Group"},
      {group, "UDR", "UDR_Group"},
      {tool, "ServiceGradeKit.CToolEntry_ServiceGrade", "Grade_of_Service_Defaults_Tool"},
      {tool, "FutureImpactKit.CToolEntry_FutureImpact", "Impact_of_Future_Features_Tool"},
      {tool, "CapacityCalcKit.CToolEntry_CapacityCalc", "Engineered_Capacity_Calculator_Tool"},
      {tool, "DailyNoticeKit.CToolEntry_DailyNotice", "Message_of_the_Day_Tool"},
      {tab, "ReportPanes.XExpressReportPane", "Express_Reports"},
      {tab, "EventPanes.XSnmpEventPane", "EN_SNMP_Support"},
      {tab, "OptionPanes.XHelpFilesPane", "Help_Files_OptionsTab"},
      {job_type, "Aggregator", "Aggregator_Job_Type"},
      {table, "ZR_LOCALES", "Time_Zone_Scheduling"},
  };
  // Each time one rule alone finds what it looks for; at last all do.
  std::string all;
  for (std::size_t found = 1; found <= std::size(rules); ++found) {
    UnloadThread();
    static_cast<void>(platform.Conversation());
    std::string statements;
    for (std::size_t i = 0; i < std::size(rules); ++i) {
      const bool finds = i > 0 && (i == found || found == std::size(rules));
      platform.Answer(&rules[i].probe == &table ? Count(finds ? 1 : 0)
                      : finds                   ? Found()
                                                : Nothing());
      statements += "query [" + rules[i].probe + "'" + rules[i].argument +
                    "'] host= port=0 user= "
                    "password= timeout=" +
                    (&rules[i].probe == &table ? "0" : "60") + "\n";
    }
    const auto manager = GFeatureManager::FeatureManager();
    std::string sent;
    const std::string told = platform.Conversation();
    for (std::size_t at = told.find("query ["); at != std::string::npos;) {
      const std::size_t end = told.find("\n", told.find("timeout=", at)) + 1;
      sent += told.substr(at, end - at);
      at = told.find("query [", end);
    }
    EXPECT_EQ(sent, statements);
    const std::string feature = found < std::size(rules) ? rules[found].feature : "";
    all += feature.empty() ? "" : feature + " ";
    EXPECT_EQ(Enabled(*manager), feature.empty() ? all : feature + " ");
  }
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

// Only the component fills a descriptor.
template <class Connection>
concept Settable = requires(Connection c) {
  c.SesEnabled(true);
}
|| requires(Connection c, ProfileRef p) { c.Profile(p); };
static_assert(!Settable<CConnection>);

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

  const std::pair<const char*, const char*> flags[] = {{"SES_Group", "ES---"},
                                                       {"Soft_Alarms_Group", "E-A--"},
                                                       {"Aggregator_Job_Type", "E--G-"},
                                                       {"PCMD_Group", "E---P"}};
  for (const auto& [feature, shown] : flags) {
    UnloadThread();
    platform.Answer(
        Rows{{"Property", "Value"}, {{Variant("ProductType"), Variant("enterprise SERVER")}}});
    AnswerSwitches({Variant(feature)});
    EXPECT_TRUE(connection->InitializeConnectionFeatures());
    static_cast<void>(platform.Conversation());
    const auto copy = GSabrel::CopyConnection(connection);
    EXPECT_EQ(Flags(*connection) + Flags(*copy), std::string(shown) + shown);
    EXPECT_EQ(copy->MachineName(), Variant("Zürich"));
    EXPECT_EQ(copy->DestPath(), Variant("C:\\path"));
    EXPECT_EQ(*copy->Profile(), given);
    EXPECT_NE(copy->Profile(), connection->Profile());
    EXPECT_EQ(platform.Conversation(), "") << "copying asks nobody";
  }

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
