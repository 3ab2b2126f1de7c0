// What the collections of remembered answers share: order of asking, keys that ignore case.
#pragma once

#include <charconv>
#include <cstdint>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>

#include "sabrel/platform/keyed_collection.h"

namespace sabrel {

namespace internal {

/// Appends to a key the server that was asked, `:host:port`; nothing for the session's own.
inline void AppendServer(std::string& key, std::string_view host, std::int32_t port) {
  if (host.empty()) return;
  char digits[12];
  const auto end = std::to_chars(std::begin(digits), std::end(digits), port).ptr;
  key.append(1, ':').append(host).append(1, ':').append(digits, end);
}

}  // namespace internal

/// Answers by key and by position from 1; a text is always a key.
template <class Answer>
class AnswerCache {
 public:
  using Entry = std::shared_ptr<Answer>;

  /// Null when there is none. Cost: O(1), no allocation
  [[nodiscard]] Entry Item(std::string_view key) const noexcept {
    const Entry* entry = entries_.Find(key);
    return entry == nullptr ? nullptr : *entry;
  }
  [[nodiscard]] Entry Item(std::int32_t position) const noexcept {
    return position < 1 || position > Count() ? nullptr : entries_.Item(position);
  }
  [[nodiscard]] std::int32_t Count() const noexcept { return entries_.Count(); }
  /// Errors: 5 for a missing key, 9 for a position out of range
  void Remove(std::string_view key) { entries_.Remove(key); }
  void Remove(std::int32_t position) { entries_.Remove(position); }
  [[nodiscard]] auto begin() const noexcept { return entries_.begin(); }
  [[nodiscard]] auto end() const noexcept { return entries_.end(); }

 protected:
  KeyedCollection<Entry> entries_;
};

}  // namespace sabrel
