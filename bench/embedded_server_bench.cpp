// The component on the embedded server beside the engine's own interface used directly, as a host
// without the component would: literal text prepared, stepped and finalised for each statement.
//
// Look at the ratio of a pair (Component / Direct) of one run; single times say more about the
// machine.
#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <cstdlib>
#include <stdexcept>

#include "adapters/console/console_platform.h"
#include "adapters/sqlite/sqlite_rowlink.h"
#include "bench/site_file.h"
#include "sabrel/core/gsabrel.h"
#include "sabrel/platform/conversions.h"
#include "sabrel/sql/literals.h"

namespace {

constexpr int kRows = 100'000;

// A site with one table of 100,000 rows of 4 columns; open in both ways.
class Bench {
 public:
  Bench() {
    sabrel::sqlite::SiteBuilder site(file_.Path());
    site.Execute(
        "CREATE TABLE T (ID NUMBER(10) PRIMARY KEY, NAME VARCHAR2(40), V NUMBER(12,4), D DATE)");
    site.Execute(
        "INSERT INTO T (ID, NAME, V, D) WITH N(I) AS (SELECT 1 FROM DUAL UNION ALL SELECT I + 1 "
        "FROM N "
        "WHERE I < " +
        std::to_string(kRows) +
        ") "
        "SELECT I, 'name of row ' || I, I * 0.25, TO_DATE('2024-03-09','YYYY-MM-DD') FROM N");
    site.Finish();
    sabrel::UnloadThread();  // another benchmark was here
    sabrel::InstallPlatform(sabrel::ConsolePlatform([this] {
      sabrel::ConnectionProfile profile;
      profile.Driver = "sqlite";
      profile.Database = file_.Path();
      return sabrel::MakeSqliteRowlink(sabrel::ProfileSet(profile));
    }));
    if (sqlite3_open(file_.Path().c_str(), &direct_) != SQLITE_OK) throw std::runtime_error("open");
    sqlite3_exec(direct_, "PRAGMA foreign_keys=ON; PRAGMA synchronous=FULL", nullptr, nullptr,
                 nullptr);
  }
  ~Bench() {
    sabrel::UnloadThread();
    sqlite3_close(direct_);
  }
  Bench(const Bench&) = delete;
  Bench& operator=(const Bench&) = delete;

  static Bench& Instance() {
    static Bench bench;
    return bench;
  }

  // Runs `sql` and adds up its first column.
  std::int64_t Direct(const std::string& sql) const {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(direct_, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK) {
      throw std::runtime_error(sqlite3_errmsg(direct_));
    }
    std::int64_t sum = 0;
    int code = SQLITE_ROW;
    while ((code = sqlite3_step(statement)) == SQLITE_ROW) {
      sum += sqlite3_column_int64(statement, 0);
      for (int i = 1; i < sqlite3_column_count(statement); ++i) {
        benchmark::DoNotOptimize(
            std::string(static_cast<const char*>(sqlite3_column_blob(statement, i)),
                        static_cast<std::size_t>(sqlite3_column_bytes(statement, i))));
      }
    }
    sqlite3_finalize(statement);
    if (code != SQLITE_DONE) throw std::runtime_error(sqlite3_errmsg(direct_));
    return sum;
  }

 private:
  sabrel::bench::SiteFile file_{"sabrel-bench.site"};
  sqlite3* direct_ = nullptr;
};

int next_id = 1;
int NextId() { return next_id = next_id % kRows + 1; }

std::string PointQuery() {
  return "SELECT ID FROM T WHERE ID = " + std::to_string(NextId()) + " AND NAME <> " +
         sabrel::GSabrel::DBStr("O'Hara").Value();
}

void PointQueryComponent(benchmark::State& state) {
  Bench::Instance();
  for (auto _ : state)
    benchmark::DoNotOptimize(sabrel::GSabrel::ExecuteQueryReturningLong(PointQuery()));
}
void PointQueryDirect(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(Bench::Instance().Direct(PointQuery()));
}

std::string JoinQuery() {
  return "SELECT A.ID FROM T A, T B WHERE A.ID = B.ID AND A.ID = " + std::to_string(NextId()) +
         " AND B.NAME LIKE 'name%' AND B.V > 0.125 ORDER BY A.ID";
}
void JoinQueryComponent(benchmark::State& state) {
  Bench::Instance();
  for (auto _ : state)
    benchmark::DoNotOptimize(sabrel::GSabrel::ExecuteQueryReturningLong(JoinQuery()));
}
void JoinQueryDirect(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(Bench::Instance().Direct(JoinQuery()));
}

// A search whose pattern is another one each time.
std::string SearchQuery() {
  return "SELECT ID FROM T WHERE ID = " + std::to_string(NextId()) +
         " AND NAME LIKE 'name of row " + std::to_string(NextId()) + "%'";
}
void SearchComponent(benchmark::State& state) {
  Bench::Instance();
  for (auto _ : state)
    benchmark::DoNotOptimize(sabrel::GSabrel::ExecuteQueryReturningLong(SearchQuery()));
}
void SearchDirect(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(Bench::Instance().Direct(SearchQuery()));
}

void ScanComponent(benchmark::State& state) {
  Bench::Instance();
  for (auto _ : state) {
    const auto rows = sabrel::GSabrel::ExecuteQuery("SELECT ID, NAME, V, D FROM T");
    std::int64_t sum = 0;
    for (; !rows->EndOfFile(); rows->MoveNext()) {
      const sabrel::FieldList fields = rows->Fields();
      sum += fields.Item(0).Value().Get<std::int32_t>();
      for (int i = 1; i < 4; ++i) benchmark::DoNotOptimize(fields.Item(i).Value());
    }
    rows->Close();
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * kRows);
}
void ScanDirect(benchmark::State& state) {
  for (auto _ : state)
    benchmark::DoNotOptimize(Bench::Instance().Direct("SELECT ID, NAME, V, D FROM T"));
  state.SetItemsProcessed(state.iterations() * kRows);
}

std::string UpdateText() {
  return "UPDATE T SET NAME = 'x" + std::to_string(NextId()) +
         "' WHERE ID = " + std::to_string(NextId());
}
void UpdateComponent(benchmark::State& state) {
  Bench::Instance();
  for (auto _ : state) sabrel::GSabrel::ExecuteRequest(UpdateText());
}
void UpdateDirect(benchmark::State& state) {
  for (auto _ : state) Bench::Instance().Direct(UpdateText());
}

// Pairs: component, then direct.
BENCHMARK(PointQueryComponent);
BENCHMARK(PointQueryDirect);
BENCHMARK(JoinQueryComponent);
BENCHMARK(JoinQueryDirect);
BENCHMARK(SearchComponent);
BENCHMARK(SearchDirect);
BENCHMARK(ScanComponent)->Unit(benchmark::kMillisecond);
BENCHMARK(ScanDirect)->Unit(benchmark::kMillisecond);
BENCHMARK(UpdateComponent);
BENCHMARK(UpdateDirect);

}  // namespace

BENCHMARK_MAIN();
