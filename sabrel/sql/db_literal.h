// Text that is already valid SQL and must not be quoted again.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "sabrel/platform/runtime_error.h"
#include "sabrel/platform/variant.h"

namespace sabrel {

/// A value: copies are independent. Nothing is validated. Put into a Variant with
/// `CDBLiteral::ToVariant`, it passes through `DBArg` untouched.
class CDBLiteral final : public Object {
 public:
  CDBLiteral() = default;
  explicit CDBLiteral(std::string value) : value_(std::move(value)) {}

  /// SQL text, to stand in a statement exactly as it is.
  [[nodiscard]] const std::string& Value() const noexcept { return value_; }
  void Value(std::string_view value) { AssignText(value_, value); }

  [[nodiscard]] Variant DefaultProperty() const override { return Variant(value_); }
  /// Errors: 7
  [[nodiscard]] Variant ToVariant() const {
    return RaisingRuntimeErrors(
        [&] { return Variant(ObjectRef(std::make_shared<const CDBLiteral>(*this))); });
  }

 private:
  std::string value_;
};

/// Joining a literal with statement text.
[[nodiscard]] inline std::string operator+(std::string text, const CDBLiteral& literal) {
  RaisingRuntimeErrors([&] { text += literal.Value(); });
  return text;
}

}  // namespace sabrel
