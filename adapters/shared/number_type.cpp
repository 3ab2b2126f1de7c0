#include "adapters/shared/number_type.h"

#include <algorithm>

#include "sabrel/platform/utf8.h"

namespace sabrel {

bool IsNumberType(std::string_view type) noexcept {
  constexpr std::string_view kTypes[] = {
      "NUMBER", "INTEGER", "INT", "SMALLINT", "DECIMAL", "DEC", "NUMERIC", "FLOAT", "REAL",
      "DOUBLE PRECISION", "DOUBLE", "BINARY_FLOAT", "BINARY_DOUBLE",
      // Of routines only.
      "PLS_INTEGER", "BINARY_INTEGER", "SIMPLE_INTEGER", "SIMPLE_FLOAT", "SIMPLE_DOUBLE", "NATURAL",
      "NATURALN", "POSITIVE", "POSITIVEN", "SIGNTYPE"};
  return std::any_of(std::begin(kTypes), std::end(kTypes),
                     [type](std::string_view one) { return EqualIgnoringCase(type, one); });
}

}  // namespace sabrel
