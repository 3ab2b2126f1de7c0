#include "sabrel/domain/report_checks.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "sabrel/core/query_execution.h"
#include "sabrel/domain/package_call.h"
#include "sabrel/platform/module_state.h"
#include "sabrel/platform/platform.h"
#include "sabrel/platform/utf8.h"
#include "sabrel/sql/literals.h"
#include "sabrel/sql/schema_probes.h"
#include "sabrel/sql/value_conversion.h"

namespace sabrel::MSabrel {
namespace {

constexpr std::string_view kLineBreak = "\r\n";

// Unset until the package was looked for; never reset after that.
struct LengthyReports {
  std::optional<bool> configured;
};

void TraceOne(std::string_view opening, std::int32_t id) {
  TraceCall("Checking expression.",
            [&] { return std::string(opening) + DBArgs(std::array{Variant(id)}) + ")"; });
}

// Every reason, and every empty one, on a line of its own.
std::string Lines(const std::string& reasons) {
  return ReplaceAll(reasons, "|", kLineBreak).append(kLineBreak);
}

bool UserDeclines(const std::string& reasons, std::string_view question) {
  const auto services = CurrentPlatform().services;
  const std::string message = Lines(reasons).append(kLineBreak).append(question);
  return services->ShowMessage(message, kBoxQuestionYesNoDefaultNo,
                               "Lengthy/Complex Report Warning") == kAnswerNo;
}

// The answer of a check that never fails: what goes wrong means no.
template <class Check>
bool HoldsWithoutFailing(Check check) {
  RequirePlatform();
  try {
    return check();
  } catch (...) {
    return false;
  }
}

bool HasRows(const std::string& sQuery) {
  return HoldsWithoutFailing([&] {
    const RecordsetRef rows = ExecuteQuery(sQuery);
    const CloseAtEnd closing(rows);
    return rows && !rows->EndOfFile();
  });
}

}  // namespace

bool LengthyReportsConfigured() {
  if (const auto known = ModuleState<LengthyReports>().configured) return *known;
  const bool exists = DoesDbObjectExist("LENGTHYREPORT", "PACKAGE");
  auto& configured = ModuleState<LengthyReports>().configured;
  // The host may have asked the same from within the probe's box.
  if (!configured) configured = exists;
  return *configured;
}

bool IsLengthyReport(std::int32_t nReportID) {
  return HoldsWithoutFailing([&] {
    if (!LengthyReportsConfigured()) return false;
    TraceOne("LengthyReport.Reason(", nReportID);
    PackageCall call("LengthyReport.Reason");
    call.Empty(kString).Integer(nReportID).Empty(kInteger);
    call.Execute();
    const std::string reasons = CVString(call.Parameter(0));
    return !reasons.empty() &&
           UserDeclines(reasons,
                        "When this report is run it may be time consuming and/or may place an "
                        "unusual load on the server. \r\nDo you wish to continue?");
  });
}

bool IsLengthyReportGroup(std::int32_t nJobID) {
  return HoldsWithoutFailing([&] {
    if (!LengthyReportsConfigured()) return false;
    TraceOne("LengthyReport.LengthyReports(", nJobID);
    PackageCall call("LengthyReport.LengthyReports");
    call.Empty(kString).Integer(nJobID);
    call.Execute();
    const std::string reasons = CVString(call.Parameter(0));
    return !reasons.empty() &&
           UserDeclines(reasons,
                        "When the above report(s) are run they may be time consuming and/or may "
                        "place an unusual load on the server.\r\nDo you wish to continue?");
  });
}

bool IsCspNeeded(std::int32_t GrpID) {
  return HasRows(
      "SELECT A.Id, B.GROUP_ID, C.Id Report_Id, C.CHANSETPLANID "
      "From JOB_GROUP A, JOB_GROUP_ITEM B, PM_REPORT C "
      "Where (B.GROUP_ID = A.ID) AND (B.DOCUMENT_ID = C.ID) AND (A.ID =" +
      std::to_string(GrpID) + ") AND (C.CHANSETPLANID IS NOT NULL)");
}

bool IsDtsNeeded(std::int32_t GrpID) {
  return HasRows(
      "SELECT A.Id, B.GROUP_ID, C.Id Report_Id, C.DTSCOPEID "
      "From JOB_GROUP A, JOB_GROUP_ITEM B, PM_REPORT C "
      "Where (B.GROUP_ID = A.ID) AND (B.DOCUMENT_ID = C.ID) AND (A.ID =" +
      std::to_string(GrpID) + ") AND (C.DTSCOPEID IS NOT NULL)");
}

}  // namespace sabrel::MSabrel
