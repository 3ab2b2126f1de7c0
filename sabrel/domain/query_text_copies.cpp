#include "sabrel/domain/query_text_copies.h"

#include <string>

#include "sabrel/domain/package_call.h"
#include "sabrel/sql/value_conversion.h"

namespace sabrel::MSabrel {

std::int32_t CopyScenarioQueryText(std::int32_t ordQueryID, std::int32_t ordFilterID) {
  PackageCall call("ZR_Query.CreateFQuery");
  call.Integer(ordQueryID).Integer(ordFilterID);
  TraceCall("Copy Scenario Query Text.", [&] {
    return "ZR_Query.CreateFQuery ( " + std::to_string(ordQueryID) + "," +
           std::to_string(ordFilterID) + ")";
  });
  call.Execute();
  const std::int32_t copy = CVInt(call.Parameter(1));
  TraceReturned(copy);
  return copy;
}

std::int32_t CopyOriginalQueryText(std::int32_t ordQueryID, std::int32_t ordFilterID) {
  PackageCall call("ZR_Query.CopyNFQuery");
  call.Integer(ordQueryID).Integer(ordFilterID);
  TraceCall("Copy Scenario's Original Query Text.", [&] {
    return "ZR_Query.CopyNFQuery( " + std::to_string(ordQueryID) + ", " +
           std::to_string(ordFilterID) + ")";
  });
  call.Execute();
  return -1;
}

}  // namespace sabrel::MSabrel
