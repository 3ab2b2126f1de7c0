// TLS that a profile's section demands is had, or there is no connection.
#include <gmock/gmock.h>

#include "adapters/odbc/odbc_link.h"
#include "sabrel/platform/runtime_error.h"
#include "tests/support/postgresql_server.h"

namespace sabrel::testing {
namespace {

/// What the server says of the connection: "TLSv1.3" or "plain"; else code and reason.
std::string EncryptionOf(odbc::OdbcLink& link, const DataServerAddress& address) {
  RowBlock rows(1);
  const auto failure = FailureIn([&] {
    const auto cursor = link.Query(
        "SELECT COALESCE(version, 'plain') FROM pg_stat_ssl WHERE pid = pg_backend_pid()", address);
    static_cast<void>(cursor->Fetch(rows, 1));
  });
  if (!failure) return rows.Cell(0, 0).Get<std::string>();
  return std::to_string(CarriedConnectionCode(failure->Number())) + " " + failure->Description();
}

TEST(OdbcTls, WhatASectionDemandsIsHadOrThereIsNoConnection) {
  const auto tls = PostgresqlTlsServer();
  if (!tls) GTEST_SKIP() << "no PostgreSQL server with TLS";
  const ConnectionProfile plain = *PostgresqlServer();
  const std::string ca = tls->folder + "/ca.crt";
  const DataServerAddress by_number{"127.0.0.1", tls->profile.Port, "", "", 0};
  const DataServerAddress plain_address{plain.Host, plain.Port, "", "", 0};
  const DataServerAddress socket{"/var/run/postgresql", 0, "", "", 0};
  constexpr const char* kNone = "30 The Data Server at 127.0.0.1:";
  struct Row {
    const char* name;
    const ConnectionProfile& profile;
    SectionSettings section;
    DataServerAddress address;
    const char* start;
    const char* reason;
  };
  const Row rows[] = {
      {"nothing demanded", plain, {}, {}, "plain", ""},
      {"had without a demand", tls->profile, {}, {}, "TLSv1", ""},
      {"encrypted", tls->profile, {"require", ""}, {}, "TLSv1", ""},
      {"signed", tls->profile, {"verify-ca", ca}, by_number, "TLSv1", ""},
      {"signed for its host", tls->profile, {"verify-full", ca}, {}, "TLSv1", ""},
      {"no TLS there", plain, {"require", ""}, {}, kNone, "server does not support SSL"},
      {"nor at another address", tls->profile, {"require", ""}, plain_address, kNone, "SSL"},
      {"signed for another", tls->profile, {"verify-full", ca}, by_number, kNone, "host name"},
      {"signed by another",
       tls->profile,
       {"verify-ca", tls->folder + "/other.crt"},
       {},
       "30 ",
       "certificate verify failed"},
      {"authority gone", tls->profile, {"verify-ca", "/nowhere"}, {}, "30 ", "\"/nowhere\""},
      {"Unix socket", tls->profile, {"require", ""}, socket, "30 ", "SslMode wants a Host"},
  };
  for (const Row& row : rows) {
    odbc::OdbcLink link(ProfileSet(row.profile, row.section), std::make_shared<DatabaseError>(),
                        odbc::Opening::kBare);
    const std::string told = EncryptionOf(link, row.address);
    EXPECT_THAT(told, ::testing::StartsWith(row.start)) << row.name;
    EXPECT_THAT(told, ::testing::HasSubstr(row.reason)) << row.name;
  }
}

}  // namespace
}  // namespace sabrel::testing
