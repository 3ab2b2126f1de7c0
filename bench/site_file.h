// The place of a benchmark's site, free of what an earlier run left when it was ended early.
#pragma once

#include <filesystem>
#include <string>

namespace sabrel::bench {

class SiteFile {
 public:
  explicit SiteFile(const char* name) : path_(std::filesystem::temp_directory_path() / name) {
    Remove();
  }
  ~SiteFile() { Remove(); }
  SiteFile(const SiteFile&) = delete;
  SiteFile& operator=(const SiteFile&) = delete;
  [[nodiscard]] const std::string& Path() const { return path_; }

 private:
  void Remove() const {
    std::error_code ignored;
    for (const char* suffix : {"", "-wal", "-shm"}) {
      std::filesystem::remove(path_ + suffix, ignored);
    }
  }

  std::string path_;
};

}  // namespace sabrel::bench
