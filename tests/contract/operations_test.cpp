// What users do with the suite, through the facade, for its real effect on the sample site.
#include <functional>

#include "sabrel/core/gsabrel.h"
#include "tests/contract/contract.h"
#include "tests/support/outcome.h"
#include "tests/support/scripted_platform.h"

namespace sabrel::testing {
namespace {

struct Step {
  const char* name;
  std::function<std::string()> run;
  std::string outcome;
  std::string box = {};  // a part of what the user was shown
};

// An operation's call as a step's work.
template <class Work>
std::function<std::string()> Do(Work work) {
  return [work] { return OutcomeOf(work); };
}

// A statement's first value.
std::function<std::string()> Ask(std::string sql) {
  return Do([sql = std::move(sql)] { return GSabrel::ExecuteQueryReturningLong(sql); });
}

void Walk(ScriptedPlatform& platform, const std::vector<Step>& steps) {
  for (const Step& step : steps) {
    EXPECT_EQ(step.run(), step.outcome) << step.name;
    const std::string told = platform.Conversation();
    EXPECT_EQ(Has(told, "box"), !step.box.empty()) << step.name << ": " << told;
    EXPECT_TRUE(Has(told, step.box)) << step.name << ": " << told;
  }
}

TEST_P(Contract, OperationsOnEntitiesChangeTheTablesAndTellWhenListsAreOld) {
  ScriptedPlatform platform(open_session);
  const Date time = Date::FromCivil({2024, 3, 9, 17, 5, 0});
  const auto current = Do([] { return GSabrel::EntitiesCurrent(); });
  const auto note = Do([] {
    GSabrel::LastEntityUpdate();
    GSabrel::LastFieldUpdate();
    return GSabrel::FieldsCurrent();
  });
  Walk(
      platform,
      {
          {"before lists are loaded", current, "false"},
          {"lists are loaded", note, "true"},
          {"nothing changed", current, "true"},
          {"add", Do([] { return GSabrel::EA_Add_Common_Entity("O'Hara Łódź 東", 3); }), "100"},
          {"one more row",
           Ask("SELECT Parent_Id FROM EA_COMMON_ENTITY WHERE Name = 'O''Hara Łódź 東'"), "3"},
          {"something changed", current, "false"},
          {"again", note, "true"},
          {"add below an unknown parent",
           Do([] { return GSabrel::EA_Add_Common_Entity("Lost", 999); }), "raises database 2291"},
          {"a failed change moves no time", current, "true"},
          {"reparent", Do([] { return GSabrel::EA_Reparent_Common_Entity(100, 2); }), "true"},
          {"its parent", Ask("SELECT Parent_Id FROM EA_COMMON_ENTITY WHERE Id = 100"), "2"},
          {"reparent to an unknown parent",
           Do([] { return GSabrel::EA_Reparent_Common_Entity(100, 999); }), "raises database 2291"},
          {"no equivalents", Do([] { return GSabrel::EntityHasEQV(100); }), "false"},
          {"make one",
           Do([] { return GSabrel::EA_Add_EntityEQV(1, "O'Hara Łódź 東", Variant("CELL199")); }),
           "true"},
          {"an equivalent", Do([] { return GSabrel::EntityHasEQV(100); }), "true"},
          {"remove what is referenced", Do([] { return GSabrel::EA_Remove_Common_Entity(100); }),
           "false", "This Enitity is currently being used."},
          {"it stays", Ask("SELECT COUNT(*) FROM EA_COMMON_ENTITY WHERE Id = 100"), "1"},
          {"remove what is free", Do([] { return GSabrel::EA_Remove_Common_Entity(10); }), "true"},
          {"it is gone", Ask("SELECT COUNT(*) FROM EA_COMMON_ENTITY WHERE Id = 10"), "0"},
          {"remove nothing", Do([] { return GSabrel::EA_Remove_Common_Entity(999); }), "false"},
          {"documents due", Do([&] { return GSabrel::IsEADocumentReady(1, 4, Variant(time)); }),
           "3"},
          {"on a server", Do([&] { return GSabrel::IsEADocumentReady(1, 4, Variant(time), 2); }),
           "1"},
          {"none", Do([&] { return GSabrel::IsEADocumentReady(4, 4, Variant(time)); }), "0"},
          {"clear", Do([&] { return GSabrel::ClearEATempRecords(4, time); }), "''"},
          {"cleared", Ask("SELECT COUNT(*) FROM EA_EXP_REQUIRED WHERE User_Id = 4"), "0"},
      });
}

TEST_P(Contract, OperationsOnReportsDocumentsAndDataAnswerWhatTheSiteHolds) {
  ScriptedPlatform platform(open_session);
  platform.box_answer = kAnswerNo;
  std::int32_t code = -1;
  std::string message;
  Walk(
      platform,
      {
          {"lengthy", Do([] { return GSabrel::IsLengthyReport(5); }), "true",
           "The report covers 366 days.\r\nThe report covers 1200 entities.\r\nThe report looks "
           "for busy hours.\r\n\r\nWhen this report"},
          {"not lengthy", Do([] { return GSabrel::IsLengthyReport(1); }), "false"},
          {"a lengthy job", Do([] { return GSabrel::IsLengthyReportGroup(3); }), "true",
           "and 1 more\r\n\r\nWhen the above"},
          {"a job of short ones", Do([] { return GSabrel::IsLengthyReportGroup(1); }), "false"},
          {"too big", Do([] { return GSabrel::ReportTooBigForXL("3"); }), "true"},
          {"small enough", Do([] { return GSabrel::ReportTooBigForXL("1"); }), "false"},
          {"of a job", Do([] { return GSabrel::JobReportsTooBigForXL("1"); }), "2"},
          {"of an unknown job", Do([] { return GSabrel::JobReportsTooBigForXL("99"); }), "0"},
          {"a task id that is no number", Do([] { return GSabrel::ReportTooBigForXL("five"); }),
           "raises code 6 Query returned no records.Report does not exists, Report Id:"
           "fiveUnexpected error, Task Id:five,An unexpected error occurred",
           "Error: 904"},
          {"plans", Do([] { return GSabrel::IsCspNeeded(1); }), "true"},
          {"no scopes", Do([] { return GSabrel::IsDtsNeeded(1); }), "false"},
          {"scopes", Do([] { return GSabrel::IsDtsNeeded(3); }), "true"},
          {"an unknown group", Do([] { return GSabrel::IsCspNeeded(-1); }), "false"},
          {"valid",
           Do([] { return GSabrel::IsServerGroupDocumentValid("Report Group", Variant(1)); }),
           "true"},
          {"a server is off",
           Do([] { return GSabrel::IsServerGroupDocumentValid("Report Group", Variant(3)); }),
           "false",
           "Server Southfield of server group Migration is not active.\r\n Would you like"},
          {"a group's documents", Do([] {
             return GSabrel::IsReportGroupServerDocumentValid("Report Group", 1, "SaveOff", "");
           }),
           "true"},
          {"one is not valid", Do([] {
             return GSabrel::IsReportGroupServerDocumentValid("Report Group", 3, "SaveOff", "");
           }),
           "false"},
          {"a user", Do([] { return GSabrel::FindOrCreateUser("", 0, "o'neil", "p", 5, "FALSE"); }),
           "'TRUE'"},
          {"not there", Do([] { return GSabrel::FindOrCreateUser("", 0, "Zoë", "p", 5, "FALSE"); }),
           "'USER DOESN'T EXIST'"},
          {"made", Do([] { return GSabrel::FindOrCreateUser("", 0, "Zoë", "p", 5, "TRUE"); }),
           "'TRUE'"},
          {"usable", Do([] { return GSabrel::TestServerConnection("", 0, "Zoë", "p", 5); }), "true",
           "Successfull!!"},
          {"not remote", Do([] { return GSabrel::TestServerConnection("", 0, "ben", "p", 5); }),
           "false", "box 48 [Test Server Connection] User Not an Enterprise Remote User."},
          {"no data admin",
           Do([] { return GSabrel::TestServerConnection("", 0, "carla", "p", 5); }), "false",
           "box 48 [Test Server Connection] User Not a Data Admin User."},
          {"locked", Do([] { return GSabrel::TestServerConnection("", 0, "dario", "p", 5); }),
           "false", "USER IS LOCKED"},
          {"nowhere",
           Do([] { return GSabrel::TestServerConnection("no.such.host", 1, "ana", "p", 5); }),
           "false", "Error in creating user [ana]"},
          {"mail", Do([&] { return GSabrel::Is_SMTP_Ready(code, message); }), "true"},
          {"and its words", [&] { return std::to_string(code) + " " + message.substr(0, 7); },
           "0 Mail go"},
          {"no copy yet", Do([] { return GSabrel::CopyOriginalQueryText(2, 2); }),
           "raises database 20031"},
          {"copy", Do([] { return GSabrel::CopyScenarioQueryText(2, 2); }), "100"},
          {"with its condition",
           Ask("SELECT COUNT(*) FROM ZR_QUERY_DEF q, PM_StringTable s WHERE q.Id = 100 AND s.Id = "
               "q.String_Id"),
           "3"},
          {"the original", Do([] { return GSabrel::CopyOriginalQueryText(2, 2); }), "-1"},
          {"without it",
           Ask("SELECT COUNT(*) FROM ZR_QUERY_DEF q, PM_StringTable s WHERE q.Id = 100 AND s.Id = "
               "q.String_Id"),
           "2"},
          {"oldest", Do([] { return GSabrel::GetRecordOldestDate(); }), "2024-03-05 00:00:00"},
          {"latest", Do([] { return GSabrel::GetRecordLatestDate(); }), "2024-03-09 23:00:00"},
          {"slices", Do([] { return GSabrel::GetTimeSliceSecondsValue(false); }), "3600"},
          {"busy-hour slices", Do([] { return GSabrel::GetTimeSliceSecondsValue(true); }), "900"},
      });
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
  Walk(platform,
       {{"fits", Do([] { return GSabrel::IsClientServerCompatible(); }), "true"},
        {"release 17", Do([] { return GSabrel::IsLucentVersionSupported("r17"); }), "true"},
        {"release 19", Do([] { return GSabrel::IsLucentVersionSupported("R19"); }), "false"},
        {"a switch that is on",
         Do([] { return GFeatureManager::FeatureManager()->IsFeatureEnabled("SES_Group"); }),
         "true"},
        {"one that is off",
         Do([] { return GFeatureManager::FeatureManager()->IsFeatureEnabled("CPFail_Group"); }),
         "false"}});
  CConnection connection;
  EXPECT_TRUE(connection.InitializeConnectionFeatures() && connection.IsEnterpriseServer());
}

}  // namespace
}  // namespace sabrel::testing
