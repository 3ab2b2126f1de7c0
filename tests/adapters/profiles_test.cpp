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
  return ReadProfileFile(path, 45);
}

TEST(Profiles, AFileGivesItsSettings) {
  const ProfileFile file = Read(
      "\xEF\xBB\xBF# plants\r\n[ plant ]\r\ndriver = sqlite\nDATABASE=/a b/=x\n"
      "ReceiveTimeout=60\nPassword = p#;\n\n; other\n[North]\nHost=n1\nPort=1521\n"
      "SslRootCert=profiles.ini\nsslmode=verify-full\nDateFormat= DD.MM.YYYY \nDriver=psqlodbc\n"
      "[South]\nReceiveTimeout=0\n");
  ASSERT_EQ(file.profiles.All().size(), 3U);
  EXPECT_EQ(file.profiles.Session(),
            (ConnectionProfile{"plant", "sqlite", "", 0, "/a b/=x", "", "p#;", 0, 60}));
  EXPECT_EQ(file.profiles.All()[1].Port, 1521);
  EXPECT_EQ(file.profiles.All()[1].ReceiveTimeout, 45);
  EXPECT_EQ(file.profiles.All()[2].ReceiveTimeout, 0);
  const SectionSettings plant = file.profiles.Resolve({}).section;
  EXPECT_EQ(plant.SslMode + plant.SslRootCert + plant.DateFormat, "DD-MON-RR");
  const SectionSettings north = file.profiles.Resolve({"N1", 0, "", "", 0}).section;
  EXPECT_THAT(north.SslRootCert, ::testing::MatchesRegex("/.*/profiles.ini"));
  EXPECT_EQ(north.SslMode + " " + north.DateFormat, "verify-full DD.MM.YYYY");
}

TEST(Profiles, WhatOthersMayReadOrChangeIsToldWhereAPasswordIs) {
  for (mode_t others = 0; others < 0100; ++others) {
    std::string told;
    for (const auto& one : Read("[a]\nPassword=x\n", 0600 | others).warnings) told += one;
    EXPECT_EQ(told.find("chmod 600") != std::string::npos, (others & 066U) != 0) << others;
  }
  EXPECT_TRUE(Read("[a]\nHost=x\n", 0666).warnings.empty());
}

TEST(Profiles, AFaultNamesFileAndLine) {
  const auto refusal_of = [](const auto& reading) {
    return testing::FailureIn(reading).Description();
  };
  constexpr std::tuple<const char*, const char*, const char*> kRows[] = {
      {"unknown setting", "[a]\nPasword=x\n", ":2: no setting has this name"},
      {"no sign", "[a]\nPassword hush\n", ":2: neither"},
      {"second name", "[hush]\n[HUSH]\n", ":2: a second profile"},
      {"port too large", "[a]\nPort=65536\n", ":2: Port wants"},
      {"setting twice", "[a]\nHost=x\nhost=y\n", ":3: the setting Host for the second time"},
      {"setting before a name", "Host=hush\n", ":1: a setting before"},
      {"open name", "[hush\n", ":1: the profile's name does not end"},
      {"TLS mode", "[a]\nSslMode=prefer\n", ":2: SslMode wants require, verify-ca or verify-full"},
      {"no TLS mode", "[a]\nSslMode=\n", ":2: SslMode has no value"},
      {"TLS of Oracle", "[a]\nSslMode=require\nDriver=Oracle 21\n[b]\n", ":2: SslMode is for"},
      {"TLS of a file", "[a]\nDriver=SQLite\nSslMode=require\n", ":3: SslMode is for"},
      {"TLS of a socket", "[a]\nDriver=psqlodbc\nHost=h,/tmp\nSslMode=require\n",
       ":4: SslMode wants a Host"},
      {"TLS without a host", "[a]\nDriver=psqlodbc\nSslMode=require\n", ":3: SslMode wants a Host"},
      {"authority alone", "[a]\nDriver=psqlodbc\nSslRootCert=profiles.ini\n",
       ":3: SslRootCert demands nothing"},
      {"no authority", "[a]\nDriver=psqlodbc\nSslRootCert=hush\n", ":3: SslRootCert names no file"},
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
  set.Add({"m", "odbc", "north", 1, "M", "bob", "pm", 0, 9}, {"verify-ca", ""});
  set.Add({"w", "odbc", "west", 2, "W", "ann", "pw", 0, 9}, {"require", ""});
  // The chosen profile, user, password, time-out; replaced; TLS.
  const std::tuple<const char*, DataServerAddress, const char*> rows[] = {
      {"nothing", {}, "s ann pa 60 0 "},
      {"another user has no password", {"", 0, "eve", "", 0}, "s eve  60 0 "},
      {"address", {"NORTH", 1, "", "", 0}, "n ann pn 0 0 "},
      {"address and user", {"north", 1, "bob", "", 0}, "m bob pm 9 0 verify-ca"},
      {"unknown host", {"south", 1, "", "", 0}, "s ann pa 60 1 "},
      {"unknown user where TLS is demanded", {"north", 1, "eve", "", 0}, "s eve  60 1 verify-ca"},
  };
  for (const auto& [name, address, chosen] : rows) {
    const ResolvedTarget target = set.Resolve(address);
    const ConnectionProfile& p = target.profile;
    EXPECT_EQ(p.Name + " " + p.UserName + " " + p.Password + " " +
                  std::to_string(p.ReceiveTimeout) + " " + (target.address_replaced ? "1 " : "0 ") +
                  target.section.SslMode,
              chosen)
        << name;
  }
  set.UseForSession("W");
  EXPECT_EQ(set.Resolve({"south", 1, "", "", 0}).section.SslMode, "require");
  EXPECT_EQ(set.Resolve({"NORTH", 1, "eve", "", 0}).section.SslMode, "require");
  set.UseForSession("M");
  EXPECT_EQ(set.Resolve({}).profile.Database, "M");
  EXPECT_THROW(set.UseForSession("x"), RuntimeError);
}

}  // namespace
}  // namespace sabrel
