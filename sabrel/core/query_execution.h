// Running statements: queries, requests, single values, stored functions and procedures.
//
// A failed query is told to the user at once (message box and log line) and comes back as nothing;
// a failed request is raised to the caller. The box may run anything in the host: texts and state
// that are needed after a query are copied before it. Either way the thread's error object holds
// the failure. Addresses are handed on as they are: an empty host is the session's own server,
// time-outs are seconds, 0 is that server's own setting. Costs count requests to the Data Server as
// round trips, here and in all that is built on this.
//
//   if (auto rows = ExecuteQuery("SELECT Id FROM T")) { ...; rows->Close(); }
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "sabrel/platform/date.h"
#include "sabrel/platform/recordset.h"
#include "sabrel/platform/variant.h"

namespace sabrel::MSabrel {

inline constexpr std::int32_t kQueryTimeOut_s = 60;

/// Sends a query. The receiver closes the recordset; null after a failure, which was shown already.
/// Errors: none of the query's own; what the notification, the message box or the log raise on a
/// failure. Cost: one round trip; with tracing on the rows are read in whole to be counted
[[nodiscard]] RecordsetRef ExecuteQuery(std::string_view sSql, bool fDataRequired = false,
                                        std::string_view sHostName = {},
                                        std::int32_t nPortNumber = 0,
                                        std::string_view sUserName = {},
                                        std::string_view sPassword = {},
                                        std::int32_t nTimeOut = kQueryTimeOut_s);

/// Sends a statement without rows over the thread's request channel; returns the number of rows
/// changed, or kUnknownRows.
/// Errors: the statement's, after it was captured in the error object. Cost: one round trip
std::int64_t ExecuteRequest(std::string_view sSql, std::string_view sHostName = {},
                            std::int32_t nPortNumber = 0, std::string_view sUserName = {},
                            std::string_view sPassword = {}, std::int32_t nTimeOut = 0);

/// The first field of the first row; the default when the query fails, has no row or the field is
/// null. Errors: 6 or 13 when the value cannot be converted. Cost: one round trip; time-out 60
[[nodiscard]] std::int32_t ExecuteQueryReturningLong(std::string_view sQuery,
                                                     std::int32_t iDefault = 0);
/// The same as text, untrimmed. Its time-out is 0 where the two others send 60.
[[nodiscard]] std::string ExecuteQueryReturningString(
    std::string_view sQuery, std::string_view sDefault = {}, std::string_view sHostName = {},
    std::int32_t nPortNumber = 0, std::string_view sUserName = {}, std::string_view sPassword = {},
    std::int32_t nTimeOut = 0);
/// The same as a date; time-out 60.
[[nodiscard]] Date ExecuteQueryReturningDate(std::string_view sQuery, const Date& dateDefault = {});

/// The result of a stored function; 0 or "" when the call fails or yields null. `sArgs` is a list
/// of SQL literals and stands between the parentheses as it is. Errors: 6 or 13 when the result
/// cannot be converted. Cost: one round trip
[[nodiscard]] std::int32_t ExecuteFunctionReturningLong(std::string_view sProc,
                                                        std::string_view sArgs);
[[nodiscard]] std::string ExecuteFunctionReturningString(std::string_view sProc,
                                                         std::string_view sArgs);
/// As ExecuteFunctionReturningString, but nothing when the query failed, for callers to whom no
/// answer and an empty one are not the same.
[[nodiscard]] std::optional<std::string> AskFunctionForString(std::string_view sProc,
                                                              std::string_view sArgs);

/// Runs "BEGIN proc( args ); END;", the arguments as DBArg writes them, a comma between any two.
/// Errors: as ExecuteRequest; 13 for an argument without text. Cost: one round trip
void ExecuteProcedure(std::string_view sProc, std::span<const Variant> vArgs);

/// The current row for reading: a line `NAME: 'value'` a field, names right-aligned to 32
/// characters, each line after CR LF; null shows as ''. Errors: 5 for a field name of more than 32
/// characters, 91 for no recordset, 3021 at the end
[[nodiscard]] std::string GenerateRecordString(const RecordsetRef& rst);

}  // namespace sabrel::MSabrel
