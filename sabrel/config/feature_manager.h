// Which features of the suite are switched on at this site.
//
// A site with the switch table PM_Feature_Changes says so itself. For an older one it is derived
// from what is installed and active: groups, categories, tools, tabs, job types, tables. Either way
// only the features of one list can be enabled.
//
//   if (GFeatureManager::FeatureManager()->IsFeatureEnabled("SES_Group")) ...
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string_view>

#include "sabrel/platform/named_values.h"

namespace sabrel {

/// What is looked for to derive a feature.
enum class FeatureProbe : std::uint8_t { kCategory, kGroup, kTool, kTab, kJobType, kTable };

/// One rule of the derivation: the feature is configured when the probe finds the argument.
struct FeatureRule {
  FeatureProbe probe;
  std::string_view argument;
  std::string_view feature;
};

/// In the order in which they are probed.
extern const std::array<FeatureRule, 24> kFeatureRules;
/// All that can be enabled; those without a rule by the switch table only.
extern const std::array<std::string_view, 29> kFeatureNames;

class CFeatureManager {
 public:
  /// Whether `sFeature` is enabled, case ignored; false before `Initialize`. Errors: none. Cost: no
  /// round trip, no allocation
  [[nodiscard]] bool IsFeatureEnabled(std::string_view sFeature) const noexcept;

  /// Starts over: finds what is configured and enables what is on the list. A probe that fails
  /// counts as not configured.
  /// Errors: of LoadFeatures, nothing being enabled then. Cost: one probe and one round trip with
  /// the switch table, else at most 22 round trips and 3 probes
  void Initialize();

  /// Adds the features that are switched on in the switch table, up to a failure. Errors: 91 when
  /// the query fails, which was shown already; 94 for a null name. Cost: one round trip
  void LoadFeatures(NamedValues& sts) const;

 private:
  NamedValues enabled_;
  NamedValues configured_;
};

namespace GFeatureManager {

/// This thread's manager, made and initialized on first use. Errors: of the first Initialize, once;
/// the manager is kept all the same
[[nodiscard]] std::shared_ptr<CFeatureManager> FeatureManager();

}  // namespace GFeatureManager
}  // namespace sabrel
