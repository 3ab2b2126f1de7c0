#include "tests/support/sample_site_copy.h"

#include <stdlib.h>

#include <filesystem>
#include <stdexcept>

#include "adapters/sqlite/sqlite_rowlink.h"

namespace sabrel::testing {

TemporaryFolder::TemporaryFolder() {
  std::string pattern = std::filesystem::temp_directory_path() / "sabrel-test-XXXXXX";
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
  path_ = pattern;
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

void CopySampleSite(SiteRelease release, const std::string& path) {
  static const TemporaryFolder folder;
  const std::string made = folder.Path(release == SiteRelease::kOld ? "old" : "current");
  if (!std::filesystem::exists(made)) {
    sqlite::SiteBuilder builder(made);
    for (const std::string_view statement : SampleSiteStatements(release))
      builder.Execute(statement);
    builder.Finish();
  }
  std::filesystem::copy_file(made, path);
}

}  // namespace sabrel::testing
