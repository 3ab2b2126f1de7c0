// The engine's result codes as the native numbers that callers know.
//
// A code decides where there is one; the engine's text only where it offers nothing else (a missing
// table and a missing column share one code). The side of a foreign key that failed follows from
// the verb of the statement.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "adapters/shared/verb.h"

namespace sabrel::sqlite {

struct NativeError {
  std::int32_t number = 0;
  std::string message;  // without "ORA-"
};

/// `code` is an extended result code, `text` the engine's message.
[[nodiscard]] NativeError NativeErrorOf(int code, std::string_view text, Verb verb);

/// Prefixes of the names of the constraints that this server adds to columns, to check what the
/// engine does not.
inline constexpr std::string_view kWidthCheck = "sabrel width ";
inline constexpr std::string_view kTextCheck = "sabrel text ";
inline constexpr std::string_view kNumberCheck = "sabrel number ";
inline constexpr std::string_view kNoDateCheck = "sabrel nodate ";
inline constexpr std::string_view kPrecisionCheck = "sabrel precision ";
inline constexpr std::string_view kOverflowCheck = "sabrel overflow ";
inline constexpr std::string_view kDateCheck = "sabrel date ";

}  // namespace sabrel::sqlite
