// Ctrl-Z while a line is edited: the terminal is to be as the user's shell had it while the program
// is stopped, and set up for editing again afterwards.
#pragma once

#include <array>
#include <csignal>

namespace sabrel::cli {

/// Hands SIGTSTP and SIGCONT to the thread that waits for input. One instance per process.
class Suspension {
 public:
  Suspension();
  ~Suspension();
  Suspension(const Suspension&) = delete;
  Suspension& operator=(const Suspension&) = delete;

  /// Takes the signals over while it lives - but not one that the program was started to ignore.
  class Watch {
   public:
    explicit Watch(Suspension& suspension);
    ~Watch();
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

   private:
    std::array<struct sigaction, 2> before_{};
  };

  /// Can be read when a signal came.
  [[nodiscard]] int Descriptor() const noexcept;
  /// SIGTSTP, SIGCONT, or 0 when none came.
  [[nodiscard]] int Signal() const noexcept;
  /// Stops the program, as SIGTSTP does without a watch; returns when it goes on, or at once where
  /// nobody could let it go on.
  void Stop() const noexcept;
};

}  // namespace sabrel::cli
