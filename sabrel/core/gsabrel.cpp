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

void ClearConnectionError() { MSabrel::ClearConnectionError(); }
bool CheckConnectionError() { return MSabrel::CheckConnectionError(); }
std::shared_ptr<CErrorObject> SabrelErrorObject() { return MSabrel::SabrelErrorObject(); }
std::shared_ptr<ErrorHandler> SabrelErrorHandler() { return MSabrel::SabrelErrorHandler(); }

std::shared_ptr<Recordset> ExecuteQuery(std::string_view sSql, bool fDataRequired,
                                        std::string_view sHostName, std::int32_t nPortNumber,
                                        std::string_view sUserName, std::string_view sPassword,
                                        std::int32_t nTimeOut) {
  return MSabrel::ExecuteQuery(sSql, fDataRequired, sHostName, nPortNumber, sUserName, sPassword,
                               nTimeOut);
}
void ExecuteRequest(std::string_view sSql) { MSabrel::ExecuteRequest(sSql); }
void ExecuteProcedure(std::string_view sProc, std::span<const Variant> vArgs) {
  MSabrel::ExecuteProcedure(sProc, vArgs);
}
std::int32_t ExecuteFunctionReturningLong(std::string_view sProc, std::string_view sArgs) {
  return MSabrel::ExecuteFunctionReturningLong(sProc, sArgs);
}
std::string ExecuteFunctionReturningString(std::string_view sProc, std::string_view sArgs) {
  return MSabrel::ExecuteFunctionReturningString(sProc, sArgs);
}
std::int32_t ExecuteQueryReturningLong(std::string_view sQuery, std::int32_t iDefault) {
  return MSabrel::ExecuteQueryReturningLong(sQuery, iDefault);
}
std::string ExecuteQueryReturningString(std::string_view sQuery, std::string_view sDefault) {
  return MSabrel::ExecuteQueryReturningString(sQuery, sDefault);
}
Date ExecuteQueryReturningDate(std::string_view sQuery, const Date& dateDefault) {
  return MSabrel::ExecuteQueryReturningDate(sQuery, dateDefault);
}
std::string GenerateRecordString(const std::shared_ptr<Recordset>& rst) {
  return MSabrel::GenerateRecordString(rst);
}

CDBLiteral DBLiteral(std::string_view s) { return MSabrel::DBLiteral(s); }
CDBLiteral DBStr(std::string_view s) { return MSabrel::DBStr(s); }
CDBLiteral DBOrd(std::int32_t ord) { return MSabrel::DBOrd(ord); }
CDBLiteral DBInt(std::int32_t i, std::int32_t iNull) { return MSabrel::DBInt(i, iNull); }
CDBLiteral DBFloat(double i, std::int32_t iNull) { return MSabrel::DBFloat(i, iNull); }
CDBLiteral DBDateString(std::string_view sDate, std::string_view sFormat) {
  return MSabrel::DBDateString(sDate, sFormat);
}
CDBLiteral DateToDBString(const Date& d) { return MSabrel::DateToDBString(d); }
CDBLiteral CurrentDateTime() { return MSabrel::CurrentDateTime(); }
CDBLiteral NextInSequence(std::string_view sSequence) { return MSabrel::NextInSequence(sSequence); }
Date GetCurrentDateTime() { return MSabrel::GetCurrentDateTime(); }
std::int32_t GetNextInSequence(std::string_view sSequence) {
  return MSabrel::GetNextInSequence(sSequence);
}
std::string DBArg(const Variant& v) { return MSabrel::DBArg(v); }
std::string DBArgs(std::span<const Variant> vArgs) { return MSabrel::DBArgs(vArgs); }
std::string DBSetArgs(std::span<const Variant> vArgs) { return MSabrel::DBSetArgs(vArgs); }
std::string PadStr(std::string_view s) { return MSabrel::PadStr(s); }

void LoadMachineId() { MSabrel::LoadMachineId(); }
void LoadMachineInfo() { MSabrel::LoadMachineInfo(); }
bool IncludeDSMonitor() { return MSabrel::IncludeDSMonitor(); }
bool IncludeAddInManager() { return MSabrel::IncludeAddInManager(); }
bool IsSubclassingOn() { return MSabrel::IsSubclassingOn(); }
void ShutdownDBConnection() { MSabrel::ShutdownDBConnection(); }
std::string DBConnectionName() { return MSabrel::DBConnectionName(); }
void DBConnectionName(std::string_view value) { MSabrel::DBConnectionName(value); }
std::string DBConnectionUID() { return MSabrel::DBConnectionUID(); }
void DBConnectionUID(std::string_view value) { MSabrel::DBConnectionUID(value); }
std::string DBConnectionPWD() { return MSabrel::DBConnectionPWD(); }
void DBConnectionPWD(std::string_view value) { MSabrel::DBConnectionPWD(value); }
std::int32_t MachineId() { return MSabrel::MachineId(); }
void InitializeProductInfo() { MSabrel::InitializeProductInfo(); }

std::string CVString(const Variant& vString) { return MSabrel::CVString(vString); }
std::int32_t CVId(const Variant& vId) { return MSabrel::CVId(vId); }
std::int32_t CVInt(const Variant& vInt, std::int32_t iNull) { return MSabrel::CVInt(vInt, iNull); }
double CVDbl(const Variant& vInt, std::int32_t iNull) { return MSabrel::CVDbl(vInt, iNull); }
Date CVDateTime(const Variant& vDate) { return MSabrel::CVDateTime(vDate); }
bool CVBoolean(const Variant& vYesNo) { return MSabrel::CVBoolean(vYesNo); }

std::int32_t ModuleNameMaxLength() { return MSabrel::ModuleNameMaxLength(); }
std::int16_t GetProcedureLength(std::string_view sPackage, std::string_view sProcedure) {
  return MSabrel::GetProcedureLength(sPackage, sProcedure);
}
std::int32_t DBColumnLength(std::string_view sTable, std::string_view sColumn) {
  return MSabrel::DBColumnLength(sTable, sColumn);
}
void ResetExistingTables() { MSabrel::ResetExistingTables(); }
bool DoesTableExist(std::string_view sTable, std::string_view sHostName, std::int32_t nPortNumber,
                    std::string_view sUserName, std::string_view sPassword, std::int32_t nTimeOut) {
  return MSabrel::DoesTableExist(sTable, sHostName, nPortNumber, sUserName, sPassword, nTimeOut);
}
bool DoesFieldExist(std::string_view sTable, std::string_view sFieldName,
                    std::string_view sHostName, std::int32_t nPortNumber,
                    std::string_view sUserName, std::string_view sPassword) {
  return MSabrel::DoesFieldExist(sTable, sFieldName, sHostName, nPortNumber, sUserName, sPassword);
}
bool DoesDbObjectExist(std::string_view sObjectNameA, std::string_view sObjectTypeA,
                       std::string_view sHostNameA, std::int32_t nPortNumberA,
                       std::string_view sUserNameA, std::string_view sPasswordA,
                       std::int32_t nTimeOutA) {
  return MSabrel::DoesDbObjectExist(sObjectNameA, sObjectTypeA, sHostNameA, nPortNumberA,
                                    sUserNameA, sPasswordA, nTimeOutA);
}
bool DoesThisProcedureExist(std::string_view sPackageName, std::string_view sProcedureName) {
  return MSabrel::DoesThisProcedureExist(sPackageName, sProcedureName);
}

void LoadOtherInfo() { MSabrel::LoadOtherInfo(); }
std::string NHighAttemptsEnabled() { return MSabrel::NHighAttemptsEnabled(); }
void GetNHighAttemptsValue() { MSabrel::GetNHighAttemptsValue(); }
bool EmailEnabled() { return MSabrel::EmailEnabled(); }
std::string SystemFirstDayOfWeek() { return MSabrel::SystemFirstDayOfWeek(); }
bool SystemValueExists(std::string_view sName, std::string_view sValue, std::string_view sHostName,
                       std::int32_t nPortNumber, std::string_view sUserName,
                       std::string_view sPassword, std::int32_t nTimeOut) {
  return MSabrel::SystemValueExists(sName, sValue, sHostName, nPortNumber, sUserName, sPassword,
                                    nTimeOut);
}

bool IsClientServerCompatible() { return MSabrel::IsClientServerCompatible(); }
bool IsLucentVersionSupported(std::string_view sVersion) {
  return MSabrel::IsLucentVersionSupported(sVersion);
}
std::string GetModuleVersionName(std::int32_t ordModule, std::int32_t ordVersion) {
  return MSabrel::GetModuleVersionName(ordModule, ordVersion);
}
std::shared_ptr<CConnection> CreateSMConnection(const ProfileRef& oPfl, std::string_view sDestPath,
                                                std::string_view sMachineName) {
  return MSabrel::CreateSMConnection(oPfl, sDestPath, sMachineName);
}
std::shared_ptr<CConnection> CopyConnection(const std::shared_ptr<const CConnection>& oConnection) {
  return MSabrel::CopyConnection(oConnection);
}

std::int32_t EA_Add_Common_Entity(std::string_view sEntityName, std::int32_t ordParent) {
  return MSabrel::EA_Add_Common_Entity(sEntityName, ordParent);
}
bool EA_Reparent_Common_Entity(std::int32_t ordEntity, std::int32_t ordParent) {
  return MSabrel::EA_Reparent_Common_Entity(ordEntity, ordParent);
}
bool EA_Add_EntityEQV(std::int32_t ordVersion, std::string_view sCommonName,
                      const Variant& sEntityLabel) {
  return MSabrel::EA_Add_EntityEQV(ordVersion, sCommonName, sEntityLabel);
}
bool EA_Remove_Common_Entity(std::int32_t ordEntity) {
  return MSabrel::EA_Remove_Common_Entity(ordEntity);
}
bool EntityHasEQV(std::int32_t ordID) { return MSabrel::EntityHasEQV(ordID); }
std::int32_t IsEADocumentReady(std::int32_t ordGrpID, std::int32_t OrdUserID,
                               const Variant& dtTimeStamp, std::int32_t ordServerID) {
  return MSabrel::IsEADocumentReady(ordGrpID, OrdUserID, dtTimeStamp, ordServerID);
}
Variant ClearEATempRecords(std::int32_t ordUser, const Date& dtTime) {
  return MSabrel::ClearEATempRecords(ordUser, dtTime);
}
void LastEntityUpdate() { MSabrel::LastEntityUpdate(); }
void LastFieldUpdate() { MSabrel::LastFieldUpdate(); }
bool EntitiesCurrent() { return MSabrel::EntitiesCurrent(); }
bool FieldsCurrent() { return MSabrel::FieldsCurrent(); }

bool LengthyReportsConfigured() { return MSabrel::LengthyReportsConfigured(); }
bool IsLengthyReport(std::int32_t nReportID) { return MSabrel::IsLengthyReport(nReportID); }
bool IsLengthyReportGroup(std::int32_t nJobID) { return MSabrel::IsLengthyReportGroup(nJobID); }
bool IsCspNeeded(std::int32_t GrpID) { return MSabrel::IsCspNeeded(GrpID); }
bool IsDtsNeeded(std::int32_t GrpID) { return MSabrel::IsDtsNeeded(GrpID); }
std::int32_t JobReportsTooBigForXL(std::string_view sJobId) {
  return MSabrel::JobReportsTooBigForXL(sJobId);
}
bool ReportTooBigForXL(std::string_view sTaskID) { return MSabrel::ReportTooBigForXL(sTaskID); }
Variant TestRowLimit(std::int32_t lngRowCount) { return MSabrel::TestRowLimit(lngRowCount); }

bool IsServerGroupDocumentValid(std::string_view sAppName, const Variant& ordID,
                                std::string_view sSaveMode) {
  return MSabrel::IsServerGroupDocumentValid(sAppName, ordID, sSaveMode);
}
bool IsReportGroupServerDocumentValid(std::string_view sAppName, std::int32_t GrpID,
                                      std::string_view sSaveMode, std::string_view sServerName) {
  return MSabrel::IsReportGroupServerDocumentValid(sAppName, GrpID, sSaveMode, sServerName);
}
bool TestServerConnection(std::string_view sHost, std::int32_t nPort, std::string_view sUser,
                          std::string_view sPwd, std::int32_t nTOut, std::string_view sCaption,
                          bool bShowMsg) {
  return MSabrel::TestServerConnection(sHost, nPort, sUser, sPwd, nTOut, sCaption, bShowMsg);
}
bool Is_SMTP_Ready(std::int32_t& nErrCode, std::string& sErrMsg) {
  return MSabrel::Is_SMTP_Ready(nErrCode, sErrMsg);
}
std::string FindOrCreateUser(std::string_view sHost, std::int32_t nPort, std::string_view sUser,
                             std::string_view sPwd, std::int32_t nTOut, std::string_view bCreate) {
  return MSabrel::FindOrCreateUser(sHost, nPort, sUser, sPwd, nTOut, bCreate);
}

std::int32_t CopyOriginalQueryText(std::int32_t ordQueryID, std::int32_t ordFilterID) {
  return MSabrel::CopyOriginalQueryText(ordQueryID, ordFilterID);
}
std::int32_t CopyScenarioQueryText(std::int32_t ordQueryID, std::int32_t ordFilterID) {
  return MSabrel::CopyScenarioQueryText(ordQueryID, ordFilterID);
}
Date GetRecordOldestDate() { return MSabrel::GetRecordOldestDate(); }
Date GetRecordLatestDate() { return MSabrel::GetRecordLatestDate(); }

std::int32_t GetTimeSliceSecondsValue(bool UseBusyhourTimeSlices) {
  return MSabrel::GetTimeSliceSecondsValue(UseBusyhourTimeSlices);
}
void GetSecondsRange(std::int32_t iStart, std::int32_t& lFirstSec, std::int32_t& lLastSec,
                     const FlagArray& afHrs, bool UseBusyhourTimeSlices) {
  MSabrel::GetSecondsRange(iStart, lFirstSec, lLastSec, afHrs, UseBusyhourTimeSlices);
}
void GetSelRange(std::int32_t lStartNo, std::int32_t& lFirstHr, std::int32_t& lLastHr,
                 const FlagArray& afHrs, bool UseBusyhourTimeSlices) {
  MSabrel::GetSelRange(lStartNo, lFirstHr, lLastHr, afHrs, UseBusyhourTimeSlices);
}
Variant GetStartEndHour(std::int32_t lFirsHr, std::int32_t lLastHr, std::int32_t lFirstSec,
                        std::int32_t lLastSec, std::int32_t& BeginHour, std::int32_t& EndingHour,
                        bool UseBusyhourTimeSlices) {
  return MSabrel::GetStartEndHour(lFirsHr, lLastHr, lFirstSec, lLastSec, BeginHour, EndingHour,
                                  UseBusyhourTimeSlices);
}

std::shared_ptr<CDBObjectInitializers> DBObjectInitializers() {
  return MSabrel::DBObjectInitializers();
}
void RegisterDBObjectInitializer(const std::shared_ptr<IDBObjectInitializer>& dboi) {
  MSabrel::RegisterDBObjectInitializer(dboi);
}

}  // namespace sabrel::GSabrel
