// What the program's outputs may replace, and who may read them.
#include <sys/stat.h>

#include <filesystem>
#include <map>

#include "tests/cli/command_line.h"

namespace sabrel::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::ContainsRegex;
using ::testing::HasSubstr;

class OutputFiles : public CommandLine {
 protected:
  [[nodiscard]] std::map<std::string, std::string> Contents() const {
    std::map<std::string, std::string> contents;
    for (const auto& file : fs::directory_iterator(folder_.Filled("@"))) {
      const std::string name = file.path().filename();
      if (file.is_regular_file()) contents[name] = folder_.Read(name);
    }
    return contents;
  }
  [[nodiscard]] std::string Mode(const std::string& name) const {
    struct stat facts {};
    ::stat(folder_.Filled("@/" + name).c_str(), &facts);
    return (std::ostringstream() << std::oct << (facts.st_mode & 07777U)).str();
  }
};

TEST_F(OutputFiles, ReplaceNothingThatIsReadOrForeign) {
  folder_.Write("servers",
                "[a]\nDriver = sqlite\nDatabase = @/plant.site\n[b]\nDriver = PostgreSQL\n"
                "Host = b\nDatabase = b\nSslMode = verify-full\nSslRootCert = @/ca\n");
  folder_.Write("ca", "certificate\n");
  folder_.Write("settings", "REGEDIT4\n");
  folder_.Write("password", "secret\n");
  folder_.Write("lines", "now\n");
  folder_.Write("object", "{`id`:1}\n");
  folder_.Write("notes", "2024-03-09 17:05:00 a note\n");
  folder_.Write("notes.1.log", "a note\n");
  fs::create_symlink("plant.site", folder_.Filled("@/soft"));
  fs::create_hard_link(folder_.Site(), folder_.Filled("@/hard"));
  ASSERT_EQ(Run("--log @/a.log --record @/a.json now").status, 0);
  auto before = Contents();
  const struct {
    const char* name;
    const char* file;
    std::string command;
    const char* told;
  } rows[] = {
      {"site", "plant.site", "now", "site too"},
      {"other spelling", "no/.././plant.site", "now", "site too"},
      {"symbolic link", "soft", "now", "site too"},
      {"hard link", "hard", "now", "site too"},
      {"journal to come", "plant.site-wal", "now", "part of the session's site"},
      {"journal behind a link", "plant.site-wal", "--site @/soft now",
       "part of the session's site"},
      {"certificate", "ca", "--profile @/servers now", "certificate of the profile file"},
      {"site of a profile", "plant.site", "--profile @/servers now", "site too"},
      {"profiles", "servers", "--profile @/servers now", "profile file"},
      {"registry", "settings", "--registry @/settings login", "registry file"},
      {"password", "password", "query --password-file @/password nope", "of this command"},
      {"text", "a.json", "text save 7 @/a.json", "of this command"},
      {"new site", "new", "site create @/new", "of this command"},
      {"input", "lines", "shell < @/lines", "standard input"},
      {"object", "object", "now", " of this program"},
      {"notes", "notes", "now", " of this program"},
  };
  for (const char* option : {"--record @/", "--log @/"}) {
    for (const auto& [name, file, command, told] : rows) {
      SCOPED_TRACE(option + std::string(name));
      const Outcome outcome = Run(option + std::string(file) + " " + command);
      EXPECT_EQ(outcome.status, 4);
      EXPECT_THAT(outcome.err, HasSubstr(told));
    }
  }
  Check({
      {"log for a record", "--record @/a.log now", 4, "", "no record"},
      {"record for a log", "--log @/a.json now", 4, "", "no log"},
      {"one for both", "--log @/b --record @/b now", 4, "", "the record too"},
      {"record put aside", "--log @/b.log --record @/b.1.log now", 4, "", "the record too"},
      {"notes put aside", "--log @/notes.log now", 4, "", "notes.1.log"},
      {"text over notes", "text load 5 --file @/notes", 4, "", "--replace"},
      {"text over a link", "text load 5 --file @/hard --replace", 4, "", "site too"},
      {"text over the log", "--log @/a.log text load 5 --file @/a.log --replace", 4, "", "log too"},
  });
  const std::string lines =
      "query --password-file @/password 'SELECT 1 FROM DUAL'\n"
      "text load 5 --file @/password --replace\n";
  EXPECT_THAT(Run("shell", folder_.Filled(lines)).err, HasSubstr("password file of this session"));
  auto after = Contents();
  for (const char* grown : {"a.log", "b.log", "notes.log"}) {
    before.erase(grown);
    after.erase(grown);
  }
  EXPECT_EQ(after, before);
}

TEST_F(OutputFiles, AreTheOwnersUnlessAGroupWasAskedFor) {
  const mode_t umask = ::umask(0);
  fs::create_directory(folder_.Filled("@/group"));
  ::chmod(folder_.Filled("@/group").c_str(), 02770);
  EXPECT_EQ(Run("--log @/log --record @/record now").status, 0);
  for (const char* name : {"log", "record"})
    ::chmod(folder_.Filled("@/").append(name).c_str(), 0646);
  fs::create_symlink("target", folder_.Filled("@/link"));
  EXPECT_EQ(Run("--log @/log --record @/record site create @/new").status, 0);
  EXPECT_EQ(Run("--log @/link --record @/group/record site create @/group/new").status, 0);
  fs::create_symlink("group/target.log", folder_.Filled("@/into"));
  EXPECT_EQ(Run("--log @/into now").status, 0);
  EXPECT_EQ(Run("--log @/group/deep/log now").status, 0);
  ::umask(022);
  EXPECT_EQ(Run("--shared --log @/shared.log site create @/shared").status, 0);
  EXPECT_EQ(Run("--log @/group/log now --site @/group/new").status, 0);
  ::umask(umask);
  for (const auto& [name, mode] :
       {std::pair("log", "600"), std::pair("record", "600"), std::pair("new", "600"),
        std::pair("target", "600"), std::pair("group/new", "660"), std::pair("group/log", "660"),
        std::pair("group/record", "600"), std::pair("group/target.log", "660"),
        std::pair("group/deep/log", "660"), std::pair("shared", "660"),
        std::pair("shared.log", "660")}) {
    EXPECT_EQ(Mode(name), mode) << name;
  }
}

TEST_F(OutputFiles, TellInTheLogWhatIsSentAndHowItFailed) {
  const std::string sql = "INSERT INTO JOB_GROUP (ID, NAME) VALUES (1, 'again')";
  EXPECT_EQ(Run("--log @/log request `" + sql + "`").status, 4);
  EXPECT_THAT(folder_.Read("log"),
              ContainsRegex("server: Sending 1: request, time-out 60 s\n +INSERT INTO .*'again'"
                            ".\n.*server: Failed 1 after [0-9.]+ s: database error 1: ORA-00001"));
  EXPECT_EQ(Run("--log /dev/stdout --record /dev/stderr now").err.substr(0, 8), "{\"id\":1,");
}

}  // namespace
}  // namespace sabrel::testing
