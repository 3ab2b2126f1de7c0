// Names of result columns as Oracle gives them.
//
// The engine names an unaliased column by the text that it was given, which is the rewritten one.
// Here the rewriting is taken back: constants stand in their places again, calls of this server's
// own functions read as the operators and names that the statement wrote, everything in upper case
// and without blanks. A quoted alias stays as it is.
#pragma once

#include <string>
#include <string_view>

#include "adapters/shared/dialect/dialect.h"

namespace sabrel::sqlite {

/// Errors: none; a text that cannot be read as an expression stays, in upper case
[[nodiscard]] std::string ResultName(std::string_view engine_name,
                                     const dialect::Rewritten& rewritten);

}  // namespace sabrel::sqlite
