// Documents on server groups, and the dialogue about a remote server.
#include <gmock/gmock.h>

#include "sabrel/core/gsabrel.h"
#include "tests/support/outcome.h"
#include "tests/support/scripted_platform.h"

namespace sabrel {
namespace {

using testing::ConnectionRefusal;
using testing::Has;
using ::testing::HasSubstr;
using ::testing::Not;
using testing::OutcomeOf;
using testing::Refuse;
using testing::Rows;
using testing::ScriptedPlatform;

Rows Text(Variant text) { return {{"F"}, {{std::move(text)}}}; }

class Validation : public ::testing::Test {
 protected:
  ScriptedPlatform platform;
};

TEST_F(Validation, ADocumentIsAskedAboutByTypeReasonAndSaveMode) {
  const std::string question =
      "box 52 [Validate Document] no server\r\n Would you like to save/run the document anyway?";
  const std::string query =
      "query [SELECT EA_Client.IsServerGroupDocumentValid( 7,0,1,1 ) FROM DUAL] "
      "host= port=0 user= password= timeout=0\n";
  const struct {
    const char* type;
    const char* mode;
    std::optional<Variant> reason;  // nothing: the query fails
    std::int32_t answer;
    bool valid;
    bool asks;
  } rows[] = {
      {"Soft Alarm", "SaveOn", Variant("no server"), kAnswerNo, true, false},
      {"report definition", "SaveOn", Variant("no server"), kAnswerNo, true, false},
      {"Export Definition", "SaveOn", Variant(Null{}), kAnswerNo, true, false},
      {"Export Schedule", "RunSaveOn", Variant(""), kAnswerNo, true, false},
      {"Report Group", "SaveOn", Variant("no server"), kAnswerYes, true, true},
      {"Report Definition", "RunSaveOn", Variant("no server"), kAnswerOk, false, true},
      {"Report Definition", "saveon", Variant("no server"), kAnswerYes, false, false},
      {"Report Definition", "SaveOn", std::nullopt, kAnswerYes, false, false},
  };
  for (const auto& row : rows) {
    platform.box_answer = row.answer;
    const bool bound = row.type[0] != 'S' && row.type[0] != 'r';
    row.reason ? platform.Answer(Text(*row.reason)) : platform.Answer(Refuse(942));
    EXPECT_EQ(GSabrel::IsServerGroupDocumentValid(row.type, Variant(7), row.mode), row.valid)
        << row.type << " " << row.mode;
    const std::string told = platform.Conversation();
    EXPECT_EQ(Has(told, query), bound) << row.type;
    EXPECT_EQ(Has(told, question), row.asks) << row.type << " " << row.mode;
    EXPECT_EQ(Has(told, "Validate Document"), row.asks);
    platform.DropAnswers();
  }
}

TEST_F(Validation, AGroupIsValidUpToItsFirstInvalidServerGroup) {
  // The reasons of the server groups 0, 1, ...; nothing where a row names no group.
  using Reasons = std::vector<std::optional<std::string>>;
  const auto valid = [&](const Reasons& reasons) {
    Rows groups{{"SERVERGROUPID"}, {}};
    for (std::size_t i = 0; i < reasons.size(); ++i) {
      groups.rows.push_back({reasons[i] ? Variant(static_cast<double>(i)) : Variant(Null{})});
    }
    platform.Answer(groups);
    for (const auto& reason : reasons) {
      if (reason) platform.Answer(Text(Variant(*reason)));
    }
    const bool answer =
        GSabrel::IsReportGroupServerDocumentValid("Report Group", -4, "SaveOff", "x");
    platform.DropAnswers();
    EXPECT_EQ(platform.OpenCursors(), 0);
    return answer;
  };
  EXPECT_TRUE(valid({}));
  EXPECT_THAT(platform.Conversation(),
              HasSubstr("query [Select b.ServerGroupID From Job_Group_Item a, PM_Report b Where "
                        "a.Document_ID = b.Id And a.Group_ID = -4] host= port=0 user= password= "
                        "timeout=60\n"));
  EXPECT_TRUE(valid({std::nullopt, "", ""}));
  EXPECT_THAT(platform.Conversation(),
              ::testing::AllOf(HasSubstr("( 1,0"), HasSubstr("( 2,0"), Not(HasSubstr("( 0,0"))));
  EXPECT_FALSE(valid({"", "down", ""}));
  EXPECT_THAT(platform.Conversation(), Not(HasSubstr("( 2,0")));
  const auto one = [] {
    return GSabrel::IsReportGroupServerDocumentValid("Report Group", 1, "SaveOn", "");
  };
  platform.Answer(Refuse(942));
  EXPECT_FALSE(one());
  platform.Answer(Rows{{"ServerGroupID"}, {{Variant("many")}}});
  EXPECT_EQ(OutcomeOf(one), "raises 13 Type mismatch");
  EXPECT_EQ(platform.OpenCursors(), 0);
}

TEST_F(Validation, AServerTestSaysWhatStandsInTheWay) {
  const std::string caption = " [Test Server Connection] ";
  const auto says = [](const char* word) { return RoutineOutcome{Variant(word), {}}; };
  const struct {
    const char* name;
    std::variant<RoutineOutcome, testing::Refusal> answer;
    bool show;
    bool usable;
    std::string box;
  } rows[] = {
      {"shown", says("TRUE"), true, true,
       "box 48" + caption + "Test Server Connection Successfull!!"},
      {"not shown", says("TRUE"), false, true, ""},
      {"lower case", says("true"), false, false, "box 48" + caption + "true"},
      {"unknown user", says("User doesn't exist"), false, false,
       "box 16" + caption +
           "[o'neil]\r\n\r\nUser doesn't exist\r\nPlease contact the System Administrator of\r\n"
           "the remote server."},
      {"no answer", ConnectionRefusal(30), true, false,
       "box 48" + caption + "Error in creating user [o'neil]"},
      {"database error", Refuse(942, "gone"), true, false,
       "box 48 [FindOrCreateUser] Connection failed.\r\ngone"},
  };
  for (const auto& row : rows) {
    std::visit([&](const auto& answer) { platform.Answer(answer); }, row.answer);
    EXPECT_EQ(GSabrel::TestServerConnection("h", 5, "o'neil", "pw", 9, "Caption", row.show),
              row.usable)
        << row.name;
    const std::string told = platform.Conversation();
    EXPECT_THAT(told, HasSubstr("call [EA_FindOrCreateUser] host=h port=5 user=system password= "
                                "timeout=9 (o'neil,string,) (<pw>,string,) (FALSE,string,)\n"));
    const std::string end = row.box.empty() ? "(FALSE,string,)\n" : row.box + "\n";
    EXPECT_THAT(told, ::testing::EndsWith(end)) << row.name;
  }
}

}  // namespace
}  // namespace sabrel
