#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>

#include "tests/cli/command_line.h"

namespace sabrel::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

// Never ends by itself.
constexpr const char* kEndless =
    "WITH c(x) AS (SELECT 1 FROM DUAL UNION ALL SELECT x+1 FROM c) SELECT COUNT(*) FROM c";

TEST_F(CommandLine, WritesValuesAsSqlText) {
  Check({
      {"quotes", {"literal", "str", "O'Hara"}, 0, "'O''Hara'\n", ""},
      {"empty text", {"literal", "str", ""}, 0, "NULL\n", ""},
      {"name of a command", {"literal", "str", "now"}, 0, "'now'\n", ""},
      {"behind the mark", {"literal", "str", "--", "--site"}, 0, "'--site'\n", ""},
      {"mark between values", {"literal", "args", "a", "--", "-x"}, 0, " 'a','-x' \n", ""},
      {"ord", {"literal", "ord", "0"}, 0, "NULL\n", ""},
      {"own null", {"literal", "int", "-7", "-7"}, 0, "NULL\n", ""},
      {"not 32 bits", {"literal", "int", "2147483648"}, 2, "", "2147483648"},
      {"small float", {"literal", "float", "-.00001"}, 0, "-1E-05\n", ""},
      {"huge float", {"literal", "float", "1e999"}, 2, "", "1e999"},
      {"day",
       {"literal", "date", "2024-02-29"},
       0,
       "TO_DATE('2024-02-29 00:00:00','YYYY-MM-DD HH24:MI:SS')\n",
       ""},
      {"no such day", {"literal", "date", "2023-02-29"}, 2, "", "2023-02-29"},
      {"no such hour", {"literal", "arg", "date:2024-03-09T24:00"}, 2, "", "2024-03-09T24:00"},
      {"date cut short", {"literal", "date", "2024-03-09T17"}, 2, "", "2024-03-09T17"},
      {"own format",
       {"literal", "date-string", "09.03.2024", "DD.MM.YYYY"},
       0,
       "TO_DATE('09.03.2024','DD.MM.YYYY')\n",
       ""},
      {"kinds",
       {"literal", "args", "5", "2.5", "x", "null", "true", "text:5", "007", "empty"},
       0,
       " 5,2.5,'x',NULL,'Y','5','007', \n",
       ""},
      {"beyond 32 bits", {"literal", "arg", "-2147483649"}, 0, "-2147483649\n", ""},
      {"beyond 96 bits", {"literal", "arg", "99999999999999999999999999999999"}, 2, "", "text:"},
      {"pairs", {"literal", "set-args", "5", "it's"}, 0, " 5 = 'it''s' \n", ""},
      {"as json", {"literal", "str", "a\"b", "--format", "json"}, 0, "\"'a\\\"b'\"\n", ""},
      {"too many values", {"literal", "now", "1"}, 2, "", "literal now"},
      {"unknown kind", {"literal", "nothing"}, 2, "", "nothing"},
  });
}

TEST_F(CommandLine, PrintsRowsInTheFormAskedFor) {
  const std::string sql =
      "SELECT 5 AS N, 'a,\"b\"' AS T, NULL AS N, '' || CHR(27) || '[2J' AS E, "
      "TO_DATE('2024-03-09 17:05','YYYY-MM-DD HH24:MI') AS D, 2.5 AS F FROM DUAL";
  Check({
      {"csv",
       {"--format", "csv", "query", sql},
       0,
       "N,T,N,E,D,F\n5,\"a,\"\"b\"\"\",,\x1b[2J,2024-03-09T17:05:00,2.5\n",
       "1 row\n"},
      {"json",
       {"query", "--format", "json", sql},
       0,
       "[\n{\"N\":5,\"T\":\"a,\\\"b\\\"\",\"N_2\":null,\"E\":\"\\u001b[2J\","
       "\"D\":\"2024-03-09T17:05:00\",\"F\":2.5}\n]\n",
       "1 row\n"},
      {"table",
       {"query", sql},
       0,
       "N  T      N  E        D                      F\n"
       "-  -----  -  -------  -------------------  ---\n"
       "5  a,\"b\"  ∅  \\x1B[2J  2024-03-09 17:05:00  2.5\n",
       "1 row\n"},
      {"wide letters",
       {"query",
        "SELECT '東京' AS T, 12 AS N FROM DUAL UNION ALL "
        "SELECT 'é', 3 FROM DUAL"},
       0,
       "T      N\n----  --\n東京  12\né      3\n",
       "2 rows\n"},
      {"no rows as json",
       {"--format", "json", "query", "SELECT 1 FROM DUAL WHERE 1 = 2"},
       0,
       "[]\n",
       "0 rows\n"},
      {"no rows", {"query", "SELECT 1 AS N FROM DUAL WHERE 1 = 2"}, 0, "N\n-\n", "0 rows\n"},
      {"number",
       {"function", "--as", "long", "FS_GetColumnLength", "PM_REPORT", "NAME"},
       0,
       "64\n",
       ""},
      {"out parameter",
       {"--format", "csv", "proc", "ZR_Query.CreateFQuery", "1", "2"},
       0,
       "POSITION,SENT,RECEIVED\n1,1,1\n2,2,100\n",
       ""},
      {"result position",
       {"--format", "csv", "proc", "--result", "integer", "check_smtp_val", "null", "null"},
       0,
       nullptr,
       ""},
      {"sequence", {"sequence", "ZR_QUERY_SQ"}, 0, "101\n", ""},
  });
}

TEST_F(CommandLine, TellsFailuresByStatusAndMessage) {
  folder_.Write("broken.site", "SQLite format 3\nand then nothing of it");
  folder_.Write("bad.profiles", "[a]\nColour = red\n");
  folder_.Write("good.profiles", "[a]\nDriver = sqlite\nDatabase = @/none\n");
  const std::string insert = "INSERT INTO JOB_GROUP (ID, NAME) VALUES (1, 'again')";
  Check({
      {"unique", {"request", insert}, 4, "", "Kind: unique constraint violated\n"},
      {"parent",
       {"request", "INSERT INTO JOB_GROUP_ITEM (GROUP_ID, DOCUMENT_ID) VALUES (1, 0)"},
       4,
       "",
       "Kind: parent key not found\n"},
      {"child",
       {"request", "DELETE FROM EA_USER WHERE Id = 1"},
       4,
       "",
       "Kind: child record found\n"},
      {"two statements", {"request", "DELETE FROM PM_Note; DELETE FROM PM_Note"}, 4, "", "911"},
      {"invalid UTF-8", {"query", "SELECT '\xff' FROM DUAL"}, 4, "", "911"},
      {"unknown column", {"query", "SELECT nope FROM DUAL"}, 4, "", "904"},
      {"failed function", {"function", "nope"}, 4, "", "nope"},
      {"failed sequence", {"sequence", "nope"}, 4, "", "2289"},
      {"failed call", {"call", "nope", "5"}, 4, "", "nope"},
      {"other host", {"query", "--host", "elsewhere", "SELECT 1 FROM DUAL"}, 3, "", "Reason: "},
      {"no command", {}, 2, "", "required"},
      {"unknown command", {"qeury", "SELECT"}, 2, "", "qeury"},
      {"unknown format", {"--format", "xml", "now"}, 2, "", "xml"},
      {"site and profile", {"--profile", "@/good.profiles", "now"}, 2, "", "--profile"},
      {"no password file",
       {"query", "--password-file", "@/none", "SELECT 1 FROM DUAL"},
       4,
       "",
       "@/none"},
      {"log on a full disk",
       {"--log", "/dev/full", "query", "SELECT nope FROM DUAL"},
       4,
       "",
       "No space left"},
      {"record on a full disk",
       {"--record", "/dev/full", "sequence", "ZR_QUERY_SQ"},
       4,
       "100\n",
       "No space left"},
      {"record over a site", {"--record", "@/plant.site", "now"}, 4, "", "no record"},
      {"site again", {"site", "create", "@/plant.site"}, 4, "", "@/plant.site exists"},
      {"no folder", {"site", "create", "@/none/a.site"}, 4, "", "@/none/a.site"},
  });
  Check(
      {
          {"no server", {"now"}, 2, "", "--site"},
          {"missing site", {"--site", "@/none.site", "now"}, 4, "", "@/none.site"},
          {"folder for a site", {"--site", "@", "now"}, 4, "", "@"},
          {"broken site", {"--site", "@/broken.site", "now"}, 4, "", "@/broken.site"},
          {"bad profile", {"--profile", "@/bad.profiles", "now"}, 4, "", "bad.profiles:2"},
          {"unknown profile",
           {"--profile", "@/good.profiles", "--profile-name", "b", "now"},
           2,
           "",
           "b"},
          {"version", {"--version"}, 0, "sabrel 7.3.0\n", ""},
      },
      "");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_.Path()), {}), 4)
      << "something half-written stayed behind";
}

TEST_F(CommandLine, ShowsAMessageOnlyOnce) {
  const Outcome query = RunProgram(OnSite({"query", "SELECT nope FROM DUAL"}));
  EXPECT_EQ(query.err.find("Error: 904"), query.err.rfind("Error: 904"));
}

TEST_F(CommandLine, NamesAReadOnlySite) {
  namespace fs = std::filesystem;
  fs::permissions(folder_.Path(),
                  fs::perms::owner_all | fs::perms::others_read | fs::perms::others_exec);
  fs::permissions(folder_.Site(), fs::perms::owner_read | fs::perms::others_read);
  Start start = OnSite({"request", "DELETE FROM PM_Note"});
  start.as_nobody = true;
  const Outcome outcome = RunProgram(start);
  if (outcome.status == 127) GTEST_SKIP() << "the program is in a folder of root's";
  EXPECT_EQ(outcome.status, 4);
  EXPECT_THAT(outcome.err, HasSubstr(folder_.Site()));
}

TEST_F(CommandLine, SaysThatTheOutputIsFull) {
  Start start = OnSite({"query", "SELECT 1 FROM DUAL"});
  start.output_file = "/dev/full";
  const Outcome outcome = RunProgram(start);
  EXPECT_EQ(outcome.status, 4);
  EXPECT_THAT(outcome.err, HasSubstr("No space left"));
}

TEST_F(CommandLine, EndsQuietlyWhenNobodyReads) {
  Program program(OnSite({"query",
                          "WITH c(x) AS (SELECT 1 FROM DUAL UNION ALL SELECT x+1 FROM c "
                          "WHERE x < 100000) SELECT x FROM c"}));
  program.CloseOutput();
  const Outcome outcome = program.End();
  EXPECT_EQ(outcome.status, 141);
  EXPECT_EQ(outcome.err, "");
}

TEST_F(CommandLine, CancelsAndEndsOnSignals) {
  struct Row {
    const char* name;
    int signal;
    int status;
  };
  for (const Row& row : {Row{"Ctrl-C", SIGINT, 130}, Row{"termination", SIGTERM, 143}}) {
    SCOPED_TRACE(row.name);
    Program program(OnSite({"--show-sql", "query", "--timeout", "300", kEndless}));
    ASSERT_TRUE(program.WaitFor("-- query, time-out 300 s"));
    program.Signal(row.signal);
    const Outcome outcome = program.End();
    EXPECT_EQ(outcome.status, row.status);
    EXPECT_THAT(outcome.err, HasSubstr("Cancelled.")) << "it was killed, not cancelled";
  }
}

struct Session {
  const char* name;
  std::string input;
  int status;
  const char* out;
  bool keep_going = false;
};

TEST_F(CommandLine, RunsManyLinesInOneSession) {
  const std::vector<Session> sessions = {
      {"SQL without quoting", "SELECT 'it''s' AS T FROM DUAL;\n", 0, "T\n----\nit's\n"},
      {"requests", "insert into PM_Note (Id) values ('x')\nliteral str after\n", 4, ""},
      {"stops at a failure", "literal str a\nnope\nliteral str b\n", 2, "'a'\n"},
      {"goes on when told", "nope\nliteral str b\nquery SELECT nope FROM DUAL\n", 2, "'b'\n", true},
      {"comments and blanks", "-- one\n# two\n\n   \nliteral str \"a b\"", 0, "'a b'\n"},
      {"long lines", "literal str \\\n  'a b'\nexit\nliteral str never\n", 0, "'a b'\n"},
      {"NUL", std::string("SELECT '\0' FROM DUAL\n", 21) + "literal str b\n", 4, "'b'\n", true},
      {"open quote", "literal str 'a\n", 2, ""},
      {"forms", "format csv\nselect '' || '' AS A, 1 AS B from dual\n", 0, "A,B\n,1\n"},
      {"a state of its own", "sequence ZR_QUERY_SQ\nselect ZR_QUERY_SQ.CURRVAL AS C from dual\n", 0,
       "100\n  C\n---\n100\n"},
      {"carriage returns", "literal str a\r\nliteral str b\r\n", 0, "'a'\n'b'\n"},
  };
  for (const Session& session : sessions) {
    SCOPED_TRACE(session.name);
    Start start = OnSite({"shell"}, session.input);
    if (session.keep_going) start.arguments.emplace_back("--keep-going");
    const Outcome outcome = RunProgram(start);
    EXPECT_EQ(outcome.status, session.status) << outcome.err;
    EXPECT_EQ(outcome.out, session.out);
  }
}

TEST_F(CommandLine, KeepsAShellOnATerminalUsable) {
  Start start = OnSite({"--show-sql", "shell"});
  start.on_terminal = true;
  Program shell(start);
  ASSERT_TRUE(shell.WaitFor("sabrel> "));
  shell.Type(std::string(kEndless) + "\n");
  ASSERT_TRUE(shell.WaitFor("-- query"));
  shell.Type("\x03");
  ASSERT_TRUE(shell.WaitFor("Cancelled."));
  ASSERT_TRUE(shell.WaitFor("sabrel> "));
  shell.Type("literal str in-between\n");
  ASSERT_TRUE(shell.WaitFor("'in-between'"));
  ASSERT_TRUE(shell.WaitFor("sabrel> "));
  shell.Type("half a line");
  ASSERT_TRUE(shell.WaitFor("half a line"));
  shell.Type("\x03");
  ASSERT_TRUE(shell.WaitFor("sabrel> "));
  shell.Type("SELECT nope FROM DUAL\n");
  ASSERT_TRUE(shell.WaitFor("904"));
  ASSERT_TRUE(shell.WaitFor("sabrel> "));
  shell.Type("literal str still-here\n");
  ASSERT_TRUE(shell.WaitFor("'still-here'"));
  shell.Type("exit\n");
  const Outcome outcome = shell.End();
  EXPECT_EQ(outcome.status, 0);
  std::size_t prompts = 0;
  for (auto at = outcome.err.find("sabrel> "); at != std::string::npos; ++prompts) {
    at = outcome.err.find("sabrel> ", at + 1);
  }
  EXPECT_EQ(prompts, 6U) << "an old Ctrl-C ended a later line";
}

TEST_F(CommandLine, FitsTablesIntoTheTerminal) {
  Start start = OnSite({"query", "SELECT * FROM PM_REPORT"});
  start.on_terminal = true;  // 60 columns
  const Outcome narrow = RunProgram(start);
  EXPECT_EQ(narrow.status, 0);
  EXPECT_THAT(narrow.err, HasSubstr("\u2026"));
  std::istringstream lines(narrow.err);
  for (std::string line; std::getline(lines, line);) {
    for (const char* style : {"\x1b[2m", "\x1b[0m", "\r"}) {
      for (auto at = line.find(style); at != std::string::npos; at = line.find(style)) {
        line.erase(at, std::string(style).size());
      }
    }
    const auto characters = std::count_if(line.begin(), line.end(), [](char c) {
      return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
    });
    EXPECT_LE(characters, 60) << line;
  }
}

TEST_F(CommandLine, ShowsWhatIsSentWithoutPasswords) {
  folder_.Write("password", "s3cret\n");
  folder_.Write("profiles", folder_.Filled("[a]\nDriver = sqlite\nDatabase = @/plant.site\n"
                                           "Password = hidden\n"));
  const Outcome outcome = RunProgram(
      {.arguments = {"--profile", folder_.Path() + "/profiles", "--show-sql", "--record",
                     folder_.Path() + "/record", "query", "--user", "me", "--password-file",
                     folder_.Path() + "/password", "SELECT 'hidden' AS A, 's3cret' AS B FROM DUAL"},
       .input = ""});
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_THAT(outcome.err, HasSubstr("-- query, user me, time-out 60 s"));
  EXPECT_THAT(outcome.err, HasSubstr("SELECT '***' AS A, '***' AS B FROM DUAL"));
  EXPECT_THAT(outcome.err, Not(HasSubstr("s3cret")));
  EXPECT_THAT(outcome.err, HasSubstr("others can read")) << "neither file is the user's alone";
}

}  // namespace
}  // namespace sabrel::testing
