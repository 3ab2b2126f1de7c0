// Texts that are kept line by line: what storing them that way costs, told before it happens.
//
// A row is a line, so an empty line has no row and a line longer than the column is cut; a last
// line without a delimiter is stored one character short.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace sabrel::cli {

struct LineMode {
  bool lines = false;
  /// As it is typed, with \r, \n, \t and \\ for what cannot be.
  std::string delimiter = "\\r\\n";

  /// Errors: UsageError for another escape
  [[nodiscard]] std::string Delimiter() const;
};

/// For the help of commands that store or read lines.
inline constexpr std::string_view kLineModeHelp =
    "--lines keeps one line a row. What is lost that way: the last character of a last line that "
    "does\n"
    "  not end with the delimiter, empty lines, and what a line has beyond the column's length.";

/// The lines of `text`, without their delimiters; what follows the last delimiter is none unless it
/// holds something.
[[nodiscard]] std::vector<std::string_view> LinesOf(std::string_view text,
                                                    std::string_view delimiter);

/// A sentence for each thing that `text` would lose; `column_length` characters fit a row, 0 when
/// that is not known.
[[nodiscard]] std::vector<std::string> LineLosses(std::string_view text, std::string_view delimiter,
                                                  std::int32_t column_length);

}  // namespace sabrel::cli
