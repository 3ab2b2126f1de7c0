// Copies of a stored query's text for one filter ("scenario"), made by the package ZR_Query.
#pragma once

#include <cstdint>

namespace sabrel::MSabrel {

/// Makes the query's text for the filter. Returns what the package puts in the place of
/// `ordFilterID`, the copy's id; 0 for null. Errors: the call's. Cost: one call
std::int32_t CopyScenarioQueryText(std::int32_t ordQueryID, std::int32_t ordFilterID);

/// Gives the filter's copy the query's own text again; -1. Errors: the call's. Cost: one call
std::int32_t CopyOriginalQueryText(std::int32_t ordQueryID, std::int32_t ordFilterID);

}  // namespace sabrel::MSabrel
