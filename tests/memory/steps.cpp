#include "tests/memory/steps.h"

#include "sabrel/core/gsabrel.h"

namespace sabrel::testing {
namespace {

// What a test itself needs while memory fails.
template <class Make>
auto Own(Make make) {
  return RaisingRuntimeErrors(make);
}

// Texts are longer than a string object itself can hold.
constexpr const char* kLong = "a text of more than sixteen bytes";
constexpr std::string_view kReports = "SELECT Id, Name, Changed FROM PM_REPORT WHERE Id <= 2";

}  // namespace

std::vector<Step> StatementSteps() {
  using namespace GSabrel;
  return {
      {"rows as text", [] { return GenerateRecordString(ExecuteQuery(kReports)); }},
      {"rows by name",
       [] {
         const auto rows = ExecuteQuery(kReports, true);
         if (!rows) return std::int32_t{0};
         for (; !rows->EndOfFile(); rows->MoveNext()) {
           static_cast<void>(rows->Fields().Item("Name").Value());
         }
         return rows->RecordCount();
       }},
      {"no such column",
       [] {
         const auto rows = ExecuteQuery(kReports);
         return rows && rows->Fields().Item(kLong).Name().empty();
       }},
      {"a refused query", [] { return ExecuteQuery("SELECT * FROM NO_SUCH_TABLE") == nullptr; }},
      {"a request", [] { ExecuteRequest("UPDATE PM_REPORT SET Name = Name WHERE Id = 1"); }},
      {"a refused request", [] { ExecuteRequest("INSERT INTO PM_REPORT (Id) VALUES (1)"); }},
      {"a procedure",
       [] {
         const Variant arguments[] = {Variant(5), Variant("2024-03-09 17:05:00")};
         ExecuteProcedure("EA_EXP.Clear_EXP_Required", arguments);
       }},
      {"a number", [] { return ExecuteQueryReturningLong("SELECT MAX(Id) FROM PM_REPORT"); }},
      {"a text", [] { return ExecuteQueryReturningString("SELECT MAX(Name) FROM PM_REPORT"); }},
      {"a date", [] { return ExecuteQueryReturningDate("SELECT MAX(Changed) FROM PM_REPORT"); }},
      {"a function",
       [] { return ExecuteFunctionReturningString("UPPER", "'a text of some length'"); }},
      {"a sequence", [] { return GetNextInSequence("ZR_QUERY_SQ") > 0; }},
      {"the clock", [] { return !GetCurrentDateTime().IsZero(); }},
      {"literals",
       [] {
         const Variant values[] = {Variant(kLong), Variant(0.1), Variant(Date(45360.5)),
                                   DBStr(kLong).ToVariant()};
         return DBArgs(values).size() + DBSetArgs(values).size() +
                    DBDateString(kLong, kLong).Value().size() +
                    NextInSequence(kLong).Value().size() >
                0;
       }},
      {"conversions",
       [] {
         const Variant words("1,234,567,890.5000000000");
         return CVInt(words) + CVDbl(Variant("2.50000000000000000000")) > 0 &&
                !CVString(words).empty();
       }},
      {"copies of values",
       [] {
         const Variant words(kLong);
         Variant copy(words);
         Variant other("another words of more than sixteen bytes");
         other = copy;
         const Variant array(Own([&] { return std::vector<Variant>{other}; }));
         return array.Get<VariantArray>()->size() == 1 && other == words;
       }},
      {"a value that keeps what it was",
       [] {
         const Variant words(kLong);
         bool whole = true;
         for (const Variant& before : {Variant(5), Variant("short")}) {
           Variant value(before);
           const bool fails = FailureIn([&] { value = words; }).has_value();
           whole = whole && value == (fails ? before : words);
         }
         return whole;
       }},
  };
}

std::vector<Step> ServiceSteps() {
  using namespace GSabrel;
  const auto round_trip = [](bool lines) {
    std::string rows;
    for (int i = 0; i < 12; ++i) rows.append(3999, 'x').append("\r\n");
    return [rows, lines] {
      const std::int32_t made = GDBString::CreateDBString(Own([&] { return rows; }), lines);
      const bool same = GDBString::LoadDBString(made, lines)->Text() == rows;
      CDBString stored;
      stored.Id(made);
      stored.Delete();
      return same;
    };
  };
  return {
      {"machine", [] { return MachineId() > 0; }},
      {"installation", [] { LoadMachineInfo(); }},
      {"product", [] { InitializeProductInfo(); }},
      {"connection strings",
       [] {
         DBConnectionName(kLong);
         DBConnectionPWD(kLong);
         return DBConnectionName() == DBConnectionPWD();
       }},
      {"table", [] { return DoesTableExist("PM_STRINGTABLE"); }},
      {"object", [] { return DoesDbObjectExist("LengthyReport", "PACKAGE"); }},
      {"length of a procedure",
       [] { return std::int32_t{GetProcedureLength("EA_EXP", "EXPORT_REQUIRED")}; }},
      {"length of a column", [] { return DBColumnLength("PM_STRINGTABLE", "STRINGDATA"); }},
      {"names of modules", [] { return ModuleNameMaxLength(); }},
      {"setting", [] { return SystemValueExists("ReportLanguage", "Deutsch"); }},
      {"first day", [] { return SystemFirstDayOfWeek(); }},
      {"attempts", [] { return (LoadOtherInfo(), NHighAttemptsEnabled()); }},
      {"e-mail", [] { return EmailEnabled(); }},
      {"releases", [] { return IsClientServerCompatible(); }},
      {"network releases", [] { return IsLucentVersionSupported("R17"); }},
      {"version", [] { return GetModuleVersionName(1, 1); }},
      {"features", [] { return GFeatureManager::FeatureManager()->IsFeatureEnabled("SES_Group"); }},
      {"connections",
       [] {
         const auto profile = Own([] { return std::make_shared<ConnectionProfile>(); });
         const auto made = CreateSMConnection(profile, kLong, kLong);
         return CopyConnection(made)->DestPath();
       }},
      {"its features", [] { return CConnection().InitializeConnectionFeatures(); }},
      {"pieces", round_trip(false)},
      {"lines", round_trip(true)},
      {"update a text", [] { GDBString::UpdateDBString(1, ""); }},
      {"the text of an object",
       [] {
         const auto own = Own([] { return std::make_shared<TextString>(); });
         own->Append(kLong);
         own->Append(Variant(0.5));
         return GDBString::DBString(own, 5, true, kLong)->Text().size() > 16;
       }},
      {"entity", [] { return EA_Add_Common_Entity("Tower of the north", 3) > 0; }},
      {"reparent", [] { return EA_Reparent_Common_Entity(3, 2); }},
      {"equivalent",
       [] { return EA_Add_EntityEQV(1, "no common name like this", Variant(kLong)); }},
      {"referenced", [] { return EA_Remove_Common_Entity(2); }},
      {"has one", [] { return EntityHasEQV(2); }},
      {"documents", [] { return IsEADocumentReady(1, 4, Variant(Date(45360.5))); }},
      {"clear", [] { return ClearEATempRecords(4, Date(45360.5)); }},
      {"lists", [] { return (LastEntityUpdate(), EntitiesCurrent()); }},
      {"lengthy", [] { return IsLengthyReport(5); }},
      {"plans", [] { return IsCspNeeded(1); }},
      {"too big", [] { return ReportTooBigForXL("3"); }},
      {"of a job", [] { return JobReportsTooBigForXL("1"); }},
      {"an unknown task", [] { return ReportTooBigForXL("99"); }},
      {"row limit", [] { return TestRowLimit(70000); }},
      {"document", [] { return IsServerGroupDocumentValid("Report Group", Variant(3)); }},
      {"a group's documents",
       [] { return IsReportGroupServerDocumentValid("Report Group", 3, "SaveOff", ""); }},
      {"user", [] { return FindOrCreateUser("", 0, "o'neil", kLong, 5, "FALSE"); }},
      {"a user turned away", [] { return TestServerConnection("", 0, "carla", kLong, 5); }},
      {"nowhere", [] { return TestServerConnection("no.such.host", 0, "ana", kLong, 5); }},
      {"mail",
       [] {
         std::int32_t code = 0;
         std::string message;
         return Is_SMTP_Ready(code, message);
       }},
      {"copy", [] { return CopyScenarioQueryText(2, 2) > 0; }},
      {"oldest", [] { return GetRecordOldestDate(); }},
      {"slices", [] { return GetTimeSliceSecondsValue(false); }},
      {"objects",
       [] {
         RegisterDBObjectInitializer(Own([] { return std::make_shared<IDBObjectInitializer>(); }));
         DBObjectInitializers()->Initialize();
       }},
      {"errors",
       [] {
         const auto failure =
             FailureIn([] { ExecuteRequest("INSERT INTO PM_REPORT (Id) VALUES (1)"); });
         CErrorObject error(failure.value_or(RuntimeError(RuntimeErrorNumber::kInternal)));
         static_cast<void>(CheckConnectionError());
         static_cast<void>(error.Text(Variant(kLong)));
         error.Raise(kLong);
         return true;
       }},
      {"handler",
       [] {
         SabrelErrorHandler()->Register(77, kLong);
         SabrelErrorHandler()->Raise(77, kLong, kLong, {});
       }},
      {"own caches",
       [] {
         CTablesExist tables;
         tables.Add(kLong, true, kLong, kLong, 1, 5);
         CSystemValues values;
         values.AddNew(kLong, kLong, kLong);
         static_cast<void>(values.Values(Variant(kLong)));
         NamedValues named;
         named.Add(kLong, Variant(kLong));
       }},
      {"the end of a thread",
       [] {
         const bool known = MachineId() > 0;
         ShutdownDBConnection();
         UnloadThread();
         return known;
       }},
  };
}

}  // namespace sabrel::testing
