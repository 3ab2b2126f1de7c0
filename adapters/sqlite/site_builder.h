// Makes a site's file, whole or not at all.
//
// The file is built beside its final place and moved there at the end. Failures are database errors
// (RuntimeError); Error() tells their details. From its first byte on the file is its owner's
// alone; with FileAccess::kGroup, or in a folder with the set-group-ID bit, it is the group's too,
// and so are the journals that come to be beside it.
//
//   sabrel::sqlite::SiteBuilder site("plant.site");
//   site.Execute("CREATE TABLE T (ID NUMBER(10) PRIMARY KEY)");
//   site.Finish();
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "adapters/shared/file_access.h"
#include "sabrel/platform/rowlink.h"

namespace sabrel::sqlite {

class SiteBuilder {
 public:
  /// Errors: a database error with native number 1119 when `path`, or a journal of a file that is
  /// gone, exists, or its folder cannot be written
  explicit SiteBuilder(std::string path, FileAccess access = FileAccess::kOwner);
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

}  // namespace sabrel::sqlite
