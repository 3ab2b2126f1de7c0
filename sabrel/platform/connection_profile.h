// The nine settings of a connection to a Data Server.
#pragma once

#include <cstdint>
#include <string>

namespace sabrel {

struct ConnectionProfile {
  std::string Name;
  /// Name of the driver; "sqlite" is the embedded server.
  std::string Driver;
  std::string Host;
  std::int32_t Port = 0;
  /// Database, service or file.
  std::string Database;
  std::string UserName;
  std::string Password;
  /// Seconds; 0 is no limit.
  std::int32_t ConnectTimeout = 0;
  std::int32_t ReceiveTimeout = 0;

  friend bool operator==(const ConnectionProfile&, const ConnectionProfile&) = default;
};

}  // namespace sabrel
