#include "adapters/console/configured_spreadsheet.h"

#include "sabrel/platform/runtime_error.h"

namespace sabrel {
namespace {

class Instance final : public SpreadsheetInstance {
 public:
  explicit Instance(std::string version) : version_(std::move(version)) {}
  [[nodiscard]] std::string Version() const override { return version_; }

 private:
  std::string version_;
};

}  // namespace

std::unique_ptr<SpreadsheetInstance> ConfiguredSpreadsheet::CreateInstance(
    std::string_view automation_class) {
  if (version_.empty()) {
    throw RuntimeError(RuntimeErrorNumber::kCannotCreateObject,
                       "The spreadsheet application (" + std::string(automation_class) +
                           ") is not installed; configure its version (for example 12.0) if it "
                           "is");
  }
  return std::make_unique<Instance>(version_);
}

}  // namespace sabrel
