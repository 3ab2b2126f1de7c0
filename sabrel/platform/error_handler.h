// Raises failures by code, with the message that was registered for the code.
//
// A message may hold "$1", "$2", ...: each is replaced by the argument of that number, once; text
// that an argument brings is never substituted again, and a number without an argument leaves
// nothing behind.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "sabrel/platform/runtime_error.h"

namespace sabrel {

class ErrorHandler {
 public:
  [[nodiscard]] const std::string& Source() const noexcept { return source_; }
  void Source(std::string_view source) { AssignText(source_, source); }
  /// Replaces an earlier message of the same code.
  void Register(std::int32_t code, std::string_view message);
  /// Throws a RuntimeError with number `kCodeBase + code`, this handler's source and the filled
  /// message; `module` and `procedure` stay readable on it. An unregistered code has the message
  /// "Error <code>".
  [[noreturn]] void Raise(std::int32_t code, std::string_view module, std::string_view procedure,
                          const std::vector<std::string>& arguments) const;

 private:
  std::string source_;
  std::map<std::int32_t, std::string> messages_;
};

}  // namespace sabrel
