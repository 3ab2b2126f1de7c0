// Common entities: one entity standing for those of several servers, and what is equivalent to it.
//
// The packages EA_Client, EA_DD and EA_EXP hold the logic; each operation here is one call of
// theirs. Ids are database ordinals, parent 0 is none. Dates go to the packages as text,
// "2024-03-09 17:05:00" with the locale's time separator.
//
//   const auto id = EA_Add_Common_Entity("Cell 7", 3);
//   if (!EA_Remove_Common_Entity(id)) ...;   // the user has been told why
#pragma once

#include <cstdint>
#include <string_view>

#include "sabrel/platform/date.h"
#include "sabrel/platform/variant.h"

namespace sabrel::MSabrel {

/// The new entity's id, 0 when the package gave none.
/// Errors: the call's; 2291 for an unknown parent. Cost: one call
std::int32_t EA_Add_Common_Entity(std::string_view sEntityName, std::int32_t ordParent);

/// True when the call completed. Errors: the call's. Cost: one call
bool EA_Reparent_Common_Entity(std::int32_t ordEntity, std::int32_t ordParent);

/// Makes the entity with label `sEntityLabel` of a version equivalent to a common entity; true when
/// the call completed. Errors: 94 for a null label; the call's. Cost: one call
bool EA_Add_EntityEQV(std::int32_t ordVersion, std::string_view sCommonName,
                      const Variant& sEntityLabel);

/// False when the entity could not be removed, which is shown to the user unless it is a database
/// error other than "child record found". Errors: none. Cost: one call
bool EA_Remove_Common_Entity(std::int32_t ordEntity);

/// Whether the entity has equivalents; true as well where the site cannot tell, false when asking
/// fails, which was shown.
/// Cost: a probe, cached, and one round trip
[[nodiscard]] bool EntityHasEQV(std::int32_t ordID);

/// How many documents of a group wait for an export to `ordServerID`, 0 for any server.
/// Errors: 94 for a null time, 13 for a text that is none; 6 beyond 16 bits; the call's. Cost: one
/// call
[[nodiscard]] std::int32_t IsEADocumentReady(std::int32_t ordGrpID, std::int32_t OrdUserID,
                                             const Variant& dtTimeStamp, std::int32_t ordServerID);

/// Forgets what IsEADocumentReady noted for the user at that time: "", or the text of what it
/// failed with. Errors: none. Cost: one call
[[nodiscard]] Variant ClearEATempRecords(std::int32_t ordUser, const Date& dtTime);

}  // namespace sabrel::MSabrel
