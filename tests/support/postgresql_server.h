// The PostgreSQL server that scripts/with-postgresql runs beside the tests, and sites on it.
//
//   if (!PostgresqlServer()) GTEST_SKIP();
//   const PostgresqlDatabase site;                        // a fresh sample site
//   MakeOdbcRowlink(ProfileSet(site.Profile()));
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "sabrel/platform/connection_profile.h"
#include "site/sample_site.h"

namespace sabrel::testing {

/// A second superuser with the same password, who owns no site.
inline constexpr const char* kOtherPostgresqlUser = "system";

/// Its superuser's profile of the database "postgres"; nothing where there is no server.
[[nodiscard]] std::optional<ConnectionProfile> PostgresqlServer();

/// The same of the server that has TLS, by the name in its certificate, and the folder with the
/// authorities ca.crt, which signed that, and other.crt.
struct TlsServer {
  ConnectionProfile profile;
  std::string folder;
};
[[nodiscard]] std::optional<TlsServer> PostgresqlTlsServer();

/// A connection of the superuser to the database "postgres", beside what is tested.
class PostgresqlSession {
 public:
  PostgresqlSession();
  ~PostgresqlSession();
  PostgresqlSession(const PostgresqlSession&) = delete;
  PostgresqlSession& operator=(const PostgresqlSession&) = delete;
  /// The first value that `sql`, in ASCII, yields; empty without one. Errors: std::runtime_error
  std::string Ask(const std::string& sql);

 private:
  struct Handles;
  std::unique_ptr<Handles> handles_;
};

/// A database of its own that holds the sample site, dropped at the end with whoever is connected.
class PostgresqlDatabase {
 public:
  explicit PostgresqlDatabase(SiteRelease release = SiteRelease::kCurrent);
  ~PostgresqlDatabase();
  PostgresqlDatabase(const PostgresqlDatabase&) = delete;
  PostgresqlDatabase& operator=(const PostgresqlDatabase&) = delete;
  [[nodiscard]] const ConnectionProfile& Profile() const noexcept { return profile_; }

 private:
  ConnectionProfile profile_;
};

}  // namespace sabrel::testing
