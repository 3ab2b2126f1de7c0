// Whether this client and the server fit together, and names of releases.
//
// The server's release is a system variable. Releases that are known decide by themselves; others
// are compared with the client's own, and the user is asked whether to go on.
//
//   if (!IsClientServerCompatible()) Quit();
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace sabrel::MSabrel {

/// Whether to go on; the user may have been asked or told why not. False also for every failure.
/// Errors: none once a platform is installed. Cost: one round trip
[[nodiscard]] bool IsClientServerCompatible();

/// Whether the installed system supports a network release, "R17" for 17, letter case ignored. The
/// releases are read on first use and never again, also when that fails: then none is supported.
/// Errors: none once a platform is installed. Cost: at most two round trips on first use, then none
[[nodiscard]] bool IsLucentVersionSupported(std::string_view sVersion);

/// The display name of a module's version, "" when there is none, which was shown in a box.
/// Errors: of that box; 94 for a null name. Cost: one round trip
[[nodiscard]] std::string GetModuleVersionName(std::int32_t ordModule, std::int32_t ordVersion);

}  // namespace sabrel::MSabrel
