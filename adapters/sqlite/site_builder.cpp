#include "adapters/sqlite/site_builder.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "adapters/sqlite/catalogue.h"
#include "adapters/sqlite/error_table.h"
#include "adapters/sqlite/failure.h"
#include "adapters/sqlite/server.h"
#include "adapters/sqlite/sqlite_link.h"

namespace sabrel::sqlite {
namespace {

constexpr const char* kUnfinished = ".unfinished-";

std::string Reason(const char* what, const std::string& path) {
  return std::string(what) + " " + path + ": " + std::strerror(errno);
}

/// Needs no memory: destructors and handlers of failures call it.
void RemoveWithJournals(const std::string& path) noexcept {
  std::array<char, PATH_MAX + 16> name;  // a longer name is no file's
  for (const char* suffix : {"", "-wal", "-shm", "-journal"}) {
    std::snprintf(name.data(), name.size(), "%s%s", path.c_str(), suffix);
    ::unlink(name.data());
  }
}

/// Makes an empty file that nobody else has, and a site of it.
void MakeSite(const std::string& path, FileAccess access) {
  const int file =
      ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, ModeOf(FileAccess::kOwner));
  if (file < 0) throw ServerFailure(1119, Reason("cannot create the file", path));
  const bool is_widened = WidenTo(AccessBeside(path, access), file);
  const int reason = errno;
  ::close(file);
  errno = reason;
  if (!is_widened) throw ServerFailure(1119, Reason("cannot share the file", path));
  sqlite3* handle = nullptr;
  int code = sqlite3_open_v2(path.c_str(), &handle, SQLITE_OPEN_READWRITE, nullptr);
  const std::string mark =
      "PRAGMA application_id=" + std::to_string(kSiteMark) +
      "; PRAGMA synchronous=OFF; PRAGMA journal_mode=WAL; PRAGMA trusted_schema=ON; BEGIN;";
  for (const char* sql : {mark.c_str(), CatalogueSql(), "COMMIT"}) {
    if (code == SQLITE_OK) code = sqlite3_exec(handle, sql, nullptr, nullptr, nullptr);
  }
  const std::string text = handle != nullptr ? sqlite3_errmsg(handle) : "";
  const int extended = handle != nullptr ? sqlite3_extended_errcode(handle) : code;
  sqlite3_close(handle);
  if (code != SQLITE_OK) {
    const NativeError error = NativeErrorOf(extended, text, Verb::kOther);
    throw ServerFailure(error.number, error.message + " (" + path + ")", text);
  }
}

void SyncFile(const std::string& path, int flags) {
  const int file = ::open(path.c_str(), flags | O_CLOEXEC);
  const bool done = file >= 0 && ::fsync(file) == 0;
  const int reason = errno;
  if (file >= 0) ::close(file);
  errno = reason;
  if (!done) throw ServerFailure(1115, Reason("cannot bring to the disk:", path));
}

std::string FolderOf(const std::string& path) {
  const std::filesystem::path folder = std::filesystem::path(path).parent_path();
  return folder.empty() ? "." : folder.string();
}

/// Refuses a place that is taken, or where a journal lies whose file is gone: it would become the
/// new file's.
void RequireFreePlace(const std::string& path) {
  if (::access(path.c_str(), F_OK) == 0) {
    throw ServerFailure(1119, "cannot create the file " + path + ": it exists already");
  }
  for (const char* suffix : {"-wal", "-journal"}) {
    const std::string journal = path + suffix;
    if (::access(journal.c_str(), F_OK) != 0) continue;
    throw ServerFailure(1119, "cannot create the file " + path + ": " + journal +
                                  " is left of a file that is gone; remove it");
  }
}

/// Removes what a process that was killed left of a new site at `path`.
void RemoveLeftovers(const std::string& path) {
  const std::string start = std::filesystem::path(path).filename().string() + kUnfinished;
  std::error_code ignored;
  std::vector<std::string> dead;
  for (std::filesystem::directory_iterator entry(FolderOf(path), ignored), end;
       !ignored && entry != end; entry.increment(ignored)) {
    const std::string name = entry->path().filename().string();
    if (!name.starts_with(start)) continue;
    pid_t process = 0;
    const char* const digits = name.c_str() + start.size();
    std::from_chars(digits, name.c_str() + name.size(), process);
    if (process > 0 && ::kill(process, 0) != 0 && errno == ESRCH) {
      dead.push_back(path + std::string(kUnfinished) + std::to_string(process));
    }
  }
  for (const std::string& site : dead) RemoveWithJournals(site);
}

}  // namespace

struct SiteBuilder::Work {
  std::string path;
  std::string unfinished;
  std::unique_ptr<SqliteLink> link;
  DatabaseError error;

  /// Runs `action`, turning what it throws into the failure that callers know.
  template <class Action>
  void Guard(Action&& action) {
    try {
      action();
    } catch (ServerFailure& failure) {
      failure.Originator(path);
      error = failure.Error();
      throw DatabaseFailure(error);
    }
  }
};

SiteBuilder::SiteBuilder(std::string path, FileAccess access) : work_(std::make_unique<Work>()) {
  work_->path = std::move(path);
  work_->unfinished = work_->path + kUnfinished + std::to_string(::getpid());
  RemoveLeftovers(work_->path);
  work_->Guard([this, access] {
    RequireFreePlace(work_->path);
    try {
      MakeSite(work_->unfinished, access);
    } catch (...) {
      RemoveWithJournals(work_->unfinished);
      throw;
    }
  });
  ConnectionProfile profile;
  profile.Name = "unfinished site";
  profile.Driver = "sqlite";
  profile.Database = work_->unfinished;
  work_->link = std::make_unique<SqliteLink>(ProfileSet(std::move(profile)), Durability::kAtTheEnd);
}

SiteBuilder::~SiteBuilder() {
  work_->link.reset();
  RemoveWithJournals(work_->unfinished);
}

void SiteBuilder::Execute(std::string_view sql) {
  try {
    work_->link->Execute(sql, {});
  } catch (...) {
    work_->error = work_->link->LastError();
    throw;
  }
}

void SiteBuilder::Finish() {
  work_->Guard([this] {
    {
      // With the server's functions, which columns' checks may call.
      Server server(work_->unfinished, std::make_shared<CancelSwitch>(),
                    std::make_shared<SessionState>(), Durability::kAtTheEnd, std::nullopt);
      Statement check = server.Engine().Prepare("PRAGMA integrity_check(1)");
      if (!check.Step() || check.Column(0).text != "ok") {
        throw ServerFailure(1578, "the new file is damaged", check.Column(0).text);
      }
    }
    // The last connection that closes moves the journal's content into the file.
    work_->link->ShutDown();
    SyncFile(work_->unfinished, O_RDWR);
    // A link instead of a renaming: a file that came to be in the meantime is not overwritten.
    if (::link(work_->unfinished.c_str(), work_->path.c_str()) != 0) {
      throw ServerFailure(1119, Reason("cannot create the file", work_->path));
    }
    ::unlink(work_->unfinished.c_str());
    SyncFile(FolderOf(work_->path), O_RDONLY | O_DIRECTORY);
  });
}

const DatabaseError& SiteBuilder::Error() const noexcept { return work_->error; }

void CreateDatabase(const std::string& path) { SiteBuilder(path).Finish(); }

}  // namespace sabrel::sqlite
