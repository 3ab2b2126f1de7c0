// The text of one row of a row set: encoded pieces with "|" between.
//
// A piece may hold any text; what would end a piece or a row is escaped with a backslash (`\p` for
// "|", `\r`, `\n`,
// `\\`), and `\N` alone is null, so that every text, the empty one and null come out as they went
// in.
#pragma once

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

}  // namespace sabrel
