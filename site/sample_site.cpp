#include "site/sample_site.h"

#include <array>
#include <string>
#include <utility>

#include "adapters/shared/sql_script.h"
#include "site/site_scripts.h"

namespace sabrel {
namespace {

enum class Server { kEmbedded, kPostgresql };

constexpr std::string_view kPostgresqlFolder = "postgresql/";
constexpr std::string_view kRoutineFolder = "routines/";

bool BelongsTo(std::string_view path, SiteRelease release, Server server) {
  const std::string_view other_server =
      server == Server::kEmbedded ? kPostgresqlFolder : kRoutineFolder;
  if (path.starts_with(other_server)) return false;
  const std::string_view other = release == SiteRelease::kCurrent ? "/old/" : "/current/";
  return path.find(other) == std::string_view::npos;
}

struct Statement {
  std::string text;
  bool is_native;
};

std::vector<Statement> Statements(SiteRelease release, Server server) {
  std::vector<Statement> statements;
  for (const SiteScript& script : SiteScripts()) {
    if (!BelongsTo(script.path, release, server)) continue;
    const bool is_native = script.path.starts_with(kPostgresqlFolder);
    for (std::string& text : SplitScript(script.text)) {
      statements.push_back({std::move(text), is_native});
    }
  }
  return statements;
}

const std::vector<Statement>& KeptStatements(SiteRelease release, Server server) {
  using Releases = std::array<std::vector<Statement>, 2>;
  const auto both = [](Server one) {
    return Releases{Statements(SiteRelease::kCurrent, one), Statements(SiteRelease::kOld, one)};
  };
  const std::size_t index = release == SiteRelease::kCurrent ? 0 : 1;
  if (server == Server::kEmbedded) {
    static const Releases embedded = both(Server::kEmbedded);
    return embedded[index];
  }
  static const Releases postgresql = both(Server::kPostgresql);
  return postgresql[index];
}

}  // namespace

std::vector<std::string_view> SampleSiteStatements(SiteRelease release) {
  std::vector<std::string_view> views;
  for (const Statement& statement : KeptStatements(release, Server::kEmbedded)) {
    views.push_back(statement.text);
  }
  return views;
}

std::vector<SiteStatement> PostgresqlSiteStatements(SiteRelease release) {
  std::vector<SiteStatement> views;
  for (const Statement& statement : KeptStatements(release, Server::kPostgresql)) {
    views.push_back({statement.text, statement.is_native});
  }
  return views;
}

}  // namespace sabrel
