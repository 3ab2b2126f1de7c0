// Connection profiles: where the session's Data Server is, and which other servers are known.
//
// A profile file is text: a `[name]` line starts a profile, `Setting = value` lines follow with the
// settings of ConnectionProfile and SectionSettings (any case); lines that start with "#" or ";"
// are comments. The first profile is the session's unless the caller names one. An unknown setting,
// a bad value or a name given twice is refused, naming file, line and remedy, and showing nothing
// of the line itself: it may hold a password.
//
//   [plant]
//   Driver = sqlite
//   Database = /var/lib/plant.site
//   ReceiveTimeout = 60
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "adapters/shared/section_settings.h"
#include "sabrel/platform/connection_profile.h"
#include "sabrel/platform/data_link.h"

namespace sabrel {

/// Where a statement really goes: a profile with everything that the caller's address says in its
/// place.
struct ResolvedTarget {
  ConnectionProfile profile;
  SectionSettings section;
  /// The address stands in no profile; `profile` is the session's with that address.
  bool address_replaced = false;
};

class ProfileSet {
 public:
  /// `session` serves every statement that names no host.
  explicit ProfileSet(ConnectionProfile session, SectionSettings section = {}) {
    profiles_.push_back(std::move(session));
    sections_.push_back(std::move(section));
  }

  /// Another known server. Errors: 5 when its name (any case) is taken
  void Add(ConnectionProfile profile, SectionSettings section = {});
  /// Makes the profile `name` (any case) the session's. Errors: 5 naming the profiles that there
  /// are
  void UseForSession(std::string_view name);
  /// Gives every profile this time-out.
  void ReceiveTimeout(std::int32_t seconds);
  [[nodiscard]] const ConnectionProfile& Session() const noexcept { return profiles_[session_]; }
  [[nodiscard]] const std::vector<ConnectionProfile>& All() const noexcept { return profiles_; }
  /// Of each of All(), in its order.
  [[nodiscard]] const std::vector<SectionSettings>& Sections() const noexcept { return sections_; }

  /// Empty host: the session's profile. Host (and port, when given) choose the profile with that
  /// address, and with that user when one is given; without one, the session's profile gets the
  /// address. Port 0, an empty user or password and time-out 0 are that profile's setting, but its
  /// password serves its own user only. The time-out is the smaller one of the address's and the
  /// profile's that is not 0. The section's settings are those of the profile chosen; one
  /// whose address was replaced also demands TLS where any profile with that address does.
  [[nodiscard]] ResolvedTarget Resolve(const DataServerAddress& address) const;

 private:
  std::vector<ConnectionProfile> profiles_;
  std::vector<SectionSettings> sections_;  // of each profile
  std::size_t session_ = 0;
};

struct ProfileFile {
  ProfileSet profiles;
  /// What the user should know, one sentence each: others may read the passwords in the file.
  std::vector<std::string> warnings;
};

/// `receive_timeout_s` is the ReceiveTimeout of profiles that have none.
/// Errors: 5 with a text that names file, line and remedy
[[nodiscard]] ProfileFile ReadProfileFile(const std::string& path,
                                          std::int32_t receive_timeout_s = 0);

}  // namespace sabrel
