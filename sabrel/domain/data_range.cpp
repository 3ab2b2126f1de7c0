#include "sabrel/domain/data_range.h"

#include <string_view>

#include "sabrel/core/query_execution.h"
#include "sabrel/sql/value_conversion.h"

namespace sabrel::MSabrel {
namespace {

Date TimeStampOf(std::string_view sQuery, const Date& otherwise) {
  const RecordsetRef rows = ExecuteQuery(sQuery, true);
  const CloseAtEnd closing(rows);
  return rows ? CVDateTime(rows->Fields().Item("TimeStamp").Value()) : otherwise;
}

}  // namespace

Date GetRecordOldestDate() {
  const Date earliest = CVDateTime(Variant("01/01/1995"));
  return TimeStampOf("Select Min(TimeStamp) as TimeStamp From ZR_AVAILABLE_DATA", earliest);
}

Date GetRecordLatestDate() {
  const Date now = Date::Now();
  return TimeStampOf("Select Max(TimeStamp) as TimeStamp From ZR_AVAILABLE_DATA", now);
}

}  // namespace sabrel::MSabrel
