// The seam to the spreadsheet application, which is started only to learn its version.
#pragma once

#include <memory>
#include <string>

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
  /// Always a new instance; it ends with the returned object. Errors: when it is not installed
  [[nodiscard]] virtual std::unique_ptr<SpreadsheetInstance> CreateInstance() = 0;
};

}  // namespace sabrel
