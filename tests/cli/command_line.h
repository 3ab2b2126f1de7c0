// Tables of command lines, run on a site of their own.
#pragma once

#include <gmock/gmock.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/cli/program.h"

namespace sabrel::testing {

struct Case {
  const char* name;
  std::vector<std::string> arguments;
  int status;
  /// Exactly this on standard output, "@" being the folder; nullptr for whatever.
  const char* out;
  /// Somewhere on standard error.
  const char* err;
};

class CommandLine : public ::testing::Test {
 protected:
  void Check(const std::vector<Case>& cases, const std::string& site_option = "--site") {
    for (const Case& c : cases) {
      SCOPED_TRACE(c.name);
      std::vector<std::string> arguments;
      if (!site_option.empty()) arguments = {site_option, folder_.Site()};
      for (const std::string& argument : c.arguments) arguments.push_back(folder_.Filled(argument));
      const Outcome outcome = RunProgram({.arguments = arguments, .input = ""});
      EXPECT_EQ(outcome.status, c.status) << outcome.err;
      if (c.out != nullptr) {
        EXPECT_EQ(outcome.out, folder_.Filled(c.out));
      }
      EXPECT_THAT(outcome.err, ::testing::HasSubstr(folder_.Filled(c.err)));
    }
  }

  [[nodiscard]] Start OnSite(std::vector<std::string> arguments, std::string input = "") const {
    return {.arguments = std::move(arguments),
            .input = std::move(input),
            .environment = {"SABREL_SITE=" + folder_.Site()}};
  }

  SiteFolder folder_;
};

}  // namespace sabrel::testing
