// What the program's exit status says.
#pragma once

#include <stdexcept>
#include <string>

namespace sabrel::cli {

inline constexpr int kDone = 0;
inline constexpr int kFalse = 1;
inline constexpr int kWrongUsage = 2;
inline constexpr int kNoConnection = 3;
inline constexpr int kFailed = 4;
/// 128 and the number of the signal, as shells have it.
inline constexpr int kCancelled = 130;
inline constexpr int kOutputClosed = 141;
inline constexpr int kTerminated = 143;

/// What the caller typed cannot be meant; ends in kWrongUsage.
class UsageError : public std::runtime_error {
 public:
  explicit UsageError(const std::string& what) : std::runtime_error(what) {}
};

/// Nobody reads the output any more; ends the program without a word.
class OutputClosed : public std::runtime_error {
 public:
  OutputClosed() : std::runtime_error("output closed") {}
};

/// Ctrl-C came between two rows.
class OutputCancelled : public std::runtime_error {
 public:
  OutputCancelled() : std::runtime_error("output cancelled") {}
};

}  // namespace sabrel::cli
