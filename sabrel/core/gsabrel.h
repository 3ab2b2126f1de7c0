// Everything that a host calls, in one header.
//
// `sabrel::GSabrel` holds the component's operations as free functions; each forwards to the module
// that owns it. Stored texts (`GDBString`) and features (`GFeatureManager`) have accessors of their
// own, which come with this header. Arguments are handed on as given; defaults are those of the
// signatures here and are never read again on the way; numbers wider than their parameter do not
// compile. Install a platform first (platform.h). State
// belongs to the calling thread; `UnloadThread` ends a thread's use.
//
//   sabrel::InstallPlatform(...);
//   const auto id = sabrel::GSabrel::ExecuteQueryReturningLong("SELECT MAX(Id) FROM PM_REPORT");
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "sabrel/config/connection.h"
#include "sabrel/config/feature_manager.h"
#include "sabrel/config/system_values.h"
#include "sabrel/core/error_object.h"
#include "sabrel/core/wide_arguments.h"
#include "sabrel/domain/object_initializers.h"
#include "sabrel/platform/date.h"
#include "sabrel/platform/flag_array.h"
#include "sabrel/platform/identified_object.h"
#include "sabrel/platform/platform.h"
#include "sabrel/platform/recordset.h"
#include "sabrel/platform/variant.h"
#include "sabrel/sql/db_literal.h"
#include "sabrel/sql/schema_cache.h"
#include "sabrel/sql/stored_text.h"

namespace sabrel::GSabrel {

// Errors: error_object.h. Machine, installation, product, connection strings: session.h.
void ClearConnectionError();
[[nodiscard]] bool CheckConnectionError();
[[nodiscard]] std::shared_ptr<CErrorObject> SabrelErrorObject();
[[nodiscard]] std::shared_ptr<ErrorHandler> SabrelErrorHandler();
void LoadMachineId();
void InitializeProductInfo();
void LoadMachineInfo();
[[nodiscard]] bool IncludeDSMonitor();
[[nodiscard]] bool IncludeAddInManager();
[[nodiscard]] bool IsSubclassingOn();
void ShutdownDBConnection();
[[nodiscard]] std::string DBConnectionName();
void DBConnectionName(std::string_view value);
[[nodiscard]] std::string DBConnectionUID();
void DBConnectionUID(std::string_view value);
[[nodiscard]] std::string DBConnectionPWD();
void DBConnectionPWD(std::string_view value);
[[nodiscard]] std::int32_t MachineId();

// Statements: query_execution.h.
[[nodiscard]] std::shared_ptr<Recordset> ExecuteQuery(
    std::string_view sSql, bool fDataRequired = false, std::string_view sHostName = "",
    std::int32_t nPortNumber = 0, std::string_view sUserName = "", std::string_view sPassword = "",
    std::int32_t nTimeOut = 60);
void ExecuteRequest(std::string_view sSql);

// SQL literals: literals.h.
[[nodiscard]] CDBLiteral DBLiteral(std::string_view s);
[[nodiscard]] CDBLiteral DBStr(std::string_view s);
[[nodiscard]] CDBLiteral DBOrd(std::int32_t ord);
[[nodiscard]] CDBLiteral DBInt(std::int32_t i, std::int32_t iNull = 0);
[[nodiscard]] CDBLiteral DBFloat(double i, std::int32_t iNull = 0);
[[nodiscard]] CDBLiteral DBDateString(std::string_view sDate, std::string_view sFormat);
[[nodiscard]] CDBLiteral DateToDBString(const Date& d);
[[nodiscard]] CDBLiteral CurrentDateTime();
[[nodiscard]] CDBLiteral NextInSequence(std::string_view sSequence);
[[nodiscard]] Date GetCurrentDateTime();
[[nodiscard]] std::int32_t GetNextInSequence(std::string_view sSequence);

// Fetched values into typed ones: value_conversion.h.
[[nodiscard]] std::string CVString(const Variant& vString);
[[nodiscard]] std::int32_t CVId(const Variant& vId);
[[nodiscard]] std::int32_t CVInt(const Variant& vInt, std::int32_t iNull = 0);
[[nodiscard]] double CVDbl(const Variant& vInt, std::int32_t iNull = 0);
[[nodiscard]] Date CVDateTime(const Variant& vDate);
[[nodiscard]] bool CVBoolean(const Variant& vYesNo);

// Argument lists, procedures, functions, single values: literals.h, query_execution.h.
[[nodiscard]] std::string DBArg(const Variant& v);
[[nodiscard]] std::string DBArgs(std::span<const Variant> vArgs);
[[nodiscard]] std::string DBSetArgs(std::span<const Variant> vArgs);
void ExecuteProcedure(std::string_view sProc, std::span<const Variant> vArgs);
[[nodiscard]] std::int32_t ExecuteFunctionReturningLong(std::string_view sProc,
                                                        std::string_view sArgs);
[[nodiscard]] std::string ExecuteFunctionReturningString(std::string_view sProc,
                                                         std::string_view sArgs);
[[nodiscard]] std::int32_t ExecuteQueryReturningLong(std::string_view sQuery,
                                                     std::int32_t iDefault = 0);
[[nodiscard]] std::string ExecuteQueryReturningString(std::string_view sQuery,
                                                      std::string_view sDefault = "");
[[nodiscard]] Date ExecuteQueryReturningDate(std::string_view sQuery, const Date& dateDefault = {});
[[nodiscard]] std::string PadStr(std::string_view s);
[[nodiscard]] std::string GenerateRecordString(const std::shared_ptr<Recordset>& rst);

// Does the client fit the server, which releases are there?: compatibility.h.
[[nodiscard]] bool IsClientServerCompatible();
[[nodiscard]] bool IsLucentVersionSupported(std::string_view sVersion);
[[nodiscard]] std::string GetModuleVersionName(std::int32_t ordModule, std::int32_t ordVersion);

// Descriptors of connections: connection.h.
[[nodiscard]] std::shared_ptr<CConnection> CreateSMConnection(const ProfileRef& oPfl,
                                                              std::string_view sDestPath,
                                                              std::string_view sMachineName);
[[nodiscard]] std::shared_ptr<CConnection> CopyConnection(
    const std::shared_ptr<const CConnection>& oConnection);

// Common entities: entity_aggregation.h. Are loaded lists current?: update_times.h.
std::int32_t EA_Add_Common_Entity(std::string_view sEntityName, std::int32_t ordParent);
bool EA_Reparent_Common_Entity(std::int32_t ordEntity, std::int32_t ordParent);
bool EA_Add_EntityEQV(std::int32_t ordVersion, std::string_view sCommonName,
                      const Variant& sEntityLabel);
bool EA_Remove_Common_Entity(std::int32_t ordEntity);
[[nodiscard]] bool EntityHasEQV(std::int32_t ordID);
[[nodiscard]] std::int32_t IsEADocumentReady(std::int32_t ordGrpID, std::int32_t OrdUserID,
                                             const Variant& dtTimeStamp,
                                             std::int32_t ordServerID = 0);
[[nodiscard]] Variant ClearEATempRecords(std::int32_t ordUser, const Date& dtTime);
void LastEntityUpdate();
void LastFieldUpdate();
[[nodiscard]] bool EntitiesCurrent();
[[nodiscard]] bool FieldsCurrent();

// Before a report runs: report_checks.h, spreadsheet_limits.h.
[[nodiscard]] bool LengthyReportsConfigured();
[[nodiscard]] bool IsLengthyReport(std::int32_t nReportID);
[[nodiscard]] bool IsLengthyReportGroup(std::int32_t nJobID);
[[nodiscard]] bool IsCspNeeded(std::int32_t GrpID);
[[nodiscard]] bool IsDtsNeeded(std::int32_t GrpID);
[[nodiscard]] std::int32_t JobReportsTooBigForXL(std::string_view sJobId);
[[nodiscard]] bool ReportTooBigForXL(std::string_view sTaskID);
[[nodiscard]] Variant TestRowLimit(std::int32_t lngRowCount);

// May a document, a server, a user, mail be used?: validation.h.
[[nodiscard]] bool IsServerGroupDocumentValid(std::string_view sAppName, const Variant& ordID,
                                              std::string_view sSaveMode = "SaveOn");
[[nodiscard]] bool IsReportGroupServerDocumentValid(std::string_view sAppName, std::int32_t GrpID,
                                                    std::string_view sSaveMode,
                                                    std::string_view sServerName);
[[nodiscard]] bool TestServerConnection(std::string_view sHost, std::int32_t nPort,
                                        std::string_view sUser, std::string_view sPwd,
                                        std::int32_t nTOut, std::string_view sCaption = "",
                                        bool bShowMsg = true);
[[nodiscard]] bool Is_SMTP_Ready(std::int32_t& nErrCode, std::string& sErrMsg);
[[nodiscard]] std::string FindOrCreateUser(std::string_view sHost, std::int32_t nPort,
                                           std::string_view sUser, std::string_view sPwd,
                                           std::int32_t nTOut, std::string_view bCreate);

// Copies of query texts: query_text_copies.h. The span of the data: data_range.h.
std::int32_t CopyOriginalQueryText(std::int32_t ordQueryID, std::int32_t ordFilterID);
std::int32_t CopyScenarioQueryText(std::int32_t ordQueryID, std::int32_t ordFilterID);
[[nodiscard]] Date GetRecordOldestDate();
[[nodiscard]] Date GetRecordLatestDate();

// Slices of the day: time_slices.h.
[[nodiscard]] std::int32_t GetTimeSliceSecondsValue(bool UseBusyhourTimeSlices);
void GetSecondsRange(std::int32_t iStart, std::int32_t& lFirstSec, std::int32_t& lLastSec,
                     const FlagArray& afHrs, bool UseBusyhourTimeSlices);
void GetSelRange(std::int32_t lStartNo, std::int32_t& lFirstHr, std::int32_t& lLastHr,
                 const FlagArray& afHrs, bool UseBusyhourTimeSlices);
Variant GetStartEndHour(std::int32_t lFirsHr, std::int32_t lLastHr, std::int32_t lFirstSec,
                        std::int32_t lLastSec, std::int32_t& BeginHour, std::int32_t& EndingHour,
                        bool UseBusyhourTimeSlices);

// The host's objects that load from the database: object_initializers.h.
[[nodiscard]] std::shared_ptr<CDBObjectInitializers> DBObjectInitializers();
void RegisterDBObjectInitializer(const std::shared_ptr<IDBObjectInitializer>& dboi);

// Settings of the site: system_values.h.
void LoadOtherInfo();
[[nodiscard]] std::string NHighAttemptsEnabled();
void GetNHighAttemptsValue();
[[nodiscard]] bool EmailEnabled();
[[nodiscard]] std::string SystemFirstDayOfWeek();
[[nodiscard]] bool SystemValueExists(std::string_view sName, std::string_view sValue,
                                     std::string_view sHostName = "", std::int32_t nPortNumber = 0,
                                     std::string_view sUserName = "",
                                     std::string_view sPassword = "", std::int32_t nTimeOut = 0);

// What the schema has: schema_probes.h.
[[nodiscard]] std::int32_t DBColumnLength(std::string_view sTable, std::string_view sColumn);
void ResetExistingTables();
[[nodiscard]] std::int32_t ModuleNameMaxLength();
[[nodiscard]] std::int16_t GetProcedureLength(std::string_view sPackage,
                                              std::string_view sProcedure);
[[nodiscard]] bool DoesTableExist(std::string_view sTable, std::string_view sHostName = "",
                                  std::int32_t nPortNumber = 0, std::string_view sUserName = "",
                                  std::string_view sPassword = "", std::int32_t nTimeOut = 0);
[[nodiscard]] bool DoesFieldExist(std::string_view sTable, std::string_view sFieldName,
                                  std::string_view sHostName = "", std::int32_t nPortNumber = 0,
                                  std::string_view sUserName = "", std::string_view sPassword = "");
[[nodiscard]] bool DoesDbObjectExist(std::string_view sObjectNameA,
                                     std::string_view sObjectTypeA = "",
                                     std::string_view sHostNameA = "",
                                     std::int32_t nPortNumberA = 0,
                                     std::string_view sUserNameA = "",
                                     std::string_view sPasswordA = "", std::int32_t nTimeOutA = 0);
[[nodiscard]] bool DoesThisProcedureExist(std::string_view sPackageName,
                                          std::string_view sProcedureName);

}  // namespace sabrel::GSabrel
