// The program on a database server: the same commands, and what it says of one that fails.
#include "tests/cli/command_line.h"
#include "tests/support/postgresql_server.h"
#include "tests/support/pseudo_terminal.h"

namespace sabrel::testing {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

std::string Section(const std::string& name, const ConnectionProfile& profile) {
  return "[" + name + "]\nDriver = " + profile.Driver + "\nHost = " + profile.Host +
         "\nPort = " + std::to_string(profile.Port) + "\nDatabase = " + profile.Database +
         "\nUserName = " + profile.UserName + "\nPassword = " + profile.Password +
         "\nConnectTimeout = 20\n";
}

TEST_F(CommandLine, TellsWhatIsWrongWithAServer) {
  ConnectionProfile server;
  server.Driver = "PostgreSQL Unicode";
  server.Host = "127.0.0.1";
  server.Port = 1;
  const std::string refused = Section("refused", server);
  server.Host = "plant.invalid";
  const std::string unknown = Section("unknown", server);
  server.Driver = "PostgreSQL Fancy";
  folder_.Write("profiles", refused + unknown + Section("driver", server));
  const std::string test = "--profile @/profiles server test --profile-name ";
  Check({
      {"embedded", "--format csv server test", 0, nullptr},
      {"refused", test + "refused", 3, "", "has been refused/severed."},
      {"unknown", test + "unknown", 3, "", "Data Server Host/Port"},
      {"no driver", test + "driver", 3, "", "PostgreSQL Fancy"},
      {"nowhere", "--profile @/profiles site create x", 2, "", "Name either a new file"},
  });
}

TEST_F(CommandLine, DoesOnPostgresqlWhatItDoesOnAFile) {
  if (!PostgresqlServer()) GTEST_SKIP() << "no PostgreSQL server";
  const PostgresqlDatabase site;
  ConnectionProfile stranger = site.Profile();
  stranger.Password = "wr0ng";
  folder_.Write("profiles", Section("plant", site.Profile()) + Section("stranger", stranger) +
                                Section("secure", site.Profile()) + "SslMode = require\n");
  folder_.Write("text", std::string(9001, 'x') + "\u20AC");
  const std::string on = "--profile @/profiles --show-sql --format csv ";
  Check({
      {"answers", on + "server test", 0, nullptr, "SELECT 1 FROM DUAL"},
      {"made before", on + "site create", 4, "", "was not created: "},
      {"entity", on + "entity add `O'Hara Łódź` --parent 3", 0, "100\n"},
      {"in use", on + "entity remove 1", 1, "", "This Enitity is currently being used."},
      {"save", on + "text save 9 @/text", 0},
      {"load", on + "text load 9 --file @/back", 0},
      {"kind", on + "request `DELETE FROM EA_USER`", 4, "", "Kind: child record found"},
      {"no TLS", on + "--profile-name secure server test", 3, "", "server does not support SSL"},
      {"no site", on + "--profile-name secure site create", 4, "", "server does not support SSL"},
      {"password", on + "--profile-name stranger server test", 4, "", "Error: 1017"},
  });
  EXPECT_EQ(folder_.Read("back"), folder_.Read("text"));
  if (!HasPseudoTerminal()) GTEST_SKIP() << "no pseudo-terminal";
  TerminalProgram endless(OnSite("--profile @/profiles query `SELECT pg_sleep(50) FROM DUAL`"));
  ASSERT_TRUE(endless.WaitFor("Ctrl-C"));
  endless.Type("\x03");
  EXPECT_EQ(endless.End().status, 130);
  EXPECT_THAT(Run(on + "--trace --profile-name stranger server test").err, Not(HasSubstr("wr0ng")));
}

}  // namespace
}  // namespace sabrel::testing
