#include "sabrel/platform/row_text.h"

#include "sabrel/platform/runtime_error.h"

namespace sabrel {
namespace {

constexpr std::string_view kNull = "\\N";

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
  encoded.reserve(piece.size());
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

}  // namespace sabrel
