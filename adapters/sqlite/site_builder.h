// Makes a site's file, whole or not at all.
//
// The file is built beside its final place and moved there at the end. Failures are database errors
// (RuntimeError); Error() tells their details.
//
//   sabrel::sqlite::SiteBuilder site("plant.site");
//   site.Execute("CREATE TABLE T (ID NUMBER(10) PRIMARY KEY)");
//   site.Finish();
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "sabrel/platform/rowlink.h"

namespace sabrel::sqlite {

class SiteBuilder {
 public:
  /// Errors: a database error with native number 1119 when `path`, or a journal of a file that is
  /// gone, exists, or its folder cannot be written
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

}  // namespace sabrel::sqlite
