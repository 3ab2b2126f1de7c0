#include "adapters/shared/profiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdio>
#include <fstream>

#include "tests/platform/failures.h"
#include "tests/support/sample_site_copy.h"

namespace sabrel {
namespace {

using ::testing::HasSubstr;

ProfileFile Read(const std::string& text, mode_t mode = 0600) {
  const testing::TemporaryFolder folder;
  const std::string path = folder.Path("profiles.ini");
  std::ofstream(path, std::ios::binary) << text;
  ::chmod(path.c_str(), mode);
  return ReadProfileFile(path);
}

TEST(Profiles, AFileGivesItsSettings) {
  const ProfileFile file = Read(
      "\xEF\xBB\xBF# plants\r\n[ plant ]\r\ndriver = sqlite\nDATABASE=/a b/=x\n"
      "ReceiveTimeout=60\nPassword = p#;\n\n; other\n[North]\nHost=n1\nPort=1521\n",
      0640);
  ASSERT_EQ(file.profiles.All().size(), 2U);
  EXPECT_EQ(file.profiles.Session(),
            (ConnectionProfile{"plant", "sqlite", "", 0, "/a b/=x", "", "p#;", 0, 60}));
  EXPECT_EQ(file.profiles.All()[1].Port, 1521);
  ASSERT_EQ(file.warnings.size(), 1U);
  EXPECT_THAT(file.warnings[0], HasSubstr("chmod 600"));
  EXPECT_TRUE(Read("[a]\nPassword=x\n").warnings.empty());
}

TEST(Profiles, AFaultNamesFileAndLine) {
  const auto refusal_of = [](const auto& reading) {
    return testing::FailureIn(reading).Description();
  };
  constexpr std::tuple<const char*, const char*, const char*> kRows[] = {
      {"unknown setting", "[a]\nPasword=hush\n", ":2: no setting is called \"Pasword\""},
      {"port too large", "[a]\nPort=65536\n", ":2: Port wants"},
      {"setting twice", "[a]\nHost=x\nhost=y\n", ":3: the setting Host for the second time"},
      {"setting before a name", "Host=hush\n", ":1: a setting before"},
      {"open name", "[a\n", ":1: the profile's name does not end"},
      {"no UTF-8", "[a]\nHost=\xFF\n", ":2: this is not UTF-8"},
  };
  for (const auto& [name, text, expected] : kRows) {
    const std::string told = refusal_of([&] { return Read(text); });
    EXPECT_THAT(told, HasSubstr(expected)) << name;
    EXPECT_THAT(told, ::testing::Not(HasSubstr("hush"))) << name;
  }
  EXPECT_THAT(refusal_of([] { return ReadProfileFile("/nowhere/x"); }), HasSubstr("No such file"));
  EXPECT_THAT(refusal_of([] { return ReadProfileFile("/"); }), HasSubstr("is a folder"));
}

TEST(Profiles, AnAddressChoosesAndOverrides) {
  ProfileSet set({"s", "sqlite", "", 0, "s.site", "ann", "pa", 5, 60});
  set.Add({"n", "odbc", "north", 1, "N", "ann", "pn", 0, 0});
  set.Add({"m", "odbc", "north", 1, "M", "bob", "pm", 0, 9});
  // The chosen profile, user, password, time-out; replaced.
  const std::tuple<const char*, DataServerAddress, const char*> rows[] = {
      {"nothing", {}, "s ann pa 60 0"},
      {"another user has no password", {"", 0, "eve", "", 0}, "s eve  60 0"},
      {"address", {"NORTH", 1, "", "", 0}, "n ann pn 0 0"},
      {"address and user", {"north", 1, "bob", "", 0}, "m bob pm 9 0"},
      {"unknown host", {"south", 1, "", "", 0}, "s ann pa 60 1"},
  };
  for (const auto& [name, address, chosen] : rows) {
    const ResolvedTarget target = set.Resolve(address);
    const ConnectionProfile& p = target.profile;
    EXPECT_EQ(p.Name + " " + p.UserName + " " + p.Password + " " +
                  std::to_string(p.ReceiveTimeout) + " " + (target.address_replaced ? "1" : "0"),
              chosen)
        << name;
  }
  set.UseForSession("M");
  EXPECT_EQ(set.Resolve({}).profile.Database, "M");
  EXPECT_THROW(set.UseForSession("x"), RuntimeError);
}

}  // namespace
}  // namespace sabrel
