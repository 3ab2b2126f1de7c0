// The slices of a day as one line of characters, with the hours below.
//
//   ······█████████···············▒▒▒·······································
//   0  1  2  3  4  5  6  7  8  9  10 11 12 13 14 15 16 17 18 19 20 21 22 23 24
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "sabrel/platform/flag_array.h"

namespace sabrel::cli {

/// Two lines of at most `columns` characters; empty where not even an hour would have one. A
/// character stands for several slices where there is no room for each: it shows what any of them
/// is. Slices `first` to `last` are the run, 0 and 0 none. `selected` has a multiple of 24 flags
[[nodiscard]] std::string SlicePicture(const FlagArray& selected, std::int32_t first,
                                       std::int32_t last, std::size_t columns);

}  // namespace sabrel::cli
