// How a client starts, and what it asks of site and machine.
#include "tests/cli/command_line.h"

namespace sabrel::testing {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr const char* kNoFolder = "Sabrel error 1: Unable to find product installation (sabrel).";

class StartUp : public CommandLine {
 protected:
  [[nodiscard]] Outcome Login(const std::string& option = "--registry " SABREL_SAMPLE_REGISTRY) {
    return Run("--format csv " + option + " login");
  }
};

TEST_F(StartUp, EntersTheMachineOnce) {
  const Outcome first = Login();
  EXPECT_EQ(first.status, 0);
  EXPECT_EQ(first.err, "");
  EXPECT_THAT(
      first.out,
      AllOf(HasSubstr("LoadMachineInfo,Root folder,D:\\Norvasta\\Client\\\n"),
            HasSubstr("IncludeDSMonitor,false\n"), HasSubstr("LoadMachineId,Machine id,103\n"),
            HasSubstr("ProductType,Enterprise Server\n"), HasSubstr("N high attempts,True\n"),
            HasSubstr("First day of week,2\n"), HasSubstr("E-mail enabled,true\n")));
  EXPECT_EQ(Login().out, first.out);
}

TEST_F(StartUp, NamesTheStepThatFailsAndItsRemedy) {
  const Outcome bare = Login("");
  EXPECT_EQ(bare.status, 4);
  EXPECT_THAT(bare.err, AllOf(HasSubstr("LoadMachineInfo failed:\n" + std::string(kNoFolder)),
                              HasSubstr("--registry FILE")));
  EXPECT_THAT(bare.out, AllOf(HasSubstr("Root folder,\n"), HasSubstr("Machine id,103\n"),
                              HasSubstr("E-mail enabled,false\n")));

  Check({
      {"release", "request `DELETE FROM PM_PRODUCT_INFO WHERE Property = 'ProductRelease'`", 0},
      {"view", "request `DROP VIEW ZR_SYSTEM_VALUES_V`", 0},
      {"week", "request `DELETE FROM ZR_SYSTEM_VALUE WHERE VARIABLE_ID = 2`", 0},
  });
  const Outcome broken = Login();
  EXPECT_EQ(broken.status, 4);
  EXPECT_THAT(
      broken.err,
      AllOf(HasSubstr("InitializeProductInfo failed:\nSabrel error 12: Property "
                      "'ProductRelease' missing"),
            HasSubstr("Error: 942"), HasSubstr("LoadOtherInfo failed:\nRemedy: the view"),
            HasSubstr("SystemFirstDayOfWeek failed:\nError 3021"), Not(HasSubstr("LoadMachine"))));
  EXPECT_THAT(broken.out, AllOf(HasSubstr("ProductVersion,7.3\n"), HasSubstr("week,\n"),
                                HasSubstr("E-mail enabled,true\n")));
}

// The key is narrower than any site's, so that the look-up finds nothing after the refusal either.
TEST_F(StartUp, TriesAgainWhenAnotherProgramEnteredTheMachine) {
  EXPECT_EQ(Login().status, 0);
  Check({
      {"others", "request `DELETE FROM PM_ClientMachine WHERE Id < 103`", 0},
      {"name", "request `UPDATE PM_ClientMachine SET MachineName = 'another'`", 0},
      {"key", "request `CREATE UNIQUE INDEX PM_ClientMachine_UK ON PM_ClientMachine (Domain)`", 0},
  });
  const Outcome outcome = Login("--show-sql --registry " SABREL_SAMPLE_REGISTRY);
  EXPECT_EQ(outcome.status, 4);
  const std::string insert = "INSERT INTO PM_ClientMachine";
  const std::size_t first = outcome.err.find(insert);
  EXPECT_NE(outcome.err.find(insert, first + 1), std::string::npos) << outcome.err;
  EXPECT_THAT(outcome.err, HasSubstr("Kind: unique constraint violated\nRemedy: "));
  EXPECT_THAT(outcome.out, AllOf(HasSubstr("Machine id,\n"), HasSubstr("ProductVersion,7.3\n")));
}

TEST_F(StartUp, LeavesOutWhatNeedsAConnectionThatFailed) {
  folder_.Write("far.profiles", "[far]\nDriver = odbc\nHost = plant.invalid\nPort = 1521\n");
  const Outcome outcome = Run("--profile @/far.profiles login");
  EXPECT_EQ(outcome.status, 3) << "no connection is told before the missing folder";
  EXPECT_THAT(outcome.err, AllOf(HasSubstr("LoadMachineId failed:\n"), HasSubstr("Reason: "),
                                 HasSubstr("InitializeProductInfo was left out"),
                                 HasSubstr("EmailEnabled was left out")));
}

TEST_F(StartUp, ShowsWhatTheRegistryHoldsAndWhatIsTaken) {
  folder_.Write("part.reg",
                "REGEDIT4\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Torvane\\Norvasta\\Setup]\n"
                "\"AppRootFolder\"=\"C:\\\\N\"\n\"IncludeDSMonitor\"=\"perhaps\"\n"
                "\"IncludeAddInManager\"=dword:00000001\n");
  folder_.Write("cut.reg", "REGEDIT4\n[HKEY_LOCAL_MACHINE\\SOFTWARE");
  const std::string setup = ",HKEY_LOCAL_MACHINE\\SOFTWARE\\Torvane\\Norvasta\\Setup\n";
  const std::string rows = "NAME,STORED,TAKEN,KEY\nAppRootFolder,C:\\N,C:\\N\\" + setup +
                           "SubclassingOn,,true" + setup + "IncludeDSMonitor,perhaps,true" + setup +
                           "IncludeAddInManager,true,true" + setup +
                           "(mail client),,false,HKEY_LOCAL_MACHINE\\SOFTWARE\\Clients\\Mail\n";
  Check({
      {"stored and not", "--registry @/part.reg --format csv registry", 0, rows.c_str(),
       "Read from @/part.reg"},
      {"cut file", "--registry @/cut.reg registry", 4, "", "@/cut.reg\" is not usable, line 2"},
      {"no file", "--registry @/none.reg registry", 4, "", "@/none.reg"},
  });
}

TEST_F(StartUp, AnswersQuestionsAboutSchemaAndSettings) {
  Check({
      {"table", "probe table pm_report", 0, "yes\n"},
      {"table with a quote", "probe table `X' OR 'A'='A`", 2, "", "NAME: X' OR 'A'='A holds"},
      {"column with a quote", "probe column PM_REPORT `'`", 2, "", "COLUMN: ' holds"},
      {"value with a quote", "value a `b' OR 'A'='A`", 2, "", "VALUE: b' OR 'A'='A holds"},
      {"arguments", "probe arguments ZR_QUERY CREATEFQUERY", 0, "2\n"},
      {"length", "length pm_report Name", 0, "64\n"},
      {"week", "--format json week", 0, "2\n"},
      {"no mail client", "email", 1, "no\n", "mail client"},
  });
  const char* probes =
      "probe table T\nrequest CREATE TABLE T (A NUMBER);\nprobe table T\nreset\nprobe table T\n";
  EXPECT_EQ(Run("shell", probes).out, "no\nno\nyes\n") << "only a reset forgets";
}

}  // namespace
}  // namespace sabrel::testing
