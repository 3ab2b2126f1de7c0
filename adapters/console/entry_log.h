// Trace and log entries: to a file that rotates, or to the terminal when no file is named.
//
// One entry is one line with date, time, thread and kind; line breaks inside an entry are followed
// by four blanks, so a digit in the first column starts an entry. An entry is one write at the
// file's end, so that processes may share a log. A failed write is thrown to its caller, and the
// next write opens the file anew: once the disk has room again, the log continues. Refuses to
// append to, rotate or replace a file that is not a log. Entries may hold passwords, so only the
// owner, and with FileAccess::kGroup the group, can read the files.
#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string_view>

#include "adapters/console/output_file.h"
#include "adapters/console/terminal.h"

namespace sabrel {

struct EntryLogOptions {
  /// Empty writes to the terminal. Missing folders are made; an existing file must be a log.
  std::filesystem::path path;
  /// The file is put aside as <stem>.1<extension> before an entry that would make it longer.
  std::size_t rotate_at_bytes = std::size_t{10} * 1024 * 1024;
  /// How many files put aside are kept.
  std::size_t rotated_files = 3;
  /// In a folder with the set-group-ID bit logs are the group's in any case.
  FileAccess access = FileAccess::kOwner;
  /// What neither the log nor a file put aside may be.
  ReservedFiles reserved = {};
};

class EntryLog {
 public:
  /// Opens the file. `terminal` must outlive this object.
  /// Errors: 75 naming the file and the reason: it, or a file in the place of one that is put
  /// aside, cannot be opened, is no log or is reserved
  EntryLog(const EntryLogOptions& options, TerminalOutput& terminal);
  ~EntryLog();
  EntryLog(const EntryLog&) = delete;
  EntryLog& operator=(const EntryLog&) = delete;

  /// May be called from any thread; the entry has left the process on return.
  /// Errors: 75 naming the file and the reason
  void Write(std::string_view kind, std::string_view text);

 private:
  class Destination;
  std::unique_ptr<Destination> destination_;
};

}  // namespace sabrel
