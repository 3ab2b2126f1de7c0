// A host's start-up and shut-down through the facade, as one conversation.
#include <gmock/gmock.h>

#include <functional>
#include <sstream>

#include "sabrel/core/gsabrel.h"
#include "tests/support/scripted_platform.h"

namespace sabrel {
namespace {

using testing::Rows;

// The statements of a conversation, one behind the other.
std::string StatementsOf(const std::string& conversation) {
  std::istringstream lines(conversation);
  std::string statements;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("query")) statements += line;
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
    Rows product{{"Property", "Value"}, {}};
    for (const char* name :
         {"ProductFullName", "ProductName", "ProductVersion", "ProductRelease", "ProductType"}) {
      product.rows.push_back({Variant(name), Variant("x")});
    }
    platform.Answer(product);
    GSabrel::InitializeProductInfo();
    GSabrel::LoadOtherInfo();
  };
  platform.Answer(Rows{{"Id"}, {{Variant(7)}}});
  start();
  const std::string address = "] host= port=0 user= password= timeout=60";
  const std::string statements =
      "query [SELECT * FROM PM_PRODUCT_INFO" + address +
      "query [SELECT Name, Value FROM ZR_System_Values_V  WHERE Name = 'EnableNHighAttempts'" +
      address;
  EXPECT_EQ(StatementsOf(platform.Conversation()),
            "query [SELECT Id FROM PM_ClientMachine WHERE Domain = 'DOMAIN' AND MachineName = "
            "'MACHINE'" +
                address + statements);
  start();
  EXPECT_EQ(StatementsOf(platform.Conversation()), statements) << "the machine is known";
  EXPECT_EQ(GSabrel::DBConnectionName() + GSabrel::DBConnectionUID() + GSabrel::DBConnectionPWD(),
            " plant scottsecret");
  GSabrel::ShutdownDBConnection();
  EXPECT_EQ(platform.Conversation(), "shut down\n");
}

// Each forwards to its own operation with its defaults.
TEST(StartUp, TheFacadeForwardsWithItsDefaults) {
  testing::ScriptedPlatform platform;
  const std::string here = "] host= port=0 user= password= timeout=";
  const std::string there = "] host=h port=1 user=u password=p timeout=";
  const std::pair<std::function<void()>, std::string> rows[] = {
      {[] { return GSabrel::ExecuteQuery("Q"); }, "[Q" + here + "60"},
      {[] { return GSabrel::ExecuteRequest("R"); }, "[R" + here + "0"},
      {[] { return GSabrel::ExecuteQueryReturningLong("Q"); }, "[Q" + here + "60"},
      {[] { return GSabrel::ExecuteQueryReturningString("Q"); }, "[Q" + here + "0"},
      {[] { return GSabrel::ExecuteQueryReturningDate("Q"); }, "[Q" + here + "60"},
      {[] { return GSabrel::ExecuteFunctionReturningString("F", "1"); },
       "[SELECT F(1) FROM DUAL" + here + "0"},
      {[] { return GSabrel::ExecuteQuery("Q", false, "h", 1, "u", "p", 2); }, "[Q" + there + "2"},
      {[] { return GSabrel::DoesTableExist("T0", "h", 1, "u", "p", 2); }, "'T0'" + there + "2"},
      {[] { return GSabrel::DoesDbObjectExist("O", "T", "h", 1, "u", "p", 2); },
       "='T'" + there + "2"},
      {[] { return GSabrel::SystemValueExists("N", "V", "h", 1, "u", "p", 2); },
       "'V'" + there + "2"},
      {[] { return GSabrel::DoesFieldExist("T", "F", "h", 1, "u", "p"); }, "'F'" + there + "60"},
      {[] { return GSabrel::DoesTableExist("T1"); }, "'T1'" + here + "0"},
      {[] { return GSabrel::DoesFieldExist("T2", "F"); }, "'F'" + here + "60"},
      {[] { return GSabrel::DoesThisProcedureExist("P", "F"); }, "= 'F'" + here + "60"},
      {[] { return GSabrel::DoesDbObjectExist("O"); }, "='O'" + here + "0"},
      {[] { return GSabrel::GetProcedureLength("P", "F"); }, "object_name = 'F'" + here + "60"},
      {[] { return GSabrel::SystemValueExists("N", "V"); }, "value = 'V'" + here + "0"},
      {[] { return GSabrel::GetNHighAttemptsValue(); }, "'EnableNHighAttempts'" + here + "60"}};
  for (const auto& [operation, statement] : rows) {
    operation();
    EXPECT_THAT(platform.Conversation(), ::testing::HasSubstr(statement));
  }
}

}  // namespace
}  // namespace sabrel
