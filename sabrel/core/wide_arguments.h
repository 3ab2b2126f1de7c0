// Numbers of more than 32 bits are refused by the compiler where an operation takes 32.
//
// Each overload here is deleted and is chosen when any argument is wider, which the operation would
// silently truncate. Convert the argument where its range is known. The operations with output
// parameters (GetSecondsRange, GetSelRange, GetStartEndHour) have none.
#pragma once

#include "sabrel/platform/narrowing.h"

namespace sabrel::GSabrel {

template <class... Arguments>
requires AnyWiderThan32Bits<Arguments...>
void ExecuteQuery(Arguments&&...) = delete;
template <class... Arguments>
requires AnyWiderThan32Bits<Arguments...>
void ExecuteQueryReturningLong(Arguments&&...) = delete;
template <class... Arguments>
requires AnyWiderThan32Bits<Arguments...>
void DBOrd(Arguments&&...) = delete;
template <class... Arguments>
requires AnyWiderThan32Bits<Arguments...>
void DBInt(Arguments&&...) = delete;
template <class... Arguments>
requires AnyWiderThan32Bits<Arguments...>
void CVInt(Arguments&&...) = delete;
template <class... Arguments>
requires AnyWiderThan32Bits<Arguments...>
void CVDbl(Arguments&&...) = delete;
template <class... Arguments>
requires AnyWiderThan32Bits<Arguments...>
void GetModuleVersionName(Arguments&&...) = delete;
template <class... Arguments>
requires AnyWiderThan32Bits<Arguments...>
void EA_Add_Common_Entity(Arguments&&...) = delete;
template <class... Arguments>
requires AnyWiderThan32Bits<Arguments...>
void EA_Reparent_Common_Entity(Arguments&&...) = delete;
template <class... Arguments>
requires AnyWiderThan32Bits<Arguments...>
void EA_Add_EntityEQV(Arguments&&...) = delete;
template <class... Arguments>
requires AnyWiderThan32Bits<Arguments...>
void EA_Remove_Common_Entity(Arguments&&...) = delete;
template <class... Arguments>
requires AnyWiderThan32Bits<Arguments...>
void EntityHasEQV(Arguments&&...) = delete;
template <class... Arguments>
requires AnyWiderThan32Bits<Arguments...>
void IsEADocumentReady(Arguments&&...) = delete;
template <class... Arguments>
requires AnyWiderThan32Bits<Arguments...>
void ClearEATempRecords(Arguments&&...) = delete;
template <class... Arguments>
requires AnyWiderThan32Bits<Arguments...>
void IsLengthyReport(Arguments&&...) = delete;
template <class... Arguments>
requires AnyWiderThan32Bits<Arguments...>
void IsLengthyReportGroup(Arguments&&...) = delete;
template <class... Arguments>
requires AnyWiderThan32Bits<Arguments...>
void IsCspNeeded(Arguments&&...) = delete;
template <class... Arguments>
requires AnyWiderThan32Bits<Arguments...>
void IsDtsNeeded(Arguments&&...) = delete;
template <class... Arguments>
requires AnyWiderThan32Bits<Arguments...>
void TestRowLimit(Arguments&&...) = delete;
template <class... Arguments>
requires AnyWiderThan32Bits<Arguments...>
void IsReportGroupServerDocumentValid(Arguments&&...) = delete;
template <class... Arguments>
requires AnyWiderThan32Bits<Arguments...>
void TestServerConnection(Arguments&&...) = delete;
template <class... Arguments>
requires AnyWiderThan32Bits<Arguments...>
void FindOrCreateUser(Arguments&&...) = delete;
template <class... Arguments>
requires AnyWiderThan32Bits<Arguments...>
void CopyOriginalQueryText(Arguments&&...) = delete;
template <class... Arguments>
requires AnyWiderThan32Bits<Arguments...>
void CopyScenarioQueryText(Arguments&&...) = delete;
template <class... Arguments>
requires AnyWiderThan32Bits<Arguments...>
void SystemValueExists(Arguments&&...) = delete;
template <class... Arguments>
requires AnyWiderThan32Bits<Arguments...>
void DoesTableExist(Arguments&&...) = delete;
template <class... Arguments>
requires AnyWiderThan32Bits<Arguments...>
void DoesFieldExist(Arguments&&...) = delete;
template <class... Arguments>
requires AnyWiderThan32Bits<Arguments...>
void DoesDbObjectExist(Arguments&&...) = delete;
template <WiderThan32Bits Wide>
void DBFloat(double i, Wide iNull) = delete;

}  // namespace sabrel::GSabrel
