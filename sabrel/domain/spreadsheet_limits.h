// Whether a report's output fits into the spreadsheet application that is installed.
//
// The application is started only to learn its version: older ones hold fewer rows. A finished
// report is one task of a job; the table TASK_FILENAME knows how large its output is.
//
//   const auto too_big = JobReportsTooBigForXL("7");
#pragma once

#include <cstdint>
#include <string_view>

#include "sabrel/platform/variant.h"

namespace sabrel::MSabrel {

/// A boolean: whether that many rows are more than 65,000, or from version 12 on 1,048,000.
/// Errors: when the application is not installed; 13 when its version is no number. Cost: no round
/// trip; starts the application
[[nodiscard]] Variant TestRowLimit(std::int32_t lngRowCount);

/// Whether the task's output is too big. `sTaskID` stands in the statement as it is.
/// Errors: what fails, its description followed by "Unexpected error, Task Id:" and a text; code 6
/// (sabNoDataError) for an unknown task and for a query that failed. Cost: one or two probes,
/// cached, and one round trip; starts the application where sizes are known
[[nodiscard]] bool ReportTooBigForXL(std::string_view sTaskID);

/// How many finished reports of the job are too big; a report that cannot be checked is not
/// counted. `sJobId` stands in the statement as it is.
/// Errors: of reading the job's tasks, "Unexpected error, Job Id:" and a text appended. Cost: one
/// round trip and one for each finished report
[[nodiscard]] std::int32_t JobReportsTooBigForXL(std::string_view sJobId);

}  // namespace sabrel::MSabrel
