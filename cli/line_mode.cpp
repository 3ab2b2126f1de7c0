#include "cli/line_mode.h"

#include <algorithm>

#include "cli/exit_status.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::cli {

std::string LineMode::Delimiter() const {
  std::string text;
  for (std::size_t i = 0; i < delimiter.size(); ++i) {
    if (delimiter[i] != '\\') {
      text += delimiter[i];
      continue;
    }
    constexpr std::string_view kLetters = "rnt\\";
    constexpr std::string_view kMeanings = "\r\n\t\\";
    const std::size_t letter =
        ++i < delimiter.size() ? kLetters.find(delimiter[i]) : std::string_view::npos;
    if (letter == std::string_view::npos) {
      throw UsageError("'" + delimiter + "' is no delimiter: a \\ stands before r, n, t or \\");
    }
    text += kMeanings[letter];
  }
  return text;
}

std::vector<std::string_view> LinesOf(std::string_view text, std::string_view delimiter) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const std::size_t end = delimiter.empty() ? std::string_view::npos : text.find(delimiter);
    lines.push_back(text.substr(0, end));
    if (end == std::string_view::npos) break;
    text.remove_prefix(end + delimiter.size());
  }
  return lines;
}

std::vector<std::string> LineLosses(std::string_view text, std::string_view delimiter,
                                    std::int32_t column_length) {
  if (text.empty()) return {"The text is empty; read line by line it is one empty line."};
  const std::vector<std::string_view> lines = LinesOf(text, delimiter);
  std::vector<std::string> losses;
  if (delimiter.empty() || !text.ends_with(delimiter)) {
    losses.emplace_back(
        "The last line does not end with the delimiter and will lose its last character.");
    if (lines.size() == 1 && text.find('\n') != std::string_view::npos) {
      losses.emplace_back("The delimiter does not occur, but LF does: is --delimiter '\\n' meant?");
    }
  }
  if (const auto empty = std::ranges::count(lines, std::string_view()); empty > 0) {
    losses.push_back(std::to_string(empty) + (empty == 1 ? " empty line" : " empty lines") +
                     " will be lost.");
  }
  const auto limit = static_cast<std::size_t>(std::max(column_length, 0));
  const auto is_long = [limit](std::string_view line) { return CharacterCount(line) > limit; };
  if (const auto cut = limit == 0 ? 0 : std::ranges::count_if(lines, is_long); cut > 0) {
    losses.push_back(std::to_string(cut) + (cut == 1 ? " line" : " lines") + " will be cut to " +
                     std::to_string(limit) + " characters.");
  }
  return losses;
}

}  // namespace sabrel::cli
