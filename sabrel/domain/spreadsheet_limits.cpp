#include "sabrel/domain/spreadsheet_limits.h"

#include <string>

#include "sabrel/core/error_object.h"
#include "sabrel/core/query_execution.h"
#include "sabrel/platform/conversions.h"
#include "sabrel/platform/platform.h"
#include "sabrel/platform/text_to_number.h"
#include "sabrel/platform/utf8.h"
#include "sabrel/sql/schema_probes.h"
#include "sabrel/sql/value_conversion.h"

namespace sabrel::MSabrel {
namespace {

// Below what the application could hold, on purpose.
constexpr std::int32_t kRowLimit = 65000;
constexpr std::int32_t kRowLimitFromVersion12 = 1048000;

// The point is "." in every locale: the version is asked for in English.
double VersionNumber(const std::string& version) {
  if (TrimBlanks(version).empty()) throw RuntimeError(RuntimeErrorNumber::kTypeMismatch);
  return TextToNumber(version, ".");
}

[[noreturn]] void RaiseUnexpected(const RuntimeError& failure, const std::string& details) {
  const CErrorObject error(failure);
  error.Raise(details + "," + error.Text());
}

[[noreturn]] void RaiseUnknownReport(const std::string& task) {
  const auto failure = FailureIn(
      [] { SabrelErrorHandler()->Raise(sabNoDataError, "MSabrel", "ReportTooBigForXL", {}); });
  CErrorObject(failure.value()).Raise("Report does not exists, Report Id:" + task);
}

bool ExceedsRowLimit(std::int32_t rows) { return TestRowLimit(rows).Get<bool>(); }

bool IsTooBig(const std::string& task) {
  const bool sizes_known = DoesFieldExist("TASK_FILENAME", "SIZEINROWS");
  if (!sizes_known && !DoesFieldExist("TASK_FILENAME", "LIMIT")) return false;
  const std::string columns = sizes_known ? "LIMIT, NVL(SIZEINROWS,0)" : "LIMIT";
  const RecordsetRef rows =
      ExecuteQuery("SELECT " + columns + " FROM TASK_FILENAME B WHERE B.TASKID= " + task);
  const CloseAtEnd closing(rows);
  if (!rows || rows->EndOfFile()) RaiseUnknownReport(task);
  const Variant stored = rows->Fields().Item("LIMIT").Value();
  const LocaleFacts locale = CurrentPlatform().services->Locale();
  const bool has_limit = IsNumeric(stored, locale);
  const std::int32_t limit = has_limit ? ToInt32(stored, locale) : 0;
  if (!sizes_known) return has_limit && ToDouble(stored, locale) != 0.0;
  // Without an alias the second column's name is the server's choice.
  const std::int32_t size = CVInt(rows->Fields().Item(1).Value());
  return ExceedsRowLimit(size == 0 ? limit : size);
}

std::int32_t CountTooBig(Recordset& tasks) {
  std::int32_t count = 0;
  for (; !tasks.EndOfFile(); tasks.MoveNext()) {
    try {
      if (ReportTooBigForXL(ToText(tasks.Fields().Item("task_id").Value()))) ++count;
    } catch (...) {
      // A report that cannot be checked does not keep the others from it.
    }
  }
  return count;
}

}  // namespace

Variant TestRowLimit(std::int32_t lngRowCount) {
  const auto spreadsheet = CurrentPlatform().spreadsheet;
  const auto instance = spreadsheet->CreateInstance("excel.application");
  const std::string version = Deref(instance).Version();
  const bool is_old = VersionNumber(version) < 12.0;
  return Variant(lngRowCount > (is_old ? kRowLimit : kRowLimitFromVersion12));
}

bool ReportTooBigForXL(std::string_view sTaskID) {
  const std::string task(sTaskID);
  bool too_big = false;
  const auto failure = FailureIn([&] { too_big = IsTooBig(task); });
  if (failure) RaiseUnexpected(*failure, "Unexpected error, Task Id:" + task);
  return too_big;
}

std::int32_t JobReportsTooBigForXL(std::string_view sJobId) {
  const std::string job(sJobId);
  std::int32_t count = 0;
  const auto failure = FailureIn([&] {
    const RecordsetRef tasks =
        ExecuteQuery("select task_id FROM Report_Status_V where Job_ID=" + job +
                     " and Spool_Filename IS NOT NULL and status_word='Done' order by task_id");
    const CloseAtEnd closing(tasks);
    if (tasks) count = CountTooBig(*tasks);
  });
  if (failure) RaiseUnexpected(*failure, "Unexpected error, Job Id:" + job);
  return count;
}

}  // namespace sabrel::MSabrel
