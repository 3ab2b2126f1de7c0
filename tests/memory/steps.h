// All operations, one step each, for tests in which memory runs out.
#pragma once

#include <functional>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/memory/failing_memory.h"
#include "tests/support/outcome.h"

namespace sabrel::testing {

struct Attempt {
  std::string outcome;
  std::string next;  // of the same on a thread's new use
  bool met = false;
};

/// One operation, which does the same each time.
struct Step {
  template <class Work>
  Step(const char* step, Work work) : name(step) {
    run = [work](std::size_t n, bool for_good) {
      Attempt attempt;
      const auto armed = [&] {
        FailAllocations(n, for_good);
        struct Disarmed {
          bool& met;
          ~Disarmed() { met = StopFailing(); }
        } const disarmed{attempt.met};
        if constexpr (std::is_void_v<std::invoke_result_t<Work>>) {
          work();
          return true;
        } else {
          return work();
        }
      };
      try {
        attempt.outcome = OutcomeOf(armed);
      } catch (const std::exception& other) {
        attempt.outcome = std::string("lets out ") + other.what();
      }
      return attempt;
    };
  }
  const char* name;
  std::function<Attempt(std::size_t, bool)> run;
};

/// Statements, values; everything built on them.
[[nodiscard]] std::vector<Step> StatementSteps();
[[nodiscard]] std::vector<Step> ServiceSteps();

}  // namespace sabrel::testing
