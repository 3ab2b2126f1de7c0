#include "sabrel/domain/entity_aggregation.h"

#include <array>
#include <string>

#include "sabrel/core/error_object.h"
#include "sabrel/core/query_execution.h"
#include "sabrel/domain/package_call.h"
#include "sabrel/platform/conversions.h"
#include "sabrel/platform/platform.h"
#include "sabrel/sql/literals.h"
#include "sabrel/sql/schema_probes.h"
#include "sabrel/sql/value_conversion.h"

namespace sabrel::MSabrel {
namespace {

std::string PackageTime(const Date& date) {
  const auto services = CurrentPlatform().services;
  return FormatDateTime(date, services->Locale());
}

// A removal raises nothing, so a failure of showing it is dropped.
void ShowNotRemoved(Services& services, const RuntimeError& failure) noexcept try {
  constexpr std::string_view kCaption = "EA_Remove_Common_Entity";
  const CErrorObject error(failure);
  if (error.Number() == 0) return;
  if (!error.IsDBError()) {
    services.ShowMessage("Unable to delete Entity.\r\n" + error.Description(), kBoxCritical,
                         kCaption);
  } else if (error.DBErrorType() == dbeIntegrityConstraintViolated_ChildRecordFound) {
    services.ShowMessage(
        "This Enitity is currently being used. \r\n"
        "Please delete or modify the referencing object and try deleting again.",
        kBoxCritical, kCaption);
  }
} catch (...) {
}

// From an operation that raises nothing, whatever fails on the way.
std::string TextOf(const RuntimeError& failure) noexcept {
  try {
    return CErrorObject(failure).Text();
  } catch (...) {
  }
  try {
    return "An unexpected error occurred";
  } catch (...) {
    return "Out of memory";  // so short that it needs none
  }
}

}  // namespace

std::int32_t EA_Add_Common_Entity(std::string_view sEntityName, std::int32_t ordParent) {
  PackageCall call("EA_Client.Add_Common_Entity");
  call.Empty(kInteger).String(sEntityName).Integer(ordParent);
  TraceCall("Add Common Entity Ready.", [&] {
    return "EA_Client.Add_Common_Entity ( " + std::string(sEntityName) + "," +
           std::to_string(ordParent) + ")";
  });
  call.Execute();
  const std::int32_t id = CVInt(call.Parameter(0));
  TraceReturned(id);
  return id;
}

bool EA_Reparent_Common_Entity(std::int32_t ordEntity, std::int32_t ordParent) {
  PackageCall call("EA_Client.Reparent_Common_Entity");
  call.Integer(ordEntity).Integer(ordParent);
  TraceCall("Reparent Common Entity Ready.", [&] {
    return "EA_Client.Reparent_Common_Entity ( " + std::to_string(ordEntity) + "," +
           std::to_string(ordParent) + ")";
  });
  call.Execute();
  TraceReturned(0);  // a procedure: the line is written all the same
  return true;
}

bool EA_Add_EntityEQV(std::int32_t ordVersion, std::string_view sCommonName,
                      const Variant& sEntityLabel) {
  const std::string label = ToText(sEntityLabel);
  PackageCall call("EA_DD.EA_Add_Entity_EQV");
  call.Integer(ordVersion).String(sCommonName).String(label);
  TraceCall("Add Entity Equivalence.", [&] {
    return "EA_DD.EA_Add_Entity_EQV( " + std::to_string(ordVersion) + ", " +
           std::string(sCommonName) + ", " + label + ")";
  });
  call.Execute();
  return true;
}

bool EA_Remove_Common_Entity(std::int32_t ordEntity) {
  const auto services = CurrentPlatform().services;
  const auto failure = FailureIn([&] {
    PackageCall call("EA_Client.Remove_Common_Entity");
    call.Integer(ordEntity);
    TraceCall("Delete Common Entity Ready.", [&] {
      return "EA_Client.remove_common_entity ( " + std::to_string(ordEntity) + ")";
    });
    call.Execute();
  });
  if (failure) ShowNotRemoved(*services, *failure);
  return !failure;
}

bool EntityHasEQV(std::int32_t ordID) {
  // Callers stay cautious with an entity of an installation that cannot tell.
  if (!DoesThisProcedureExist("EA_CLIENT", "ENTITY_HAS_EQUIV")) return true;
  return ExecuteFunctionReturningLong("EA_Client.Entity_Has_Equiv", std::to_string(ordID)) >= 1;
}

std::int32_t IsEADocumentReady(std::int32_t ordGrpID, std::int32_t OrdUserID,
                               const Variant& dtTimeStamp, std::int32_t ordServerID) {
  PackageCall call("EA_EXP.Export_Required");
  call.Empty(kInteger).Integer(ordGrpID).Integer(ordServerID).Integer(OrdUserID);
  call.String(PackageTime(ToDate(dtTimeStamp)));
  TraceCall("Is EA Document(s) Ready.", [&] {
    return "EA_EXP.Export_Required ( " + std::to_string(ordGrpID) + "," +
           std::to_string(ordServerID) + "," + std::to_string(OrdUserID) + "," +
           ToText(dtTimeStamp) + ")";
  });
  call.Execute();
  // A count beyond 16 bits fails although the operation's own result is wider.
  const std::int32_t ready = ToInt16(Variant(CVInt(call.Parameter(0))));
  TraceReturned(ready);
  return ready;
}

Variant ClearEATempRecords(std::int32_t ordUser, const Date& dtTime) {
  RequirePlatform();
  const auto failure = FailureIn([&] {
    PackageCall call("EA_EXP.Clear_EXP_Required");
    const std::string time = PackageTime(dtTime);
    call.Integer(ordUser).String(time);
    TraceCall("Checking expression.", [&] {
      return "EA_EXP.Clear_EXP_Required(" + DBArgs(std::array{Variant(ordUser), Variant(time)}) +
             ")";
    });
    call.Execute();
  });
  return Variant(failure ? TextOf(*failure) : std::string());
}

}  // namespace sabrel::MSabrel
