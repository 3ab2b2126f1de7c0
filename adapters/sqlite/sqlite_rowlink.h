// The embedded Data Server: Oracle's statements on a file, in this process.
//
// A connection profile with the driver "sqlite" names its file in Database; the file must be a
// site, made with SiteBuilder. One rowlink serves one thread; any number of threads and processes
// may use one file. A user's name and password are not checked: the file's permissions decide who
// may read and write.
//
//   sabrel::sqlite::SiteBuilder site("plant.site");
//   site.Execute("CREATE TABLE T (ID NUMBER(10) PRIMARY KEY)");
//   site.Finish();
//   platform.rowlink = sabrel::MakeSqliteRowlink(sabrel::ProfileSet(profile));
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "adapters/shared/profiles.h"
#include "sabrel/platform/rowlink.h"

namespace sabrel {

/// The rowlink of one thread; nothing is opened before the first statement.
[[nodiscard]] std::shared_ptr<Rowlink> MakeSqliteRowlink(ProfileSet profiles);

/// The same for one file, without time-outs.
[[nodiscard]] std::shared_ptr<Rowlink> OpenSite(std::string path);

namespace sqlite {

/// Makes a site's file from statements, whole or not at all: it is built beside its final place and
/// moved there at the end. Failures are database errors (RuntimeError); Error() tells their
/// details.
class SiteBuilder {
 public:
  /// Errors: a database error with native number 1119 when `path` exists or its folder cannot be
  /// written
  explicit SiteBuilder(std::string path);
  /// Removes what was not finished.
  ~SiteBuilder();
  SiteBuilder(const SiteBuilder&) = delete;
  SiteBuilder& operator=(const SiteBuilder&) = delete;

  /// Runs one statement, as Recordset::Execute does.
  void Execute(std::string_view sql);
  /// Checks the file's integrity, brings it to the disk and moves it to its place. Errors: 1578,
  /// 1115, 1119
  void Finish();
  [[nodiscard]] const DatabaseError& Error() const noexcept;

 private:
  struct Work;
  std::unique_ptr<Work> work_;
};

/// An empty site. Errors: as SiteBuilder
void CreateDatabase(const std::string& path);

}  // namespace sqlite
}  // namespace sabrel
