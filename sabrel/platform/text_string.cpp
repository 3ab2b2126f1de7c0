#include "sabrel/platform/text_string.h"

#include <limits>

#include "sabrel/platform/conversions.h"
#include "sabrel/platform/runtime_error.h"
#include "sabrel/platform/template_text.h"
#include "sabrel/platform/utf8.h"

namespace sabrel {
namespace {

int Sign(int comparison) { return (comparison > 0) - (comparison < 0); }

/// Equal exactly for texts that EqualIgnoringCase calls equal.
std::string Folded(std::string_view text) { return LowerCase(UpperCase(text)); }

// As many as a text in memory can have, where the number is larger than that.
std::size_t Characters(std::int64_t count) {
  constexpr auto kMost = std::numeric_limits<std::size_t>::max();
  return static_cast<std::uint64_t>(count) > kMost ? kMost : static_cast<std::size_t>(count);
}

}  // namespace

std::int64_t TextString::Length() const noexcept {
  return static_cast<std::int64_t>(CharacterCount(text_));
}

void TextString::Append(std::string_view text) {
  RaisingRuntimeErrors([&] { text_.append(text); });
}

void TextString::Append(const Variant& value) {
  RaisingRuntimeErrors([&] { text_ += ToJoinedText(value); });
}

std::string_view TextString::Substring(std::int64_t start, std::int64_t length) const {
  if (start < 1 || length < 0) throw RuntimeError(RuntimeErrorNumber::kInvalidCall);
  std::string_view rest = text_;
  rest.remove_prefix(ByteLengthOf(rest, Characters(start - 1)));
  return rest.substr(0, ByteLengthOf(rest, Characters(length)));
}

std::string TextString::Filled(std::span<const std::string> arguments) const {
  return RaisingRuntimeErrors([&] { return FillTemplate(text_, arguments); });
}

int TextString::Compare(std::string_view other, bool ignore_case) const {
  // Bytes of UTF-8 sort as their code points do.
  if (!ignore_case) return Sign(std::string_view(text_).compare(other));
  return RaisingRuntimeErrors([&] { return Sign(Folded(text_).compare(Folded(other))); });
}

}  // namespace sabrel
