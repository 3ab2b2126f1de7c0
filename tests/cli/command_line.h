// Tables of command lines, run on a site of their own.
#pragma once

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "tests/cli/program.h"

namespace sabrel::testing {

struct Case {
  const char* name;
  std::string line;
  int status;
  /// Exactly this on standard output; nullptr for whatever.
  const char* out = "";
  /// Somewhere on standard error.
  const char* err = "";
};

// In lines, results and messages "@" stands for the folder and "`" for a double quote.
class CommandLine : public ::testing::Test {
 protected:
  [[nodiscard]] Start OnSite(const std::string& line, const std::string& input = "") const {
    return {.line = folder_.Filled(line), .input = input, .site = folder_.Site()};
  }
  [[nodiscard]] Outcome Run(const std::string& line, const std::string& input = "") const {
    return RunProgram(OnSite(line, input));
  }
  void Check(const std::vector<Case>& cases) const {
    for (const Case& c : cases) {
      SCOPED_TRACE(c.name);
      const Outcome outcome = Run(c.line);
      EXPECT_EQ(outcome.status, c.status) << outcome.err;
      EXPECT_EQ(outcome.out, c.out == nullptr ? outcome.out : folder_.Filled(c.out));
      EXPECT_THAT(outcome.err, ::testing::HasSubstr(folder_.Filled(c.err)));
    }
  }

  SiteFolder folder_;
};

}  // namespace sabrel::testing
