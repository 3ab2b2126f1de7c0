#include "sabrel/core/gsabrel.h"

#include "sabrel/core/query_execution.h"
#include "sabrel/core/session.h"
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

}  // namespace sabrel::GSabrel
