// What a section of a profile file says besides the nine settings of its ConnectionProfile.
//
// Every connection by the section has these settings, also where a statement replaces the address;
// connections with different settings are never exchanged for each other.
#pragma once

#include <string>
#include <tuple>

#include "sabrel/platform/connection_profile.h"

namespace sabrel {

struct SectionSettings {
  /// "require", "verify-ca" or "verify-full": TLS or no connection. Empty: not demanded.
  std::string SslMode;
  /// Absolute path of the certificates that may sign the server's; empty: the driver's own choice.
  std::string SslRootCert;
  /// The format of the session's dates where a statement names none.
  std::string DateFormat = "DD-MON-RR";

  friend bool operator<(const SectionSettings& a, const SectionSettings& b) {
    return std::tie(a.SslMode, a.SslRootCert, a.DateFormat) <
           std::tie(b.SslMode, b.SslRootCert, b.DateFormat);
  }
};

/// Why a connection by `profile` cannot have the TLS that `section` demands, and the remedy; names
/// settings, never their values. Empty where it can, or nothing is demanded.
[[nodiscard]] std::string ObstacleToTls(const ConnectionProfile& profile,
                                        const SectionSettings& section);

}  // namespace sabrel
