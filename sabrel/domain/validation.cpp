#include "sabrel/domain/validation.h"

#include <algorithm>
#include <array>

#include "sabrel/core/error_object.h"
#include "sabrel/core/query_execution.h"
#include "sabrel/domain/package_call.h"
#include "sabrel/platform/conversions.h"
#include "sabrel/platform/platform.h"
#include "sabrel/platform/utf8.h"
#include "sabrel/sql/literals.h"
#include "sabrel/sql/value_conversion.h"

namespace sabrel::MSabrel {
namespace {

bool IsBoundToServers(std::string_view sAppName) {
  constexpr std::array<std::string_view, 4> kTypes = {"Export Definition", "Export Schedule",
                                                      "Report Group", "Report Definition"};
  return std::ranges::find(kTypes, sAppName) != kTypes.end();
}

bool UserAccepts(const std::string& reason) {
  const auto services = CurrentPlatform().services;
  return services->ShowMessage(reason + "\r\n Would you like to save/run the document anyway?",
                               kBoxExclamationYesNo, "Validate Document") == kAnswerYes;
}

// Walks the server groups that the rows name.
bool AreGroupsValid(Recordset& groups, const std::string& sAppName, const std::string& sSaveMode) {
  for (; !groups.EndOfFile(); groups.MoveNext()) {
    const Variant group = groups.Fields().Item("ServerGroupID").Value();
    if (group.IsNull()) continue;
    if (!IsServerGroupDocumentValid(sAppName, Variant(ToInt32(group)), sSaveMode)) return false;
  }
  return true;
}

// "" for what was no database error. Raises what forbids the user to work there.
std::string AnswerOfFailure(const Platform& platform, const RuntimeError& failure) {
  const auto error = SabrelErrorObject();
  error->Reset(failure);
  if (!error->IsDBError()) return {};
  // The application errors with which the routine turns users away.
  constexpr std::string_view kNotRemote = "20011";
  constexpr std::string_view kNotDataAdmin = "20012";
  const std::string told = error->DBDescription();
  if (told.find(kNotRemote) != std::string::npos) {
    SabrelErrorHandler()->Raise(sabEARemoteUserError, "MSabrel", "FindOrCreateUser", {});
  }
  if (told.find(kNotDataAdmin) != std::string::npos) {
    SabrelErrorHandler()->Raise(sabEADataAdminUserError, "MSabrel", "FindOrCreateUser", {});
  }
  platform.services->ShowMessage("Connection failed.\r\n" + failure.Description(), kBoxExclamation,
                                 "FindOrCreateUser");
  return "Connection Failed";
}

// The server's answer, or the words of the failure that forbids the user to work there.
std::string LookUpUser(std::string_view sHost, std::int32_t nPort, std::string_view sUser,
                       std::string_view sPwd, std::int32_t nTOut) {
  try {
    return FindOrCreateUser(sHost, nPort, sUser, sPwd, nTOut, "FALSE");
  } catch (const RuntimeError& failure) {
    const std::int32_t code = CarriedCode(failure.Number());
    if (code != sabEARemoteUserError && code != sabEADataAdminUserError) throw;
    return failure.Description();
  }
}

}  // namespace

bool IsServerGroupDocumentValid(std::string_view sAppName, const Variant& ordID,
                                std::string_view sSaveMode) {
  if (!IsBoundToServers(sAppName)) return true;
  const bool may_ask = sSaveMode == "RunSaveOn" || sSaveMode == "SaveOn";
  const std::string arguments = DBArgs(std::array{ordID, Variant(0), Variant(1), Variant(1)});
  const auto reason = AskFunctionForString("EA_Client.IsServerGroupDocumentValid", arguments);
  if (!reason) return false;  // what could not be checked is not valid
  if (reason->empty()) return true;
  return may_ask && UserAccepts(*reason);
}

bool IsReportGroupServerDocumentValid(std::string_view sAppName, std::int32_t GrpID,
                                      std::string_view sSaveMode,
                                      std::string_view /*sServerName*/) {
  const std::string type(sAppName);  // a failed query's box may take the caller's texts away
  const std::string mode(sSaveMode);
  const RecordsetRef groups = ExecuteQuery(
      "Select b.ServerGroupID From Job_Group_Item a, PM_Report b "
      "Where a.Document_ID = b.Id And a.Group_ID = " +
      std::to_string(GrpID));
  const CloseAtEnd closing(groups);
  return groups && AreGroupsValid(*groups, type, mode);
}

bool TestServerConnection(std::string_view sHost, std::int32_t nPort, std::string_view sUser,
                          std::string_view sPwd, std::int32_t nTOut, std::string_view /*sCaption*/,
                          bool bShowMsg) {
  constexpr std::string_view kCaption = "Test Server Connection";
  const Platform platform = CurrentPlatform();
  const std::string host(sHost);  // what the host runs on the way may take the caller's texts away
  const std::string user(sUser);
  const std::string password = platform.application->TransformPassword(sPwd);
  std::string answer = LookUpUser(host, nPort, user, password, nTOut);
  Services& services = *platform.services;
  if (answer == "TRUE") {
    if (bShowMsg) {
      services.ShowMessage("Test Server Connection Successfull!!", kBoxExclamation, kCaption);
    }
    return true;
  }
  if (UpperCase(answer) == "USER DOESN'T EXIST") {
    services.ShowMessage("[" + user + "]\r\n\r\n" + answer +
                             "\r\nPlease contact the System Administrator of\r\n"
                             "the remote server.",
                         kBoxCritical, kCaption);
    return false;
  }
  if (answer == "Connection Failed") return false;  // shown where it failed
  if (answer.empty()) answer = "Error in creating user [" + user + "]";
  services.ShowMessage(answer, kBoxExclamation, kCaption);
  return false;
}

std::string FindOrCreateUser(std::string_view sHost, std::int32_t nPort, std::string_view sUser,
                             std::string_view sPwd, std::int32_t nTOut, std::string_view bCreate) {
  const Platform platform = CurrentPlatform();
  const std::string host(sHost);  // as above, before the trace is written
  const std::string user(sUser);
  const std::string password(sPwd);
  const std::string create(bCreate);
  std::string answer;
  const auto failure = FailureIn([&] {
    TraceCall("Checking expression.", [&] {
      return "EA_FindOrCreateUser(" +
             DBArgs(std::array{Variant(host), Variant(nPort), Variant(user), Variant(password),
                               Variant(nTOut)}) +
             ")";
    });
    PackageCall call("EA_FindOrCreateUser");
    // The login there is always this account's; the user travels as an argument.
    call.Server(host, nPort, "system", "", nTOut).String(user).String(password).String(create);
    answer = ToJoinedText(call.Execute());
  });
  return failure ? AnswerOfFailure(platform, *failure) : answer;
}

bool Is_SMTP_Ready(std::int32_t& nErrCode, std::string& sErrMsg) {
  PackageCall call("check_smtp_val");
  call.Empty(kInteger).Empty(kString);
  TraceCall("Check SMTP .", [] { return "check_smtp_val ( )"; });
  const std::int32_t status = ToInt16(Variant(CVInt(call.Execute())));
  nErrCode = CVInt(call.Parameter(0));
  sErrMsg = CVString(call.Parameter(1));
  TraceWhenOn([&] { return ReturnedLine(status); });
  return status == 0;
}

}  // namespace sabrel::MSabrel
