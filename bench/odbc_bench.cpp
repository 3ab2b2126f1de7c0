// PostgreSQL through the component's connection beside the driver called directly, on one server:
// scripts/with-postgresql build/release/bench/sabrel_bench --benchmark_filter=Server
#include <benchmark/benchmark.h>
#include <sql.h>
#include <sqlext.h>

#include <cstdlib>
#include <string>

#include "adapters/odbc/connection_text.h"
#include "adapters/odbc/odbc_rowlink.h"
#include "adapters/odbc/postgresql/site_builder.h"
#include "site/sample_site.h"

namespace sabrel {
namespace {

ConnectionProfile Profile() {
  ConnectionProfile profile;
  profile.Driver = "PostgreSQL Unicode";
  profile.Host = "127.0.0.1";
  if (const char* port = std::getenv("SABREL_TEST_PG_PORT")) profile.Port = std::atoi(port);
  profile.Database = "postgres";
  profile.UserName = "sabrel";
  if (const char* password = std::getenv("SABREL_TEST_PG_PASSWORD")) profile.Password = password;
  return profile;
}

/// A site on the server, made once; false where there is no server.
bool HasSite(benchmark::State& state) {
  if (Profile().Port == 0) {
    state.SkipWithError("no server: run under scripts/with-postgresql");
    return false;
  }
  static const bool made = [] {
    odbc::SiteBuilder site(Profile());
    for (const SiteStatement& one : PostgresqlSiteStatements(SiteRelease::kCurrent)) {
      one.is_native ? site.ExecuteNative(one.text) : site.Execute(one.text);
    }
    site.Finish();
    return true;
  }();
  return made;
}

/// What a host would otherwise write: the driver's own defaults, rows read into texts.
class Direct {
 public:
  Direct() {
    SQLAllocHandle(SQL_HANDLE_ENV, nullptr, &environment_);
    SQLSetEnvAttr(environment_, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3),
                  0);
    SQLAllocHandle(SQL_HANDLE_DBC, environment_, &connection_);
    const ConnectionProfile profile = Profile();
    std::string text = "DRIVER={" + profile.Driver +
                       "};SERVER=127.0.0.1;PORT=" + std::to_string(profile.Port) +
                       ";DATABASE=postgres;UID=sabrel;PWD={" + profile.Password + "}";
    SQLDriverConnect(connection_, nullptr, reinterpret_cast<SQLCHAR*>(text.data()), SQL_NTS,
                     nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT);
    Run("SELECT sabrel_dictionary.start_session()");
  }
  std::size_t Run(std::string sql) {
    SQLHSTMT statement = nullptr;
    SQLAllocHandle(SQL_HANDLE_STMT, connection_, &statement);
    SQLExecDirect(statement, reinterpret_cast<SQLCHAR*>(sql.data()), SQL_NTS);
    SQLSMALLINT columns = 0;
    SQLNumResultCols(statement, &columns);
    std::size_t bytes = 0;
    char cell[4001];
    while (columns > 0 && SQL_SUCCEEDED(SQLFetch(statement))) {
      for (SQLSMALLINT i = 1; i <= columns; ++i) {
        SQLLEN size = 0;
        SQLGetData(statement, static_cast<SQLUSMALLINT>(i), SQL_C_CHAR, cell, sizeof cell, &size);
        bytes += std::string(cell).size();
      }
    }
    SQLFreeHandle(SQL_HANDLE_STMT, statement);
    return bytes;
  }

 private:
  SQLHENV environment_ = nullptr;
  SQLHDBC connection_ = nullptr;
};

constexpr const char* kPoint = "SELECT COUNT(*) FROM PM_Groups WHERE Group_Name = 'PCMD'";
constexpr const char* kLookUp = "SELECT Name, Changed FROM PM_REPORT WHERE Id = 3";
constexpr const char* kScan =
    "SELECT A.N, B.N AS M, A.N * 100 + B.N AS V, 'name of row' AS NAME FROM PM_PIVOT A, PM_PIVOT "
    "B, PM_PIVOT C, PM_PIVOT D, PM_PIVOT E";

void ServerQuery(benchmark::State& state, const char* sql) {
  if (!HasSite(state)) return;
  const auto rowlink = MakeOdbcRowlink(ProfileSet(Profile()));
  for (auto _ : state) {
    const auto rows = rowlink->MakeRecordset();
    for (rows->Open(sql, "", 0, "", "", 60); !rows->EndOfFile(); rows->MoveNext()) {
      benchmark::DoNotOptimize(rows->Fields().Item(0).Value());
    }
  }
}
void ServerQueryDirect(benchmark::State& state, const char* sql) {
  if (!HasSite(state)) return;
  Direct direct;
  for (auto _ : state) benchmark::DoNotOptimize(direct.Run(sql));
}
BENCHMARK_CAPTURE(ServerQuery, point, kPoint)->UseRealTime();
BENCHMARK_CAPTURE(ServerQueryDirect, point, kPoint)->UseRealTime();
BENCHMARK_CAPTURE(ServerQuery, look_up, kLookUp)->UseRealTime();
BENCHMARK_CAPTURE(ServerQueryDirect, look_up, kLookUp)->UseRealTime();
BENCHMARK_CAPTURE(ServerQuery, scan, kScan)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ServerQueryDirect, scan, kScan)->UseRealTime()->Unit(benchmark::kMillisecond);

constexpr int kRows = 1000;

/// 1,000 rows in one request, or a statement a row.
void ServerWrite(benchmark::State& state) {
  if (!HasSite(state)) return;
  const auto rowlink = MakeOdbcRowlink(ProfileSet(Profile()));
  static int id = 100000;
  for (auto _ : state) {
    const auto writer = rowlink->MakeRowSetWriter();
    writer->Table("PM_StringTable");
    for (const char* name : {"Id", "Ordinal"}) writer->DeclareColumn(name, "INT");
    writer->DeclareColumn("StringData", "STRING");
    const std::string first = std::to_string(++id) + "|";
    for (int i = 1; i <= kRows; ++i) writer->AddRow(first + std::to_string(i) + "|text of a row");
    writer->Submit();
  }
}
void ServerWriteDirect(benchmark::State& state) {
  if (!HasSite(state)) return;
  Direct direct;
  static int id = 200000;
  for (auto _ : state) {
    direct.Run("BEGIN");
    ++id;
    for (int i = 1; i <= kRows; ++i) {
      direct.Run("INSERT INTO PM_StringTable (Id, Ordinal, StringData) VALUES (" +
                 std::to_string(id) + "," + std::to_string(i) + ",'text of a row')");
    }
    direct.Run("COMMIT");
  }
}
BENCHMARK(ServerWrite)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(ServerWriteDirect)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace sabrel
