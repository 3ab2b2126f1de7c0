#include "sabrel/sql/schema_probes.h"

#include <gmock/gmock.h>

#include <functional>

#include "sabrel/core/error_object.h"
#include "sabrel/sql/schema_cache.h"
#include "tests/support/scripted_platform.h"

namespace sabrel {
namespace {

using namespace MSabrel;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using testing::Refuse;
using testing::Rows;
using testing::ScriptedPlatform;

class SchemaProbes : public ::testing::Test {
 protected:
  void Count(Variant count) { platform.Answer(Rows{{"C"}, {{std::move(count)}}}); }
  // Statements sent since the last call.
  std::size_t Queries() {
    const std::string conversation = platform.Conversation();
    std::size_t count = 0;
    for (std::size_t at = 0; (at = conversation.find("query [", at) + 1) != 0;) ++count;
    return count;
  }
  ScriptedPlatform platform;
};

TEST_F(SchemaProbes, SendTheirStatementsAndTraceThem) {
  platform.trace = true;
  const std::tuple<std::function<bool()>, std::string, std::string, std::string> rows[] = {
      {[] { return DoesTableExist("Pm_Email", "h", 5, "u", "p", 9); },
       "SELECT COUNT(table_name) FROM user_tables\r\n    WHERE table_name = 'PM_EMAIL'",
       "host=h port=5 user=u password=p timeout=9", "DoesTableExists succeeded for Pm_Email."},
      {[] { return DoesFieldExist("T\u00E4", "c", "h", 5, "u", "p"); },
       "SELECT COUNT(table_name)  FROM user_tab_columns WHERE table_name = 'T\u00C4' AND "
       "column_name = 'C'",
       "host=h port=5 user=u password=p timeout=60", "DoesFieldExists succeeded for T\u00E4.c"},
      {[] { return DoesThisProcedureExist("Pkg", "Proc"); },
       "SELECT COUNT(object_name)  FROM user_arguments WHERE package_name = 'PKG' AND object_name "
       "= 'PROC'",
       "host= port=0 user= password= timeout=60", "DoesProcedureExist succeeded for Pkg.Proc"},
      {[] { return DoesDbObjectExist("x", "table", "h", 5, "u", "p", 7); },
       "Select object_name, object_type From user_objects Where object_name='X' And "
       "object_type='TABLE'",
       "host=h port=5 user=u password=p timeout=7", "DoesDbObjectExist succeeded for x."},
  };
  for (const auto& [probe, sql, address, trace] : rows) {
    Count(Variant("1"));
    EXPECT_TRUE(probe()) << trace;
    const std::string conversation = platform.Conversation();
    EXPECT_THAT(conversation, HasSubstr("query [" + sql + "] " + address + "\n"));
    EXPECT_THAT(conversation, EndsWith("trace " + trace + "\r\nQuery: " + sql + "\n"));
  }
}

TEST_F(SchemaProbes, RememberEveryAnswerUntilTheReset) {
  const auto ask = [&](auto probe, bool expected, std::size_t queries) {
    EXPECT_EQ(probe(), expected);
    EXPECT_EQ(Queries(), queries);
  };
  for (const int count : {1, 0, 1, 1}) Count(Variant(count));
  platform.Answer(Refuse(942));
  ask([] { return DoesTableExist("PM_StringTable"); }, true, 1);
  ask([] { return DoesTableExist("pm_STRINGtable", "", 5001, "u", "p", 3); }, true, 0);
  ask([] { return DoesTableExist("PM_StringTable", "hostA", 5001); }, false, 1);
  ask([] { return DoesTableExist("PM_StringTable", "HOSTA", 5001); }, false, 0);
  ask([] { return DoesTableExist("PM_StringTable", "hostB", 5001); }, true, 1);
  ask([] { return DoesFieldExist("PM_StringTable", ""); }, true, 0);
  ask([] { return DoesThisProcedureExist("A", "B"); }, true, 1);
  ask([] { return DoesFieldExist("a", "b"); }, true, 0);
  ask([] { return DoesTableExist("FAILS"); }, false, 1);
  ask([] { return DoesTableExist("FAILS"); }, false, 0);
  for (int i = 0; i < 2; ++i) ask([] { return DoesDbObjectExist("X"); }, false, 1);
  ResetExistingTables();
  ask([] { return DoesTableExist("PM_StringTable"); }, false, 1);
}

TEST_F(SchemaProbes, TellTheirFailuresAndRaiseNone) {
  platform.trace = true;
  platform.Answer(Refuse(942, "gone"));
  EXPECT_FALSE(DoesTableExist("T"));
  EXPECT_THAT(
      platform.Conversation(),
      EndsWith("trace DoesTableExists failed for T.\r\nAn unexpected error occurred\r\nQuery: "
               "SELECT COUNT(table_name) FROM user_tables\r\n    WHERE table_name = 'T'\n"));
  EXPECT_EQ(SabrelErrorObject()->Number(), 91) << "nothing came back";
  Count(Variant("many"));
  EXPECT_FALSE(DoesFieldExist("T", "F'"));
  EXPECT_THAT(platform.Conversation(), HasSubstr("trace DoesFieldExists failed for T.F'\r\n"));
  Count(Variant(1));
  platform.FailAtCall(7);  // the success trace
  EXPECT_TRUE(DoesTableExist("X"));
  Count(Variant(1));
  platform.FailAtCall(7);
  EXPECT_TRUE(DoesDbObjectExist("X"));
  EXPECT_TRUE(DoesTableExist("X")) << "the answer is remembered";
  EXPECT_THAT(platform.Conversation(), ::testing::Not(HasSubstr("failed for X.")));
}

TEST_F(SchemaProbes, CountArgumentsQuietly) {
  const std::pair<Rows, std::int16_t> rows[] = {{{{"ProcLen"}, {{Variant(3)}}}, 3},
                                                {{{"ProcLen"}, {{Variant(32768)}}}, 0},
                                                {{{"ProcLen"}, {}}, 0},
                                                {{{"Other"}, {{Variant(3)}}}, 0}};
  for (const auto& [answer, length] : rows) {
    platform.Answer(answer);
    EXPECT_EQ(GetProcedureLength("pkg", "it's"), length);
  }
  EXPECT_THAT(
      platform.Conversation(),
      HasSubstr("query [select MAX(position) AS ProcLen From user_arguments where package_name = "
                "'pkg' and object_name = 'it's'] host= port=0 user= password= timeout=60\n"));
}

TEST_F(SchemaProbes, LengthsAreAskedForUntilTheyAreKnown) {
  platform.Answer(Refuse(904));
  for (const int length : {0, -5, 4000}) Count(Variant(length));
  for (const std::int32_t length : {0, 0, -5, 4000}) {
    EXPECT_EQ(DBColumnLength("PM_StringTable", "STRINGDATA"), length);
    EXPECT_EQ(Queries(), 1U);
  }
  ResetExistingTables();
  EXPECT_EQ(DBColumnLength("pm_stringtable", "StringData"), 4000);
  EXPECT_EQ(Queries(), 0U);
  platform.Answer(Refuse(942));
  EXPECT_EQ(ModuleNameMaxLength(), 15);
  platform.Answer(Rows{{"ModuleNameLength"}, {{Variant(24)}}});
  EXPECT_EQ(ModuleNameMaxLength(), 24);
  platform.Answer(Rows{{"ModuleNameLength"}, {{Variant(Null{})}}});
  EXPECT_THROW(static_cast<void>(ModuleNameMaxLength()), RuntimeError);
}

TEST(SchemaCache, KeepsItsOrderAndItsKeys) {
  CTablesExist cache;
  cache.Add("T", true, "", "h", 1, 5);
  cache.Add("T", false, "F", "", 7, 0);
  EXPECT_EQ(cache.Item("t:H:1")->TableName() + cache.Item("t:H:1")->ServerName(), "Th");
  EXPECT_EQ(cache.Item("t:H:1")->TimeOut(), 5);
  EXPECT_EQ(cache.Item("T"), nullptr);
  EXPECT_THROW(cache.Add("t", true, "f", "", 0, 0), RuntimeError);
  cache.Remove(1);
  EXPECT_EQ(cache.Item("T.F")->PortId(), 7);
  for (const std::int32_t position : {-1, 0, 2}) EXPECT_EQ(cache.Item(position), nullptr);
  EXPECT_THROW(cache.Remove("T"), RuntimeError);
}

}  // namespace
}  // namespace sabrel
