// What a driver says of a call that failed.
#pragma once

#include <cstdint>
#include <string>

namespace sabrel::odbc {

struct Diagnosis {
  /// Five characters: "23505".
  std::string state;
  /// The driver's or the server's number.
  std::int32_t native_number = 0;
  /// UTF-8, without the "[vendor][component]" prefixes.
  std::string message;
};

}  // namespace sabrel::odbc
