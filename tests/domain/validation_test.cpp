// Documents on server groups, and the dialogue about a remote server.
#include <gmock/gmock.h>

#include "sabrel/core/gsabrel.h"
#include "tests/support/outcome.h"
#include "tests/support/scripted_platform.h"

namespace sabrel {
namespace {

using testing::Has;
using ::testing::HasSubstr;
using ::testing::Not;
using testing::OutcomeOf;
using testing::Refuse;
using testing::Rows;
using testing::ScriptedPlatform;

Rows Text(Variant text) { return {{"F"}, {{std::move(text)}}}; }

struct Validation : ::testing::Test {
  ScriptedPlatform platform;
};

TEST_F(Validation, ADocumentIsAskedAboutByTypeReasonAndSaveMode) {
  const std::string question =
      "box 52 [Validate Document] no server\r\n Would you like to save/run the document anyway?";
  const std::string query =
      "query [SELECT EA_Client.IsServerGroupDocumentValid( 7,0,1,1 ) FROM DUAL] "
      "host= port=0 user= password= timeout=0\n";
  const Rows down = Text(Variant("no server"));
  // Type, mode, what the server says, the person's answer; is it valid, is the person asked.
  using Answer = testing::ScriptedAnswer;
  const std::tuple<std::string, const char*, Answer, std::int32_t, bool, bool> rows[] = {
      {"Soft Alarm", "SaveOn", down, kAnswerNo, true, false},
      {"report definition", "SaveOn", down, kAnswerNo, true, false},
      {"Export Definition", "SaveOn", Text(Variant(Null{})), kAnswerNo, true, false},
      {"Export Schedule", "RunSaveOn", Text(Variant("")), kAnswerNo, true, false},
      {"Report Group", "SaveOn", down, kAnswerYes, true, true},
      {"Report Definition", "RunSaveOn", down, kAnswerOk, false, true},
      {"Report Definition", "saveon", down, kAnswerYes, false, false},
      {"Report Definition", "SaveOn", Refuse(942), kAnswerYes, false, false},
  };
  for (const auto& [type, mode, reason, answer, valid, asks] : rows) {
    platform.box_answer = answer;
    platform.Answer(reason);
    EXPECT_EQ(GSabrel::IsServerGroupDocumentValid(type, Variant(7), mode), valid) << type << mode;
    const std::string told = platform.Conversation();
    EXPECT_EQ(Has(told, query), type[0] != 'S' && type[0] != 'r') << type;
    EXPECT_EQ(Has(told, question), asks) << type << mode;
    EXPECT_EQ(Has(told, "Validate Document"), asks);
    platform.DropAnswers();
  }
}

TEST_F(Validation, AGroupIsValidUpToItsFirstInvalidServerGroup) {
  const auto valid = [&](const std::vector<Variant>& groups,
                         const std::vector<const char*>& reasons = {}) {
    Rows rows{{"SERVERGROUPID"}, {}};
    for (const Variant& group : groups) rows.rows.push_back({group});
    platform.Answer(rows);
    for (const char* reason : reasons) platform.Answer(Text(Variant(reason)));
    return GSabrel::IsReportGroupServerDocumentValid("Report Group", -4, "SaveOff", "x");
  };
  EXPECT_TRUE(valid({}));
  EXPECT_THAT(platform.Conversation(),
              HasSubstr("query [Select b.ServerGroupID From Job_Group_Item a, PM_Report b Where "
                        "a.Document_ID = b.Id And a.Group_ID = -4] host= port=0 user= password= "
                        "timeout=60\n"));
  EXPECT_TRUE(valid({Variant(Null{}), Variant(1.0), Variant(2.0)}, {"", ""}));
  EXPECT_THAT(platform.Conversation(),
              ::testing::AllOf(HasSubstr("( 1,0"), HasSubstr("( 2,0"), Not(HasSubstr("( 0,0"))));
  EXPECT_FALSE(valid({Variant(0), Variant(1), Variant(2)}, {"", "down"}));
  EXPECT_THAT(platform.Conversation(), Not(HasSubstr("( 2,0")));
  EXPECT_EQ(OutcomeOf([&] { return valid({Variant("many")}); }), "raises 13 Type mismatch");
  platform.Answer(Refuse(942));
  EXPECT_FALSE(valid({}));
  EXPECT_EQ(platform.OpenCursors(), 0);
}

TEST_F(Validation, AServerTestSaysWhatStandsInTheWay) {
  const std::string caption = " [Test Server Connection] ";
  const auto says = [](const char* word) { return RoutineOutcome{Variant(word), {}}; };
  // What the server answers, whether success is shown, is it usable, what is shown.
  const std::tuple<const char*, testing::ScriptedAnswer, bool, bool, std::string> rows[] = {
      {"shown", says("TRUE"), true, true,
       "box 48" + caption + "Test Server Connection Successfull!!"},
      {"not shown", says("TRUE"), false, true, ""},
      {"lower case", says("true"), false, false, "box 48" + caption + "true"},
      {"unknown user", says("User doesn't exist"), false, false,
       "box 16" + caption +
           "[o'neil]\r\n\r\nUser doesn't exist\r\nPlease contact the System Administrator of\r\n"
           "the remote server."},
      {"database error", Refuse(942, "gone"), true, false,
       "box 48 [FindOrCreateUser] Connection failed.\r\ngone"},
  };
  for (const auto& [name, answer, show, usable, box] : rows) {
    platform.Answer(answer);
    EXPECT_EQ(GSabrel::TestServerConnection("h", 5, "o'neil", "pw", 9, "Caption", show), usable)
        << name;
    const std::string told = platform.Conversation();
    EXPECT_THAT(told, HasSubstr("call [EA_FindOrCreateUser] host=h port=5 user=system password= "
                                "timeout=9 (o'neil,string,) (<pw>,string,) (FALSE,string,)\n"));
    EXPECT_THAT(told, ::testing::EndsWith(box.empty() ? "(FALSE,string,)\n" : box + "\n")) << name;
  }
}

}  // namespace
}  // namespace sabrel
