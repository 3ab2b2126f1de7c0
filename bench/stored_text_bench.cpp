// Stored texts on the embedded server beside the same rows written and read with the engine's own
// interface: an insert prepared once in one transaction, a prepared select.
//
// Look at the ratio of a pair (Component / Direct) of one run, and at the complexity: the time
// should grow with the text and no faster.
#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <stdexcept>
#include <string>
#include <string_view>

#include "adapters/console/console_platform.h"
#include "adapters/sqlite/sqlite_rowlink.h"
#include "bench/site_file.h"
#include "sabrel/core/gsabrel.h"
#include "sabrel/platform/utf8.h"
#include "site/sample_site.h"

namespace {

constexpr std::int64_t kMegabyte = std::int64_t{1} << 20;
constexpr std::size_t kPieceCharacters = 4000;
// The text with the id 2 is written directly.
constexpr int kComponentId = 1;

class StoredTextBench {
 public:
  StoredTextBench() {
    sabrel::sqlite::SiteBuilder site(file_.Path());
    for (const std::string_view statement :
         sabrel::SampleSiteStatements(sabrel::SiteRelease::kCurrent)) {
      site.Execute(statement);
    }
    site.Finish();
    sabrel::UnloadThread();  // another benchmark was here
    sabrel::InstallPlatform(
        sabrel::ConsolePlatform([this] { return sabrel::OpenSite(file_.Path()); }));
    Require(sqlite3_open(file_.Path().c_str(), &direct_));
    Run("PRAGMA synchronous=FULL");
  }
  ~StoredTextBench() {
    sabrel::UnloadThread();
    sqlite3_close(direct_);
  }
  StoredTextBench(const StoredTextBench&) = delete;
  StoredTextBench& operator=(const StoredTextBench&) = delete;

  static StoredTextBench& Instance() {
    static StoredTextBench bench;
    return bench;
  }

  void Save(std::string_view text) const {
    Run("BEGIN IMMEDIATE");
    Run("DELETE FROM PM_StringTable WHERE Id = 2");
    sqlite3_stmt* insert =
        Prepared("INSERT INTO PM_StringTable (Id, Ordinal, StringData) VALUES (2, ?1, ?2)");
    for (int ordinal = 1; !text.empty(); ++ordinal) {
      const std::size_t length = sabrel::ByteLengthOf(text, kPieceCharacters);
      sqlite3_bind_int(insert, 1, ordinal);
      sqlite3_bind_text(insert, 2, text.data(), static_cast<int>(length), SQLITE_STATIC);
      if (sqlite3_step(insert) != SQLITE_DONE) Fail();
      sqlite3_reset(insert);
      text.remove_prefix(length);
    }
    sqlite3_finalize(insert);
    Run("COMMIT");
  }

  [[nodiscard]] std::string Load() const {
    sqlite3_stmt* select =
        Prepared("SELECT StringData FROM PM_StringTable WHERE Id = 2 ORDER BY Ordinal");
    std::string text;
    while (sqlite3_step(select) == SQLITE_ROW) {
      text.append(static_cast<const char*>(sqlite3_column_blob(select, 0)),
                  static_cast<std::size_t>(sqlite3_column_bytes(select, 0)));
    }
    sqlite3_finalize(select);
    return text;
  }

 private:
  [[noreturn]] void Fail() const { throw std::runtime_error(sqlite3_errmsg(direct_)); }
  void Require(int code) const {
    if (code != SQLITE_OK) Fail();
  }
  void Run(const char* sql) const {
    Require(sqlite3_exec(direct_, sql, nullptr, nullptr, nullptr));
  }
  sqlite3_stmt* Prepared(const char* sql) const {
    sqlite3_stmt* statement = nullptr;
    Require(sqlite3_prepare_v2(direct_, sql, -1, &statement, nullptr));
    return statement;
  }

  sabrel::bench::SiteFile file_{"sabrel-text-bench.site"};
  sqlite3* direct_ = nullptr;
};

// Lines of SQL with quotes, letters of two bytes and what has to be escaped.
std::string TextOf(std::int64_t bytes) {
  const std::string line = "SELECT 'O''Hara', \"Łódź\" FROM T WHERE A = '\\' || '|'\r\n";
  std::string text;
  while (text.size() + line.size() <= static_cast<std::size_t>(bytes)) text += line;
  return text;
}

void CountBytes(benchmark::State& state) {
  state.SetBytesProcessed(state.iterations() * state.range(0));
  state.SetComplexityN(state.range(0));
}

void RequireSame(const std::string& loaded, const std::string& text) {
  if (loaded != text) throw std::runtime_error("the text came back as another one");
}

void SaveComponent(benchmark::State& state) {
  StoredTextBench::Instance();
  const std::string text = TextOf(state.range(0));
  for (auto _ : state) sabrel::GDBString::UpdateDBString(kComponentId, text);
  CountBytes(state);
}
void SaveDirect(benchmark::State& state) {
  const std::string text = TextOf(state.range(0));
  for (auto _ : state) StoredTextBench::Instance().Save(text);
  CountBytes(state);
}

void LoadComponent(benchmark::State& state) {
  StoredTextBench::Instance();
  const std::string text = TextOf(state.range(0));
  sabrel::GDBString::UpdateDBString(kComponentId, text);
  for (auto _ : state) {
    benchmark::DoNotOptimize(sabrel::GDBString::LoadDBString(kComponentId)->Text().data());
  }
  RequireSame(sabrel::GDBString::LoadDBString(kComponentId)->Text(), text);
  CountBytes(state);
}
void LoadDirect(benchmark::State& state) {
  const std::string text = TextOf(state.range(0));
  StoredTextBench::Instance().Save(text);
  for (auto _ : state) benchmark::DoNotOptimize(StoredTextBench::Instance().Load());
  RequireSame(StoredTextBench::Instance().Load(), text);
  CountBytes(state);
}

void Sizes(benchmark::internal::Benchmark* bench) {
  bench->RangeMultiplier(4)
      ->Range(kMegabyte, 16 * kMegabyte)
      ->Complexity(benchmark::oN)
      ->Unit(benchmark::kMillisecond)
      ->UseRealTime();
}

// Pairs: component, then direct.
BENCHMARK(SaveComponent)->Apply(Sizes);
BENCHMARK(SaveDirect)->Apply(Sizes);
BENCHMARK(LoadComponent)->Apply(Sizes);
BENCHMARK(LoadDirect)->Apply(Sizes);

}  // namespace
