#include "sabrel/config/connection.h"

#include "sabrel/config/feature_manager.h"
#include "sabrel/core/session.h"
#include "sabrel/platform/conversions.h"
#include "sabrel/platform/platform.h"
#include "sabrel/platform/runtime_error.h"
#include "sabrel/platform/text_string.h"

namespace sabrel {

void CConnection::DestPath(const Variant& value) { dest_path_ = ToText(value); }

void CConnection::MachineName(const Variant& value) { machine_name_ = ToText(value); }

bool CConnection::InitializeConnectionFeatures() {
  RequirePlatform();
  try {
    const TextString product_type(MSabrel::ProductProperty("ProductType"));
    constexpr bool kIgnoreCase = true;
    IsEnterpriseServer(product_type.Compare("Enterprise Server", kIgnoreCase) == 0);
    const auto features = GFeatureManager::FeatureManager();
    SesEnabled(features->IsFeatureEnabled("SES_Group"));
    SoftAlarmsEnabled(features->IsFeatureEnabled("Soft_Alarms_Group"));
    AggregatorEnabled(features->IsFeatureEnabled("Aggregator_Job_Type"));
    PCMDEnabled(features->IsFeatureEnabled("PCMD_Group"));
    return true;
  } catch (...) {
    return false;
  }
}

namespace MSabrel {

std::shared_ptr<CConnection> CreateSMConnection(const ProfileRef& oPfl, std::string_view sDestPath,
                                                std::string_view sMachineName) {
  auto connection = std::make_shared<CConnection>();
  connection->Profile(std::make_shared<const ConnectionProfile>(Deref(oPfl)));
  connection->DestPath(Variant(sDestPath));
  connection->MachineName(Variant(sMachineName));
  return connection;
}

std::shared_ptr<CConnection> CopyConnection(const std::shared_ptr<const CConnection>& oConnection) {
  const CConnection& source = Deref(oConnection);
  auto copy = std::make_shared<CConnection>();
  copy->DestPath(source.DestPath());
  copy->MachineName(source.MachineName());
  copy->IsEnterpriseServer(source.IsEnterpriseServer());
  copy->PCMDEnabled(source.PCMDEnabled());
  copy->SesEnabled(source.SesEnabled());
  copy->SoftAlarmsEnabled(source.SoftAlarmsEnabled());
  copy->AggregatorEnabled(source.AggregatorEnabled());
  const ProfileRef& profile = source.Profile();
  copy->Profile(profile ? std::make_shared<const ConnectionProfile>(*profile)
                        : std::make_shared<const ConnectionProfile>());
  return copy;
}

}  // namespace MSabrel
}  // namespace sabrel
