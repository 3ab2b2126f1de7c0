#include "sabrel/platform/row_text.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "sabrel/platform/runtime_error.h"

namespace sabrel {
namespace {

constexpr std::string_view kNull = "\\N";

/// What a block of rows holds; a longer row has a block of its own.
constexpr std::size_t kBlockBytes = std::size_t{1} << 20U;
/// Stands before each row's bytes.
using RowLength = std::uint32_t;

// What follows the backslash in an escape; 0 for a character that needs none.
char EscapeOf(char c) {
  switch (c) {
    case '|': return 'p';
    case '\r': return 'r';
    case '\n': return 'n';
    case '\\': return '\\';
    default: return 0;
  }
}

char Unescaped(char letter) {
  switch (letter) {
    case 'p': return '|';
    case 'r': return '\r';
    case 'n': return '\n';
    case '\\': return '\\';
    default:
      throw RuntimeError(RuntimeErrorNumber::kInvalidCall,
                         std::string("A row text holds the unknown escape \\") + letter);
  }
}

std::optional<std::string> DecodePiece(std::string_view encoded) {
  if (encoded == kNull) return std::nullopt;
  std::string piece;
  piece.reserve(encoded.size());
  for (std::size_t i = 0; i < encoded.size(); ++i) {
    if (encoded[i] != '\\') {
      piece.push_back(encoded[i]);
    } else if (++i < encoded.size()) {
      piece.push_back(Unescaped(encoded[i]));
    } else {
      throw RuntimeError(RuntimeErrorNumber::kInvalidCall, "A row text ends inside an escape");
    }
  }
  return piece;
}

}  // namespace

std::string EncodePiece(std::string_view piece) {
  std::string encoded;
  // Exactly: a long text becomes millions of rows.
  const auto escapes = std::count_if(piece.begin(), piece.end(), EscapeOf);
  encoded.reserve(piece.size() + static_cast<std::size_t>(escapes));
  for (const char c : piece) {
    if (const char escape = EscapeOf(c)) {
      encoded.push_back('\\');
      encoded.push_back(escape);
    } else {
      encoded.push_back(c);
    }
  }
  return encoded;
}

std::string_view EncodedNull() noexcept { return kNull; }

std::vector<std::optional<std::string>> DecodeRow(std::string_view row) {
  std::vector<std::optional<std::string>> pieces;
  for (;;) {
    const std::size_t bar = row.find('|');
    pieces.push_back(DecodePiece(row.substr(0, bar)));
    if (bar == std::string_view::npos) return pieces;
    row.remove_prefix(bar + 1);
  }
}

void RowTexts::Add(std::string_view row) {
  if (row.size() > std::numeric_limits<RowLength>::max()) {
    throw RuntimeError(RuntimeErrorNumber::kOutOfMemory, "A row exceeds 4 GB");
  }
  const std::size_t bytes = sizeof(RowLength) + row.size();
  if (blocks_.empty() || blocks_.back().capacity() - blocks_.back().size() < bytes) {
    std::string block;
    block.reserve(std::max(bytes, kBlockBytes));
    blocks_.push_back(std::move(block));
  }
  const auto length = static_cast<RowLength>(row.size());
  char raw[sizeof(length)];
  std::memcpy(raw, &length, sizeof(length));
  blocks_.back().append(raw, sizeof(raw)).append(row);
  ++size_;
}

std::string_view RowTexts::const_iterator::operator*() const {
  RowLength length = 0;
  std::memcpy(&length, block_->data() + offset_, sizeof(length));
  return {block_->data() + offset_ + sizeof(length), length};
}

RowTexts::const_iterator& RowTexts::const_iterator::operator++() {
  offset_ += sizeof(RowLength) + (**this).size();
  if (offset_ == block_->size()) {
    ++block_;
    offset_ = 0;
  }
  return *this;
}

RowTexts::const_iterator RowTexts::const_iterator::operator++(int) {
  const const_iterator before = *this;
  ++*this;
  return before;
}

}  // namespace sabrel
