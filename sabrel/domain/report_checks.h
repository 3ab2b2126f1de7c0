// What to ask before a report runs: will it load the server, and what else does it need?
//
// The optional package LengthyReport says why a report is lengthy; the user is shown the reasons
// and asked whether to go on. A site without the package has no lengthy reports.
//
//   if (!IsLengthyReport(report_id)) Run(report_id);
#pragma once

#include <cstdint>

namespace sabrel::MSabrel {

/// Whether the site has the package. Cost: one round trip on first use, then none
[[nodiscard]] bool LengthyReportsConfigured();

/// True only when the user was asked and declined to run the report; false also after a failure.
/// Errors: none. Cost: one call, behind LengthyReportsConfigured
[[nodiscard]] bool IsLengthyReport(std::int32_t nReportID);
/// The same for all reports of a job.
[[nodiscard]] bool IsLengthyReportGroup(std::int32_t nJobID);

/// Whether a report of the job group has a channel-set plan, or a data scope; false also after a
/// failure. Errors: none. Cost: one round trip
[[nodiscard]] bool IsCspNeeded(std::int32_t GrpID);
[[nodiscard]] bool IsDtsNeeded(std::int32_t GrpID);

}  // namespace sabrel::MSabrel
