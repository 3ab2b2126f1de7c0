// Stored texts, features, connections and what fits together.
#include <fstream>
#include <iterator>

#include "tests/cli/command_line.h"

namespace sabrel::testing {
namespace {

using ::testing::AllOf;
using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::Not;

// Longer than ten rows of 4,000 characters; no piece boundary falls on the same letter.
std::string LongText() {
  const std::string line = "O'Hara | \\ \"\u00e9\u20ac\u6771\U0001D11E\" {\r\n\t}";
  std::string text;
  for (int i = 0; i < 2500; ++i) text += line;
  return text;
}

TEST_F(CommandLine, GivesStoredTextsBackByteForByte) {
  const std::string text = LongText();
  folder_.Write("long", text);
  EXPECT_EQ(RunProgram(OnSite({"text", "save", "7"}, text)).status, 0);
  EXPECT_EQ(RunProgram(OnSite({"text", "load", "7"})).out, text);
  const std::string created = RunProgram(OnSite({"text", "create", folder_.Path() + "/long"})).out;
  const std::string id = created.substr(0, created.find('\n'));
  Check({
      {"to a file", {"text", "load", id, "--file", "@/back"}, 0, "", ""},
      {"over the site", {"text", "load", id, "--file", "@/plant.site"}, 4, "", "session's site"},
      {"full disk", {"text", "load", id, "--file", "/dev/full"}, 4, "", "No space left"},
      {"empty", {"text", "save", "7", "/dev/null"}, 0, "", ""},
      {"load empty", {"text", "load", "7"}, 0, "", ""},
      {"delete", {"text", "delete", "7"}, 0, "", ""},
      {"load none", {"text", "load", "7"}, 1, "", "There is no text 7"},
      {"id 0", {"text", "load", "0"}, 2, "", "ID"},
      {"no sequence", {"request", "DROP SEQUENCE PM_StringTable_SQ"}, 0, "", ""},
      {"no id", {"text", "create", "@/long"}, 4, "", "No id was drawn"},
  });
  std::ifstream back(folder_.Path() + "/back", std::ios::binary);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(back), {}), text);
}

TEST_F(CommandLine, RefusesATextThatCannotBeStoredBeforeTheOldOneIsGone) {
  folder_.Write("old", "old text");
  folder_.Write("latin", "Z\xfcrich");
  folder_.Write("mark", "\xff\xfe");
  folder_.Write("nul", std::string("\u20ac\0b", 5));
  Check({
      {"old", {"text", "save", "7", "@/old"}, 0, "", ""},
      {"Latin-1", {"text", "save", "7", "@/latin"}, 4, "", "byte 2 (hex FC)"},
      {"UTF-16", {"text", "save", "7", "@/mark"}, 4, "", "iconv -f UTF-16"},
      {"U+0000", {"text", "save", "7", "@/nul"}, 4, "", "byte 4 is U+0000"},
      {"folder", {"text", "save", "7", "@"}, 4, "", "directory"},
      {"delimiter", {"text", "save", "7", "@/old", "--lines", "--delimiter", "\\x"}, 2, "", "\\x"},
      {"kept", {"text", "load", "7"}, 0, "old text", ""},
  });
  EXPECT_EQ(RunProgram(OnSite({"shell"}, "text save 7\nliteral str a\n")).status, 2)
      << "the rest of the lines became the text";
}

TEST_F(CommandLine, KeepsTextsLineByLineAndTellsWhatThatLoses) {
  folder_.Write("lines", "ab\n\ncd");
  folder_.Write("wide", std::string(4001, 'x') + "\n");
  const auto save = [](const char* file) {
    return std::vector<std::string>{"text", "save", "7", file, "--lines", "--delimiter", "\\n"};
  };
  const char* rows = "LINE,TEXT\n1,ab\n2,c\n";
  Check({
      {"empty line", save("@/lines"), 0, "", "1 empty line will be lost"},
      {"last letter", save("@/lines"), 0, "", "will lose its last character"},
      {"rows", {"--format", "csv", "text", "lines", "7"}, 0, rows, ""},
      {"joined", {"text", "load", "7", "--lines", "--delimiter", "\\t"}, 0, "ab\tc\t", ""},
      {"other ends", {"text", "save", "7", "@/lines", "--lines"}, 0, "", "is --delimiter '\\n'"},
      {"cut", save("@/wide"), 0, "", "1 line will be cut to 4000"},
  });
  EXPECT_EQ(RunProgram(OnSite({"text", "save", "7", "--lines"}, "ab\r\ncd\r\n")).err, "");
  EXPECT_EQ(RunProgram(OnSite({"text", "load", "7", "--lines"})).out, "ab\r\ncd\r\n");
}

TEST_F(CommandLine, TellsWhatIsSwitchedOnAndWhatFits) {
  folder_.Write("profiles",
                folder_.Filled("[a]\nDriver = sqlite\nDatabase = @/plant.site\nHost = h\n"
                               "Password = s3cret\n[b]\nDriver = odbc\n"));
  const auto with = [&](const char* name, std::vector<std::string> words) {
    words.insert(words.begin(), {"--format", "csv", "--profile", folder_.Path() + "/profiles",
                                 "--profile-name", name});
    return RunProgram({.arguments = words, .input = "\u00e9"});
  };
  ASSERT_EQ(with("a", {"site", "create", "--release", "old", folder_.Path() + "/old"}).status, 0);
  EXPECT_THAT(
      RunProgram({.arguments = {"--site", folder_.Path() + "/old", "features"}, .input = ""}).out,
      AllOf(ContainsRegex("Notes_Category +yes +yes +table PM_Note\n"),
            ContainsRegex("Html_Help +no +no +no rule\n")));
  EXPECT_THAT(with("a", {"features"}).out,
              AllOf(HasSubstr("UDR_Group,false,false,switch table\n"),
                    HasSubstr("Report_Archive,true,false,switch table;")));
  EXPECT_THAT(with("a", {"connection", "--machine", "m", "--copy"}).out,
              AllOf(HasSubstr("Host,h\n"), HasSubstr("MachineName,m\n"),
                    HasSubstr("SesEnabled,true\n"), Not(HasSubstr("s3cret"))));
  for (const char* word : {"features", "connection", "compat"}) {
    const Outcome outcome = with("b", {word});
    EXPECT_EQ(outcome.status, 3) << word;
    EXPECT_THAT(outcome.err, Not(HasSubstr("PM_GROUPS"))) << "each probe failed by itself";
  }
  const Outcome unreachable = with("b", {"text", "create"});
  EXPECT_EQ(unreachable.status, 3);
  EXPECT_THAT(unreachable.err, HasSubstr("limit is in bytes"));
  const std::string set = "UPDATE ZR_System_Value SET Value = '9.1' WHERE Variable_Id = 1";
  Check({
      {"enabled", {"features", "ses_group"}, 0, "yes\n", ""},
      {"off the list", {"features", "Report_Archive"}, 1, "no\n", ""},
      {"fits", {"compat"}, 0, "yes\n", ""},
      {"later", {"request", set}, 0, "", ""},
      {"declined", {"--answer", "no", "compat"}, 1, "no\n", "The Server is Version: 9.1"},
      {"accepted", {"--answer", "yes", "compat"}, 0, "yes\n", ""},
      {"no network", {"network-release", "17"}, 1, "no\n", ""},
      {"no release", {"request", "DELETE FROM ZR_System_Value"}, 0, "", ""},
      {"unknown", {"compat"}, 4, "", "Query returned no records"},
      {"no module", {"module-version", "1", "9"}, 4, "", "Query returned no records"},
  });
}

}  // namespace
}  // namespace sabrel::testing
