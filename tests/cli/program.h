// The program as a child process: run, talked to, interrupted, and asked how it ended.
#pragma once

#include <sys/types.h>

#include <string>

#include "tests/support/sample_site_copy.h"

namespace sabrel::testing {

struct Start {
  /// What stands behind the program's name in a shell.
  std::string line;
  std::string input = {};
  /// The session's site, as the environment names it.
  std::string site = {};
};

struct Outcome {
  int status = -1;  // 128 + signal when one ended it
  std::string out;
  std::string err;
};

/// Its input is a pipe, its output a file.
[[nodiscard]] Outcome RunProgram(const Start& start);

/// The program on a terminal of 60 columns.
class TerminalProgram {
 public:
  explicit TerminalProgram(const Start& start);
  ~TerminalProgram();
  TerminalProgram(const TerminalProgram&) = delete;
  TerminalProgram& operator=(const TerminalProgram&) = delete;

  /// Waits until `text` has been printed behind what was waited for before; false after a minute
  /// without it.
  bool WaitFor(const std::string& text);
  void Type(const std::string& text) const;
  void Signal(int signal) const;
  /// Waits until the terminal hands out each character, as an editor of lines wants it; false after
  /// a minute.
  [[nodiscard]] bool WaitForEditing() const;
  /// Sets it up as a shell does whose job has stopped.
  void EndEditing() const;
  /// Its output is what the terminal shows.
  Outcome End();

 private:
  bool Read();

  pid_t process_ = -1;
  int terminal_ = -1;
  std::size_t seen_ = 0;
  Outcome outcome_;
};

/// A folder of its own with "plant.site" in it, gone with the object.
class SiteFolder {
 public:
  SiteFolder() { CopySampleSite(SiteRelease::kCurrent, Site()); }
  [[nodiscard]] std::string Site() const { return folder_.Path("plant.site"); }
  /// `text` with this folder for "@", and ", which a C++ text only has as \", for "`".
  [[nodiscard]] std::string Filled(std::string text) const;
  /// A file with `content`, filled.
  void Write(const std::string& name, const std::string& content) const;
  [[nodiscard]] std::string Read(const std::string& name) const;

 private:
  TemporaryFolder folder_;
};

}  // namespace sabrel::testing
