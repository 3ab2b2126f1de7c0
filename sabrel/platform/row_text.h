// The text of the rows of a row set: encoded pieces with "|" between.
//
// A piece may hold any text: "|", a line's end and the backslash are escaped with a backslash, and
// `\N` alone is null, so that every text, the empty one and null come out as they went in.
//
//   rows.Add("1|" + EncodePiece("a|b")); for (std::string_view row : rows) Use(DecodeRow(row));
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sabrel {

[[nodiscard]] std::string EncodePiece(std::string_view piece);
/// The encoded form of null.
[[nodiscard]] std::string_view EncodedNull() noexcept;

/// The pieces of `row`; nothing stands for null.
/// Errors: 5 for an escape that EncodePiece does not write
[[nodiscard]] std::vector<std::optional<std::string>> DecodeRow(std::string_view row);

/// Row texts in the order in which they were added, packed: a row takes its bytes and 4 more.
/// Iterators and what they give are valid until the next Add.
class RowTexts {
 public:
  using value_type = std::string_view;

  class const_iterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using value_type = std::string_view;
    using difference_type = std::ptrdiff_t;
    using pointer = void;
    using reference = std::string_view;

    const_iterator() = default;
    explicit const_iterator(const std::string* block) : block_(block) {}
    [[nodiscard]] std::string_view operator*() const;
    const_iterator& operator++();
    const_iterator operator++(int);
    friend bool operator==(const const_iterator&, const const_iterator&) = default;

   private:
    const std::string* block_ = nullptr;
    std::size_t offset_ = 0;
  };

  /// Errors: 7 for a row of 4 GB. Cost: one allocation for each MB
  void Add(std::string_view row);
  [[nodiscard]] std::size_t size() const noexcept { return size_; }
  [[nodiscard]] bool empty() const noexcept { return size_ == 0; }
  [[nodiscard]] const_iterator begin() const { return const_iterator(blocks_.data()); }
  [[nodiscard]] const_iterator end() const {
    return const_iterator(blocks_.data() + blocks_.size());
  }

 private:
  /// None is empty; each is reserved whole when it is begun.
  std::vector<std::string> blocks_;
  std::size_t size_ = 0;
};

}  // namespace sabrel
