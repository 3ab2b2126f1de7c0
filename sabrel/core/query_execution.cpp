#include "sabrel/core/query_execution.h"

#include <optional>

#include "sabrel/core/error_object.h"
#include "sabrel/platform/conversions.h"
#include "sabrel/platform/module_state.h"
#include "sabrel/platform/platform.h"
#include "sabrel/platform/utf8.h"
#include "sabrel/sql/literals.h"

namespace sabrel::MSabrel {
namespace {

struct RequestChannel {
  RecordsetRef channel;
};

constexpr std::string_view kQueryLabel = "Query: ";
// Functions that yield text run as long as the server lets them.
constexpr std::int32_t kFunctionTextTimeOut_s = 0;

std::string QueryLine(std::string_view sSql) { return std::string(kQueryLabel).append(sSql); }

std::string_view StatementOf(const std::string& query_line) {
  return std::string_view(query_line).substr(kQueryLabel.size());
}

// The first field of the first row; nothing when there is no recordset, no row or no value.
std::optional<Variant> FirstValue(const RecordsetRef& rows) {
  if (!rows || rows->EndOfFile()) return std::nullopt;
  Variant value = rows->Fields().Item(0).Value();
  if (value.IsNull()) return std::nullopt;
  return value;
}

void ReportFailedQuery(const Platform& platform, const RuntimeError& failure,
                       const std::string& query_line) {
  const auto error = SabrelErrorObject();
  error->Reset(failure);
  platform.application->Notify();
  platform.services->ShowMessage("Error ExecuteQuery:" + error->Text(), kBoxCritical,
                                 platform.application->ProductName());
  platform.services->WriteLog(query_line);
}

std::string FunctionSelect(std::string_view sProc, std::string_view sArgs) {
  return SelectFromDual(std::string(sProc) + "(" + std::string(sArgs) + ")");
}

}  // namespace

RecordsetRef ExecuteQuery(std::string_view sSql, bool fDataRequired, std::string_view sHostName,
                          std::int32_t nPortNumber, std::string_view sUserName,
                          std::string_view sPassword, std::int32_t nTimeOut) {
  // Copies: a box or a notification may run anything in the host, an UnloadThread or a change of
  // its text included.
  const Platform platform = CurrentPlatform();
  const std::string query_line = QueryLine(sSql);
  RecordsetRef rows;
  std::optional<RuntimeError> failure;
  try {
    rows = platform.rowlink->MakeRecordset();
    Deref(rows).Open(StatementOf(query_line), sHostName, nPortNumber, sUserName, sPassword,
                     nTimeOut);
    if (rows->EndOfFile() && fDataRequired) {
      rows->Close();
      SabrelErrorHandler()->Raise(sabNoDataError, "MSabrel", "ExecuteQuery", {});
    }
    if (platform.services->TraceSwitch()) {
      platform.services->WriteTrace("ExecuteQuery returned " + std::to_string(rows->RecordCount()) +
                                    " row(s).\r\n" + query_line);
    }
    return rows;
  } catch (...) {
    failure = CurrentFailure();
  }
  // Outside the catch: with the failure dealt with, there is no current error any more.
  if (rows) rows->Close();
  RaisingRuntimeErrors([&] { ReportFailedQuery(platform, *failure, query_line); });
  return nullptr;
}

void ExecuteRequest(std::string_view sSql, std::string_view sHostName, std::int32_t nPortNumber,
                    std::string_view sUserName, std::string_view sPassword, std::int32_t nTimeOut) {
  const Platform platform = CurrentPlatform();
  const std::string query_line = QueryLine(sSql);
  std::optional<RuntimeError> failure;
  try {
    RecordsetRef channel = ModuleState<RequestChannel>().channel;
    if (!channel) {
      channel = platform.rowlink->MakeRecordset();
      ModuleState<RequestChannel>().channel = channel;
    }
    Deref(channel).Execute(StatementOf(query_line), sHostName, nPortNumber, sUserName, sPassword,
                           nTimeOut);
    if (platform.services->TraceSwitch()) {
      platform.services->WriteTrace("ExecuteRequest succeeded.\r\n" + query_line);
    }
    return;
  } catch (...) {
    failure = CurrentFailure();
  }
  const auto error = SabrelErrorObject();
  error->Reset(*failure);
  if (platform.services->TraceSwitch()) {
    platform.services->WriteTrace("ExecuteRequest failed.\r\n" + error->Text() + "\r\n" +
                                  query_line);
  }
  error->Raise();
}

std::int32_t ExecuteQueryReturningLong(std::string_view sQuery, std::int32_t iDefault) {
  const RecordsetRef rows = ExecuteQuery(sQuery);
  const CloseAtEnd closing(rows);
  const auto value = FirstValue(rows);
  return value ? ToInt32(*value) : iDefault;
}

std::string ExecuteQueryReturningString(std::string_view sQuery, std::string_view sDefault,
                                        std::string_view sHostName, std::int32_t nPortNumber,
                                        std::string_view sUserName, std::string_view sPassword,
                                        std::int32_t nTimeOut) {
  std::string otherwise(sDefault);  // a failed query's box may take the caller's away
  const RecordsetRef rows =
      ExecuteQuery(sQuery, false, sHostName, nPortNumber, sUserName, sPassword, nTimeOut);
  const CloseAtEnd closing(rows);
  const auto value = FirstValue(rows);
  return value ? ToText(*value) : otherwise;
}

Date ExecuteQueryReturningDate(std::string_view sQuery, const Date& dateDefault) {
  const Date otherwise = dateDefault;
  const RecordsetRef rows = ExecuteQuery(sQuery);
  const CloseAtEnd closing(rows);
  const auto value = FirstValue(rows);
  return value ? ToDate(*value) : otherwise;
}

std::int32_t ExecuteFunctionReturningLong(std::string_view sProc, std::string_view sArgs) {
  return ExecuteQueryReturningLong(FunctionSelect(sProc, sArgs));
}

std::string ExecuteFunctionReturningString(std::string_view sProc, std::string_view sArgs) {
  return AskFunctionForString(sProc, sArgs).value_or("");
}

std::optional<std::string> AskFunctionForString(std::string_view sProc, std::string_view sArgs) {
  const RecordsetRef rows =
      ExecuteQuery(FunctionSelect(sProc, sArgs), false, {}, 0, {}, {}, kFunctionTextTimeOut_s);
  if (!rows) return std::nullopt;
  const CloseAtEnd closing(rows);
  const auto value = FirstValue(rows);
  return value ? ToText(*value) : std::string();
}

void ExecuteProcedure(std::string_view sProc, std::span<const Variant> vArgs) {
  // Unlike DBArgs, a comma stands between any two arguments, also after empty ones.
  std::string arguments;
  for (std::size_t i = 0; i < vArgs.size(); ++i) {
    if (i > 0) arguments += ",";
    arguments += DBArg(vArgs[i]);
  }
  ExecuteRequest("BEGIN " + std::string(sProc) + "(" + PadStr(arguments) + "); END;");
}

std::string GenerateRecordString(const RecordsetRef& rst) {
  constexpr std::size_t kNameColumn = 32;
  const FieldList fields = Deref(rst).Fields();
  std::string text;
  for (std::int32_t i = 0; i < fields.Count(); ++i) {
    const Field field = fields.Item(i);
    const std::size_t length = CharacterCount(field.Name());
    if (length > kNameColumn) throw RuntimeError(RuntimeErrorNumber::kInvalidCall);
    text += "\r\n" + std::string(kNameColumn - length, ' ') + field.Name() + ": '" +
            ToJoinedText(field.Value()) + "'";
  }
  return text;
}

}  // namespace sabrel::MSabrel
