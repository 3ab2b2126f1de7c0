#include "sabrel/platform/variant.h"

#include "sabrel/platform/runtime_error.h"

namespace sabrel {

Variant Object::DefaultProperty() const { throw RuntimeError(RuntimeErrorNumber::kTypeMismatch); }

std::string Variant::Copied(std::string_view text) {
  return RaisingRuntimeErrors([&] { return std::string(text); });
}

void Variant::KeepText(const std::string& text) {
  if (auto* own = std::get_if<std::string>(&storage_)) return AssignText(*own, text);
  storage_ = Copied(text);
}

VariantArray Variant::Kept(std::vector<Variant> elements) {
  return RaisingRuntimeErrors(
      [&] { return std::make_shared<const std::vector<Variant>>(std::move(elements)); });
}

void Variant::RaiseOtherKind() { throw RuntimeError(RuntimeErrorNumber::kTypeMismatch); }

}  // namespace sabrel
