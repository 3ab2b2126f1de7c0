// Makes a site in a PostgreSQL database, whole or not at all: everything is one transaction.
//
// The database gets the extension orafce, the schema sabrel_dictionary with what stands in for
// Oracle's dictionary and operators, and a schema named after the profile's user for the site.
//
//   sabrel::odbc::SiteBuilder site(ProfileSet(profile));
//   site.Execute("CREATE TABLE T (ID NUMBER(10) PRIMARY KEY)");
//   site.Finish();
#pragma once

#include <memory>
#include <string_view>

#include "adapters/shared/profiles.h"
#include "sabrel/platform/rowlink.h"

namespace sabrel::odbc {

class OdbcLink;

class SiteBuilder {
 public:
  /// In the database of the session's profile. Errors: 5 for a driver that is not PostgreSQL's; a
  /// connection failure; a database error with native number 955 where the database holds a site,
  /// 1031 where the user may not make one
  explicit SiteBuilder(const ProfileSet& profiles);
  /// Takes back what was not finished.
  ~SiteBuilder();
  SiteBuilder(const SiteBuilder&) = delete;
  SiteBuilder& operator=(const SiteBuilder&) = delete;

  /// Runs one of Oracle's statements, as Recordset::Execute does.
  void Execute(std::string_view sql);
  /// Runs a statement in PostgreSQL's own language.
  void ExecuteNative(std::string_view sql);
  void Finish();
  [[nodiscard]] const DatabaseError& Error() const noexcept;

 private:
  std::unique_ptr<OdbcLink> link_;
  bool finished_ = false;
};

}  // namespace sabrel::odbc
