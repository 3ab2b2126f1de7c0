// What users do with the suite, through the facade, for its real effect on the sample site.
#include <functional>

#include "sabrel/core/gsabrel.h"
#include "tests/contract/contract.h"
#include "tests/support/outcome.h"
#include "tests/support/scripted_platform.h"

namespace sabrel::testing {
namespace {

struct Step {
  template <class Work>
  Step(const char* step, Work work, std::string comes_to, std::string shown = {})
      : name(step),
        run([work] { return OutcomeOf(work); }),
        outcome(std::move(comes_to)),
        box(std::move(shown)) {}
  const char* name;
  std::function<std::string()> run;
  std::string outcome;
  std::string box;  // a part of what the user was shown
};

// A statement's first value.
auto Ask(std::string sql) {
  return [sql = std::move(sql)] { return GSabrel::ExecuteQueryReturningLong(sql); };
}

void Walk(ScriptedPlatform& platform, const std::vector<Step>& steps) {
  for (const Step& step : steps) {
    EXPECT_EQ(step.run(), step.outcome) << step.name;
    const std::string told = platform.Conversation();
    EXPECT_EQ(Has(told, "box"), !step.box.empty()) << step.name << ": " << told;
    EXPECT_TRUE(Has(told, step.box)) << step.name << ": " << told;
  }
}

TEST_P(Contract, OperationsAtAClientsStartKnowMachineSettingsAndSchema) {
  ScriptedPlatform platform(open_session);
  const auto id = [] {
    GSabrel::LoadMachineId();
    return GSabrel::MachineId();
  };
  const auto product = [] {
    GSabrel::InitializeProductInfo();
    return true;
  };
  const auto attempts = [] {
    GSabrel::LoadOtherInfo();
    return GSabrel::NHighAttemptsEnabled();
  };
  const auto seconds_off = [] {
    return std::abs(GSabrel::GetCurrentDateTime().WholeSeconds() - Date::Now().WholeSeconds());
  };
  const auto procedure = [] {
    const Variant arguments[] = {Variant(5), Variant("2024-03-09 17:05:00")};
    GSabrel::ExecuteProcedure("EA_EXP.Clear_EXP_Required", arguments);
    return true;
  };
  const auto record = [] {
    return GSabrel::GenerateRecordString(
        GSabrel::ExecuteQuery("SELECT Id, Name, Changed FROM PM_REPORT WHERE Id <= 2 ORDER BY Id"));
  };
  const std::vector<Step> steps = {
      {"machine", id, "103"},
      {"the same machine", id, "103"},
      {"product", product, "true"},
      {"other settings", attempts, "'True'"},
      {"first day", [] { return GSabrel::SystemFirstDayOfWeek(); }, "'2'"},
      {"value", [] { return GSabrel::SystemValueExists("ReportLanguage", "Deutsch"); }, "true"},
      {"no value", [] { return GSabrel::SystemValueExists("ReportLanguage", "Welsh"); }, "false"},
      {"clock", [=] { return seconds_off() <= 61; }, "true"},
      {"sequence", [] { return GSabrel::GetNextInSequence("ZR_QUERY_SQ"); }, "100"},
      {"no sequence", [] { return GSabrel::GetNextInSequence("NO_SQ"); }, "0", "Error: 2289"},
      {"table", [] { return GSabrel::DoesTableExist("PM_Email"); }, "true"},
      {"no table", [] { return GSabrel::DoesTableExist("PM_Emails"); }, "false"},
      {"column", [] { return GSabrel::DoesFieldExist("PM_REPORT", "Busy_Hour"); }, "true"},
      {"no column", [] { return GSabrel::DoesFieldExist("PM_REPORT", "Idle"); }, "false"},
      {"length", [] { return GSabrel::DBColumnLength("PM_STRINGTABLE", "STRINGDATA"); }, "4000"},
      {"names of modules", [] { return GSabrel::ModuleNameMaxLength(); }, "24"},
      {"arguments", [] { return GSabrel::GetProcedureLength("EA_EXP", "EXPORT_REQUIRED") + 0; },
       "4"},
      {"routine", [] { return GSabrel::DoesThisProcedureExist("EA_EXP", "Export_Required"); },
       "true"},
      {"object", [] { return GSabrel::DoesDbObjectExist("LengthyReport", "PACKAGE"); }, "true"},
      {"lengthy", [] { return GSabrel::LengthyReportsConfigured(); }, "true"},
      {"version", [] { return GSabrel::GetModuleVersionName(1, 1); }, "'Traffic 6.0'"},
      {"procedure", procedure, "true"},
      {"function",
       [] {
         return GSabrel::ExecuteFunctionReturningLong("FS_GetColumnLength", "'PM_REPORT','NAME'");
       },
       "64"},
      {"date",
       [] { return GSabrel::ExecuteQueryReturningDate("SELECT MAX(Changed) FROM PM_REPORT"); },
       "2024-03-01 09:00:00"},
      {"rows as text", record,
       "'\r\n                              ID: '1'\r\n                            NAME: 'Morning "
       "Traffic'\r\n                         CHANGED: '02/10/2024 08:00:00''"},
  };
  Walk(platform, steps);
}

TEST_P(Contract, OperationsOnEntitiesChangeTheTablesAndTellWhenListsAreOld) {
  ScriptedPlatform platform(open_session);
  const Date time = Date::FromCivil({2024, 3, 9, 17, 5, 0});
  const auto current = [] { return GSabrel::EntitiesCurrent(); };
  const auto note = [] {
    GSabrel::LastEntityUpdate();
    GSabrel::LastFieldUpdate();
    return GSabrel::FieldsCurrent();
  };
  const auto parent = Ask("SELECT Parent_Id FROM EA_COMMON_ENTITY WHERE Id = 100");
  const std::vector<Step> steps = {
      {"before lists are loaded", current, "false"},
      {"lists are loaded", note, "true"},
      {"nothing changed", current, "true"},
      {"add", [] { return GSabrel::EA_Add_Common_Entity("O'Hara Łódź 東", 3); }, "100"},
      {"below its parent", parent, "3"},
      {"something changed", current, "false"},
      {"again", note, "true"},
      {"add below an unknown parent", [] { return GSabrel::EA_Add_Common_Entity("Lost", 999); },
       "raises database 2291"},
      {"a failed change moves no time", current, "true"},
      {"reparent", [] { return GSabrel::EA_Reparent_Common_Entity(100, 2); }, "true"},
      {"its parent", parent, "2"},
      {"reparent to an unknown parent", [] { return GSabrel::EA_Reparent_Common_Entity(100, 999); },
       "raises database 2291"},
      {"no equivalents", [] { return GSabrel::EntityHasEQV(100); }, "false"},
      {"make one",
       [] { return GSabrel::EA_Add_EntityEQV(1, "O'Hara Łódź 東", Variant("CELL199")); }, "true"},
      {"an equivalent", [] { return GSabrel::EntityHasEQV(100); }, "true"},
      {"remove what is referenced", [] { return GSabrel::EA_Remove_Common_Entity(100); }, "false",
       "This Enitity is currently being used."},
      {"it stays", Ask("SELECT COUNT(*) FROM EA_COMMON_ENTITY WHERE Id = 100"), "1"},
      {"remove what is free", [] { return GSabrel::EA_Remove_Common_Entity(10); }, "true"},
      {"it is gone", Ask("SELECT COUNT(*) FROM EA_COMMON_ENTITY WHERE Id = 10"), "0"},
      {"remove nothing", [] { return GSabrel::EA_Remove_Common_Entity(999); }, "false"},
      {"documents due", [&] { return GSabrel::IsEADocumentReady(1, 4, Variant(time)); }, "3"},
      {"on a server", [&] { return GSabrel::IsEADocumentReady(1, 4, Variant(time), 2); }, "1"},
      {"none", [&] { return GSabrel::IsEADocumentReady(4, 4, Variant(time)); }, "0"},
      {"clear", [&] { return GSabrel::ClearEATempRecords(4, time); }, "''"},
      {"cleared", Ask("SELECT COUNT(*) FROM EA_EXP_REQUIRED WHERE User_Id = 4"), "0"},
  };
  Walk(platform, steps);
}

TEST_P(Contract, OperationsOnReportsDocumentsAndDataAnswerWhatTheSiteHolds) {
  ScriptedPlatform platform(open_session);
  platform.box_answer = kAnswerNo;
  std::int32_t code = -1;
  std::string message;
  const auto document = [](int id) {
    return [id] { return GSabrel::IsServerGroupDocumentValid("Report Group", Variant(id)); };
  };
  const auto group = [](int id) {
    return [id] {
      return GSabrel::IsReportGroupServerDocumentValid("Report Group", id, "SaveOff", "");
    };
  };
  const auto user = [](const char* name, const char* create) {
    return [=] { return GSabrel::FindOrCreateUser("", 0, name, "p", 5, create); };
  };
  const auto server = [](const char* host, const char* name) {
    return [=] { return GSabrel::TestServerConnection(host, 0, name, "p", 5); };
  };
  const auto pieces =
      Ask("SELECT COUNT(*) FROM ZR_QUERY_DEF q, PM_StringTable s WHERE q.Id = 100 AND s.Id = "
          "q.String_Id");
  const std::vector<Step> steps = {
      {"lengthy", [] { return GSabrel::IsLengthyReport(5); }, "true",
       "The report covers 366 days.\r\nThe report covers 1200 entities.\r\nThe report looks"},
      {"not lengthy", [] { return GSabrel::IsLengthyReport(1); }, "false"},
      {"a lengthy job", [] { return GSabrel::IsLengthyReportGroup(3); }, "true",
       "and 1 more\r\n\r\nWhen the above"},
      {"a job of short ones", [] { return GSabrel::IsLengthyReportGroup(1); }, "false"},
      {"too big", [] { return GSabrel::ReportTooBigForXL("3"); }, "true"},
      {"small enough", [] { return GSabrel::ReportTooBigForXL("1"); }, "false"},
      {"of a job", [] { return GSabrel::JobReportsTooBigForXL("1"); }, "2"},
      {"of an unknown job", [] { return GSabrel::JobReportsTooBigForXL("99"); }, "0"},
      {"a task id that is no number", [] { return GSabrel::ReportTooBigForXL("five"); },
       "raises code 6 Query returned no records.Report does not exists, Report Id:"
       "fiveUnexpected error, Task Id:five,An unexpected error occurred",
       "Error: 904"},
      {"plans", [] { return GSabrel::IsCspNeeded(1); }, "true"},
      {"no scopes", [] { return GSabrel::IsDtsNeeded(1); }, "false"},
      {"scopes", [] { return GSabrel::IsDtsNeeded(3); }, "true"},
      {"valid", document(1), "true"},
      {"a server is off", document(3), "false",
       "Server Southfield of server group Migration is not active.\r\n Would you like"},
      {"a group's documents", group(1), "true"},
      {"one is not valid", group(3), "false"},
      {"a user", user("o'neil", "FALSE"), "'TRUE'"},
      {"not there", user("Zoë", "FALSE"), "'USER DOESN'T EXIST'"},
      {"made", user("Zoë", "TRUE"), "'TRUE'"},
      {"usable", server("", "Zoë"), "true", "Successfull!!"},
      {"not remote", server("", "ben"), "false", "User Not an Enterprise Remote User."},
      {"no data admin", server("", "carla"), "false", "User Not a Data Admin User."},
      {"locked", server("", "dario"), "false", "USER IS LOCKED"},
      {"nowhere", server("no.such.host", "ana"), "false", "Error in creating user [ana]"},
      {"mail", [&] { return GSabrel::Is_SMTP_Ready(code, message) && code == 0; }, "true"},
      {"and its words", [&] { return message.substr(0, 7); }, "'Mail go'"},
      {"no copy yet", [] { return GSabrel::CopyOriginalQueryText(2, 2); }, "raises database 20031"},
      {"copy", [] { return GSabrel::CopyScenarioQueryText(2, 2); }, "100"},
      {"with its condition", pieces, "3"},
      {"the original", [] { return GSabrel::CopyOriginalQueryText(2, 2); }, "-1"},
      {"without it", pieces, "2"},
      {"oldest", [] { return GSabrel::GetRecordOldestDate(); }, "2024-03-05 00:00:00"},
      {"latest", [] { return GSabrel::GetRecordLatestDate(); }, "2024-03-09 23:00:00"},
      {"slices", [] { return GSabrel::GetTimeSliceSecondsValue(false); }, "3600"},
      {"busy-hour slices", [] { return GSabrel::GetTimeSliceSecondsValue(true); }, "900"},
  };
  Walk(platform, steps);
}

TEST_P(Contract, StoredTextsComeBackAsTheyWentIn) {
  ScriptedPlatform platform(open_session);
  for (const std::string_view character : {"a", "é", "€", "𝄞", "'", "\\", "|", "\n"}) {
    for (const int length : {0, 1, 3999, 4000, 4001, 8001, 40000, 40001}) {
      std::string text;
      for (int i = 0; i < length; ++i) text += i % 4000 == 3998 ? "x" : character;
      const std::int32_t id = GDBString::CreateDBString(text);
      EXPECT_TRUE(GDBString::LoadDBString(id)->Text() == text) << character << " x " << length;
      EXPECT_EQ(GSabrel::ExecuteQueryReturningLong(
                    "SELECT COUNT(*) FROM PM_StringTable WHERE Id = " + std::to_string(id)),
                length == 0 ? 1 : (length - 1) / 4000 + 1);
    }
  }
  const std::int32_t id = GDBString::CreateDBString("north\r\n\r\nsouth\r\nwes", true);
  EXPECT_EQ(GDBString::LoadDBString(id, true, ";")->Text(), "north;south;we;");
  GDBString::UpdateDBString(id, "short");
  EXPECT_EQ(GDBString::LoadDBString(id)->Text(), "short") << "the longer text's rows are gone";
  CDBString text;
  text.Id(id);
  text.Delete();
  text.Load();
  EXPECT_EQ(text.Text(), "");
}

TEST_P(Contract, ReleasesAndFeaturesAreThoseOfTheSite) {
  ScriptedPlatform platform(open_session);
  const auto enabled = [](const char* feature) {
    return [=] { return GFeatureManager::FeatureManager()->IsFeatureEnabled(feature); };
  };
  Walk(platform, {{"fits", [] { return GSabrel::IsClientServerCompatible(); }, "true"},
                  {"release 17", [] { return GSabrel::IsLucentVersionSupported("r17"); }, "true"},
                  {"release 19", [] { return GSabrel::IsLucentVersionSupported("R19"); }, "false"},
                  {"a switch that is on", enabled("SES_Group"), "true"},
                  {"one that is off", enabled("CPFail_Group"), "false"}});
  CConnection connection;
  EXPECT_TRUE(connection.InitializeConnectionFeatures() && connection.IsEnterpriseServer());
}

}  // namespace
}  // namespace sabrel::testing
