// A growing text that is read and cut by characters.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "sabrel/platform/variant.h"

namespace sabrel {

class TextString {
 public:
  TextString() = default;
  explicit TextString(std::string text) : text_(std::move(text)) {}

  [[nodiscard]] const std::string& Text() const noexcept { return text_; }
  void Text(std::string text) { text_ = std::move(text); }
  /// Characters, not bytes. Cost: linear
  [[nodiscard]] std::int64_t Length() const noexcept;
  void Clear() noexcept { text_.clear(); }
  void Append(std::string_view text);
  /// The value as text; null appends nothing.
  void Append(const Variant& value);
  /// `length` characters from the 1-based `start`; what lies beyond the end is left out.
  /// Errors: 5 when start < 1 or length < 0. Cost: linear in start + length
  [[nodiscard]] std::string_view Substring(std::int64_t start, std::int64_t length) const;
  /// The text with "$1", "$2", ... replaced, see template_text.h.
  [[nodiscard]] std::string Filled(std::span<const std::string> arguments) const;
  /// 0 when equal, else the order of code points; ignoring case on request.
  [[nodiscard]] int Compare(std::string_view other, bool ignore_case) const;

 private:
  std::string text_;
};

}  // namespace sabrel
