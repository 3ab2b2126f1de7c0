#include "sabrel/config/feature_manager.h"

#include <string>

#include "sabrel/core/query_execution.h"
#include "sabrel/platform/conversions.h"
#include "sabrel/platform/module_state.h"
#include "sabrel/platform/platform.h"
#include "sabrel/platform/text_string.h"
#include "sabrel/sql/schema_probes.h"

namespace sabrel {

const std::array<FeatureRule, 24> kFeatureRules = {{
    {FeatureProbe::kCategory, "ChanSetPlanCategory", "Channel_Set_Plans_Category"},
    {FeatureProbe::kCategory, "ConfidenceRptCategory", "Confidence_Reports_Category"},
    {FeatureProbe::kCategory, "CfgTemplateCategory", "Config_Reports_Categories"},
    {FeatureProbe::kCategory, "ASCIIDataSourcesCategory", "DataSources_Categories"},
    {FeatureProbe::kTable, "PM_Note", "Notes_Category"},
    {FeatureProbe::kGroup, "CPFail", "CPFail_Group"},
    {FeatureProbe::kGroup, "EVDOPCMD", "EVDO_PCMD_Group"},
    {FeatureProbe::kGroup, "DOCPFail", "DOCPFail_Group"},
    {FeatureProbe::kGroup, "External", "External_Group"},
    {FeatureProbe::kGroup, "Graph", "Graph_Group"},
    {FeatureProbe::kGroup, "Map", "Map_Group"},
    {FeatureProbe::kGroup, "PCMD", "PCMD_Group"},
    {FeatureProbe::kGroup, "SES", "SES_Group"},
    {FeatureProbe::kGroup, "Soft Alarms", "Soft_Alarms_Group"},
    {FeatureProbe::kGroup, "UDR", "UDR_Group"},
    {FeatureProbe::kTool, "ServiceGradeKit.CToolEntry_ServiceGrade",
     "Grade_of_Service_Defaults_Tool"},
    {FeatureProbe::kTool, "FutureImpactKit.CToolEntry_FutureImpact",
     "Impact_of_Future_Features_Tool"},
    {FeatureProbe::kTool, "CapacityCalcKit.CToolEntry_CapacityCalc",
     "Engineered_Capacity_Calculator_Tool"},
    {FeatureProbe::kTool, "DailyNoticeKit.CToolEntry_DailyNotice", "Message_of_the_Day_Tool"},
    {FeatureProbe::kTab, "ReportPanes.XExpressReportPane", "Express_Reports"},
    {FeatureProbe::kTab, "EventPanes.XSnmpEventPane", "EN_SNMP_Support"},
    {FeatureProbe::kTab, "OptionPanes.XHelpFilesPane", "Help_Files_OptionsTab"},
    {FeatureProbe::kJobType, "Aggregator", "Aggregator_Job_Type"},
    {FeatureProbe::kTable, "ZR_Locales", "Time_Zone_Scheduling"},
}};

const std::array<std::string_view, 29> kFeatureNames = {
    "Channel_Set_Plans_Category",
    "Confidence_Reports_Category",
    "Config_Reports_Categories",
    "DataSources_Categories",
    "Notes_Category",
    "CPFail_Group",
    "EVDO_PCMD_Group",
    "DOCPFail_Group",
    "External_Group",
    "Graph_Group",
    "Map_Group",
    "PCMD_Group",
    "SES_Group",
    "Soft_Alarms_Group",
    "UDR_Group",
    "Grade_of_Service_Defaults_Tool",
    "Impact_of_Future_Features_Tool",
    "Engineered_Capacity_Calculator_Tool",
    "Message_of_the_Day_Tool",
    "Express_Reports",
    "EN_SNMP_Support",
    "Help_Files_OptionsTab",
    "Aggregator_Job_Type",
    "Flexible_Start_Of_Week",
    "FlexibleAggregation",
    "Show_Check_Data_Availability",
    "Time_Zone_Scheduling",
    "Html_Help",
    "ENABLE_SOFTALARM_ID",
};

namespace {

constexpr std::string_view kFeatureQuery =
    "SELECT Feature FROM PM_Feature_Changes WHERE Enabled = 'Y'";

// "$1" is the argument, as it is.
std::string_view ProbeTemplate(FeatureProbe probe) {
  switch (probe) {
    case FeatureProbe::kGroup:
      return "SELECT Group_Id FROM PM_Groups WHERE Group_Active = 'Y' AND Group_Name = '$1'";
    case FeatureProbe::kCategory:
      return "SELECT c.Category_Id FROM PM_GROUPS g, PM_GROUP_CATEGORIES gc, PM_CATEGORIES c "
             "WHERE g.Group_Active = 'Y' AND g.Group_ID = gc.Group_ID "
             "AND c.Category_ID = gc.Category_ID AND c.Category_Active = 'Y' "
             "AND c.CategoryFunction = '$1'";
    case FeatureProbe::kTool: return "SELECT * FROM PM_Tools WHERE Tool_Name = '$1'";
    case FeatureProbe::kTab:
      return "SELECT a.TabName, a.TabLabel, c.App_Name, b.Control_Name "
             "FROM PM_APP_TABS a, PM_TABS b, PM_APP_NAMES c "
             "WHERE a.Active='Y' AND c.Active = 'Y' AND a.App_ID = c.App_ID "
             "AND a.Tab_ID = b.Tab_ID AND b.Control_Name = '$1'";
    case FeatureProbe::kJobType: return "SELECT *  FROM Job_Type  WHERE Description = '$1'";
    case FeatureProbe::kTable: break;
  }
  return {};
}

bool HasRows(const std::string& sQuery) {
  try {
    const RecordsetRef rows = MSabrel::ExecuteQuery(sQuery);
    const CloseAtEnd closing(rows);
    return rows && rows->RecordCount() > 0;
  } catch (...) {
    return false;  // the derivation goes on with the next rule
  }
}

bool IsConfigured(const FeatureRule& rule) {
  if (rule.probe == FeatureProbe::kTable) return MSabrel::DoesTableExist(rule.argument);
  const TextString statement{std::string(ProbeTemplate(rule.probe))};
  return HasRows(statement.Filled(std::array{std::string(rule.argument)}));
}

struct SharedManager {
  std::shared_ptr<CFeatureManager> manager;
};

}  // namespace

bool CFeatureManager::IsFeatureEnabled(std::string_view sFeature) const noexcept {
  return enabled_.Contains(sFeature);
}

void CFeatureManager::Initialize() {
  enabled_.Clear();
  configured_.Clear();
  RaisingRuntimeErrors([&] {
    if (MSabrel::DoesTableExist("PM_Feature_Changes")) {
      LoadFeatures(configured_);
    } else {
      for (const FeatureRule& rule : kFeatureRules) {
        if (IsConfigured(rule)) configured_.Add(rule.feature);
      }
    }
    for (const std::string_view name : kFeatureNames) {
      if (configured_.Contains(name)) enabled_.Add(name);
    }
  });
}

void CFeatureManager::LoadFeatures(NamedValues& sts) const {
  RaisingRuntimeErrors([&] {
    const RecordsetRef rows = MSabrel::ExecuteQuery(kFeatureQuery);
    const CloseAtEnd closing(rows);
    for (Recordset& row = Deref(rows); !row.EndOfFile(); row.MoveNext()) {
      sts.Add(ToText(row.Fields().Item("Feature").Value()));
    }
  });
}

std::shared_ptr<CFeatureManager> GFeatureManager::FeatureManager() {
  return RaisingRuntimeErrors([] {
    if (auto known = ModuleState<SharedManager>().manager) return known;
    RequirePlatform();
    auto manager = std::make_shared<CFeatureManager>();
    // Remembered before it is initialized: that is done once, also when it fails.
    ModuleState<SharedManager>().manager = manager;
    manager->Initialize();
    return manager;
  });
}

}  // namespace sabrel
