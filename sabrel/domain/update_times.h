// Whether the lists of entities and fields that a client has loaded are still current.
//
// The database knows when entities and field definitions last changed. A client that loads a list
// notes that time with LastEntityUpdate or LastFieldUpdate; later EntitiesCurrent or FieldsCurrent
// compares it with the database's. The noted times belong to the thread and are the zero date until
// then.
//
//   LastEntityUpdate();  LoadEntities();  ...  if (!EntitiesCurrent()) LoadEntities();
#pragma once

namespace sabrel::MSabrel {

/// Notes the database's time of the last change; the zero date when it has none or the query fails,
/// which was shown already. Cost: one round trip
void LastEntityUpdate();
void LastFieldUpdate();

/// False when the database's time is later, by a second or more, than the one noted; true also when
/// the query fails. Cost: one round trip
[[nodiscard]] bool EntitiesCurrent();
[[nodiscard]] bool FieldsCurrent();

}  // namespace sabrel::MSabrel
