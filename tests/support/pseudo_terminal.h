// Whether there is a terminal for tests that need one.
//
//   if (!HasPseudoTerminal()) GTEST_SKIP() << "no pseudo-terminal";
#pragma once

#include <pty.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace sabrel::testing {

/// Says on standard error that tests are skipped where there is none.
[[nodiscard]] inline bool HasPseudoTerminal() {
  int person = -1;
  int program = -1;
  if (::openpty(&person, &program, nullptr, nullptr, nullptr) == 0) {
    ::close(person);
    ::close(program);
    return true;
  }
  std::fprintf(stderr,
               "*** SKIPPED: no pseudo-terminal can be had (%s); mount /dev/pts to run this test\n",
               std::strerror(errno));
  return false;
}

}  // namespace sabrel::testing
