// Why a connection could not be made: drivers report every cause alike, so the address is asked.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "adapters/shared/deadline.h"
#include "sabrel/platform/runtime_error.h"

namespace sabrel::odbc {

/// Resolves `host` and connects to `port`, each address in turn, until one answers or `until`
/// passes. Nothing when the address takes connections; kHostUnknown, kNetworkFailed,
/// kRefusedOrSevered or kConnectTimeOut otherwise. Blocks; resolving may outlast `until`.
[[nodiscard]] std::optional<ConnectionFailure> ReachabilityOf(const std::string& host,
                                                              std::int32_t port,
                                                              const Deadline& until);
/// The same of a Unix socket; `file` is its path.
[[nodiscard]] std::optional<ConnectionFailure> ReachabilityOfSocket(const std::string& file,
                                                                    const Deadline& until);

}  // namespace sabrel::odbc
