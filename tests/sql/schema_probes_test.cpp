#include "sabrel/sql/schema_probes.h"

#include <gmock/gmock.h>

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
  Count(Variant(1));
  EXPECT_TRUE(DoesTableExist("Pm_Email", "h", 5, "u", "p", 9));
  const std::string table =
      "SELECT COUNT(table_name) FROM user_tables\r\n    WHERE table_name = 'PM_EMAIL'";
  EXPECT_EQ(platform.Conversation(),
            "make recordset\nquery [" + table +
                "] host=h port=5 user=u password=p timeout=9\nfetch\n"
                "close\ntrace switch\ntrace ExecuteQuery returned 1 row(s).\r\nQuery: " +
                table + "\ntrace switch\ntrace DoesTableExists succeeded for Pm_Email.\r\nQuery: " +
                table + "\n");
  Count(Variant("1"));
  EXPECT_TRUE(DoesFieldExist("T\u00E4", "c", "h", 5, "u", "p"));
  const std::string column =
      "SELECT COUNT(table_name)  FROM user_tab_columns WHERE table_name = 'T\u00C4' AND "
      "column_name = 'C'";
  std::string conversation = platform.Conversation();
  EXPECT_THAT(conversation,
              HasSubstr("query [" + column + "] host=h port=5 user=u password=p timeout=60\n"));
  EXPECT_THAT(conversation,
              EndsWith("trace DoesFieldExists succeeded for T\u00E4.c\r\nQuery: " + column + "\n"));
  Count(Variant(2));
  EXPECT_TRUE(DoesThisProcedureExist("Pkg", "Proc"));
  const std::string procedure =
      "SELECT COUNT(object_name)  FROM user_arguments WHERE package_name = 'PKG' AND object_name = "
      "'PROC'";
  conversation = platform.Conversation();
  EXPECT_THAT(conversation,
              HasSubstr("query [" + procedure + "] host= port=0 user= password= timeout=60\n"));
  EXPECT_THAT(
      conversation,
      EndsWith("trace DoesProcedureExist succeeded for Pkg.Proc\r\nQuery: " + procedure + "\n"));
  platform.Answer(Rows{{"object_name", "object_type"}, {{Variant("X"), Variant("TABLE")}}});
  EXPECT_TRUE(DoesDbObjectExist("x", "table", "h", 5, "u", "p", 7));
  const std::string object =
      "Select object_name, object_type From user_objects Where object_name='X' And "
      "object_type='TABLE'";
  conversation = platform.Conversation();
  EXPECT_THAT(conversation,
              HasSubstr("query [" + object + "] host=h port=5 user=u password=p timeout=7\n"));
  EXPECT_THAT(conversation,
              EndsWith("trace DoesDbObjectExist succeeded for x.\r\nQuery: " + object + "\n"));
}

TEST_F(SchemaProbes, RememberEveryAnswerUntilTheReset) {
  const auto ask = [&](auto probe, bool expected, std::size_t queries) {
    EXPECT_EQ(probe(), expected);
    EXPECT_EQ(Queries(), queries);
  };
  Count(Variant(1));
  ask([] { return DoesTableExist("PM_StringTable"); }, true, 1);
  ask([] { return DoesTableExist("pm_STRINGtable", "", 5001, "u", "p", 3); }, true, 0);
  Count(Variant(0));
  ask([] { return DoesTableExist("PM_StringTable", "hostA", 5001); }, false, 1);
  ask([] { return DoesTableExist("PM_StringTable", "HOSTA", 5001); }, false, 0);
  Count(Variant(1));
  ask([] { return DoesTableExist("PM_StringTable", "hostB", 5001); }, true, 1);
  ask([] { return DoesFieldExist("PM_StringTable", ""); }, true, 0);
  Count(Variant(1));
  ask([] { return DoesThisProcedureExist("A", "B"); }, true, 1);
  ask([] { return DoesFieldExist("a", "b"); }, true, 0);
  platform.Answer(Refuse(942));
  ask([] { return DoesTableExist("FAILS"); }, false, 1);
  ask([] { return DoesTableExist("FAILS"); }, false, 0);
  ask([] { return DoesTableExist("NULLCOUNT"); }, false, 1);
  for (int i = 0; i < 2; ++i) ask([] { return DoesDbObjectExist("X"); }, false, 1);
  ResetExistingTables();
  Count(Variant(0));
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
  Rows broken{{"C"}, {{Variant("many")}}};
  platform.Answer(broken);
  EXPECT_FALSE(DoesFieldExist("T", "F'"));
  EXPECT_THAT(platform.Conversation(), HasSubstr("trace DoesFieldExists failed for T.F'\r\n"));
  platform.Answer(Refuse(942));
  EXPECT_FALSE(DoesDbObjectExist("X"));
  EXPECT_THAT(platform.Conversation(), HasSubstr("trace DoesDbObjectExist failed for X.\r\n"));
  platform.Answer(Rows{{"A"}, {{Variant(1)}}});
  platform.FailAtCall(7);  // the success trace, with the row test done
  EXPECT_TRUE(DoesDbObjectExist("X"));
  EXPECT_THAT(platform.Conversation(), HasSubstr("trace DoesDbObjectExist failed for X.\r\n"));
}

TEST_F(SchemaProbes, CountArgumentsQuietly) {
  const struct {
    Rows answer;
    std::int16_t length;
  } rows[] = {{{{"ProcLen"}, {{Variant(3)}}}, 3},
              {{{"ProcLen"}, {{Variant(Null{})}}}, 0},
              {{{"ProcLen"}, {{Variant(32768)}}}, 0},
              {{{"ProcLen"}, {}}, 0},
              {{{"Other"}, {{Variant(3)}}}, 0}};
  for (const auto& row : rows) {
    platform.Answer(row.answer);
    EXPECT_EQ(GetProcedureLength("pkg", "it's"), row.length);
  }
  EXPECT_THAT(
      platform.Conversation(),
      HasSubstr("query [select MAX(position) AS ProcLen From user_arguments where package_name = "
                "'pkg' and object_name = 'it's'] host= port=0 user= password= timeout=60\n"));
}

TEST_F(SchemaProbes, LengthsAreAskedForUntilTheyAreKnown) {
  const auto length = [&](std::int32_t expected, std::size_t queries) {
    EXPECT_EQ(DBColumnLength("PM_StringTable", "STRINGDATA"), expected);
    EXPECT_EQ(Queries(), queries);
  };
  Count(Variant(0));
  length(0, 1);
  platform.Answer(Refuse(904));
  length(0, 1);
  Count(Variant(-5));
  length(-5, 1);
  Count(Variant(4000));
  EXPECT_EQ(DBColumnLength("pm_stringtable", "StringData"), 4000);
  EXPECT_THAT(
      platform.Conversation(),
      HasSubstr("query [SELECT FS_GetColumnLength('pm_stringtable','stringdata') FROM DUAL]"));
  ResetExistingTables();
  length(4000, 0);
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
  EXPECT_EQ(cache.Item("t:H:1")->TimeOut(), 5);
  EXPECT_EQ(cache.Item("T.f")->PortId(), 7);
  EXPECT_EQ(cache.Item("T"), nullptr);
  EXPECT_THROW(cache.Add("t", true, "f", "", 0, 0), RuntimeError);
  std::string order;
  for (const auto& entry : cache) order += entry->FieldName() + ";";
  EXPECT_EQ(order, ";F;");
  cache.Remove(1);
  EXPECT_EQ(cache.Count(), 1);
  EXPECT_EQ(cache.Item("T.F"), cache.Item(1));
  for (const std::int32_t position : {-1, 0, 2}) EXPECT_EQ(cache.Item(position), nullptr);
  EXPECT_THROW(cache.Remove("T"), RuntimeError);
}

}  // namespace
}  // namespace sabrel
