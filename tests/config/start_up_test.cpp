// A host's start-up and shut-down through the facade, as one conversation.
#include <gmock/gmock.h>

#include "sabrel/core/gsabrel.h"
#include "tests/support/scripted_platform.h"

namespace sabrel {
namespace {

using testing::Rows;

std::string StatementsOf(const std::string& conversation) {
  std::string statements;
  for (std::size_t at = 0; at < conversation.size();) {
    const std::size_t end = conversation.find('\n', at);
    const std::string line = conversation.substr(at, end - at);
    if (line.starts_with("query") || line.starts_with("execute")) statements += line + "\n";
    at = end + 1;
  }
  return statements;
}

TEST(StartUp, SendsItsStatementsInOrderAndOnlyOnce) {
  testing::ScriptedPlatform platform;
  platform.registry["\\HKEY_LOCAL_MACHINE\\SOFTWARE\\Torvane\\Norvasta\\Setup\\AppRootFolder"] =
      "C:\\N";
  const auto start = [&] {
    GSabrel::LoadMachineInfo();
    GSabrel::DBConnectionName(" plant ");
    GSabrel::DBConnectionUID("scott");
    GSabrel::DBConnectionPWD("secret");
    GSabrel::LoadMachineId();
    platform.Answer(Rows{{"Property", "Value"},
                         {{Variant("ProductFullName"), Variant("F")},
                          {Variant("ProductName"), Variant("N")},
                          {Variant("ProductVersion"), Variant("7")},
                          {Variant("ProductRelease"), Variant("3")},
                          {Variant("ProductType"), Variant("T")}}});
    GSabrel::InitializeProductInfo();
    GSabrel::LoadOtherInfo();
  };
  platform.Answer(Rows{{"Id"}, {{Variant(7)}}});
  start();
  const std::string product =
      "query [SELECT * FROM PM_PRODUCT_INFO] host= port=0 user= password= timeout=60\n"
      "query [SELECT Name, Value FROM ZR_System_Values_V  WHERE Name = 'EnableNHighAttempts'] "
      "host= "
      "port=0 user= password= timeout=60\n";
  EXPECT_EQ(StatementsOf(platform.Conversation()),
            "query [SELECT Id FROM PM_ClientMachine WHERE Domain = 'DOMAIN' AND MachineName = "
            "'MACHINE'] host= port=0 user= password= timeout=60\n" +
                product);
  start();
  EXPECT_EQ(StatementsOf(platform.Conversation()), product) << "the machine is known";
  EXPECT_EQ(GSabrel::DBConnectionName() + GSabrel::DBConnectionUID() + GSabrel::DBConnectionPWD(),
            " plant scottsecret");
  GSabrel::ShutdownDBConnection();
  EXPECT_EQ(platform.Conversation(), "shut down\n");
}

TEST(StartUp, WhatIsCalledTooEarlySeesInitialValues) {
  testing::ScriptedPlatform platform;
  EXPECT_FALSE(GSabrel::IsSubclassingOn() || GSabrel::IncludeDSMonitor() ||
               GSabrel::IncludeAddInManager());
  EXPECT_EQ(GSabrel::NHighAttemptsEnabled() + GSabrel::DBConnectionName(), "");
  EXPECT_EQ(GSabrel::SabrelErrorObject()->Number(), 0);
  EXPECT_EQ(platform.Conversation(), "") << "and asks nobody";
}

// Each forwards to its own operation with its defaults.
TEST(StartUp, TheFacadeForwardsWithItsDefaults) {
  testing::ScriptedPlatform platform;
  const std::pair<std::function<void()>, std::string> rows[] = {
      {[] { static_cast<void>(GSabrel::ExecuteQuery("Q")); },
       "[Q] host= port=0 user= password= timeout=60"},
      {[] { GSabrel::ExecuteRequest("R"); }, "[R] host= port=0 user= password= timeout=0"},
      {[] { static_cast<void>(GSabrel::ExecuteQueryReturningLong("Q")); },
       "[Q] host= port=0 user= password= timeout=60"},
      {[] { static_cast<void>(GSabrel::ExecuteQueryReturningString("Q")); },
       "[Q] host= port=0 user= password= timeout=0"},
      {[] { static_cast<void>(GSabrel::ExecuteQueryReturningDate("Q")); },
       "[Q] host= port=0 user= password= timeout=60"},
      {[] { static_cast<void>(GSabrel::ExecuteFunctionReturningLong("F", "1")); },
       "[SELECT F(1) FROM DUAL]"},
      {[] { static_cast<void>(GSabrel::ExecuteFunctionReturningString("F", "1")); },
       "[SELECT F(1) FROM DUAL] host= port=0 user= password= timeout=0"},
      {[] { GSabrel::ExecuteProcedure("P", {}); }, "[BEGIN P(  ); END;]"},
      {[] { static_cast<void>(GSabrel::GetCurrentDateTime()); },
       "[SELECT TRUNC(SYSDATE,'MI') FROM DUAL]"},
      {[] { static_cast<void>(GSabrel::GetNextInSequence("S")); }, "[SELECT S.NEXTVAL FROM DUAL]"},
      {[] { static_cast<void>(GSabrel::ExecuteQuery("Q", false, "h", 1, "u", "p", 2)); },
       "[Q] host=h port=1 user=u password=p timeout=2"},
      {[] { static_cast<void>(GSabrel::DoesTableExist("T0", "h", 1, "u", "p", 2)); },
       "'T0'] host=h port=1 user=u password=p timeout=2"},
      {[] { static_cast<void>(GSabrel::DoesDbObjectExist("O", "T", "h", 1, "u", "p", 2)); },
       "='T'] host=h port=1 user=u password=p timeout=2"},
      {[] { static_cast<void>(GSabrel::SystemValueExists("N", "V", "h", 1, "u", "p", 2)); },
       "'V'] host=h port=1 user=u password=p timeout=2"},
      {[] { static_cast<void>(GSabrel::DoesFieldExist("T", "F", "h", 1, "u", "p")); },
       "'F'] host=h port=1 user=u password=p timeout=60"},
      {[] { static_cast<void>(GSabrel::DoesTableExist("T1")); },
       "'T1'] host= port=0 user= password= timeout=0"},
      {[] { static_cast<void>(GSabrel::DoesFieldExist("T2", "F")); },
       "'F'] host= port=0 user= password= timeout=60"},
      {[] { static_cast<void>(GSabrel::DoesThisProcedureExist("P", "F")); },
       "object_name = 'F'] host= port=0 user= password= timeout=60"},
      {[] { static_cast<void>(GSabrel::DoesDbObjectExist("O")); },
       "='O'] host= port=0 user= password= timeout=0"},
      {[] { static_cast<void>(GSabrel::GetProcedureLength("P", "F")); },
       "object_name = 'F'] host= port=0 user= password= timeout=60"},
      {[] { static_cast<void>(GSabrel::DBColumnLength("T", "C")); }, "FS_GetColumnLength('t','c')"},
      {[] { static_cast<void>(GSabrel::SystemValueExists("N", "V")); },
       "value = 'V'] host= port=0 user= password= timeout=0"},
      {[] { GSabrel::GetNHighAttemptsValue(); },
       "'EnableNHighAttempts'] host= port=0 user= password= timeout=60"},
  };
  for (const auto& [operation, statement] : rows) {
    operation();
    EXPECT_THAT(platform.Conversation(), ::testing::HasSubstr(statement));
  }
  EXPECT_EQ(GSabrel::DBLiteral("x").Value() + GSabrel::DBStr("x").Value() +
                GSabrel::DBOrd(1).Value() + GSabrel::DBInt(0, 1).Value() +
                GSabrel::DBFloat(0.5).Value() + GSabrel::PadStr("x") +
                GSabrel::CurrentDateTime().Value() + GSabrel::NextInSequence("S").Value(),
            "x'x'100.5 x TRUNC(SYSDATE,'MI')S.NEXTVAL");
  EXPECT_EQ(GSabrel::CVString(Variant(" x ")) + std::to_string(GSabrel::CVInt(Variant(Null{}), 3)) +
                std::to_string(GSabrel::CVId(Variant("4"))),
            "x34");
  EXPECT_EQ(GSabrel::SabrelErrorHandler()->Source(), "Sabrel");
  EXPECT_FALSE(GSabrel::CheckConnectionError());
}

}  // namespace
}  // namespace sabrel
