#include "site/sample_site.h"

#include <algorithm>
#include <string>
#include <utility>

#include "site/site_scripts.h"

namespace sabrel {
namespace {

bool BelongsTo(std::string_view path, SiteRelease release) {
  const std::string_view other = release == SiteRelease::kCurrent ? "/old/" : "/current/";
  return path.find(other) == std::string_view::npos;
}

// A statement ends at a line that holds only "/"; comments fill whole lines.
void Split(std::string_view script, std::vector<std::string>& statements) {
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
}

std::vector<std::string> Statements(SiteRelease release) {
  std::vector<std::string> statements;
  for (const SiteScript& script : SiteScripts()) {
    if (BelongsTo(script.path, release)) Split(script.text, statements);
  }
  return statements;
}

}  // namespace

std::vector<std::string_view> SampleSiteStatements(SiteRelease release) {
  static const std::vector<std::string> current = Statements(SiteRelease::kCurrent);
  static const std::vector<std::string> old = Statements(SiteRelease::kOld);
  const std::vector<std::string>& statements = release == SiteRelease::kCurrent ? current : old;
  return {statements.begin(), statements.end()};
}

}  // namespace sabrel
