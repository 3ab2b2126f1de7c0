// Functions that rewritten statements call where the engine's own operators differ from the
// server's language.
#pragma once

#include "adapters/sqlite/connection.h"

namespace sabrel::sqlite {

/// sabrel_single(v), an aggregate: the value of its only row, 1427 at a second one.
/// sabrel_compare(a, b): negative, 0 or positive; null beside null. Errors: 1722, 1861, 932
void RegisterDialectSupport(Connection& connection);

}  // namespace sabrel::sqlite
