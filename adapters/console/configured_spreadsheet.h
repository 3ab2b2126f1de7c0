// A spreadsheet application of which only the version is known, from configuration.
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "sabrel/platform/spreadsheet_application.h"

namespace sabrel {

class ConfiguredSpreadsheet final : public SpreadsheetApplication {
 public:
  /// Not installed.
  ConfiguredSpreadsheet() = default;
  /// Installed in `version`, "12.0"; an empty version is not installed.
  explicit ConfiguredSpreadsheet(std::string version) : version_(std::move(version)) {}

  /// Errors: 429 when it is not installed
  [[nodiscard]] std::unique_ptr<SpreadsheetInstance> CreateInstance(
      std::string_view automation_class) override;

 private:
  std::string version_;
};

}  // namespace sabrel
