// Do client and server fit, which releases and versions are there.
#include <gmock/gmock.h>

#include "sabrel/core/gsabrel.h"
#include "sabrel/platform/conversions.h"
#include "sabrel/platform/utf8.h"
#include "tests/support/outcome.h"
#include "tests/support/scripted_platform.h"

namespace sabrel {
namespace {

using testing::Has;
using testing::Refuse;
using testing::Rows;
using testing::ScriptedPlatform;

Rows One(Variant value) { return {{"VALUE"}, {{std::move(value)}}}; }

class Compatibility : public ::testing::Test {
 protected:
  ScriptedPlatform platform;
};

TEST_F(Compatibility, TheServersReleaseDecides) {
  const std::string title = "[Norvasta - Check Server Compatability] ";
  const std::string help = "Please Contact your Support Help Desk or your System Administrator.\n";
  const std::string go_on =
      "\r\n\r\nIf you continue, some Client features may not function fully. Do you wish to "
      "continue?\n";
  const std::string incompatible =
      "box 16 " + title +
      "Client-Server Incompatible.\r\n\r\nThis version of the Server (Version $) is not "
      "supported by\r\nThis version of the Client (Version 7.3) or vice versa.\r\n" +
      help;
  const std::string invalid =
      "box 16 " + title +
      "Potential Server Incompatability.\r\n\r\n The Server has responded with an invalid "
      "version(Version $).\r\n" +
      help;
  const std::string client_older =
      "box 52 " + title +
      "Potential Client Incompatability.\r\n\r\nClient is of an older version than Server.\r\n"
      "This Client is Version: 7.3\r\nThe Server is Version: $\r\nA more current Client is "
      "available. Please Contact your Support Help Desk or System Administrator." +
      go_on;
  const std::string server_older =
      "box 52 " + title +
      "Potential Server Incompatability.\r\n\r\nServer is of an older version than Client.\r\n"
      "This Server is Version: $\r\nThe Client is Version: 7.3" +
      go_on;
  struct Row {
    Variant release;
    std::string box = {};  // "$" is the release
    bool fits = true;
    std::int32_t answer = kAnswerYes;
  };
  std::vector<Row> rows = {
      {Variant("5.0"), incompatible, false},
      {Variant(","), incompatible, false},
      {Variant("abc"), invalid, false},
      {Variant("  "), invalid, false},
      {Variant("9.1"), client_older},
      {Variant("10.0"), client_older, false, kAnswerOk},
      {Variant("6.5 "), server_older},
      {Variant("6.5"), server_older, false, kAnswerNo},
      {Variant(""), "", false},
      {Variant(Null{}), "", false},
      {Variant(7.3)},
  };
  for (const char* fits :
       {"8.0", "7.2", "7.1", "7.0", "6.0", "5.3", "5.2", "7", "7.3.1", "7.3 ", "  7.2"}) {
    rows.push_back({Variant(fits)});
  }
  for (const Row& row : rows) {
    const std::string release = row.release.IsNull() ? "null" : ToText(row.release);
    platform.box_answer = row.answer;
    platform.Answer(One(row.release));
    EXPECT_EQ(GSabrel::IsClientServerCompatible(), row.fits) << release;
    const std::string told = platform.Conversation();
    const auto box = told.find("box");
    EXPECT_EQ(box == std::string::npos ? "" : told.substr(box), ReplaceAll(row.box, "$", release));
  }
  EXPECT_FALSE(GSabrel::IsClientServerCompatible());
  const std::string told = platform.Conversation();
  EXPECT_TRUE(Has(told,
                  "query [Select b.Value from ZR_System_Variable a, ZR_System_Value b Where a.name "
                  "= 'ClientCompatability' and a.ID = b.Variable_ID] host= port=0 user= password= "
                  "timeout=60\n"));
  EXPECT_TRUE(Has(told, ReplaceAll(incompatible, "$", "0"))) << "no answer counts as release 0";
}

TEST_F(Compatibility, NetworkReleasesAreReadOnce) {
  std::string told;
  const auto supported = [&](const std::vector<Variant>& values, std::int32_t tables = 1) {
    UnloadThread();
    platform.DropAnswers();
    platform.Answer(One(Variant(tables)));
    Rows rows{{"VALUE"}, {}};
    for (const Variant& value : values) rows.rows.push_back({value});
    values.empty() ? platform.Answer(Refuse(942)) : platform.Answer(rows);
    auto freed = std::make_unique<std::string>("R17");
    platform.on_box = [&] { freed.reset(); };
    std::string keys = GSabrel::IsLucentVersionSupported(*freed) ? "" : "not ";
    platform.on_box = nullptr;
    told = platform.Conversation();
    for (const char* key : {"R16", "R17", "r17", "17", "R1"}) {
      if (GSabrel::IsLucentVersionSupported(key)) keys += std::string(key) + " ";
    }
    EXPECT_EQ(platform.Conversation(), "") << "read once, also when that fails";
    return keys;
  };
  EXPECT_EQ(supported({Variant("16"), Variant(17.2)}), "R16 R17 r17 ");
  EXPECT_TRUE(Has(told, "table_name = 'LUC_ENT_SYSTEM'"));
  EXPECT_TRUE(Has(told,
                  "query [SELECT b.Value FROM ZR_System_Variable a, ZR_System_Value b Where a.name "
                  "like 'LucentVersionR%' and a.ID = b.Variable_ID] host= port=0 user= password= "
                  "timeout=60\n"));
  EXPECT_EQ(supported({Variant("16"), Variant("x")}), "not ") << "one that is no number";
  EXPECT_EQ(supported({Variant("16"), Variant("16"), Variant("17")}), "not R16 ");
  EXPECT_EQ(supported({}), "not ") << "a failure";
  EXPECT_EQ(supported({Variant("16")}, 0), "not ") << "no table";
}

TEST_F(Compatibility, ModuleVersionsHaveNames) {
  platform.Answer(Rows{{"version_name"}, {{Variant(" Zoë 1 ")}}});
  EXPECT_EQ(GSabrel::GetModuleVersionName(-5, 2), " Zoë 1 ");
  EXPECT_TRUE(Has(platform.Conversation(),
                  "query [Select Version_Name From EA_Module_Version Where Module_ID = -5 and "
                  "Version_ID = 2] host= port=0 user= password= timeout=60\n"));
  EXPECT_EQ(GSabrel::GetModuleVersionName(5, 9), "");
  EXPECT_EQ(GSabrel::SabrelErrorObject()->Description(), "Query returned no records.");
  platform.Answer(Rows{{"Version_Name"}, {{Variant(Null{})}}});
  EXPECT_EQ(FailureIn([] { return GSabrel::GetModuleVersionName(5, 2); }).value().Number(), 94);
}

}  // namespace
}  // namespace sabrel
