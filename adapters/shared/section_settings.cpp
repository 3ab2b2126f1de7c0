#include "adapters/shared/section_settings.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "adapters/shared/driver_kind.h"

namespace sabrel {
namespace {

bool IsSslMode(std::string_view value) {
  constexpr std::string_view kModes[] = {"require", "verify-ca", "verify-full"};
  return std::find(std::begin(kModes), std::end(kModes), value) != std::end(kModes);
}

/// Whether PostgreSQL's client library would use a Unix socket, to which it applies no SslMode. The
/// host may be a list; an empty entry means the usual socket.
bool MeansUnixSocket(std::string_view host) {
  while (true) {
    if (host.empty() || host.front() == ',' || host.front() == '/' || host.front() == '@') {
      return true;
    }
    const std::size_t comma = host.find(',');
    if (comma == std::string_view::npos) return false;
    host.remove_prefix(comma + 1);
  }
}

}  // namespace

std::string ObstacleToTls(const ConnectionProfile& profile, const SectionSettings& section) {
  if (section.SslMode.empty()) {
    return section.SslRootCert.empty()
               ? ""
               : "SslRootCert demands nothing without SslMode; add SslMode = verify-full.";
  }
  if (!IsSslMode(section.SslMode)) {
    return "SslMode wants require, verify-ca or verify-full.";
  }
  switch (KindOfDriver(profile.Driver)) {
    case DriverKind::kPostgresql: break;
    case DriverKind::kEmbedded:
      return "SslMode is for PostgreSQL; the embedded server needs no network, remove SslMode.";
    case DriverKind::kOracle:
      return "SslMode is for PostgreSQL; Oracle's client takes TLS from its own sqlnet.ora and "
             "wallet, remove SslMode.";
    case DriverKind::kUnknown:
      return "SslMode is for PostgreSQL, and Driver is none of its drivers; correct Driver or "
             "remove SslMode.";
  }
  if (MeansUnixSocket(profile.Host)) {
    return "SslMode wants a Host, since a Unix socket has no TLS; name one or remove SslMode.";
  }
  return {};
}

}  // namespace sabrel
