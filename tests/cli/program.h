// The program as a child process: started, talked to, interrupted, and asked how it ended.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace sabrel::testing {

struct Outcome {
  int status = -1;  // 128 + signal when one ended it
  std::string out;
  std::string err;
};

struct Start {
  std::vector<std::string> arguments;
  std::string input;
  /// A file that takes standard output's place.
  std::string output_file = {};
  std::vector<std::string> environment = {};
  bool on_terminal = false;
  /// As a user whom file permissions concern.
  bool as_nobody = false;
};

class Program {
 public:
  explicit Program(const Start& start);
  ~Program();
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  /// Waits until `text` has been printed (on standard error, or on the terminal); false after a
  /// minute without it.
  bool WaitFor(const std::string& text);
  void Type(const std::string& text) const;
  void Signal(int signal) const;
  void CloseOutput();
  Outcome End();

 private:
  bool Read();

  pid_t process_ = -1;
  int in_ = -1;
  int out_ = -1;
  int err_ = -1;
  std::size_t seen_ = 0;
  Outcome outcome_;
};

[[nodiscard]] Outcome RunProgram(const Start& start);

/// A folder of its own with "plant.site" in it, gone with the object.
class SiteFolder {
 public:
  SiteFolder();
  ~SiteFolder();
  SiteFolder(const SiteFolder&) = delete;
  SiteFolder& operator=(const SiteFolder&) = delete;

  [[nodiscard]] const std::string& Path() const { return path_; }
  [[nodiscard]] std::string Site() const { return path_ + "/plant.site"; }
  /// `text` with "@" for this folder.
  [[nodiscard]] std::string Filled(std::string text) const;
  void Write(const std::string& name, const std::string& content) const;

 private:
  std::string path_;
};

}  // namespace sabrel::testing
