#include "cli/display_width.h"

#include <algorithm>
#include <array>

#include "sabrel/platform/utf8.h"

namespace sabrel::cli {
namespace {

struct Range {
  char32_t first;
  char32_t last;
};

// Source: Unicode, EastAsianWidth.txt (W and F) and general categories Mn, Me and Cf; neighbouring
// blocks joined.
constexpr std::array kWide = {
    Range{0x1100, 0x115F},   Range{0x2E80, 0x303E},   Range{0x3041, 0x33FF},
    Range{0x3400, 0x4DBF},   Range{0x4E00, 0x9FFF},   Range{0xA000, 0xA4CF},
    Range{0xA960, 0xA97C},   Range{0xAC00, 0xD7A3},   Range{0xF900, 0xFAFF},
    Range{0xFE30, 0xFE6F},   Range{0xFF00, 0xFF60},   Range{0xFFE0, 0xFFE6},
    Range{0x1F300, 0x1F64F}, Range{0x1F680, 0x1F6FF}, Range{0x1F900, 0x1F9FF},
    Range{0x20000, 0x3FFFD},
};
constexpr std::array kZero = {
    Range{0x0300, 0x036F}, Range{0x0483, 0x0489}, Range{0x0591, 0x05BD}, Range{0x0610, 0x061A},
    Range{0x064B, 0x065F}, Range{0x0E34, 0x0E3A}, Range{0x0E47, 0x0E4E}, Range{0x1AB0, 0x1AFF},
    Range{0x1DC0, 0x1DFF}, Range{0x200B, 0x200F}, Range{0x20D0, 0x20FF}, Range{0x302A, 0x302D},
    Range{0xFE00, 0xFE0F}, Range{0xFE20, 0xFE2F}, Range{0xFEFF, 0xFEFF}, Range{0xE0100, 0xE01EF},
};

template <std::size_t N>
bool IsIn(const std::array<Range, N>& ranges, char32_t character) {
  return std::ranges::any_of(
      ranges, [&](const Range& r) { return character >= r.first && character <= r.last; });
}

std::size_t WidthOf(std::string_view character) noexcept {
  if (character.size() == 1) return 1;
  constexpr std::array<unsigned, 5> kLeadBits = {0, 0x7F, 0x1F, 0x0F, 0x07};
  auto code = static_cast<char32_t>(static_cast<unsigned char>(character[0]) &
                                    kLeadBits[std::min<std::size_t>(character.size(), 4)]);
  for (const char byte : character.substr(1)) {
    code = (code << 6U) | (static_cast<unsigned char>(byte) & 0x3FU);
  }
  if (IsIn(kZero, code)) return 0;
  return IsIn(kWide, code) ? 2 : 1;
}

}  // namespace

std::size_t DisplayWidth(std::string_view text) noexcept {
  std::size_t width = 0;
  while (!text.empty()) {
    const std::size_t length = FirstCharacterLength(text);
    width += WidthOf(text.substr(0, length));
    text.remove_prefix(length);
  }
  return width;
}

std::string FitToWidth(std::string_view text, std::size_t columns) {
  if (DisplayWidth(text) <= columns) return std::string(text);
  if (columns == 0) return {};
  std::size_t width = 0;
  std::size_t bytes = 0;
  while (true) {
    const std::size_t length = FirstCharacterLength(text.substr(bytes));
    const std::size_t added = WidthOf(text.substr(bytes, length));
    if (width + added > columns - 1) break;
    width += added;
    bytes += length;
  }
  return std::string(text.substr(0, bytes)) + "\u2026";
}

}  // namespace sabrel::cli
