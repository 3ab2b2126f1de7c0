// Numbers are kept with the digits that their column has: 1.239 in a NUMBER(5,2) is 1.24.
//
// The engine rounds nothing, so triggers do, behind the writing of a row. They look at columns with
// a scale only, and at a row that has nothing to round they cost a look at its kinds.
#pragma once

#include <string>
#include <string_view>

#include "adapters/sqlite/connection.h"

namespace sabrel::sqlite {

/// Makes the triggers of `table` for the columns that it has now. `table` may be in any case.
void AddRounding(Connection& engine, std::string_view table);
/// Takes them away: the engine changes no column that a trigger names.
void DropRounding(Connection& engine, std::string_view table);

}  // namespace sabrel::sqlite
