#include "tests/memory/steps.h"

#include "sabrel/core/gsabrel.h"

namespace sabrel::testing {
namespace {

Rows One(Variant value, std::string column = "VALUE") {
  return {{std::move(column)}, {{std::move(value)}}};
}

// What a test itself needs while memory fails.
template <class Make>
auto Own(Make make) {
  return RaisingRuntimeErrors(make);
}

// Texts are longer than a string object itself can hold.
constexpr const char* kLong = "a text of more than sixteen bytes";
constexpr std::string_view kReports = "SELECT Id, Name, Changed FROM PM_REPORT WHERE Id <= 2";

const Rows text = One(Variant(kLong));
const Rows date = One(Variant(Date(45360.5)));
const Rows id = One(Variant(7));

RoutineOutcome Returned(Variant first) { return {first, {first, Variant(kLong), Variant(kLong)}}; }

}  // namespace

std::vector<Step> StatementSteps() {
  using namespace GSabrel;
  const Rows reports{{"ID", "NAME"}, {{Variant(1), Variant(kLong)}, {Variant(2), Variant("b")}}};
  return {
      {"rows as text", [] { return GenerateRecordString(ExecuteQuery(kReports)); }, reports},
      {"rows by name",
       [] {
         const auto rows = ExecuteQuery(kReports, true);
         if (!rows) return std::int32_t{0};
         for (; !rows->EndOfFile(); rows->MoveNext()) {
           static_cast<void>(rows->Fields().Item("Name").Value());
         }
         return rows->RecordCount();
       },
       reports},
      {"no such column",
       [] {
         const auto rows = ExecuteQuery(kReports);
         return rows && rows->Fields().Item(kLong).Name().empty();
       },
       reports},
      {"a refused query", [] { return ExecuteQuery("SELECT * FROM NO_SUCH_TABLE") == nullptr; },
       Refuse(942)},
      {"a request", [] { ExecuteRequest("UPDATE PM_REPORT SET Name = Name WHERE Id = 1"); }},
      {"a refused request", [] { ExecuteRequest("INSERT INTO PM_REPORT (Id) VALUES (1)"); },
       Refuse(1)},
      {"a procedure",
       [] {
         const Variant arguments[] = {Variant(5), Variant("2024-03-09 17:05:00")};
         ExecuteProcedure("EA_EXP.Clear_EXP_Required", arguments);
       }},
      {"a number", [] { return ExecuteQueryReturningLong("SELECT MAX(Id) FROM PM_REPORT"); },
       One(Variant(5))},
      {"a text", [] { return ExecuteQueryReturningString("SELECT MAX(Name) FROM PM_REPORT"); },
       text},
      {"a date", [] { return ExecuteQueryReturningDate("SELECT MAX(Changed) FROM PM_REPORT"); },
       date},
      {"a function",
       [] { return ExecuteFunctionReturningString("UPPER", "'a text of some length'"); }, text},
      {"a sequence", [] { return GetNextInSequence("ZR_QUERY_SQ") > 0; }, id},
      {"the clock", [] { return !GetCurrentDateTime().IsZero(); }, date},
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
  const Rows one = One(Variant(1));
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
  Rows pieces{{"STRINGDATA"}, {}};
  for (int i = 0; i < 12; ++i) pieces.rows.push_back({Variant(std::string(3999, 'x') + "\r\n")});
  Rows lines{{"STRINGDATA"}, {}};
  for (int i = 0; i < 12; ++i) lines.rows.push_back({Variant(std::string(3999, 'x'))});
  return {
      {"machine", [] { return MachineId() > 0; }, one},
      {"a new machine", [] { return (LoadMachineId(), MachineId() > 0); }, Rows{{"ID"}, {}}, Rows{},
       one},
      {"installation", [] { LoadMachineInfo(); }},
      {"product", [] { InitializeProductInfo(); },
       Rows{{"Property", "Value"}, {{Variant("ProductFullName"), Variant(kLong)}}}},
      {"connection strings",
       [] {
         DBConnectionName(kLong);
         DBConnectionPWD(kLong);
         return DBConnectionName() == DBConnectionPWD();
       }},
      {"table", [] { return DoesTableExist("PM_STRINGTABLE"); }, one},
      {"column", [] { return DoesFieldExist("PM_STRINGTABLE", "STRINGDATA"); }, one},
      {"routine", [] { return DoesThisProcedureExist("EA_EXP", "Export_Required"); }, one},
      {"object", [] { return DoesDbObjectExist("LengthyReport", "PACKAGE"); }, one},
      {"length of a procedure",
       [] { return std::int32_t{GetProcedureLength("EA_EXP", "EXPORT_REQUIRED")}; },
       One(Variant(4), "PROCLEN")},
      {"length of a column", [] { return DBColumnLength("PM_STRINGTABLE", "STRINGDATA"); },
       One(Variant(4000))},
      {"names of modules", [] { return ModuleNameMaxLength(); },
       One(Variant(24), "MODULENAMELENGTH")},
      {"setting", [] { return SystemValueExists("ReportLanguage", "Deutsch"); }, one},
      {"first day", [] { return SystemFirstDayOfWeek(); }, one},
      {"attempts", [] { return (LoadOtherInfo(), NHighAttemptsEnabled()); }, One(Variant("True"))},
      {"e-mail", [] { return EmailEnabled(); }, one},
      {"releases", [] { return IsClientServerCompatible(); }, One(Variant("7.3"))},
      {"network releases", [] { return IsLucentVersionSupported("R17"); }, one, One(Variant("17"))},
      {"version", [] { return GetModuleVersionName(1, 1); }, One(Variant(kLong), "VERSION_NAME")},
      {"features", [] { return GFeatureManager::FeatureManager()->IsFeatureEnabled("SES_Group"); },
       one, Rows{{"FEATURE"}, {{Variant("SES_Group")}, {Variant("Channel_Set_Plans_Category")}}}},
      {"derived features",
       [] {
         return GFeatureManager::FeatureManager()->IsFeatureEnabled("Channel_Set_Plans_Category");
       },
       One(Variant(0)), one},
      {"connections",
       [] {
         const auto profile = Own([] { return std::make_shared<ConnectionProfile>(); });
         const auto made = CreateSMConnection(profile, kLong, kLong);
         return CopyConnection(made)->DestPath();
       }},
      {"its features", [] { return CConnection().InitializeConnectionFeatures(); },
       One(Variant("Enterprise Server"))},
      {"pieces", round_trip(false), id, One(Variant(4000)), Rows{}, pieces},
      {"lines", round_trip(true), id, One(Variant(4000)), Rows{}, lines},
      {"update a text", [] { GDBString::UpdateDBString(1, ""); }},
      {"the text of an object",
       [] {
         const auto own = Own([] { return std::make_shared<TextString>(); });
         own->Append(kLong);
         own->Append(Variant(0.5));
         return GDBString::DBString(own, 5, true, kLong)->Text().size() > 16;
       }},
      {"entity", [] { return EA_Add_Common_Entity("Tower of the north", 3) > 0; },
       Returned(Variant(100))},
      {"reparent", [] { return EA_Reparent_Common_Entity(3, 2); }},
      {"equivalent",
       [] { return EA_Add_EntityEQV(1, "no common name like this", Variant(kLong)); }},
      {"referenced", [] { return EA_Remove_Common_Entity(2); }, Refuse(2292)},
      {"has one", [] { return EntityHasEQV(2); }, one, one},
      {"documents", [] { return IsEADocumentReady(1, 4, Variant(Date(45360.5))); },
       Returned(Variant(3))},
      {"clear", [] { return ClearEATempRecords(4, Date(45360.5)); }, Refuse(20001)},
      {"lists", [] { return (LastEntityUpdate(), EntitiesCurrent()); }, date},
      {"lengthy", [] { return IsLengthyReport(5); }, one, Returned(Variant(kLong))},
      {"a lengthy job", [] { return IsLengthyReportGroup(3); }, one, Returned(Variant(kLong))},
      {"plans", [] { return IsCspNeeded(1); }, one},
      {"too big", [] { return ReportTooBigForXL("3"); },
       Rows{{"A", "B"}, {{Variant(1), Variant(70000)}}}},
      {"of a job", [] { return JobReportsTooBigForXL("1"); }, Rows{{"TASK_ID"}, {{Variant(3)}}},
       Rows{{"A", "B"}, {{Variant(1), Variant(70000)}}}},
      {"an unknown task", [] { return ReportTooBigForXL("99"); }},
      {"row limit", [] { return TestRowLimit(70000); }},
      {"document", [] { return IsServerGroupDocumentValid("Report Group", Variant(3)); }, text},
      {"a group's documents",
       [] { return IsReportGroupServerDocumentValid("Report Group", 3, "SaveOff", ""); },
       Rows{{"SERVERGROUPID"}, {{Variant(1)}, {Variant(2)}}}, One(Variant(Null{})), text},
      {"user", [] { return FindOrCreateUser("", 0, "o'neil", kLong, 5, "FALSE"); },
       Returned(Variant("TRUE"))},
      {"a user turned away", [] { return TestServerConnection("", 0, "carla", kLong, 5); },
       Refuse(20012, "ORA-20012: not for data admins")},
      {"nowhere", [] { return TestServerConnection("no.such.host", 0, "ana", kLong, 5); },
       ConnectionRefusal(31)},
      {"mail",
       [] {
         std::int32_t code = 0;
         std::string message;
         return Is_SMTP_Ready(code, message);
       },
       Returned(Variant(0))},
      {"copy", [] { return CopyScenarioQueryText(2, 2) > 0; }, Returned(Variant(0))},
      {"oldest", [] { return GetRecordOldestDate(); }, date},
      {"slices", [] { return GetTimeSliceSecondsValue(false); },
       Rows{{"Property", "Value"}, {{Variant("TimeSlices"), Variant("24")}}}},
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
       },
       Refuse(1)},
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
       },
       one},
      {"the end of a thread",
       [] {
         const bool known = MachineId() > 0;
         ShutdownDBConnection();
         UnloadThread();
         return known;
       },
       one},
  };
}

}  // namespace sabrel::testing
