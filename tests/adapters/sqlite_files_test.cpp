// Files that are no sites, or not as they should be, and the making of sites.
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <set>

#include "tests/adapters/sqlite_site.h"

namespace sabrel::testing {
namespace {

namespace fs = std::filesystem;

std::set<std::string> FilesIn(const std::string& folder) {
  std::set<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder)) names.insert(entry.path().filename());
  return names;
}

using SqliteFiles = SiteTest;

TEST_F(SqliteFiles, AFileThatCannotBeOpenedIsADatabaseErrorNamingItAndLeavesNoJournal) {
  const std::string sound = Folder().Path("sound");
  sqlite::CreateDatabase(sound);
  fs::create_directory(Folder().Path("folder"));
  std::ofstream(Folder().Path("empty")).flush();
  std::ofstream(Folder().Path("text")) << std::string(5000, 'x');
  fs::copy(sound, Folder().Path("truncated"));
  fs::resize_file(Folder().Path("truncated"), 6000);
  ::mkfifo(Folder().Path("pipe").c_str(), 0600);
  const std::set<std::string> before = FilesIn(Folder().Path(""));
  constexpr std::pair<const char*, const char*> kRows[] = {
      {"missing", "ORA-1157"},   {"folder", "ORA-1157"}, {"empty", "ORA-1157"},
      {"pipe", "ORA-1157"},      {"text", "ORA-1578"},   {"truncated", "ORA-1578"},
      {"no/folder", "ORA-1157"},
  };
  for (const auto& [name, outcome] : kRows) {
    Asking asking(Folder().Path(name));
    EXPECT_EQ(asking.Ask("SELECT COUNT(*) FROM user_tables"), outcome) << name;
    EXPECT_THAT(asking.link->LastDatabaseError().message,
                ::testing::HasSubstr(Folder().Path(name)));
    EXPECT_EQ(asking.link->LastDatabaseError().originator, Folder().Path(name));
  }
  EXPECT_EQ(FilesIn(Folder().Path("")), before);
}

TEST_F(SqliteFiles, AReadOnlySiteIsReadAndRefusesWrites) {
  ASSERT_EQ(Do("CREATE TABLE T (N NUMBER)"), "");
  link->ShutDown();
  ::chmod(File().c_str(), 0444);
  const std::string shut = Folder().Path("shut");
  fs::create_directory(shut);
  fs::copy(File(), shut);
  ::chmod(shut.c_str(), 0555);
  // Nothing is read-only for root.
  const pid_t child = InChild([&] {
    fs::permissions(Folder().Path(""), fs::perms::all);
    if (::geteuid() == 0 && ::setuid(65534) != 0) return 9;
    Asking asking(File());
    if (asking.Ask("SELECT COUNT(*) FROM T") != "0") return 1;
    if (asking.Do("INSERT INTO T VALUES (1)") != "ORA-16000") return 2;
    Asking in_shut(shut + "/plant.site");
    if (in_shut.Ask("SELECT COUNT(*) FROM T") != "ORA-16000") return 3;
    const std::string message = in_shut.link->LastDatabaseError().message;
    return message.find("writable folder") != std::string::npos ? 0 : 4;
  });
  EXPECT_EQ(ResultOf(child), 0);
  ::chmod(shut.c_str(), 0755);
}

TEST_F(SqliteFiles, AFullDiskIsReportedAndTheStatementTakenBack) {
  ASSERT_EQ(Do("CREATE TABLE T (X VARCHAR2(4000))"), "");
  link->ShutDown();
  const pid_t child = InChild([&] {
    ::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{1U << 20U, 1U << 20U};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    Asking asking(File());
    const std::string outcome = asking.Do(
        "INSERT INTO T WITH R(N) AS (SELECT 1 FROM DUAL UNION ALL SELECT N+1 FROM R WHERE"
        " N < 5000) SELECT LPAD('x',4000) FROM R");
    if (outcome != "ORA-1653") return 1;
    return asking.Ask("SELECT COUNT(*) FROM T") == "0" ? 0 : 2;
  });
  EXPECT_EQ(ResultOf(child), 0);
}

TEST_F(SqliteFiles, ASiteIsMadeWholeOrNotAtAll) {
  const std::string path = Folder().Path("new");
  const pid_t dead = InChild([] { return 0; });
  EXPECT_EQ(ResultOf(dead), 0);
  const std::set<std::string> before = FilesIn(Folder().Path(""));
  {
    const std::string leftover = path + ".unfinished-" + std::to_string(dead);
    std::ofstream(leftover + "-wal").flush();
    std::ofstream(path + ".unfinished-").flush();
    sqlite::SiteBuilder site(path);
    EXPECT_FALSE(fs::exists(leftover + "-wal"));
    EXPECT_TRUE(fs::remove(path + ".unfinished-"));
    site.Execute("CREATE TABLE T (N NUMBER)");
    EXPECT_THROW(site.Execute("CREATE TABLE T (N NUMBER)"), RuntimeError);
    EXPECT_EQ(site.Error().native_number, 955);
  }
  EXPECT_EQ(FilesIn(Folder().Path("")), before);
  std::ofstream(path + "-wal").flush();
  EXPECT_THROW(sqlite::CreateDatabase(path), RuntimeError) << "it would be the new file's journal";
  EXPECT_TRUE(fs::remove(path + "-wal"));
  {
    sqlite::SiteBuilder site(path);
    site.Execute("CREATE TABLE T (N NUMBER)");
    EXPECT_FALSE(fs::exists(path));
    site.Finish();
  }
  EXPECT_THROW(sqlite::CreateDatabase(path), RuntimeError);
  EXPECT_THROW(sqlite::CreateDatabase(Folder().Path("no/folder")), RuntimeError);
  EXPECT_EQ(Asking(path).Ask("SELECT table_name FROM user_tables"), "'T'");
  EXPECT_EQ(FilesIn(Folder().Path("")).size(), before.size() + 1);
}

}  // namespace
}  // namespace sabrel::testing
