#include "sabrel/core/gsabrel.h"

#include "sabrel/core/query_execution.h"
#include "sabrel/sql/literals.h"

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

}  // namespace sabrel::GSabrel
