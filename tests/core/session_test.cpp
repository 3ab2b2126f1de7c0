#include "sabrel/core/session.h"

#include <gmock/gmock.h>

#include "sabrel/core/error_object.h"
#include "tests/platform/failures.h"
#include "tests/support/scripted_platform.h"

namespace sabrel {
namespace {

using namespace MSabrel;
using ::testing::EndsWith;
using testing::FailureIn;
using ::testing::HasSubstr;
using testing::Refuse;
using testing::Rows;
using testing::ScriptedPlatform;

struct Session : ::testing::Test {
  ScriptedPlatform platform;
};

TEST_F(Session, AnUnknownMachineIsInsertedOnceAndThenKnown) {
  platform.machine_name = "O'MACHINE";
  platform.Answer(Rows{{"Id"}, {}});
  platform.Answer(Rows{});
  platform.Answer(Rows{{"Id"}, {{Variant(42)}}});
  EXPECT_EQ(MachineId(), 42);
  EXPECT_THAT(
      platform.Conversation(),
      HasSubstr("query [SELECT Id FROM PM_ClientMachine WHERE Domain = 'DOMAIN' AND MachineName = "
                "'O''MACHINE'] host= port=0 user= password= timeout=60\nfetch\nclose\ntrace "
                "switch\nmake recordset\nexecute [INSERT INTO PM_ClientMachine (Id, Domain, "
                "MachineName) VALUES (SQ_ClientMachine.NEXTVAL,'DOMAIN','O''MACHINE')] host= "
                "port=0 user= password= timeout=0\n"));
  EXPECT_EQ(MachineId(), 42);
  LoadMachineId();
  EXPECT_EQ(platform.Conversation(), "");
}

TEST_F(Session, AMachineThatStaysUnknownIsAnErrorAndAskedForAgain) {
  const RuntimeError failure = FailureIn([] { return LoadMachineId(), 0; });
  EXPECT_EQ(CarriedCode(failure.Number()), sabMachineIdError);
  EXPECT_EQ(failure.Module() + "." + failure.Procedure(), "MSabrel.LoadMachineId");
  platform.Answer(Rows{{"Id"}, {}});
  platform.Answer(Refuse(1, "dup"));
  EXPECT_EQ(FailureIn([] { return LoadMachineId(), 0; }).Description(), "dup")
      << "the insert's own error";
  platform.Answer(Rows{{"Id"}, {{Variant(7)}}});
  EXPECT_EQ(MachineId(), 7);
}

TEST_F(Session, TheInstallationComesFromTheRegistry) {
  const std::string setup = "\\HKEY_LOCAL_MACHINE\\SOFTWARE\\Torvane\\Norvasta\\Setup\\";
  // The registry; three flags, what is raised, the folder.
  const std::tuple<const char*, std::map<std::string, std::string>, const char*> rows[] = {
      {"no key", {}, "000!"},
      {"no subkey", {{setup.substr(0, setup.size() - 6) + "Other", "x"}}, "000!"},
      {"no folder", {{setup + "IncludeAddInManager", "1"}}, "111!"},
      {"defaults", {{setup + "AppRootFolder", "C:\\App"}}, "110 C:\\App\\"},
      {"all set",
       {{setup + "AppRootFolder", "\\\\srv\\\u00C4\\"},
        {setup + "SubclassingOn", "0"},
        {setup + "IncludeDSMonitor", "0"},
        {setup + "IncludeAddInManager", "1"}},
       "001 \\\\srv\\\u00C4\\"},
  };
  platform.product_name = "Prod";
  for (const auto& [name, values, outcome] : rows) {
    UnloadThread();
    platform.registry = values;
    const std::string raised = FailureIn([] { return LoadMachineInfo(), 0; }).Description();
    EXPECT_EQ(std::to_string(IsSubclassingOn()) + std::to_string(IncludeDSMonitor()) +
                  std::to_string(IncludeAddInManager()) +
                  (raised == "Unable to find product installation (Prod)." ? "!" : " " + raised) +
                  CurrentPlatform().application->RootFolder(),
              outcome)
        << name;
  }
  platform.registry.clear();
  static_cast<void>(FailureIn([] { return LoadMachineInfo(), 0; }));
  EXPECT_TRUE(IncludeAddInManager()) << "a missing key changes nothing";
}

TEST_F(Session, ProductInformationNamesTheFirstMissingProperty) {
  const std::vector<std::vector<Variant>> all = {
      {Variant("ProductFullName"), Variant("Full")}, {Variant("productname"), Variant("P")},
      {Variant("ProductName"), Variant("Product")},  {Variant("ProductVersion"), Variant(7.3)},
      {Variant("ProductRelease"), Variant("R")},     {Variant("ProductType"), Variant("Single")}};
  platform.Answer(Rows{{"Property", "Value"}, all});
  InitializeProductInfo();
  EXPECT_THAT(platform.Conversation(),
              EndsWith("property BusyHourTimeSlices=\nproperty TimeSlices=\nproperty "
                       "MainAppIconFile=\nproperty ProductFullName=Full\nproperty "
                       "ProductName=Product\nproperty ProductRelease=R\nproperty "
                       "ProductType=Single\nproperty ProductVersion=7.3\n"));
  const std::pair<std::vector<std::size_t>, std::string> missing[] = {
      {{3, 4}, "ProductVersion"}, {{4, 5}, "ProductRelease"}, {{0, 1, 2}, "ProductFullName"}};
  for (const auto& [left_out, named] : missing) {
    Rows rows{{"PROPERTY", "VALUE"}, all};
    for (const std::size_t i : left_out) rows.rows[i] = {Variant("Unknown"), Variant("x")};
    platform.Answer(rows);
    const RuntimeError failure = FailureIn([] { return InitializeProductInfo(), 0; });
    EXPECT_EQ(failure.Description(), "Property '" + named + "' missing from PM_PRODUCT_INFO");
  }
}

TEST_F(Session, AFailedOrBrokenProductTableIsReadOnce) {
  const Rows broken{{"Property", "Value"},
                    {{Variant("ProductFullName"), Variant("Full")},
                     {Variant("ProductName"), Variant(Null{})},
                     {Variant("ProductVersion"), Variant("7.3")}}};
  const std::pair<testing::ScriptedAnswer, std::string> rows[] = {{broken, "ProductName"},
                                                                  {Refuse(942), "ProductFullName"}};
  for (const auto& [answer, missing] : rows) {
    UnloadThread();
    platform.Answer(answer);
    EXPECT_EQ(FailureIn([] { return InitializeProductInfo(), 0; }).Description(),
              "Property '" + missing + "' missing from PM_PRODUCT_INFO");
    static_cast<void>(platform.Conversation());
    EXPECT_EQ(ProductProperty("PRODUCTVERSION"), "");
    EXPECT_EQ(platform.Conversation(), "");
  }
}

TEST_F(Session, ShutDownNeverFails) {
  platform.FailAtCall(1);
  ShutdownDBConnection();
  EXPECT_EQ(platform.Conversation(), "shut down\n");
}

}  // namespace
}  // namespace sabrel
