// The time span of the data that was collected, which bounds date pickers.
//
// Each is the zero date while no data is there.
#pragma once

#include "sabrel/platform/date.h"

namespace sabrel::MSabrel {

/// When the oldest data was collected; 1 January 1995 when the query fails, which was shown.
/// Errors: 6 or 13 for what is no date. Cost: one round trip
[[nodiscard]] Date GetRecordOldestDate();
/// When the latest data was collected; the client machine's time before the query when that fails.
/// Errors and cost: as above
[[nodiscard]] Date GetRecordLatestDate();

}  // namespace sabrel::MSabrel
