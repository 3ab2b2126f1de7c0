#include "sabrel/domain/update_times.h"

#include <string_view>

#include "sabrel/core/query_execution.h"
#include "sabrel/platform/conversions.h"
#include "sabrel/platform/module_state.h"
#include "sabrel/platform/platform.h"

namespace sabrel::MSabrel {
namespace {

struct UpdateTimes {
  Date LastEntityUpdateTime;
  Date LastFieldUpdateTime;
};

constexpr std::string_view kEntityQuery = "SELECT Ea_Last_Entity_Update() FROM DUAL";
constexpr std::string_view kFieldQuery = "SELECT Last_Field_Update() FROM DUAL";

Date TimeInDatabase(std::string_view sQuery) {
  const RecordsetRef rows = ExecuteQuery(sQuery);
  const CloseAtEnd closing(rows);
  if (!rows || rows->EndOfFile()) return {};
  const Variant time = rows->Fields().Item(0).Value();
  const LocaleFacts locale = CurrentPlatform().services->Locale();
  return IsDate(time, locale) ? ToDate(time, locale) : Date();
}

// In 64 bits: 32 would not hold the seconds between a time and the zero date.
bool IsCurrent(const Date& noted, const Date& in_database) {
  return noted.WholeSeconds() - in_database.WholeSeconds() >= 0;
}

}  // namespace

// The state is fetched after the query: a failing one may have unloaded the thread's.
void LastEntityUpdate() {
  const Date time = TimeInDatabase(kEntityQuery);
  ModuleState<UpdateTimes>().LastEntityUpdateTime = time;
}

void LastFieldUpdate() {
  const Date time = TimeInDatabase(kFieldQuery);
  ModuleState<UpdateTimes>().LastFieldUpdateTime = time;
}

bool EntitiesCurrent() {
  const Date time = TimeInDatabase(kEntityQuery);
  return IsCurrent(ModuleState<UpdateTimes>().LastEntityUpdateTime, time);
}

bool FieldsCurrent() {
  const Date time = TimeInDatabase(kFieldQuery);
  return IsCurrent(ModuleState<UpdateTimes>().LastFieldUpdateTime, time);
}

}  // namespace sabrel::MSabrel
