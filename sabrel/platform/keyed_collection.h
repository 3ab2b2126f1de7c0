// An ordered collection whose members may carry a text key.
//
// Positions are 1-based. Keys are compared ignoring case; a text is always a key, also when it
// looks like a number. A missing key raises 5, a position out of range 9, a key that is present
// already 457. Iteration is in insertion order: `for (const auto& member : collection)`.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

#include "sabrel/platform/runtime_error.h"
#include "sabrel/platform/utf8.h"

namespace sabrel {

template <class T>
class KeyedCollection {
 public:
  [[nodiscard]] std::int32_t Count() const noexcept {
    return static_cast<std::int32_t>(members_.size());
  }

  /// Appends without a key. Errors: 7
  void Add(T member) {
    RaisingRuntimeErrors([&] { Reserve(); });
    Append(std::move(member), {});
  }

  /// Appends under `key`; an empty key is a key like any other. Errors: 457; 7
  void Add(T member, std::string_view key) {
    if (positions_.contains(key)) throw RuntimeError(RuntimeErrorNumber::kDuplicateKey);
    // Everything that may fail comes before the first change.
    Key kept = RaisingRuntimeErrors([&] {
      Reserve();
      Key made{std::string(key), true};
      positions_.emplace(made.text, members_.size());
      return made;
    });
    Append(std::move(member), std::move(kept));
  }

  /// The member under `key`, or null. Cost: O(1), no allocation
  [[nodiscard]] T* Find(std::string_view key) noexcept {
    const auto found = positions_.find(key);
    return found == positions_.end() ? nullptr : &members_[found->second];
  }
  [[nodiscard]] const T* Find(std::string_view key) const noexcept {
    const auto found = positions_.find(key);
    return found == positions_.end() ? nullptr : &members_[found->second];
  }

  /// Errors: 5 when there is no such key
  [[nodiscard]] const T& Item(std::string_view key) const {
    if (const T* member = Find(key)) return *member;
    throw RuntimeError(RuntimeErrorNumber::kInvalidCall);
  }
  /// Errors: 9 when `position` is not in 1..Count
  [[nodiscard]] const T& Item(std::int32_t position) const { return members_[IndexOf(position)]; }

  /// Errors: 5. Cost: linear in the members behind it
  void Remove(std::string_view key) {
    const auto found = positions_.find(key);
    if (found == positions_.end()) throw RuntimeError(RuntimeErrorNumber::kInvalidCall);
    RemoveAt(found->second);
  }
  /// Errors: 9. Cost: linear in the members behind it
  void Remove(std::int32_t position) { RemoveAt(IndexOf(position)); }

  void Clear() noexcept {
    positions_.clear();
    members_.clear();
    keys_.clear();
  }

  [[nodiscard]] auto begin() const noexcept { return members_.begin(); }
  [[nodiscard]] auto end() const noexcept { return members_.end(); }

 private:
  static_assert(std::is_nothrow_move_constructible_v<T>, "a member that fails to move is lost");

  struct Key {
    std::string text;
    bool present = false;
  };
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view key) const noexcept { return HashIgnoringCase(key); }
  };
  struct Equal {
    using is_transparent = void;
    bool operator()(std::string_view a, std::string_view b) const noexcept {
      return EqualIgnoringCase(a, b);
    }
  };

  [[nodiscard]] std::size_t IndexOf(std::int32_t position) const {
    if (position < 1 || position > Count()) throw RuntimeError(RuntimeErrorNumber::kSubscript);
    return static_cast<std::size_t>(position) - 1;
  }

  void Reserve() {
    constexpr std::size_t kFirst = 8;
    if (members_.size() == members_.capacity()) members_.reserve(kFirst + 2 * members_.size());
    if (keys_.size() == keys_.capacity()) keys_.reserve(kFirst + 2 * keys_.size());
  }

  void Append(T&& member, Key key) noexcept {
    keys_.push_back(std::move(key));
    members_.push_back(std::move(member));
  }

  void RemoveAt(std::size_t index) {
    if (keys_[index].present)
      positions_.erase(positions_.find(std::string_view(keys_[index].text)));
    members_.erase(members_.begin() + static_cast<std::ptrdiff_t>(index));
    keys_.erase(keys_.begin() + static_cast<std::ptrdiff_t>(index));
    for (std::size_t i = index; i < keys_.size(); ++i) {
      if (keys_[i].present) positions_.find(std::string_view(keys_[i].text))->second = i;
    }
  }

  std::vector<T> members_;
  std::vector<Key> keys_;
  std::unordered_map<std::string, std::size_t, Hash, Equal> positions_;
};

}  // namespace sabrel
