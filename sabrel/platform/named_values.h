// Values under names, in the order in which the names were first added. Names ignore case; adding a
// name again replaces its value.
#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "sabrel/platform/keyed_collection.h"
#include "sabrel/platform/variant.h"

namespace sabrel {

class NamedValues {
 public:
  struct Entry {
    std::string name;
    Variant value;
  };

  void Add(std::string_view name, Variant value = {});
  [[nodiscard]] bool Contains(std::string_view name) const noexcept {
    return entries_.Find(name) != nullptr;
  }
  /// Null when the name is absent.
  [[nodiscard]] const Variant* Find(std::string_view name) const noexcept;
  [[nodiscard]] std::int32_t Count() const noexcept { return entries_.Count(); }
  void Clear() noexcept { entries_.Clear(); }
  [[nodiscard]] auto begin() const noexcept { return entries_.begin(); }
  [[nodiscard]] auto end() const noexcept { return entries_.end(); }

 private:
  KeyedCollection<Entry> entries_;
};

}  // namespace sabrel
