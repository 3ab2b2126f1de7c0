// The seam to the host application: its product, its machine, its passwords.
//
// One instance serves the whole process; every function may be called from any thread.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace sabrel {

class Application {
 public:
  virtual ~Application() = default;

  /// The name used in captions; what the property "ProductName" was set to, else the host's own
  /// name or empty.
  [[nodiscard]] virtual std::string ProductName() const = 0;
  /// A property as it was last put; empty when it never was.
  [[nodiscard]] virtual std::string ProductProperty(std::string_view name) const = 0;
  virtual void ProductProperty(std::string_view name, std::string_view value) = 0;
  [[nodiscard]] virtual std::string RootFolder() const = 0;
  virtual void RootFolder(std::string_view folder) = 0;

  /// Never empty in a shipped adapter: "localhost" where the machine has no name.
  [[nodiscard]] virtual std::string MachineName() const = 0;
  /// Never empty in a shipped adapter: "WORKGROUP" where the machine has joined none.
  [[nodiscard]] virtual std::string DomainName() const = 0;

  /// The form in which a password is handed to the database's routines.
  [[nodiscard]] virtual std::string TransformPassword(std::string_view password) const = 0;
  /// The error code carried in an error number, 0 when it carries none.
  [[nodiscard]] virtual std::int32_t ErrorCodeOf(std::int32_t number) const = 0;
  /// Told, without arguments, after each query that failed.
  virtual void Notify() = 0;
};

}  // namespace sabrel
