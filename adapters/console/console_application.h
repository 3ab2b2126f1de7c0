// The host application of a program that is run from a terminal.
//
// Product properties and the root folder are what was last put; names of properties ignore case.
// Machine and domain are asked once from the system, without a network look-up.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <string_view>

#include "sabrel/platform/application.h"

namespace sabrel {

struct ConsoleApplicationOptions {
  /// Serves ProductName() as long as the property "ProductName" was never put.
  std::string product_name;
  std::string root_folder;
  /// The system's names when empty.
  std::string machine_name;
  std::string domain_name;
  /// How the installation's database routines want a password. Its own form is not built in;
  /// without a function the password is handed over as it stands.
  std::function<std::string(std::string_view)> transform_password;
  /// Called after each failed query, on the thread that ran it.
  std::function<void()> on_notify;
};

class ConsoleApplication final : public Application {
 public:
  explicit ConsoleApplication(ConsoleApplicationOptions options = {});

  [[nodiscard]] std::string ProductName() const override;
  [[nodiscard]] std::string ProductProperty(std::string_view name) const override;
  void ProductProperty(std::string_view name, std::string_view value) override;
  [[nodiscard]] std::string RootFolder() const override;
  void RootFolder(std::string_view folder) override;
  [[nodiscard]] std::string MachineName() const override { return options_.machine_name; }
  [[nodiscard]] std::string DomainName() const override { return options_.domain_name; }
  /// Errors: what the function in the options raises
  [[nodiscard]] std::string TransformPassword(std::string_view password) const override;
  [[nodiscard]] std::int32_t ErrorCodeOf(std::int32_t number) const override;
  /// Errors: what the callback in the options raises
  void Notify() override;

 private:
  ConsoleApplicationOptions options_;
  mutable std::mutex mutex_;
  std::map<std::string, std::string> properties_;  // under lower-case names
  std::string root_folder_;
};

}  // namespace sabrel
