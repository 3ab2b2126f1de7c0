// Any text as a statement of the embedded server: it is refused as a statement is, or done; after
// it the connection answers, nothing is left open, the server's own tables are what they were and
// the file is whole. A "?" in front sends what follows as a query, whatever it is.
#include <sqlite3.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <memory>

#include "adapters/shared/dialect/dialect.h"
#include "adapters/sqlite/access.h"
#include "adapters/sqlite/failure.h"
#include "adapters/sqlite/server.h"
#include "adapters/sqlite/site_builder.h"
#include "fuzz/target.h"
#include "site/sample_site.h"

namespace sabrel::fuzz {
namespace {

using dialect::StatementKind;
using sqlite::Connection;
using sqlite::Server;

constexpr std::chrono::milliseconds kLongestStatement{30};
constexpr std::size_t kMostRows = 2000;
constexpr int kMostGrowthPages = 256;
constexpr int kLongestValue = 1 << 20;
constexpr std::int64_t kMostHeapBytes = std::int64_t{256} << 20U;
constexpr std::uint64_t kChangesBetweenIntegrityChecks = 64;

// What no statement changes, and what only those that define routines or sequences do.
constexpr const char* kOwnSchema =
    "SELECT group_concat(name || sql, ';') FROM sqlite_schema WHERE substr(tbl_name, 1, 7) = "
    "'sabrel_' "
    "OR (type = 'view' AND name IN ('DUAL', 'user_tables', 'user_tab_columns', 'user_arguments', "
    "'user_objects', 'user_sequences'))";
constexpr const char* kOwnRoutines =
    "SELECT (SELECT group_concat(quote(name) || quote(package) || result_type, ';') "
    "FROM sabrel_routine) || (SELECT group_concat(quote(name) || position || type, ';') "
    "FROM sabrel_argument) || (SELECT group_concat(quote(statement), ';') FROM sabrel_body)";
constexpr const char* kOwnSequences =
    "SELECT group_concat(quote(name) || increment_by, ';') FROM sabrel_sequence";

std::string Bytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// A connection that the server does not know of.
class Watcher {
 public:
  explicit Watcher(const std::string& path) {
    Require(sqlite3_open_v2(path.c_str(), &handle_, SQLITE_OPEN_READWRITE, nullptr) == SQLITE_OK,
            "the file is a database", path);
  }
  ~Watcher() { sqlite3_close(handle_); }
  Watcher(const Watcher&) = delete;
  Watcher& operator=(const Watcher&) = delete;

  /// The first value of the first row as text.
  [[nodiscard]] std::string Ask(const char* sql) {
    std::string text;
    const auto keep = [](void* to, int count, char** values, char**) {
      if (count > 0 && values[0] != nullptr) *static_cast<std::string*>(to) = values[0];
      return 0;
    };
    const int code = sqlite3_exec(handle_, sql, keep, &text, nullptr);
    Require(code == SQLITE_OK, "another connection can read", sqlite3_errmsg(handle_));
    return text;
  }

 private:
  sqlite3* handle_ = nullptr;
};

/// A copy of the sample site that is made anew when a statement changed it.
class Site {
 public:
  Site() : path_(TemporaryPath("plant.site")) {
    sqlite3_hard_heap_limit64(kMostHeapBytes);
    sqlite::SiteBuilder builder(path_);
    for (const std::string_view statement : SampleSiteStatements(SiteRelease::kCurrent)) {
      builder.Execute(statement);
    }
    builder.Finish();
    bytes_ = Bytes(path_);
    Open();
    schema_ = watcher_->Ask(kOwnSchema);
    routines_ = watcher_->Ask(kOwnRoutines);
    sequences_ = watcher_->Ask(kOwnSequences);
  }

  void Send(std::string_view text) {
    const bool as_query = text.starts_with('?');
    if (as_query) text.remove_prefix(1);
    StatementKind kind = StatementKind::kOther;
    try {
      const std::string_view statement = dialect::RequireOneStatement(text);
      kind = dialect::KindOf(statement);
      const sqlite::Operation operation(server_->Engine(),
                                        std::chrono::steady_clock::now() + kLongestStatement);
      if (as_query || kind == StatementKind::kSelect) {
        ReadRows(server_->Query(statement));
      } else {
        server_->Execute(statement);
      }
    } catch (const sqlite::ServerFailure& failure) {
      Require(failure.Error().native_number > 0, "a refusal has Oracle's number", failure.what());
    } catch (const dialect::SyntaxFailure& failure) {
      Require(failure.native_number > 0, "a refusal has Oracle's number", failure.message);
    } catch (const RuntimeError& failure) {
      Require(CarriedConnectionCode(failure.Number()) ==
                  static_cast<std::int32_t>(ConnectionFailure::kReceiveTimeOut),
              "nothing else fails but the time-out", failure.Description());
    }
    CheckConnection();
    if (watcher_->Ask("PRAGMA data_version") != version_) CheckChange(kind);
  }

 private:
  void Open() {
    server_ = std::make_unique<Server>(path_, std::make_shared<sqlite::CancelSwitch>(),
                                       std::make_shared<sqlite::SessionState>(),
                                       sqlite::Durability::kAtTheEnd, std::nullopt);
    watcher_ = std::make_unique<Watcher>(path_);
    SetLimits();
    version_ = watcher_->Ask("PRAGMA data_version");
  }

  void SetLimits() {
    sqlite3* const handle = server_->Engine().Handle();
    sqlite3_limit(handle, SQLITE_LIMIT_LENGTH, kLongestValue);
    const int most_pages = std::stoi(watcher_->Ask("PRAGMA page_count")) + kMostGrowthPages;
    const std::string limit = "PRAGMA max_page_count=" + std::to_string(most_pages);
    // Which the server's guard keeps everybody from.
    sqlite3_set_authorizer(handle, nullptr, nullptr);
    const int code = sqlite3_exec(handle, limit.c_str(), nullptr, nullptr, nullptr);
    Require(code == SQLITE_OK, "the file can be limited", sqlite3_errmsg(handle));
    sqlite::GuardStatements(server_->Engine());
  }

  static void ReadRows(sqlite::QueryResult result) {
    if (!result.running) return;
    RowBlock block(result.column_names.size());
    do {
      result.running->AppendRow(block);
    } while (block.Rows() < kMostRows && result.running->Step());
    for (std::size_t i = 0; block.Rows() > 0 && i < block.Columns(); ++i) {
      static_cast<void>(Shown(block.Cell(block.Rows() - 1, i)));
    }
  }

  void CheckConnection() {
    Connection& engine = server_->Engine();
    Require(!engine.InTransaction() && !engine.IsBroken(), "no transaction stays open");
    const sqlite::Operation operation(engine, std::nullopt);
    sqlite::QueryResult result = server_->Query("SELECT 1 FROM DUAL");
    RowBlock block(1);
    if (result.running) result.running->AppendRow(block);
    const RowBlock& rows = result.rows ? *result.rows : block;
    Require(rows.Rows() == 1 && rows.Cell(0, 0) == Variant(1), "the connection answers");
  }

  void CheckChange(StatementKind kind) {
    Require(watcher_->Ask(kOwnSchema) == schema_, "the server's own tables stay");
    Require(watcher_->Ask("SELECT COUNT(*) FROM sabrel_catalogue") == "1", "the catalogue stays");
    if (kind != StatementKind::kCreateRoutine && kind != StatementKind::kDropRoutine) {
      Require(watcher_->Ask(kOwnRoutines) == routines_, "stored routines stay");
    }
    if (kind != StatementKind::kCreateSequence && kind != StatementKind::kDropSequence) {
      Require(watcher_->Ask(kOwnSequences) == sequences_, "sequences stay");
    }
    if (++changes_ % kChangesBetweenIntegrityChecks == 0) {
      Require(watcher_->Ask("PRAGMA integrity_check") == "ok", "the file is whole");
      Require(watcher_->Ask("PRAGMA foreign_key_check").empty(), "references are kept");
    }
    Restore();
  }

  void Restore() {
    server_.reset();
    watcher_.reset();
    for (const char* suffix : {"-wal", "-shm"}) ::unlink((path_ + suffix).c_str());
    std::ofstream(path_, std::ios::binary)
        .write(bytes_.data(), static_cast<std::streamsize>(bytes_.size()));
    Open();
  }

  std::string path_;
  std::string bytes_;
  std::string schema_;
  std::string routines_;
  std::string sequences_;
  std::string version_;
  std::uint64_t changes_ = 0;
  std::unique_ptr<Server> server_;
  std::unique_ptr<Watcher> watcher_;
};

}  // namespace

void Check(std::string_view input) {
  // Made first, so that it outlives the site.
  static const std::string folder = TemporaryPath("");
  static Site site;
  site.Send(input);
}

}  // namespace sabrel::fuzz
