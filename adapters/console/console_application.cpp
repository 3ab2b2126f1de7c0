#include "adapters/console/console_application.h"

#include <unistd.h>

#include <array>
#include <utility>

#include "sabrel/platform/runtime_error.h"
#include "sabrel/platform/utf8.h"

namespace sabrel {
namespace {

// A system without a domain answers with an empty name or with the word "(none)".
std::string SystemName(int (*ask)(char*, std::size_t), std::string_view fallback) {
  std::array<char, 256> buffer{};
  if (ask(buffer.data(), buffer.size() - 1) != 0) return std::string(fallback);
  const std::string name = buffer.data();
  return name.empty() || name == "(none)" ? std::string(fallback) : name;
}

}  // namespace

ConsoleApplication::ConsoleApplication(ConsoleApplicationOptions options)
    : options_(std::move(options)), root_folder_(options_.root_folder) {
  if (options_.machine_name.empty()) {
    options_.machine_name = SystemName(::gethostname, "localhost");
  }
  if (options_.domain_name.empty()) {
    options_.domain_name = SystemName(::getdomainname, "WORKGROUP");
  }
}

std::string ConsoleApplication::ProductName() const {
  const std::lock_guard lock(mutex_);
  const auto found = properties_.find("productname");
  return found == properties_.end() ? options_.product_name : found->second;
}

std::string ConsoleApplication::ProductProperty(std::string_view name) const {
  const std::lock_guard lock(mutex_);
  const auto found = properties_.find(LowerCase(name));
  return found == properties_.end() ? std::string() : found->second;
}

void ConsoleApplication::ProductProperty(std::string_view name, std::string_view value) {
  const std::lock_guard lock(mutex_);
  properties_.insert_or_assign(LowerCase(name), std::string(value));
}

std::string ConsoleApplication::RootFolder() const {
  const std::lock_guard lock(mutex_);
  return root_folder_;
}

void ConsoleApplication::RootFolder(std::string_view folder) {
  const std::lock_guard lock(mutex_);
  root_folder_ = folder;
}

std::string ConsoleApplication::TransformPassword(std::string_view password) const {
  return options_.transform_password ? options_.transform_password(password)
                                     : std::string(password);
}

std::int32_t ConsoleApplication::ErrorCodeOf(std::int32_t number) const {
  return CarriedCode(number);
}

void ConsoleApplication::Notify() {
  if (options_.on_notify) options_.on_notify();
}

}  // namespace sabrel
