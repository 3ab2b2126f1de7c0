// The day cut into equal slices, and runs of selected slices as seconds of the day.
//
// The product says how many slices a day has, N, once for ordinary reports ("TimeSlices") and once
// for busy-hour work ("BusyHourTimeSlices"); a slice then takes S seconds. Slices are numbered from
// 1; slice i covers the seconds S*(i-1) to S*i-1. A selection is a flag a slice. An N that is not
// supported leaves S at 0. Whole numbers have 32 bits and never wrap.
//
//   With N = 24 and slices 3 to 5 selected: GetSelRange -> 3, 5; GetSecondsRange -> 7200, 17999
#pragma once

#include <cstdint>

#include "sabrel/platform/flag_array.h"
#include "sabrel/platform/variant.h"

namespace sabrel::MSabrel {

/// S in seconds, 0 for an N that is not supported. Errors: 6 for an N beyond 32 bits. Cost: none
/// once the product is known
[[nodiscard]] std::int32_t GetTimeSliceSecondsValue(bool UseBusyhourTimeSlices);

/// The first run of selected slices at or after slice `lStartNo`; 0 and 0 when there is none.
/// Errors: 6 for an N beyond 32 bits; 9 for a slice that `afHrs` does not have, the outputs keeping
/// what was found so far. Cost: as above
void GetSelRange(std::int32_t lStartNo, std::int32_t& lFirstHr, std::int32_t& lLastHr,
                 const FlagArray& afHrs, bool UseBusyhourTimeSlices);

/// The same run as its first and last second. A run that is slice N alone ends at 86400, one
/// second after the day; with nothing selected the range is the first slice.
/// Errors: 6 when a number leaves its 32 bits; 9 as above. Cost: as above
void GetSecondsRange(std::int32_t iStart, std::int32_t& lFirstSec, std::int32_t& lLastSec,
                     const FlagArray& afHrs, bool UseBusyhourTimeSlices);

/// Turns a range of seconds back into slice numbers; the first two arguments are not used. Returns
/// empty. Errors: none; what fails leaves the outputs as far as they were set. Cost: as above
Variant GetStartEndHour(std::int32_t lFirsHr, std::int32_t lLastHr, std::int32_t lFirstSec,
                        std::int32_t lLastSec, std::int32_t& BeginHour, std::int32_t& EndingHour,
                        bool UseBusyhourTimeSlices);

}  // namespace sabrel::MSabrel
