#include "tests/support/postgresql_server.h"

#include <sql.h>
#include <sqlext.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <stdexcept>

#include "adapters/odbc/postgresql/site_builder.h"

namespace sabrel::testing {
namespace {

// The one place that knows how a sample site comes into an empty database.
void BuildSampleSite(const ConnectionProfile& database, SiteRelease release) {
  odbc::SiteBuilder site{ProfileSet(database)};
  for (const SiteStatement& statement : PostgresqlSiteStatements(release)) {
    statement.is_native ? site.ExecuteNative(statement.text) : site.Execute(statement.text);
  }
  site.Finish();
}

SQLCHAR* Ascii(std::string& text) { return reinterpret_cast<SQLCHAR*>(text.data()); }

void Require(SQLRETURN result, SQLSMALLINT kind, SQLHANDLE handle) {
  if (SQL_SUCCEEDED(result) || result == SQL_NO_DATA) return;
  std::string state(6, '\0');
  std::string message(1000, '\0');
  SQLSMALLINT size = 0;
  ::SQLGetDiagRec(kind, handle, 1, Ascii(state), nullptr, Ascii(message), 1000, &size);
  throw std::runtime_error(state.substr(0, 5) + " " + message.c_str());
}

struct Handle {
  Handle(SQLSMALLINT kind_of, SQLHANDLE parent) : kind(kind_of) {
    ::SQLAllocHandle(kind, parent, &handle);
    if (kind == SQL_HANDLE_ENV) {
      ::SQLSetEnvAttr(handle, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
    }
  }
  ~Handle() {
    if (kind == SQL_HANDLE_DBC) ::SQLDisconnect(handle);
    ::SQLFreeHandle(kind, handle);
  }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  void Require(SQLRETURN result) const { testing::Require(result, kind, handle); }

  SQLSMALLINT kind;
  SQLHANDLE handle = nullptr;
};

// Makes the template of `release` unless it is there; under its name stands a whole one only.
std::string TemplateOf(SiteRelease release, PostgresqlSession& session) {
  const std::string name = release == SiteRelease::kOld ? "template_old" : "template_current";
  // Other test programs run at the same time; the lock goes with the session.
  session.Ask("SELECT pg_advisory_lock(1)");
  if (session.Ask("SELECT 1 FROM pg_database WHERE datname = '" + name + "'").empty()) {
    ConnectionProfile unfinished = *PostgresqlServer();
    unfinished.Database = name + "_unfinished";
    session.Ask("DROP DATABASE IF EXISTS " + unfinished.Database + " WITH (FORCE)");
    session.Ask("CREATE DATABASE " + unfinished.Database);
    BuildSampleSite(unfinished, release);
    session.Ask(
        "SELECT count(pg_terminate_backend(pid, 10000)) FROM pg_stat_activity WHERE "
        "datname = '" +
        unfinished.Database + "'");
    const std::string other = kOtherPostgresqlUser;
    if (session.Ask("SELECT 1 FROM pg_roles WHERE rolname = '" + other + "'").empty()) {
      session.Ask("CREATE ROLE " + other + " SUPERUSER LOGIN PASSWORD '" + unfinished.Password +
                  "'");
    }
    session.Ask("ALTER DATABASE " + unfinished.Database + " RENAME TO " + name);
  }
  session.Ask("SELECT pg_advisory_unlock(1)");
  return name;
}

}  // namespace

std::optional<ConnectionProfile> PostgresqlServer() {
  const char* port = std::getenv("SABREL_TEST_PG_PORT");
  if (port == nullptr || *port == '\0') return std::nullopt;
  const char* password = std::getenv("SABREL_TEST_PG_PASSWORD");
  ConnectionProfile profile;
  profile.Name = "server";
  profile.Driver = "PostgreSQL Unicode";
  profile.Host = "127.0.0.1";
  profile.Port = std::atoi(port);
  profile.Database = "postgres";
  profile.UserName = "sabrel";
  profile.Password = password == nullptr ? "" : password;
  profile.ConnectTimeout = 10;
  profile.ReceiveTimeout = 30;
  return profile;
}

std::optional<TlsServer> PostgresqlTlsServer() {
  const char* port = std::getenv("SABREL_TEST_PG_TLS_PORT");
  const char* folder = std::getenv("SABREL_TEST_PG_TLS_FOLDER");
  auto profile = PostgresqlServer();
  if (port == nullptr || folder == nullptr || !profile) return std::nullopt;
  profile->Host = "localhost";
  profile->Port = std::atoi(port);
  return TlsServer{*std::move(profile), folder};
}

struct PostgresqlSession::Handles {
  Handle environment{SQL_HANDLE_ENV, nullptr};
  Handle connection{SQL_HANDLE_DBC, environment.handle};
};

PostgresqlSession::PostgresqlSession() : handles_(std::make_unique<Handles>()) {
  const ConnectionProfile server = PostgresqlServer().value();
  std::string text = "DRIVER={" + server.Driver + "};SERVER=" + server.Host +
                     ";PORT=" + std::to_string(server.Port) + ";DATABASE=" + server.Database +
                     ";UID=" + server.UserName + ";PWD={" + server.Password + "}";
  handles_->connection.Require(::SQLDriverConnect(handles_->connection.handle, nullptr, Ascii(text),
                                                  SQL_NTS, nullptr, 0, nullptr,
                                                  SQL_DRIVER_NOPROMPT));
}

PostgresqlSession::~PostgresqlSession() = default;

std::string PostgresqlSession::Ask(const std::string& sql) {
  const Handle statement(SQL_HANDLE_STMT, handles_->connection.handle);
  std::string text = sql;
  statement.Require(::SQLExecDirect(statement.handle, Ascii(text), SQL_NTS));
  SQLSMALLINT columns = 0;
  ::SQLNumResultCols(statement.handle, &columns);
  SQLCHAR value[4000] = {};
  if (columns > 0 && SQL_SUCCEEDED(::SQLFetch(statement.handle))) {
    SQLLEN size = 0;
    statement.Require(::SQLGetData(statement.handle, 1, SQL_C_CHAR, value, sizeof value, &size));
  }
  return reinterpret_cast<const char*>(value);
}

PostgresqlDatabase::PostgresqlDatabase(SiteRelease release) : profile_(*PostgresqlServer()) {
  static std::atomic<int> count = 0;
  profile_.Database = "test_" + std::to_string(::getpid()) + "_" + std::to_string(++count);
  PostgresqlSession session;
  session.Ask("DROP DATABASE IF EXISTS " + profile_.Database + " WITH (FORCE)");
  session.Ask("CREATE DATABASE " + profile_.Database + " STRATEGY file_copy TEMPLATE " +
              TemplateOf(release, session));
}

PostgresqlDatabase::~PostgresqlDatabase() {
  try {
    PostgresqlSession().Ask("DROP DATABASE " + profile_.Database + " WITH (FORCE)");
  } catch (const std::exception&) {  // it ends with the server
  }
}

}  // namespace sabrel::testing
