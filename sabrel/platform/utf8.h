// Characters of UTF-8 text: a character is a code point.
//
// Lengths, positions and cuts count code points and never split one; an invalid byte counts as one
// character, so no text is refused here. Positions are 1-based. Case mapping is simple, one code
// point to one, for ASCII, Latin-1, Latin Extended-A, Greek and Cyrillic, and does not depend on
// the C locale.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace sabrel {

[[nodiscard]] std::size_t CharacterCount(std::string_view text) noexcept;

/// Bytes that the first `characters` characters of `text` take (all of them when it is shorter).
/// Cost: linear in the bytes passed over
[[nodiscard]] std::size_t ByteLengthOf(std::string_view text, std::size_t characters) noexcept;

/// Bytes of the character that starts `text` (1 for an invalid byte, 0 for an empty text).
[[nodiscard]] std::size_t FirstCharacterLength(std::string_view text) noexcept;

/// Well-formed UTF-8: no overlong form, no surrogate, nothing above U+10FFFF (The Unicode Standard,
/// table 3-7).
[[nodiscard]] bool IsValidUtf8(std::string_view text) noexcept;

/// Valid UTF-8 without U+0000: what a statement or a parameter may be made of.
[[nodiscard]] bool IsSendableText(std::string_view text) noexcept;

[[nodiscard]] std::string UpperCase(std::string_view text);
[[nodiscard]] std::string LowerCase(std::string_view text);
/// Appends the lower-case form; allocates only where `out` has no room.
void AppendLowerCase(std::string& out, std::string_view text);

/// Whether the texts are equal when case is ignored. No allocation
[[nodiscard]] bool EqualIgnoringCase(std::string_view a, std::string_view b) noexcept;
/// Whether `part` occurs in `text` when case is ignored; an empty part occurs everywhere.
[[nodiscard]] bool ContainsIgnoringCase(std::string_view text, std::string_view part) noexcept;
/// Equal for texts that EqualIgnoringCase calls equal. No allocation
[[nodiscard]] std::size_t HashIgnoringCase(std::string_view text) noexcept;

/// Appends `code_point` to `out`; one outside Unicode's range becomes U+FFFD.
void AppendUtf8(std::string& out, char32_t code_point);

/// `text` without leading and trailing blanks (U+0020 only).
[[nodiscard]] std::string_view TrimBlanks(std::string_view text) noexcept;

/// `text` with every `from` replaced by `to`, left to right; an empty `from` replaces nothing.
[[nodiscard]] std::string ReplaceAll(std::string_view text, std::string_view from,
                                     std::string_view to);

}  // namespace sabrel
