#include "sabrel/core/query_execution.h"

#include <optional>

#include "sabrel/core/error_object.h"
#include "sabrel/core/trace.h"
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

// The first field of the first row, null without one; nothing when the query failed.
std::optional<Variant> AskForValue(std::string_view sQuery, std::string_view sHostName = {},
                                   std::int32_t nPortNumber = 0, std::string_view sUserName = {},
                                   std::string_view sPassword = {},
                                   std::int32_t nTimeOut = kQueryTimeOut_s) {
  const RecordsetRef rows =
      ExecuteQuery(sQuery, false, sHostName, nPortNumber, sUserName, sPassword, nTimeOut);
  if (!rows) return std::nullopt;
  const CloseAtEnd closing(rows);
  return rows->EndOfFile() ? Variant(Null{}) : rows->Fields().Item(0).Value();
}

bool HasValue(const std::optional<Variant>& answer) { return answer && !answer->IsNull(); }

void ReportFailedQuery(const Platform& platform, const RuntimeError& failure,
                       const std::string& sql) {
  const auto error = SabrelErrorObject();
  error->Reset(failure);
  platform.application->Notify();
  platform.services->ShowMessage("Error ExecuteQuery:" + error->Text(), kBoxCritical,
                                 platform.application->ProductName());
  platform.services->WriteLog(QueryLine(sql));
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
  const std::string sql(sSql);
  RecordsetRef rows;
  const auto failure = FailureIn([&] {
    rows = platform.rowlink->MakeRecordset();
    Deref(rows).Open(sql, sHostName, nPortNumber, sUserName, sPassword, nTimeOut);
    if (rows->EndOfFile() && fDataRequired) {
      rows->Close();
      SabrelErrorHandler()->Raise(sabNoDataError, "MSabrel", "ExecuteQuery", {});
    }
    TraceWhenOn(*platform.services, [&] {
      return "ExecuteQuery returned " + std::to_string(rows->RecordCount()) + " row(s).\r\n" +
             QueryLine(sql);
    });
  });
  if (!failure) return rows;
  if (rows) rows->Close();
  ReportFailedQuery(platform, *failure, sql);
  return nullptr;
}

std::int64_t ExecuteRequest(std::string_view sSql, std::string_view sHostName,
                            std::int32_t nPortNumber, std::string_view sUserName,
                            std::string_view sPassword, std::int32_t nTimeOut) {
  const Platform platform = CurrentPlatform();
  const std::string sql(sSql);
  std::int64_t rows_changed = kUnknownRows;
  const auto failure = FailureIn([&] {
    RecordsetRef channel = ModuleState<RequestChannel>().channel;
    if (!channel) {
      channel = platform.rowlink->MakeRecordset();
      ModuleState<RequestChannel>().channel = channel;
    }
    rows_changed =
        Deref(channel).Execute(sql, sHostName, nPortNumber, sUserName, sPassword, nTimeOut);
    TraceWhenOn(*platform.services,
                [&] { return "ExecuteRequest succeeded.\r\n" + QueryLine(sql); });
  });
  if (!failure) return rows_changed;
  const auto shared = SabrelErrorObject();
  shared->Reset(*failure);
  const CErrorObject error = *shared;  // the trace may change the shared one
  TraceWhenOn(*platform.services, [&] {
    return "ExecuteRequest failed.\r\n" + error.Text() + "\r\n" + QueryLine(sql);
  });
  error.Raise();
}

std::int32_t ExecuteQueryReturningLong(std::string_view sQuery, std::int32_t iDefault) {
  const auto answer = AskForValue(sQuery);
  return HasValue(answer) ? ToInt32(*answer) : iDefault;
}

std::string ExecuteQueryReturningString(std::string_view sQuery, std::string_view sDefault,
                                        std::string_view sHostName, std::int32_t nPortNumber,
                                        std::string_view sUserName, std::string_view sPassword,
                                        std::int32_t nTimeOut) {
  const std::string otherwise(sDefault);
  const auto answer = AskForValue(sQuery, sHostName, nPortNumber, sUserName, sPassword, nTimeOut);
  return HasValue(answer) ? ToText(*answer) : otherwise;
}

Date ExecuteQueryReturningDate(std::string_view sQuery, const Date& dateDefault) {
  const Date otherwise = dateDefault;
  const auto answer = AskForValue(sQuery);
  return HasValue(answer) ? ToDate(*answer) : otherwise;
}

std::int32_t ExecuteFunctionReturningLong(std::string_view sProc, std::string_view sArgs) {
  return ExecuteQueryReturningLong(FunctionSelect(sProc, sArgs));
}

std::string ExecuteFunctionReturningString(std::string_view sProc, std::string_view sArgs) {
  return AskFunctionForString(sProc, sArgs).value_or("");
}

std::optional<std::string> AskFunctionForString(std::string_view sProc, std::string_view sArgs) {
  // Functions that yield text run as long as the server lets them.
  constexpr std::int32_t kServersLimit = 0;
  const auto answer = AskForValue(FunctionSelect(sProc, sArgs), {}, 0, {}, {}, kServersLimit);
  if (!answer) return std::nullopt;
  return HasValue(answer) ? ToText(*answer) : std::string();
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
