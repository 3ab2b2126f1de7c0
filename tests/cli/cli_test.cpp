#include <csignal>
#include <filesystem>
#include <regex>
#include <sstream>

#include "sabrel/platform/utf8.h"
#include "tests/cli/command_line.h"
#include "tests/support/pseudo_terminal.h"

namespace sabrel::testing {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

// Never ends by itself.
const std::string kEndless =
    "WITH c(x) AS (SELECT 1 FROM DUAL UNION ALL SELECT x+1 FROM c) SELECT COUNT(*) FROM c";

TEST_F(CommandLine, WritesValuesAsSqlTextAndReadsFetchedOnes) {
  Check({
      {"mark between values", "literal args a -- -x", 0, " 'a','-x' \n"},
      {"not 32 bits", "literal int 2147483648", 2, "", "2147483648"},
      {"no such day", "literal date 2023-02-29", 2, "", "2023-02-29"},
      {"kinds", "literal args 5 2.5 x null true text:5 007 empty", 0,
       " 5,2.5,'x',NULL,'Y','5','007', \n"},
      {"beyond 96 bits", "literal arg 99999999999999999999999999999999", 2, "", "text:"},
      {"as json", "literal str 'a`b' --format json", 0, "`'a\\`b'`\n"},
      {"null of a text", "convert string a --null 1", 2, "", "--null"},
  });
}

TEST_F(CommandLine, PrintsRowsInTheFormAskedFor) {
  const std::string query =
      "query `SELECT 5 AS N, 'a,\\`b\\`' AS T, NULL AS N, '' || CHR(27) || '[2J' AS E, "
      "TO_DATE('2024-03-09 17:05','YYYY-MM-DD HH24:MI') AS D, 2.5 AS F FROM DUAL`";
  const std::string nothing = "query `SELECT 1 AS N FROM DUAL WHERE 1 = 2`";
  const char* csv = "N,T,N,E,D,F\n5,`a,``b```,,\x1b[2J,2024-03-09T17:05:00,2.5\n";
  const char* json =
      "[\n{`N`:5,`T`:`a,\\`b\\``,`N_2`:null,`E`:`\\u001b[2J`,"
      "`D`:`2024-03-09T17:05:00`,`F`:2.5}\n]\n";
  const char* table =
      "N  T      N  E        D                      F\n"
      "-  -----  -  -------  -------------------  ---\n"
      "5  a,`b`  ∅  \\x1B[2J  2024-03-09 17:05:00  2.5\n";
  Check({
      {"csv", "--format csv " + query, 0, csv, "1 row\n"},
      {"request", "--show-sql --timeout 7 request COMMIT", 0, "",
       "  -- request, time-out 7 s\n     COMMIT\nDone.\n"},
      {"json", query + " --format json", 0, json, "1 row\n"},
      {"table", query, 0, table, "1 row\n"},
      {"wide letters",
       "query `SELECT '東京' AS T, 12 AS N FROM DUAL UNION ALL SELECT 'é', 3 FROM DUAL`", 0,
       "T      N\n----  --\n東京  12\né      3\n", "2 rows\n"},
      {"no rows", nothing, 0, "N\n-\n", "0 rows\n"},
      {"out parameter", "--format csv proc ZR_Query.CreateFQuery 1 2", 0,
       "POSITION,SENT,RECEIVED\n1,1,1\n2,2,100\n"},
  });
}

TEST_F(CommandLine, TellsFailuresByStatusAndMessage) {
  folder_.Write("bad.profiles", "[a]\nColour = red\n");
  folder_.Write("good.profiles", "[a]\nDriver = sqlite\nDatabase = @/none\n");
  Check({
      {"unique", "request `INSERT INTO JOB_GROUP (ID, NAME) VALUES (1, 'again')`", 4, "",
       "Kind: unique constraint violated\n"},
      {"other host", "query --host elsewhere `SELECT 1 FROM DUAL`", 3, "", "Reason: "},
      {"no command", "", 2, "", "required"},
      {"unknown command", "qeury SELECT", 2, "", "no command 'qeury'"},
      {"unknown form", "--format xml now", 2, "", "xml not in {csv,json,table}"},
      {"no decimal time-out", "--timeout 0x10 now", 2, "", "'0x10' is no whole number"},
      {"site and profile", "--site @/plant.site --profile @/good.profiles now", 2, "", "--profile"},
      {"no password file", "query --password-file @/none `SELECT 1 FROM DUAL`", 4, "", "@/none"},
      {"endless password", "query --password-file /dev/zero nope", 4, "", "within 64 KiB"},
      {"closed output", "now >&-", 4, "", "Error 75: Standard output cannot be written"},
      {"help on a full disk", "--help > /dev/full", 4, "", "Error 75: Standard output"},
      {"output on a full disk", "query `SELECT 1 FROM DUAL` > /dev/full", 4, "", "No space left"},
      {"log on a full disk", "--log /dev/full query nope", 4, "", "No space left"},
      {"record on a full disk", "--record /dev/full now", 4, nullptr, "No space left"},
      {"site again", "site create @/plant.site", 4, "", "@/plant.site exists"},
      {"missing site", "--site @/none.site now", 4, "", "@/none.site"},
      {"bad profile", "--profile @/bad.profiles now", 4, "", "bad.profiles:2"},
      {"unknown profile", "--profile @/good.profiles --profile-name b now", 2, "", "b"},
      {"version", "--version", 0, "sabrel 7.3.0\n"},
  });
  EXPECT_THAT(Run("week --help").out, Not(HasSubstr("Exit status"))) << "that is all commands'";
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_.Filled("@")), {}), 3)
      << "something half-written stayed behind";
  const Outcome without_server = RunProgram({.line = "now"});
  EXPECT_EQ(without_server.status, 2);
  EXPECT_THAT(without_server.err, HasSubstr("--site"));
  const Outcome refused = Run("query `SELECT nope FROM DUAL`");
  EXPECT_EQ(refused.status, 4);
  EXPECT_EQ(refused.err.find("Error: 904"), refused.err.rfind("Error: 904")) << refused.err;
}

TEST_F(CommandLine, EndsQuietlyWhenNobodyReads) {
  const Outcome outcome =
      Run("query `WITH c(x) AS (SELECT 1 FROM DUAL UNION ALL SELECT x+1 FROM c WHERE x < 100000) "
          "SELECT x FROM c` | :");
  EXPECT_EQ(outcome.status, 141);
  EXPECT_EQ(outcome.err, "");
}

TEST_F(CommandLine, CancelsAndEndsOnSignals) {
  if (!HasPseudoTerminal()) GTEST_SKIP() << "no pseudo-terminal";
  for (const auto& [signal, status] : {std::pair(SIGINT, 130), std::pair(SIGTERM, 143)}) {
    TerminalProgram program(OnSite("--show-sql query --timeout 300 `" + kEndless + "`"));
    ASSERT_TRUE(program.WaitFor("-- query, time-out 300 s"));
    program.Signal(signal);
    const Outcome outcome = program.End();
    EXPECT_EQ(outcome.status, status);
    EXPECT_THAT(outcome.out, HasSubstr("Cancelled.")) << "it was killed, not cancelled";
  }
}

TEST_F(CommandLine, EndsAsCancelledWhileItAsks) {
  if (!HasPseudoTerminal()) GTEST_SKIP() << "no pseudo-terminal";
  for (const auto& [line, prompt] : {std::pair("report lengthy 5", "[y/N]"),
                                     std::pair("query --ask-password x", "Password: ")}) {
    TerminalProgram program(OnSite(line));
    ASSERT_TRUE(program.WaitFor(prompt));
    program.Type("\x03");
    const Outcome outcome = program.End();
    EXPECT_EQ(outcome.status, 130) << outcome.out;
    EXPECT_THAT(outcome.out, Not(HasSubstr("declined"))) << "nobody did";
  }
}

TEST_F(CommandLine, RunsManyLinesInOneSession) {
  const struct {
    const char* name;
    std::string input;
    int status;
    const char* out;
    const char* option = "";
    const char* err = "";
  } sessions[] = {
      {"over lines and beside others",
       "format csv\nSELECT 'it''s;\n\n/\nquit' -- ;\nAS T FROM DUAL;SELECT q'{';\n}' AS U /* ;\n"
       "*/ FROM DUAL; literal str x\n(SELECT 3 AS \"V;\"\nFROM DUAL)\n/\n/\n;\n",
       0, "T\n\"it's;\n\n/\nquit\"\nU\n\"';\n\"\n'x'\nV;\n3\n"},
      {"blocks and routines go on to /",
       "BEGIN\nDELETE FROM PM_REPORT WHERE Id = -1;\nDELETE FROM PM_REPORT WHERE Id = -2; END;\n/\n"
       "CREATE OR REPLACE\nTRIGGER T AFTER INSERT ON X BEGIN\nEXIT;\nEND;\nliteral str part\n/\n",
       4, "", "", "Done.\nError: 900"},
      {"rows changed",
       "UPDATE PM_REPORT SET Name = Name\nWHERE Id < 3;\nquery DELETE FROM PM_REPORT\nWHERE Id = "
       "-1;\n"
       "query 'UPDATE PM_REPORT SET Name = Name WHERE Id = 1'\nCOMMIT;\nquit;\n",
       0, "", " --record @/record", "2 rows changed\n0 rows changed\n1 row changed\nDone.\n"},
      {"the smaller time-out holds", "query --timeout 300 \"" + kEndless + "\"\n", 3, "",
       " --timeout 1", "Reason: "},
      {"failing request", "insert into PM_Note (Id)\nvalues ('x');\nliteral str after\n", 4, "", "",
       "In line 1 of the input.\n"},
      {"not finished at the end", "\n\nDELETE FROM PM_REPORT\n\n", 2, "", "",
       "'DELETE FROM PM_REPORT' ... is not finished and was not sent: end it with ; or a line "
       "with / alone\nIn line 3 of the input.\n"},
      {"nor at quit", "request\nDELETE FROM PM_REPORT\nquit\nliteral str b\n", 2, "",
       " --keep-going", "In line 1 "},
      {"a block without its /", "BEGIN\nDELETE FROM PM_REPORT; EXIT\n;exit;\nquit\n/\n", 2, "", "",
       "'BEGIN' ... is not finished and was not sent: end it with a line with / alone\n"},
      {"an open quote", "SELECT 'a;\nquit\n/\n", 2, "", "", "close the quote or comment"},
      {"an open comment", "/* a;\nquit\n/\n", 2, "", "", "The comment is not finished"},
      {"an open line", "literal str \\\n", 2, "", "", "'literal str' ... is not finished"},
      {"stops at a failure", "literal str a\nnope\nliteral str b\n", 2, "'a'\n"},
      {"goes on when told", "nope\nliteral str b\nsequence nope\n", 2, "'b'\n", " --keep-going"},
      {"comments and blanks", "-- one\n# it's\n\n   \n/* two\n*/ literal str \"a b\"\n--\nquit", 0,
       "'a b'\n"},
      {"long lines", "literal str \\\n  'a b'\nexit\nliteral str never\n", 0, "'a b'\n"},
      {"NUL", std::string("SELECT '\0' FROM DUAL;\n", 22) + "literal str b\n", 4, "'b'\n",
       " --keep-going"},
      {"no known word", "\nfrobnicate\n", 2, "", "",
       "'frobnicate' (`help` tells what there is; to send SQL, write `query` or `request` before "
       "it)\nIn line 2 of the input.\n"},
      {"byte order mark", "\xef\xbb\xbfliteral str a\n", 0, "'a'\n"},
      {"capitals", "Query 'SELECT 3 AS \"V\" FROM DUAL'\nLITERAL str X\nEXIT; -- now\nnope\n", 0,
       "V\n-\n3\n'X'\n"},
      {"SQL after exit", "exit; SELECT 1 FROM DUAL;\n", 2, "", "", "Nothing may follow 'exit'"},
      {"open quote", "literal str 'a\n", 2, ""},
      {"SQL in quotes",
       "query \"SELECT 'x;' AS \\\"b\\\" FROM DUAL\"\nrequest --timeout 5 'COMMIT'\n", 0,
       "b\n--\nx;\n"},
      {"forms", "format csv\nselect '' || '' AS A, 1 AS B from dual;\n", 0, "A,B\n,1\n"},
      {"a state of its own", "sequence ZR_QUERY_SQ\nselect ZR_QUERY_SQ.CURRVAL AS C from dual;\n",
       0, "100\n  C\n---\n100\n"},
      {"carriage returns", "literal str a\r\nliteral str b\r\n", 0, "'a'\n'b'\n"},
      {"a text among the lines", "text save 7\nliteral str a\n", 2, ""},
  };
  for (const auto& session : sessions) {
    const Outcome outcome = Run("shell" + std::string(session.option), session.input);
    EXPECT_EQ(outcome.status, session.status) << session.name << ": " << outcome.err;
    EXPECT_EQ(outcome.out, session.out) << session.name;
    EXPECT_THAT(outcome.err, HasSubstr(session.err)) << session.name;
  }
}

TEST_F(CommandLine, KeepsAShellOnATerminalUsable) {
  if (!HasPseudoTerminal()) GTEST_SKIP() << "no pseudo-terminal";
  TerminalProgram shell(OnSite("--show-sql shell"));
  const std::string prompt = "sabrel> ";
  const std::vector<std::pair<std::string, std::string>> typed = {
      {"", prompt},
      {"query " + kEndless + ";\n", "-- query"},
      {"\x03", "Cancelled."},
      {"", prompt},
      {"literal str in-between\n", "'in-between'"},
      {"", prompt},
      {"report lengthy 5\n", "[y/N]"},
      {"\x03", "Cancelled."},
      {"", prompt},
      {"half a line", "half a line"},
      {"\x03", prompt},
      {"DELETE FROM PM_REPORT\n", "     2> "},
      {"WHERE\x03", "'DELETE FROM PM_REPORT' ... is not finished and was not sent"},
      {"", prompt},
      {"SELECT nope FROM DUAL;\n", "904"},
      {"", prompt},
      {"\x1a", prompt},
  };
  for (const auto& [text, answer] : typed) {
    shell.Type(text);
    ASSERT_TRUE(shell.WaitFor(answer)) << answer << " after " << text;
  }
  EXPECT_TRUE(shell.WaitForEditing())
      << "Ctrl-Z, which cannot stop a session's only group, changed it";
  shell.Signal(SIGSTOP);
  shell.EndEditing();
  shell.Signal(SIGCONT);
  ASSERT_TRUE(shell.WaitFor(prompt));
  EXPECT_TRUE(shell.WaitForEditing()) << "after fg";
  shell.Type("exit\n");
  const Outcome outcome = shell.End();
  EXPECT_EQ(outcome.status, 0);
  EXPECT_FALSE(shell.WaitFor(prompt)) << "an old Ctrl-C ended a later line";
  TerminalProgram unfinished(OnSite("shell"));
  unfinished.Type("SELECT nope FROM DUAL;\nDELETE FROM PM_REPORT\n");
  ASSERT_TRUE(unfinished.WaitFor("     2> "));
  ASSERT_TRUE(unfinished.WaitForEditing());
  unfinished.Type("\x04");
  EXPECT_EQ(unfinished.End().status, 2);
}

TEST_F(CommandLine, FitsTablesIntoTheTerminal) {
  if (!HasPseudoTerminal()) GTEST_SKIP() << "no pseudo-terminal";
  const Outcome narrow = TerminalProgram(OnSite("query `SELECT * FROM PM_REPORT`")).End();
  EXPECT_THAT(narrow.out, HasSubstr("\u2026"));
  std::istringstream lines(std::regex_replace(narrow.out, std::regex("\x1b\\[[02]m|\r"), ""));
  for (std::string line; std::getline(lines, line);) EXPECT_LE(CharacterCount(line), 60U) << line;
}

TEST_F(CommandLine, ShowsWhatIsSentWithoutPasswords) {
  folder_.Write("password", "s3cret\n");
  folder_.Write("profiles", "[a]\nDriver = sqlite\nDatabase = @/plant.site\nPassword = hidden\n");
  const Outcome outcome =
      Run("--profile @/profiles --show-sql --record @/record query --user me "
          "--password-file @/password `SELECT 'hidden' AS A, 's3cret' AS B FROM DUAL`");
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_THAT(outcome.err, AllOf(HasSubstr("-- query, user me, time-out 60 s"),
                                 HasSubstr("SELECT '***' AS A, '***' AS B FROM DUAL"),
                                 Not(HasSubstr("s3cret")), HasSubstr("others can read")))
      << "neither file is the user's alone";
  EXPECT_THAT(folder_.Read("record"),
              AllOf(HasSubstr("'***' AS A"), Not(HasSubstr("s3cret' AS B"))));
}

}  // namespace
}  // namespace sabrel::testing
