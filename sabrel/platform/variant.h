// A value of any kind that a field can hold or a caller can pass as an argument.
//
// Construction is explicit per kind: `Variant(5)` is a 32-bit integer, `Variant(5.0F)` a single,
// `Variant("a")` a string; a `long` or a pointer does not compile, so no argument changes its kind
// on the way. Empty (nothing was ever assigned) and null (the database's no-value) are different
// kinds. Reading asks for the kind that is there; turning one kind into another is the business of
// `conversions.h`.
//
//   Variant v(2.5);  if (v.kind() == VariantKind::kDouble) Use(v.Get<double>());
#pragma once

#include <concepts>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "sabrel/platform/date.h"
#include "sabrel/platform/decimal.h"

namespace sabrel {

class Variant;

enum class VariantKind : std::uint8_t {
  kEmpty,
  kNull,
  kByte,
  kInt16,
  kInt32,
  kSingle,
  kDouble,
  kCurrency,
  kDecimal,
  kDate,
  kString,
  kBoolean,
  kError,
  kObject,
  kArray,
};

/// The database's no-value.
struct Null {
  friend bool operator==(const Null&, const Null&) = default;
};

/// An error number as a value (not a failure).
struct ErrorValue {
  std::int32_t number = 0;
  friend bool operator==(const ErrorValue&, const ErrorValue&) = default;
};

/// An object that a Variant can refer to. `DefaultProperty` is what conversions read.
class Object {
 public:
  virtual ~Object() = default;
  /// The value that stands for the object. Errors: 13 when the object has none (the default)
  [[nodiscard]] virtual Variant DefaultProperty() const;

 protected:
  Object() = default;
  Object(const Object&) = default;
  Object& operator=(const Object&) = default;
  Object(Object&&) = default;
  Object& operator=(Object&&) = default;
};

using ObjectRef = std::shared_ptr<const Object>;
using VariantArray = std::shared_ptr<const std::vector<Variant>>;

class Variant {
 public:
  using Storage =
      std::variant<std::monostate, Null, std::uint8_t, std::int16_t, std::int32_t, float, double,
                   Currency, Decimal, Date, std::string, bool, ErrorValue, ObjectRef, VariantArray>;

  /// Empty.
  Variant() = default;
  // Text is copied before the copy begins to exist: with gcc 12's library a variant like this one,
  // whose alternatives all move without failing, destroys a wrong alternative when its own copying
  // fails. Errors of everything that keeps text or elements: 7
  Variant(const Variant& other)
      : storage_(other.kind() == VariantKind::kString ? Storage(Copied(*other.GetIf<std::string>()))
                                                      : Storage(other.storage_)) {}
  Variant& operator=(const Variant& other) {
    if (const auto* text = other.GetIf<std::string>()) {
      KeepText(*text);
    } else {
      storage_ = other.storage_;
    }
    return *this;
  }
  Variant(Variant&&) noexcept = default;
  Variant& operator=(Variant&&) noexcept = default;
  ~Variant() = default;

  /// One of the kinds, chosen by the exact type of `value`.
  template <class T>
  requires(std::same_as<T, Null> || std::same_as<T, std::uint8_t> ||
           std::same_as<T, std::int16_t> || std::same_as<T, std::int32_t> ||
           std::same_as<T, float> || std::same_as<T, double> || std::same_as<T, Currency> ||
           std::same_as<T, Decimal> || std::same_as<T, Date> || std::same_as<T, bool> ||
           std::same_as<T, ErrorValue> || std::same_as<T, ObjectRef> ||
           std::same_as<T, VariantArray>) explicit Variant(T value)
      : storage_(std::move(value)) {}

  explicit Variant(std::string&& text) noexcept : storage_(std::move(text)) {}
  explicit Variant(const std::string& text) : storage_(Copied(text)) {}
  explicit Variant(std::string_view text) : storage_(Copied(text)) {}
  explicit Variant(const char* text) : storage_(Copied(text)) {}
  explicit Variant(std::vector<Variant> elements) : storage_(Kept(std::move(elements))) {}

  [[nodiscard]] VariantKind kind() const noexcept {
    return static_cast<VariantKind>(storage_.index());
  }
  [[nodiscard]] bool IsEmpty() const noexcept { return kind() == VariantKind::kEmpty; }
  [[nodiscard]] bool IsNull() const noexcept { return kind() == VariantKind::kNull; }

  /// The value as the kind it has. Errors: 13 when it has another kind
  template <class T>
  [[nodiscard]] const T& Get() const {
    if (const T* value = std::get_if<T>(&storage_)) return *value;
    RaiseOtherKind();
  }
  template <class T>
  [[nodiscard]] const T* GetIf() const noexcept {
    return std::get_if<T>(&storage_);
  }

  /// Same kind and same value; objects and arrays by identity.
  friend bool operator==(const Variant&, const Variant&) = default;

 private:
  [[noreturn]] static void RaiseOtherKind();
  static std::string Copied(std::string_view text);
  void KeepText(const std::string& text);
  static VariantArray Kept(std::vector<Variant> elements);
  Storage storage_;
};

static_assert(sizeof(Variant) <= 40);
static_assert(std::is_nothrow_move_constructible_v<Variant> &&
              std::is_nothrow_move_assignable_v<Variant>);

}  // namespace sabrel
