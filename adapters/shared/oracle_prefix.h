// How Oracle's messages begin.
#pragma once

#include <cstdint>
#include <string>

namespace sabrel {

/// "ORA-00942: "
[[nodiscard]] inline std::string OraclePrefix(std::int32_t number) {
  std::string digits = std::to_string(number);
  if (digits.size() < 5) digits.insert(0, 5 - digits.size(), '0');
  return "ORA-" + digits + ": ";
}

}  // namespace sabrel
