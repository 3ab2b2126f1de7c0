// How a client starts, and what it asks of site and machine.
#include "tests/cli/command_line.h"

namespace sabrel::testing {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr const char* kNoFolder = "Sabrel error 1: Unable to find product installation (sabrel).";

std::size_t CountOf(const std::string& part, const std::string& text) {
  std::size_t count = 0;
  for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

class StartUp : public CommandLine {
 protected:
  // One option with its value, so that a table's row can stay short.
  Outcome Login(std::vector<std::string> options = {"--registry", SABREL_SAMPLE_REGISTRY}) {
    options.insert(options.end(), {"--format", "csv", "login"});
    return RunProgram(OnSite(std::move(options)));
  }
  void Request(const std::string& sql) {
    const Outcome outcome = RunProgram(OnSite({"request", sql}));
    ASSERT_EQ(outcome.status, 0) << outcome.err;
  }
};

TEST_F(StartUp, EntersTheMachineOnce) {
  const Outcome first = Login();
  EXPECT_EQ(first.status, 0) << first.err;
  EXPECT_EQ(first.err, "");
  EXPECT_THAT(
      first.out,
      AllOf(HasSubstr("LoadMachineInfo,Root folder,D:\\Norvasta\\Client\\\n"),
            HasSubstr("SubclassingOn,true\n"), HasSubstr("IncludeDSMonitor,false\n"),
            HasSubstr("IncludeAddInManager,true\n"), HasSubstr("LoadMachineId,Machine id,103\n"),
            HasSubstr("ProductType,Enterprise Server\n"), HasSubstr("N high attempts,True\n"),
            HasSubstr("First day of week,2\n"), HasSubstr("E-mail enabled,true\n")));
  EXPECT_EQ(Login().out, first.out);
  Check({{"rows",
          {"--format", "csv", "query", "SELECT COUNT(*) AS N FROM PM_ClientMachine"},
          0,
          "N\n4\n",
          ""}});
}

TEST_F(StartUp, NamesTheStepThatFailsAndItsRemedy) {
  const Outcome bare = Login({});
  EXPECT_EQ(bare.status, 4);
  EXPECT_THAT(bare.err, AllOf(HasSubstr("LoadMachineInfo failed:\n" + std::string(kNoFolder)),
                              HasSubstr("--registry FILE")));
  EXPECT_THAT(bare.out, AllOf(HasSubstr("Root folder,\n"), HasSubstr("Machine id,103\n"),
                              HasSubstr("E-mail enabled,false\n")));

  Request("DELETE FROM PM_PRODUCT_INFO WHERE Property = 'ProductRelease'");
  Request("DROP VIEW ZR_SYSTEM_VALUES_V");
  Request("DELETE FROM ZR_SYSTEM_VALUE WHERE VARIABLE_ID = 2");
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
  Login();
  Request("DELETE FROM PM_ClientMachine WHERE Id < 103");
  Request("UPDATE PM_ClientMachine SET MachineName = 'another'");
  Request("CREATE UNIQUE INDEX PM_ClientMachine_UK ON PM_ClientMachine (Domain)");
  const Outcome outcome = Login({"--registry", SABREL_SAMPLE_REGISTRY, "--show-sql"});
  EXPECT_EQ(outcome.status, 4);
  EXPECT_EQ(CountOf("INSERT INTO PM_ClientMachine", outcome.err), 2U) << outcome.err;
  EXPECT_THAT(outcome.err, HasSubstr("Kind: unique constraint violated\nRemedy: "));
  EXPECT_THAT(outcome.out, AllOf(HasSubstr("Machine id,\n"), HasSubstr("ProductVersion,7.3\n")));
}

TEST_F(StartUp, LeavesOutWhatNeedsAConnectionThatFailed) {
  folder_.Write("far.profiles", "[far]\nDriver = odbc\nHost = plant.invalid\nPort = 1521\n");
  const Outcome outcome = RunProgram(
      {.arguments = {"--profile", folder_.Path() + "/far.profiles", "login"}, .input = ""});
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
  Check(
      {
          {"stored and not",
           {"--registry", "@/part.reg", "--format", "csv", "registry"},
           0,
           rows.c_str(),
           "Read from @/part.reg"},
          {"none", {"registry"}, 4, nullptr, kNoFolder},
          {"cut file",
           {"--registry", "@/cut.reg", "registry"},
           4,
           "",
           "@/cut.reg\" is not usable, line 2"},
          {"no file", {"--registry", "@/none.reg", "registry"}, 4, "", "@/none.reg"},
          {"no server", {"login"}, 2, "", "--site"},
      },
      "");
}

TEST_F(StartUp, AnswersQuestionsAboutSchemaAndSettings) {
  Check({
      {"table", {"probe", "table", "pm_report"}, 0, "yes\n", ""},
      {"no table", {"probe", "table", "PM_REPORTS"}, 1, "no\n", ""},
      {"as json", {"--format", "json", "probe", "table", "PM_REPORTS"}, 1, "false\n", ""},
      {"table with a quote", {"probe", "table", "PM'X"}, 4, "", "Error: "},
      {"column", {"probe", "column", "PM_Report", "Busy_Hour"}, 0, "yes\n", ""},
      {"column with a quote", {"probe", "column", "PM_REPORT", "a'b"}, 4, "", "Error: "},
      {"far table", {"probe", "table", "PM_REPORT", "--host", "far"}, 3, "", "Reason: "},
      {"far object", {"probe", "object", "X", "--host", "far"}, 3, "", "Reason: "},
      {"procedure", {"probe", "procedure", "zr_query", "CreateFQuery"}, 0, "yes\n", ""},
      {"object", {"probe", "object", "zr_query"}, 0, "yes\n", ""},
      {"object of a type", {"probe", "object", "zr_query", "TABLE"}, 1, "no\n", ""},
      {"arguments", {"probe", "arguments", "ZR_QUERY", "CREATEFQUERY"}, 0, "2\n", ""},
      {"arguments of nothing", {"probe", "arguments", "zr_query", "nope"}, 0, "0\n", ""},
      {"what to probe", {"probe"}, 2, "", "subcommand"},
      {"length", {"length", "pm_report", "Name"}, 0, "64\n", ""},
      {"no length", {"length", "PM_REPORT", "a'b"}, 0, "0\n", "PM_REPORT.a'b"},
      {"half a length", {"length", "PM_REPORT"}, 2, "", "COLUMN"},
      {"module name", {"length", "--module-name"}, 0, nullptr, ""},
      {"value", {"value", "ReportLanguage", "Deutsch"}, 0, "yes\n", ""},
      {"no value", {"value", "ReportLanguage", "Latin"}, 1, "no\n", ""},
      {"value with a quote", {"value", "a'b", "c"}, 4, "", "Error: "},
      {"far value", {"value", "a", "b", "--host", "far"}, 3, "", "Reason: "},
      {"week", {"week"}, 0, "2\n", ""},
      {"no mail client", {"email"}, 1, "no\n", "mail client"},
      {"mail", {"--registry", SABREL_SAMPLE_REGISTRY, "email"}, 0, "yes\n", ""},
  });
}

TEST_F(StartUp, ForgetsProbesOnlyWhenTold) {
  const Outcome outcome =
      RunProgram(OnSite({"shell"},
                        "probe table T\nrequest CREATE TABLE T (A NUMBER)\nprobe table T\n"
                        "reset\nprobe table T\n"));
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(outcome.out, "no\nno\nyes\n");
}

TEST_F(StartUp, ConvertsFetchedValues) {
  Check(
      {
          {"blanks", {"convert", "string", "text:  a b "}, 0, "a b\n", ""},
          {"null text", {"convert", "string", "null"}, 0, "\n", ""},
          {"id", {"convert", "id", "null"}, 0, "0\n", ""},
          {"own null", {"convert", "int", "null", "--null", "-7"}, 0, "-7\n", ""},
          {"no number", {"convert", "int", " (NaN) ", "--null", "3"}, 0, "3\n", ""},
          {"half to even", {"convert", "int", "2.5"}, 0, "2\n", ""},
          {"beyond 32 bits", {"convert", "int", "2147483648"}, 4, "", "Error 6: "},
          {"a word", {"convert", "id", "seven"}, 4, "", "Error 13: "},
          {"double", {"convert", "double", "text:2.5"}, 0, "2.5\n", ""},
          {"date", {"convert", "date", "text:2024-03-09"}, 0, "2024-03-09 00:00:00\n", ""},
          {"no date", {"convert", "date", "text:2024-13-45"}, 4, "", "Error 13: "},
          {"boolean", {"convert", "boolean", "Y"}, 0, "true\n", ""},
          {"true is not Y", {"convert", "boolean", "true"}, 0, "false\n", ""},
          {"null of a text", {"convert", "string", "a", "--null", "1"}, 2, "", "--null"},
          {"unknown kind", {"convert", "long", "1"}, 2, "", "long"},
      },
      "");
}

}  // namespace
}  // namespace sabrel::testing
