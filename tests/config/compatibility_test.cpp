// Do client and server fit, which releases and versions are there.
#include <gmock/gmock.h>

#include "sabrel/core/gsabrel.h"
#include "tests/support/outcome.h"
#include "tests/support/scripted_platform.h"

namespace sabrel {
namespace {

using testing::Has;
using testing::OutcomeOf;
using testing::Refuse;
using testing::Rows;
using testing::ScriptedPlatform;

Rows One(Variant value) { return {{"VALUE"}, {{std::move(value)}}}; }

class Compatibility : public ::testing::Test {
 protected:
  ScriptedPlatform platform;
};

TEST_F(Compatibility, TheServersReleaseDecides) {
  const std::string caption = "[Norvasta - Check Server Compatability] ";
  const std::string go_on =
      "\r\n\r\nIf you continue, some Client features may not function fully. Do you wish to "
      "continue?\n";
  const auto incompatible = [&](const std::string& s) {
    return "box 16 " + caption +
           "Client-Server Incompatible.\r\n\r\nThis version of the Server (Version " + s +
           ") is not supported by\r\nThis version of the Client (Version 7.3) or vice "
           "versa.\r\nPlease Contact your Support Help Desk or your System Administrator.\n";
  };
  const auto invalid = [&](const std::string& s) {
    return "box 16 " + caption +
           "Potential Server Incompatability.\r\n\r\n The Server has responded with an invalid "
           "version(Version " +
           s + ").\r\nPlease Contact your Support Help Desk or your System Administrator.\n";
  };
  const auto client_older = [&](const std::string& s) {
    return "box 52 " + caption +
           "Potential Client Incompatability.\r\n\r\nClient is of an older version than "
           "Server.\r\nThis Client is Version: 7.3\r\nThe Server is Version: " +
           s +
           "\r\nA more current Client is available. Please Contact your Support Help Desk or "
           "System "
           "Administrator." +
           go_on;
  };
  const auto server_older = [&](const std::string& s) {
    return "box 52 " + caption +
           "Potential Server Incompatability.\r\n\r\nServer is of an older version than "
           "Client.\r\nThis Server is Version: " +
           s + "\r\nThe Client is Version: 7.3" + go_on;
  };
  const struct {
    Variant release;
    std::int32_t answer;
    bool fits;
    std::string box;
  } rows[] = {
      {Variant("8.0"), kAnswerNo, true, ""},
      {Variant("7.3"), kAnswerNo, true, ""},
      {Variant("7.2"), kAnswerNo, true, ""},
      {Variant("7.1"), kAnswerNo, true, ""},
      {Variant("7.0"), kAnswerNo, true, ""},
      {Variant("6.0"), kAnswerNo, true, ""},
      {Variant("5.3"), kAnswerNo, true, ""},
      {Variant("5.2"), kAnswerNo, true, ""},
      {Variant("7"), kAnswerNo, true, ""},
      {Variant("0,5"), kAnswerNo, true, ""},
      {Variant("7.3.1"), kAnswerNo, true, ""},
      {Variant(7.3), kAnswerNo, true, ""},
      {Variant("5.0"), kAnswerYes, false, incompatible("5.0")},
      {Variant("4.0"), kAnswerYes, false, incompatible("4.0")},
      {Variant("0"), kAnswerYes, false, incompatible("0")},
      {Variant(".0"), kAnswerYes, false, incompatible(".0")},
      {Variant(","), kAnswerYes, false, incompatible(",")},
      {Variant("abc"), kAnswerYes, false, invalid("abc")},
      {Variant("9.1"), kAnswerYes, true, client_older("9.1")},
      {Variant("9.1"), kAnswerNo, false, client_older("9.1")},
      {Variant("10.0"), kAnswerOk, false, client_older("10.0")},
      {Variant("6.5"), kAnswerYes, true, server_older("6.5")},
      {Variant("6.5"), kAnswerNo, false, server_older("6.5")},
      {Variant(""), kAnswerYes, false, ""},
      {Variant(Null{}), kAnswerYes, false, ""},
  };
  for (const auto& row : rows) {
    platform.box_answer = row.answer;
    platform.Answer(One(row.release));
    EXPECT_EQ(GSabrel::IsClientServerCompatible(), row.fits);
    const std::string told = platform.Conversation();
    EXPECT_TRUE(Has(told,
                    "query [Select b.Value from ZR_System_Variable a, ZR_System_Value b Where "
                    "a.name = 'ClientCompatability' and a.ID = b.Variable_ID] host= port=0 "
                    "user= password= timeout=60\n"));
    const auto box = told.find("box");
    EXPECT_EQ(box == std::string::npos ? "" : told.substr(box), row.box);
  }
  for (const bool refused : {true, false}) {
    refused ? platform.Answer(Refuse(942)) : platform.Answer(Rows{{"VALUE"}, {}});
    EXPECT_FALSE(GSabrel::IsClientServerCompatible());
    EXPECT_TRUE(Has(platform.Conversation(), incompatible("0"))) << "no answer counts as release 0";
  }
}

TEST_F(Compatibility, NetworkReleasesAreReadOnce) {
  std::string told;
  const auto supported = [&](Rows table, std::optional<std::vector<Variant>> values) {
    UnloadThread();
    platform.DropAnswers();
    platform.Answer(std::move(table));
    Rows rows{{"VALUE"}, {}};
    if (values) {
      for (Variant& value : *values) rows.rows.push_back({std::move(value)});
    }
    values ? platform.Answer(rows) : platform.Answer(Refuse(942));
    auto freed = std::make_unique<std::string>("R17");
    platform.on_box = [&] { freed.reset(); };
    std::string keys = GSabrel::IsLucentVersionSupported(*freed) ? "" : "not ";
    platform.on_box = nullptr;
    told = platform.Conversation();
    for (const char* key : {"R16", "R17", "r17", "17", "R1", ""}) {
      if (GSabrel::IsLucentVersionSupported(key)) keys += std::string(key) + " ";
    }
    EXPECT_EQ(platform.Conversation(), "") << "read once, also when that fails";
    return keys;
  };
  const Rows there = One(Variant(1));
  EXPECT_EQ(supported(there, {{Variant("16"), Variant(17.2)}}), "R16 R17 r17 ");
  EXPECT_TRUE(Has(told, "table_name = 'LUC_ENT_SYSTEM'"));
  const auto query = told.find(
      "query [SELECT b.Value FROM ZR_System_Variable a, ZR_System_Value b "
      "Where a.name like 'LucentVersionR%' and a.ID = b.Variable_ID] "
      "host= port=0 user= password= timeout=60\n");
  EXPECT_NE(query, std::string::npos);
  EXPECT_EQ(told.find("query", query + 1), std::string::npos) << "once";
  EXPECT_EQ(supported(there, {{Variant("17")}}), "R17 r17 ");
  EXPECT_EQ(supported(there, {{Variant("16"), Variant("x")}}), "not ") << "one that is no number";
  EXPECT_EQ(supported(there, {{Variant("16"), Variant("16"), Variant("17")}}), "not R16 ");
  EXPECT_EQ(supported(there, {{}}), "not ");
  EXPECT_EQ(supported(there, std::nullopt), "not ");
  EXPECT_EQ(supported(One(Variant(0)), {{Variant("16")}}), "not ");
}

TEST_F(Compatibility, ModuleVersionsHaveNames) {
  platform.Answer(Rows{{"version_name"}, {{Variant(" Zoë 1 ")}}});
  EXPECT_EQ(GSabrel::GetModuleVersionName(-5, 2), " Zoë 1 ");
  EXPECT_TRUE(Has(platform.Conversation(),
                  "query [Select Version_Name From EA_Module_Version Where Module_ID = -5 and "
                  "Version_ID = 2] host= port=0 user= password= timeout=60\n"));
  platform.Answer(Rows{{"Version_Name"}, {}});
  EXPECT_EQ(GSabrel::GetModuleVersionName(5, 9), "");
  EXPECT_EQ(GSabrel::SabrelErrorObject()->Description(), "Query returned no records.");
  platform.Answer(Rows{{"Version_Name"}, {{Variant(Null{})}}});
  EXPECT_EQ(OutcomeOf([] { return GSabrel::GetModuleVersionName(5, 2); }).substr(0, 9),
            "raises 94");
}

}  // namespace
}  // namespace sabrel
