// A script of SQL statements: each ends at a line that holds only "/"; comments fill whole lines.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace sabrel {

/// The statements of `script`, without comments and empty lines; text behind the last "/" is none.
[[nodiscard]] inline std::vector<std::string> SplitScript(std::string_view script) {
  std::vector<std::string> statements;
  std::string statement;
  while (!script.empty()) {
    const std::string_view line = script.substr(0, script.find('\n'));
    script.remove_prefix(std::min(script.size(), line.size() + 1));
    if (line == "/") {
      statements.push_back(std::exchange(statement, {}));
    } else if (!line.empty() && !line.starts_with("--")) {
      statement.append(statement.empty() ? "" : "\n").append(line);
    }
  }
  return statements;
}

}  // namespace sabrel
