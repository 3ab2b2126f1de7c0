// The seam to the spreadsheet application, which is started only to learn its version.
#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace sabrel {

class SpreadsheetInstance {
 public:
  virtual ~SpreadsheetInstance() = default;
  /// The version as the application writes it in English: "12.0".
  [[nodiscard]] virtual std::string Version() const = 0;
};

class SpreadsheetApplication {
 public:
  virtual ~SpreadsheetApplication() = default;
  /// Always a new instance of the automation class; it ends with the returned object.
  /// Errors: when the class is not installed
  [[nodiscard]] virtual std::unique_ptr<SpreadsheetInstance> CreateInstance(
      std::string_view automation_class) = 0;
};

}  // namespace sabrel
