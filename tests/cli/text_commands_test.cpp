// Stored texts, features, connections and what fits together.
#include "tests/cli/command_line.h"

namespace sabrel::testing {
namespace {

using ::testing::AllOf;
using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::Not;

TEST_F(CommandLine, GivesStoredTextsBackByteForByte) {
  // Longer than ten rows of 4,000 characters; no piece boundary falls on the same letter.
  std::string text;
  for (int i = 0; i < 2500; ++i) text += "O'Hara | \\ \"\u00e9\u20ac\u6771\U0001D11E\" {\r\n\t}";
  folder_.Write("long", text);
  EXPECT_EQ(Run("text save 7", text).status, 0);
  EXPECT_EQ(Run("text load 7").out, text);
  const std::string created = Run("text create @/long").out;
  const std::string load = "text load " + created.substr(0, created.find('\n')) + " --file ";
  Check({
      {"to a file", load + "@/back", 0},
      {"over the site", load + "@/plant.site", 4, "", "session's site"},
      {"full disk", load + "/dev/full", 4, "", "No space left"},
      {"closed input", "text save 7 <&-", 4, "", "Standard input cannot be read"},
      {"no lines", "shell <&-", 4, "", "Standard input cannot be read"},
      {"kept", "text load 7 --file @/back --replace", 0},
      {"delete", "text delete 7", 0},
      {"load none", "text load 7", 1, "", "There is no text 7"},
      {"no sequence", "request `DROP SEQUENCE PM_StringTable_SQ`", 0},
      {"no id", "text create @/long", 4, "", "No id was drawn"},
  });
  EXPECT_EQ(folder_.Read("back"), text);
}

TEST_F(CommandLine, RefusesATextThatCannotBeStoredBeforeTheOldOneIsGone) {
  folder_.Write("old", "old text");
  folder_.Write("latin", "Z\xfcrich");
  folder_.Write("mark", "\xff\xfe");
  folder_.Write("nul", std::string("\u20ac\0b", 5));
  Check({
      {"old", "text save 7 @/old", 0},
      {"Latin-1", "text save 7 @/latin", 4, "", "byte 2 (hex FC)"},
      {"UTF-16", "text save 7 @/mark", 4, "", "iconv -f UTF-16"},
      {"U+0000", "text save 7 @/nul", 4, "", "byte 4 is U+0000"},
      {"delimiter", "text save 7 @/old --lines --delimiter '\\x'", 2, "", "\\x"},
      {"kept", "text load 7", 0, "old text"},
  });
}

TEST_F(CommandLine, KeepsTextsLineByLineAndTellsWhatThatLoses) {
  folder_.Write("lines", "ab\n\ncd");
  folder_.Write("wide", std::string(4001, 'x') + "\n");
  const std::string ending = " --lines --delimiter \\\\";
  Check({
      {"empty line", "text save 7 @/lines" + ending + "n", 0, "", "1 empty line will be lost"},
      {"last letter", "text save 7 @/lines" + ending + "n", 0, "", "will lose its last character"},
      {"rows", "--format csv text lines 7", 0, "LINE,TEXT\n1,ab\n2,c\n"},
      {"joined", "text load 7" + ending + "t", 0, "ab\tc\t"},
      {"cut", "text save 7 @/wide" + ending + "n", 0, "", "1 line will be cut to 4000"},
  });
  EXPECT_EQ(Run("text save 7 --lines", "ab\r\ncd\r\n").err, "");
  EXPECT_EQ(Run("text load 7 --lines").out, "ab\r\ncd\r\n");
}

TEST_F(CommandLine, TellsWhatIsSwitchedOnAndWhatFits) {
  folder_.Write("profiles",
                "[a]\nDriver = sqlite\nDatabase = @/plant.site\nHost = h\nPassword = s3cret\n"
                "[b]\nDriver = Oracle\n");
  EXPECT_THAT(Run("--format csv --profile @/profiles connection --machine m --copy").out,
              AllOf(HasSubstr("Host,h\n"), HasSubstr("MachineName,m\n"),
                    HasSubstr("SesEnabled,true\n"), Not(HasSubstr("s3cret"))));
  const std::string far = "--profile @/profiles --profile-name b ";
  for (const char* word : {"features", "connection", "compat"}) {
    const Outcome outcome = Run(far + word);
    EXPECT_EQ(outcome.status, 3) << word;
    EXPECT_THAT(outcome.err, Not(HasSubstr("PM_GROUPS"))) << "each probe failed by itself";
  }
  const Outcome unreachable = Run(far + "text create", "\u00e9");
  EXPECT_EQ(unreachable.status, 3);
  EXPECT_THAT(unreachable.err, HasSubstr("limit is in bytes"));
  Check({
      {"old site", "site create --release old @/old", 0, nullptr},
      {"off the list", "features Report_Archive", 1, "no\n"},
      {"fits", "compat", 0, "yes\n"},
      {"later", "request `UPDATE ZR_System_Value SET Value = '9.1' WHERE Variable_Id = 1`", 0},
      {"declined", "--answer no compat", 1, "no\n", "The Server is Version: 9.1"},
      {"no network", "network-release 17", 1, "no\n"},
  });
  EXPECT_THAT(Run("--site @/old features").out,
              AllOf(ContainsRegex("Notes_Category +yes +yes +table PM_Note\n"),
                    ContainsRegex("Html_Help +no +no +no rule\n")));
  EXPECT_THAT(Run("--format csv features").out,
              AllOf(HasSubstr("UDR_Group,false,false,switch table\n"),
                    HasSubstr("Report_Archive,true,false,switch table;")));
}

}  // namespace
}  // namespace sabrel::testing
