#include "sabrel/platform/variant.h"

#include <array>

#include "sabrel/platform/runtime_error.h"

namespace sabrel {

Variant Object::DefaultProperty() const { throw RuntimeError(RuntimeErrorNumber::kTypeMismatch); }

void Variant::RaiseOtherKind() { throw RuntimeError(RuntimeErrorNumber::kTypeMismatch); }

std::string_view KindName(VariantKind kind) noexcept {
  static constexpr std::array<std::string_view, 15> kNames = {
      "empty",  "null",    "byte",     "16-bit integer", "32-bit integer",
      "single", "double",  "currency", "decimal",        "date",
      "string", "boolean", "error",    "object",         "array"};
  const auto index = static_cast<std::size_t>(kind);
  return index < kNames.size() ? kNames[index] : "unknown";
}

}  // namespace sabrel
