// A line of the shell, taken apart into words.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace sabrel::cli {

/// Words parted by blanks; '...' keeps all, "..." all but \" and \\, a backslash outside quotes the
/// next character. Errors: UsageError for a quote that is not closed
[[nodiscard]] std::vector<std::string> SplitWords(std::string_view line);

/// `line` without blanks and line breaks at its ends.
[[nodiscard]] std::string_view Trimmed(std::string_view line);

/// The first word of `line` as it stands, and what follows it without the blanks between.
struct FirstWord {
  std::string_view word;
  std::string_view rest;
};
[[nodiscard]] FirstWord SplitFirstWord(std::string_view line);

/// Whether the first word of `sql`, after comments, is a verb of SQL.
[[nodiscard]] bool StartsWithVerb(std::string_view sql);

}  // namespace sabrel::cli
