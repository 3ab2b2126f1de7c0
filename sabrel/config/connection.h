// A Data Server as it is handed from one tool to another: a profile of its own, a destination path,
// a machine's name, and which features the connection has.
//
// Only the component fills a descriptor. Its features are those of the session's own database, not
// of the server that its profile names.
//
//   auto connection = GSabrel::CreateSMConnection(profile, path, machine);
//   if (connection->InitializeConnectionFeatures() && connection->SesEnabled()) ...
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "sabrel/platform/connection_profile.h"
#include "sabrel/platform/variant.h"

namespace sabrel {

class CConnection;
using ProfileRef = std::shared_ptr<const ConnectionProfile>;

namespace MSabrel {

/// A descriptor with a copy of `oPfl`; its flags are false until InitializeConnectionFeatures.
/// Errors: 91 for no profile. Cost: no round trip
[[nodiscard]] std::shared_ptr<CConnection> CreateSMConnection(const ProfileRef& oPfl,
                                                              std::string_view sDestPath,
                                                              std::string_view sMachineName);
/// A descriptor with the same flags and a copy of the profile, an empty one where there is none.
/// Errors: 91 for no descriptor. Cost: no round trip
[[nodiscard]] std::shared_ptr<CConnection> CopyConnection(
    const std::shared_ptr<const CConnection>& oConnection);

}  // namespace MSabrel

class CConnection {
 public:
  /// Never shared with the caller's; null in a descriptor that was not made by the component's
  /// operations.
  [[nodiscard]] const ProfileRef& Profile() const noexcept { return profile_; }
  /// Texts.
  [[nodiscard]] Variant DestPath() const { return Variant(dest_path_); }
  [[nodiscard]] Variant MachineName() const { return Variant(machine_name_); }
  [[nodiscard]] bool IsEnterpriseServer() const noexcept { return is_enterprise_server_; }
  [[nodiscard]] bool SesEnabled() const noexcept { return ses_enabled_; }
  [[nodiscard]] bool SoftAlarmsEnabled() const noexcept { return soft_alarms_enabled_; }
  [[nodiscard]] bool AggregatorEnabled() const noexcept { return aggregator_enabled_; }
  [[nodiscard]] bool PCMDEnabled() const noexcept { return pcmd_enabled_; }

  /// Reads the flags; false when that fails, the flags keeping what was set so far. A second try
  /// answers with the features as the first left them: none when they could not be loaded.
  /// Errors: none once a platform is installed. Cost: none once product and features are known, one
  /// round trip for the product and those of CFeatureManager::Initialize before
  bool InitializeConnectionFeatures();

 private:
  friend std::shared_ptr<CConnection> MSabrel::CreateSMConnection(const ProfileRef&,
                                                                  std::string_view,
                                                                  std::string_view);
  friend std::shared_ptr<CConnection> MSabrel::CopyConnection(
      const std::shared_ptr<const CConnection>&);
  void Profile(ProfileRef value) noexcept { profile_ = std::move(value); }
  void DestPath(const Variant& value);
  void MachineName(const Variant& value);
  void IsEnterpriseServer(bool value) noexcept { is_enterprise_server_ = value; }
  void SesEnabled(bool value) noexcept { ses_enabled_ = value; }
  void SoftAlarmsEnabled(bool value) noexcept { soft_alarms_enabled_ = value; }
  void AggregatorEnabled(bool value) noexcept { aggregator_enabled_ = value; }
  void PCMDEnabled(bool value) noexcept { pcmd_enabled_ = value; }

  std::string dest_path_;
  std::string machine_name_;
  ProfileRef profile_;
  bool is_enterprise_server_ = false;
  bool ses_enabled_ = false;
  bool soft_alarms_enabled_ = false;
  bool pcmd_enabled_ = false;
  bool aggregator_enabled_ = false;
};

}  // namespace sabrel
