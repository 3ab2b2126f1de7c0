// What the embedded server refuses, on its way to the caller.
#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <utility>

#include "sabrel/platform/rowlink.h"

namespace sabrel::sqlite {

/// A database error. `message` names what is wrong without its "ORA-" prefix, never a statement's
/// constants; `detail` is the engine's own text.
class ServerFailure : public std::exception {
 public:
  ServerFailure(std::int32_t native_number, const std::string& message, std::string detail = {});

  [[nodiscard]] const DatabaseError& Error() const noexcept { return error_; }
  /// Names the file when nothing named it yet.
  void Originator(const std::string& file) {
    if (error_.originator.empty()) error_.originator = file;
  }
  [[nodiscard]] const char* what() const noexcept override { return error_.message.c_str(); }

 private:
  DatabaseError error_;
};

}  // namespace sabrel::sqlite
