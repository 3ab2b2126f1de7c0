#include "sabrel/platform/named_values.h"

namespace sabrel {

void NamedValues::Add(std::string_view name, Variant value) {
  if (Entry* entry = entries_.Find(name)) {
    entry->value = std::move(value);
  } else {
    entries_.Add({RaisingRuntimeErrors([&] { return std::string(name); }), std::move(value)}, name);
  }
}

const Variant* NamedValues::Find(std::string_view name) const noexcept {
  const Entry* entry = entries_.Find(name);
  return entry == nullptr ? nullptr : &entry->value;
}

}  // namespace sabrel
