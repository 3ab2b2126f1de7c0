// Which server a profile's driver belongs to.
#pragma once

#include <cstdint>
#include <string_view>

namespace sabrel {

enum class DriverKind : std::uint8_t { kUnknown, kEmbedded, kPostgresql, kOracle };

/// By the driver's name, in any case: "sqlite" is the embedded server, an ODBC driver is known by a
/// part of its name.
[[nodiscard]] DriverKind KindOfDriver(std::string_view driver);

}  // namespace sabrel
