// Sites for tests: built once a process, copied for each use, removed with the last user.
#pragma once

#include <memory>
#include <string>

#include "site/sample_site.h"

namespace sabrel::testing {

/// A folder of its own, removed at the end.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  [[nodiscard]] const std::string& Path() const { return path_; }
  [[nodiscard]] std::string Path(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

/// A fresh sample site at `path`.
void CopySampleSite(SiteRelease release, const std::string& path);

}  // namespace sabrel::testing
