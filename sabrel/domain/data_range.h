// The time span of the data that was collected, which bounds date pickers.
//
// Each is the zero date while no data is there.
#pragma once

#include "sabrel/platform/date.h"

namespace sabrel::MSabrel {

/// 1 January 1995 when the query fails, which was shown already.
/// Errors: 6 or 13 for what is no date. Cost: one round trip
[[nodiscard]] Date GetRecordOldestDate();
/// The client machine's time before the query when the query fails.
[[nodiscard]] Date GetRecordLatestDate();

}  // namespace sabrel::MSabrel
