// Entities, reports, validation, query texts and the slices of the day.
#include "tests/cli/command_line.h"
#include "tests/support/pseudo_terminal.h"

namespace sabrel::testing {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

TEST_F(CommandLine, ChangesCommonEntitiesAndAsksAboutThem) {
  const char* clear = "entity clear-temp 1 2024-03-09T00:00:00";
  Check({
      {"add", "entity add North --parent 3", 0, "100\n"},
      {"equivalent", "entity equivalent 1 North R-1", 0},
      {"remove none", "entity remove 999", 1, "", "Entity 999 was not removed: ORA-20022"},
      {"nothing noted", "entity current", 1, "no\n"},
      {"due", "entity document-ready 1 1 --time 2024-03-09", 0, "3\n", clear},
      {"no date", "entity clear-temp 1 soon", 2, "", "'soon' is no date"},
      {"drop", "request `DROP PROCEDURE EA_EXP.Clear_EXP_Required`", 0},
      {"refused clearing", "entity clear-temp 1 2024-03-09", 4, "", "Error: 6550"},
  });
  EXPECT_EQ(Run("shell", "entity current --refresh\nentity add A\nentity current\n").out,
            "yes\n101\nno\n")
      << "an old list is current";
}

TEST_F(CommandLine, ChecksReportsBeforeTheyRun) {
  const char* needs = "WHAT,NEEDED\nchannel-set plans,false\ndata scopes,true\n";
  const char* range = "OLDEST,LATEST\n2024-03-05T00:00:00,2024-03-09T23:00:00\n";
  Check({
      {"declined", "--answer no report lengthy 5", 1, "declined\n", "1200 entities"},
      {"accepted", "--answer yes report lengthy --job 3", 0, "run\n", "and/or"},
      {"job", "--spreadsheet 11.0 report too-big --job 1", 0, "3\n"},
      {"needs", "--format csv report needs 2", 0, needs},
      {"copy", "text copy 1 2", 0, "100\n"},
      {"range", "--format csv range", 0, range},
      {"drop", "request `DROP FUNCTION LengthyReport.Reason`", 0},
      {"failed check", "--answer no report lengthy 5", 0, "run\n", "check failed"},
  });
}

TEST_F(CommandLine, ValidatesDocumentsServersUsersAndMail) {
  folder_.Write("password", "s3cret\n");
  const std::string far = "Port = 7\nUserName = system\nDriver = sqlite\nDatabase = @/";
  folder_.Write("profiles",
                "[plant]\nDriver = sqlite\nDatabase = @/plant.site\n[north]\nHost = north\n" + far +
                    "plant.site\n[gone]\nHost = gone\n" + far + "none\n[other]\nDriver = odbc\n");
  const auto on = [](const std::string& words) {
    return "--profile @/profiles validate " + words + " --password-file @/password";
  };
  const std::string document = "validate document `Report Definition` 3";
  const char* mail = "CODE,MESSAGE\n0,Mail goes to mail.norvasta.example:25\n";
  Check({
      {"user", on("server north 7 ana"), 0, "yes\n", "Successfull!!"},
      {"no user", on("server north 7 x --quiet"), 1, "no\n", "DOESN'T EXIST"},
      {"no profile", on("server north 8 ana"), 3, "", "UserName = system"},
      {"no site", on("server gone 7 ana"), 4, "", "cannot open the file @/none"},
      {"unreachable", "--profile @/profiles --profile-name other entity clear-temp 1 2024-03-09", 3,
       "", "The connection to the Data Server has failed."},
      {"look up", on("user north 7 newton"), 1, "USER DOESN'T EXIST\n"},
      {"create", on("user north 7 newton --create"), 0, "TRUE\n"},
      {"asked", "--answer yes " + document, 0, "yes\n", "not active"},
      {"unasked", document + " --mode SaveOff", 1, "no\n"},
      {"mail", "--format csv validate mail", 0, mail},
      {"no password", "validate server a 1 ana", 2, "", "--password-file FILE"},
  });
  const Outcome outcome =
      Run("--show-sql --trace --log @/trace --record @/record " + on("server north 7 ana"));
  EXPECT_THAT(outcome.err, HasSubstr("1: string '***'"));
  EXPECT_THAT(outcome.err, Not(HasSubstr("s3cret"))) << "it is in the log, where it was asked for";
  EXPECT_THAT(folder_.Read("record"), AllOf(HasSubstr("***"), Not(HasSubstr("s3cret"))));
}

TEST_F(CommandLine, DrawsAndCountsTheSlicesOfTheDay) {
  const char* figures =
      "SLICES,SLICE_SECONDS,FIRST_SLICE,LAST_SLICE,FIRST_SECOND,LAST_SECOND,BEGIN_HOUR,"
      "ENDING_HOUR\n24,3600,24,24,82800,86400,24,24\n";
  Check({
      {"csv", "--format csv slices 3-5,24 --start 6", 0, figures},
      {"backwards", "slices --seconds 5 0", 2, "", "5 is after 0"},
      {"nothing selected", "slices none", 0, nullptr, "No slice is selected from slice 1 on"},
      {"minutes", "request `UPDATE PM_PRODUCT_INFO SET Value = '1440'`", 0},
  });
  // On a terminal of 60 columns a character is half an hour.
  if (!HasPseudoTerminal()) GTEST_SKIP() << "no pseudo-terminal";
  EXPECT_THAT(TerminalProgram(OnSite("slices 31-90,1440")).End().out, HasSubstr("·██·"));
}

}  // namespace
}  // namespace sabrel::testing
