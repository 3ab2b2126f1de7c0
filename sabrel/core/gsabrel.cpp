#include "sabrel/core/gsabrel.h"

#include "sabrel/config/compatibility.h"
#include "sabrel/core/query_execution.h"
#include "sabrel/core/session.h"
#include "sabrel/domain/data_range.h"
#include "sabrel/domain/entity_aggregation.h"
#include "sabrel/domain/query_text_copies.h"
#include "sabrel/domain/report_checks.h"
#include "sabrel/domain/spreadsheet_limits.h"
#include "sabrel/domain/time_slices.h"
#include "sabrel/domain/update_times.h"
#include "sabrel/domain/validation.h"
#include "sabrel/sql/literals.h"
#include "sabrel/sql/schema_probes.h"
#include "sabrel/sql/value_conversion.h"

namespace sabrel::GSabrel {
namespace {

// Calls an operation at the component's surface, which nothing but a RuntimeError crosses.
template <auto kOperation, class... Arguments>
decltype(auto) Crossing(Arguments&&... arguments) {
  return RaisingRuntimeErrors(
      [&]() -> decltype(auto) { return kOperation(std::forward<Arguments>(arguments)...); });
}

}  // namespace

void ClearConnectionError() { Crossing<MSabrel::ClearConnectionError>(); }
bool CheckConnectionError() { return Crossing<MSabrel::CheckConnectionError>(); }
std::shared_ptr<CErrorObject> SabrelErrorObject() { return Crossing<MSabrel::SabrelErrorObject>(); }
std::shared_ptr<ErrorHandler> SabrelErrorHandler() {
  return Crossing<MSabrel::SabrelErrorHandler>();
}

std::shared_ptr<Recordset> ExecuteQuery(std::string_view sSql, bool fDataRequired,
                                        std::string_view sHostName, std::int32_t nPortNumber,
                                        std::string_view sUserName, std::string_view sPassword,
                                        std::int32_t nTimeOut) {
  return Crossing<MSabrel::ExecuteQuery>(sSql, fDataRequired, sHostName, nPortNumber, sUserName,
                                         sPassword, nTimeOut);
}
void ExecuteRequest(std::string_view sSql) {
  RaisingRuntimeErrors([&] { MSabrel::ExecuteRequest(sSql); });
}
void ExecuteProcedure(std::string_view sProc, std::span<const Variant> vArgs) {
  Crossing<MSabrel::ExecuteProcedure>(sProc, vArgs);
}
std::int32_t ExecuteFunctionReturningLong(std::string_view sProc, std::string_view sArgs) {
  return Crossing<MSabrel::ExecuteFunctionReturningLong>(sProc, sArgs);
}
std::string ExecuteFunctionReturningString(std::string_view sProc, std::string_view sArgs) {
  return Crossing<MSabrel::ExecuteFunctionReturningString>(sProc, sArgs);
}
std::int32_t ExecuteQueryReturningLong(std::string_view sQuery, std::int32_t iDefault) {
  return Crossing<MSabrel::ExecuteQueryReturningLong>(sQuery, iDefault);
}
std::string ExecuteQueryReturningString(std::string_view sQuery, std::string_view sDefault) {
  return RaisingRuntimeErrors(
      [&] { return MSabrel::ExecuteQueryReturningString(sQuery, sDefault); });
}
Date ExecuteQueryReturningDate(std::string_view sQuery, const Date& dateDefault) {
  return Crossing<MSabrel::ExecuteQueryReturningDate>(sQuery, dateDefault);
}
std::string GenerateRecordString(const std::shared_ptr<Recordset>& rst) {
  return Crossing<MSabrel::GenerateRecordString>(rst);
}

CDBLiteral DBLiteral(std::string_view s) { return Crossing<MSabrel::DBLiteral>(s); }
CDBLiteral DBStr(std::string_view s) { return Crossing<MSabrel::DBStr>(s); }
CDBLiteral DBOrd(std::int32_t ord) {
  return RaisingRuntimeErrors([&] { return MSabrel::DBOrd(ord); });
}
CDBLiteral DBInt(std::int32_t i, std::int32_t iNull) {
  return RaisingRuntimeErrors([&] { return MSabrel::DBInt(i, iNull); });
}
CDBLiteral DBFloat(double i, std::int32_t iNull) { return Crossing<MSabrel::DBFloat>(i, iNull); }
CDBLiteral DBDateString(std::string_view sDate, std::string_view sFormat) {
  return Crossing<MSabrel::DBDateString>(sDate, sFormat);
}
CDBLiteral DateToDBString(const Date& d) { return Crossing<MSabrel::DateToDBString>(d); }
CDBLiteral CurrentDateTime() { return Crossing<MSabrel::CurrentDateTime>(); }
CDBLiteral NextInSequence(std::string_view sSequence) {
  return Crossing<MSabrel::NextInSequence>(sSequence);
}
Date GetCurrentDateTime() { return Crossing<MSabrel::GetCurrentDateTime>(); }
std::int32_t GetNextInSequence(std::string_view sSequence) {
  return Crossing<MSabrel::GetNextInSequence>(sSequence);
}
std::string DBArg(const Variant& v) { return Crossing<MSabrel::DBArg>(v); }
std::string DBArgs(std::span<const Variant> vArgs) { return Crossing<MSabrel::DBArgs>(vArgs); }
std::string DBSetArgs(std::span<const Variant> vArgs) {
  return Crossing<MSabrel::DBSetArgs>(vArgs);
}
std::string PadStr(std::string_view s) { return Crossing<MSabrel::PadStr>(s); }

void LoadMachineId() { Crossing<MSabrel::LoadMachineId>(); }
void LoadMachineInfo() { Crossing<MSabrel::LoadMachineInfo>(); }
bool IncludeDSMonitor() { return Crossing<MSabrel::IncludeDSMonitor>(); }
bool IncludeAddInManager() { return Crossing<MSabrel::IncludeAddInManager>(); }
bool IsSubclassingOn() { return Crossing<MSabrel::IsSubclassingOn>(); }
void ShutdownDBConnection() { MSabrel::ShutdownDBConnection(); }
std::string DBConnectionName() {
  return RaisingRuntimeErrors([] { return MSabrel::DBConnectionName(); });
}
void DBConnectionName(std::string_view value) {
  RaisingRuntimeErrors([&] { MSabrel::DBConnectionName(value); });
}
std::string DBConnectionUID() {
  return RaisingRuntimeErrors([] { return MSabrel::DBConnectionUID(); });
}
void DBConnectionUID(std::string_view value) {
  RaisingRuntimeErrors([&] { MSabrel::DBConnectionUID(value); });
}
std::string DBConnectionPWD() {
  return RaisingRuntimeErrors([] { return MSabrel::DBConnectionPWD(); });
}
void DBConnectionPWD(std::string_view value) {
  RaisingRuntimeErrors([&] { MSabrel::DBConnectionPWD(value); });
}
std::int32_t MachineId() { return Crossing<MSabrel::MachineId>(); }
void InitializeProductInfo() { Crossing<MSabrel::InitializeProductInfo>(); }

std::string CVString(const Variant& vString) { return Crossing<MSabrel::CVString>(vString); }
std::int32_t CVId(const Variant& vId) { return Crossing<MSabrel::CVId>(vId); }
std::int32_t CVInt(const Variant& vInt, std::int32_t iNull) {
  return Crossing<MSabrel::CVInt>(vInt, iNull);
}
double CVDbl(const Variant& vInt, std::int32_t iNull) {
  return Crossing<MSabrel::CVDbl>(vInt, iNull);
}
Date CVDateTime(const Variant& vDate) { return Crossing<MSabrel::CVDateTime>(vDate); }
bool CVBoolean(const Variant& vYesNo) { return Crossing<MSabrel::CVBoolean>(vYesNo); }

std::int32_t ModuleNameMaxLength() { return Crossing<MSabrel::ModuleNameMaxLength>(); }
std::int16_t GetProcedureLength(std::string_view sPackage, std::string_view sProcedure) {
  return Crossing<MSabrel::GetProcedureLength>(sPackage, sProcedure);
}
std::int32_t DBColumnLength(std::string_view sTable, std::string_view sColumn) {
  return Crossing<MSabrel::DBColumnLength>(sTable, sColumn);
}
void ResetExistingTables() { Crossing<MSabrel::ResetExistingTables>(); }
bool DoesTableExist(std::string_view sTable, std::string_view sHostName, std::int32_t nPortNumber,
                    std::string_view sUserName, std::string_view sPassword, std::int32_t nTimeOut) {
  return Crossing<MSabrel::DoesTableExist>(sTable, sHostName, nPortNumber, sUserName, sPassword,
                                           nTimeOut);
}
bool DoesFieldExist(std::string_view sTable, std::string_view sFieldName,
                    std::string_view sHostName, std::int32_t nPortNumber,
                    std::string_view sUserName, std::string_view sPassword) {
  return Crossing<MSabrel::DoesFieldExist>(sTable, sFieldName, sHostName, nPortNumber, sUserName,
                                           sPassword);
}
bool DoesDbObjectExist(std::string_view sObjectNameA, std::string_view sObjectTypeA,
                       std::string_view sHostNameA, std::int32_t nPortNumberA,
                       std::string_view sUserNameA, std::string_view sPasswordA,
                       std::int32_t nTimeOutA) {
  return Crossing<MSabrel::DoesDbObjectExist>(sObjectNameA, sObjectTypeA, sHostNameA, nPortNumberA,
                                              sUserNameA, sPasswordA, nTimeOutA);
}
bool DoesThisProcedureExist(std::string_view sPackageName, std::string_view sProcedureName) {
  return Crossing<MSabrel::DoesThisProcedureExist>(sPackageName, sProcedureName);
}

void LoadOtherInfo() { Crossing<MSabrel::LoadOtherInfo>(); }
std::string NHighAttemptsEnabled() { return Crossing<MSabrel::NHighAttemptsEnabled>(); }
void GetNHighAttemptsValue() { Crossing<MSabrel::GetNHighAttemptsValue>(); }
bool EmailEnabled() { return Crossing<MSabrel::EmailEnabled>(); }
std::string SystemFirstDayOfWeek() { return Crossing<MSabrel::SystemFirstDayOfWeek>(); }
bool SystemValueExists(std::string_view sName, std::string_view sValue, std::string_view sHostName,
                       std::int32_t nPortNumber, std::string_view sUserName,
                       std::string_view sPassword, std::int32_t nTimeOut) {
  return Crossing<MSabrel::SystemValueExists>(sName, sValue, sHostName, nPortNumber, sUserName,
                                              sPassword, nTimeOut);
}

bool IsClientServerCompatible() { return Crossing<MSabrel::IsClientServerCompatible>(); }
bool IsLucentVersionSupported(std::string_view sVersion) {
  return Crossing<MSabrel::IsLucentVersionSupported>(sVersion);
}
std::string GetModuleVersionName(std::int32_t ordModule, std::int32_t ordVersion) {
  return Crossing<MSabrel::GetModuleVersionName>(ordModule, ordVersion);
}
std::shared_ptr<CConnection> CreateSMConnection(const ProfileRef& oPfl, std::string_view sDestPath,
                                                std::string_view sMachineName) {
  return Crossing<MSabrel::CreateSMConnection>(oPfl, sDestPath, sMachineName);
}
std::shared_ptr<CConnection> CopyConnection(const std::shared_ptr<const CConnection>& oConnection) {
  return Crossing<MSabrel::CopyConnection>(oConnection);
}

std::int32_t EA_Add_Common_Entity(std::string_view sEntityName, std::int32_t ordParent) {
  return Crossing<MSabrel::EA_Add_Common_Entity>(sEntityName, ordParent);
}
bool EA_Reparent_Common_Entity(std::int32_t ordEntity, std::int32_t ordParent) {
  return Crossing<MSabrel::EA_Reparent_Common_Entity>(ordEntity, ordParent);
}
bool EA_Add_EntityEQV(std::int32_t ordVersion, std::string_view sCommonName,
                      const Variant& sEntityLabel) {
  return Crossing<MSabrel::EA_Add_EntityEQV>(ordVersion, sCommonName, sEntityLabel);
}
bool EA_Remove_Common_Entity(std::int32_t ordEntity) {
  return Crossing<MSabrel::EA_Remove_Common_Entity>(ordEntity);
}
bool EntityHasEQV(std::int32_t ordID) { return Crossing<MSabrel::EntityHasEQV>(ordID); }
std::int32_t IsEADocumentReady(std::int32_t ordGrpID, std::int32_t OrdUserID,
                               const Variant& dtTimeStamp, std::int32_t ordServerID) {
  return Crossing<MSabrel::IsEADocumentReady>(ordGrpID, OrdUserID, dtTimeStamp, ordServerID);
}
Variant ClearEATempRecords(std::int32_t ordUser, const Date& dtTime) {
  return Crossing<MSabrel::ClearEATempRecords>(ordUser, dtTime);
}
void LastEntityUpdate() { Crossing<MSabrel::LastEntityUpdate>(); }
void LastFieldUpdate() { Crossing<MSabrel::LastFieldUpdate>(); }
bool EntitiesCurrent() { return Crossing<MSabrel::EntitiesCurrent>(); }
bool FieldsCurrent() { return Crossing<MSabrel::FieldsCurrent>(); }

bool LengthyReportsConfigured() { return Crossing<MSabrel::LengthyReportsConfigured>(); }
bool IsLengthyReport(std::int32_t nReportID) {
  return Crossing<MSabrel::IsLengthyReport>(nReportID);
}
bool IsLengthyReportGroup(std::int32_t nJobID) {
  return Crossing<MSabrel::IsLengthyReportGroup>(nJobID);
}
bool IsCspNeeded(std::int32_t GrpID) { return Crossing<MSabrel::IsCspNeeded>(GrpID); }
bool IsDtsNeeded(std::int32_t GrpID) { return Crossing<MSabrel::IsDtsNeeded>(GrpID); }
std::int32_t JobReportsTooBigForXL(std::string_view sJobId) {
  return Crossing<MSabrel::JobReportsTooBigForXL>(sJobId);
}
bool ReportTooBigForXL(std::string_view sTaskID) {
  return Crossing<MSabrel::ReportTooBigForXL>(sTaskID);
}
Variant TestRowLimit(std::int32_t lngRowCount) {
  return Crossing<MSabrel::TestRowLimit>(lngRowCount);
}

bool IsServerGroupDocumentValid(std::string_view sAppName, const Variant& ordID,
                                std::string_view sSaveMode) {
  return Crossing<MSabrel::IsServerGroupDocumentValid>(sAppName, ordID, sSaveMode);
}
bool IsReportGroupServerDocumentValid(std::string_view sAppName, std::int32_t GrpID,
                                      std::string_view sSaveMode, std::string_view sServerName) {
  return Crossing<MSabrel::IsReportGroupServerDocumentValid>(sAppName, GrpID, sSaveMode,
                                                             sServerName);
}
bool TestServerConnection(std::string_view sHost, std::int32_t nPort, std::string_view sUser,
                          std::string_view sPwd, std::int32_t nTOut, std::string_view sCaption,
                          bool bShowMsg) {
  return Crossing<MSabrel::TestServerConnection>(sHost, nPort, sUser, sPwd, nTOut, sCaption,
                                                 bShowMsg);
}
bool Is_SMTP_Ready(std::int32_t& nErrCode, std::string& sErrMsg) {
  return Crossing<MSabrel::Is_SMTP_Ready>(nErrCode, sErrMsg);
}
std::string FindOrCreateUser(std::string_view sHost, std::int32_t nPort, std::string_view sUser,
                             std::string_view sPwd, std::int32_t nTOut, std::string_view bCreate) {
  return Crossing<MSabrel::FindOrCreateUser>(sHost, nPort, sUser, sPwd, nTOut, bCreate);
}

std::int32_t CopyOriginalQueryText(std::int32_t ordQueryID, std::int32_t ordFilterID) {
  return Crossing<MSabrel::CopyOriginalQueryText>(ordQueryID, ordFilterID);
}
std::int32_t CopyScenarioQueryText(std::int32_t ordQueryID, std::int32_t ordFilterID) {
  return Crossing<MSabrel::CopyScenarioQueryText>(ordQueryID, ordFilterID);
}
Date GetRecordOldestDate() { return Crossing<MSabrel::GetRecordOldestDate>(); }
Date GetRecordLatestDate() { return Crossing<MSabrel::GetRecordLatestDate>(); }

std::int32_t GetTimeSliceSecondsValue(bool UseBusyhourTimeSlices) {
  return Crossing<MSabrel::GetTimeSliceSecondsValue>(UseBusyhourTimeSlices);
}
void GetSecondsRange(std::int32_t iStart, std::int32_t& lFirstSec, std::int32_t& lLastSec,
                     const FlagArray& afHrs, bool UseBusyhourTimeSlices) {
  Crossing<MSabrel::GetSecondsRange>(iStart, lFirstSec, lLastSec, afHrs, UseBusyhourTimeSlices);
}
void GetSelRange(std::int32_t lStartNo, std::int32_t& lFirstHr, std::int32_t& lLastHr,
                 const FlagArray& afHrs, bool UseBusyhourTimeSlices) {
  Crossing<MSabrel::GetSelRange>(lStartNo, lFirstHr, lLastHr, afHrs, UseBusyhourTimeSlices);
}
Variant GetStartEndHour(std::int32_t lFirsHr, std::int32_t lLastHr, std::int32_t lFirstSec,
                        std::int32_t lLastSec, std::int32_t& BeginHour, std::int32_t& EndingHour,
                        bool UseBusyhourTimeSlices) {
  return Crossing<MSabrel::GetStartEndHour>(lFirsHr, lLastHr, lFirstSec, lLastSec, BeginHour,
                                            EndingHour, UseBusyhourTimeSlices);
}

std::shared_ptr<CDBObjectInitializers> DBObjectInitializers() {
  return Crossing<MSabrel::DBObjectInitializers>();
}
void RegisterDBObjectInitializer(const std::shared_ptr<IDBObjectInitializer>& dboi) {
  Crossing<MSabrel::RegisterDBObjectInitializer>(dboi);
}

}  // namespace sabrel::GSabrel
