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
  // The boxes of the conversation, and the statements that were sent.
  std::string Only(std::string_view start) {
    std::string found;
    std::string rest = platform.Conversation();
    for (std::size_t at = rest.find(start); at != std::string::npos; at = rest.find(start, at)) {
      std::size_t end = rest.find('\n', at);
      while (rest[end - 1] == '\r') end = rest.find('\n', end + 1);
      found += rest.substr(at, end - at);
      at = end;
    }
    return found;
  }
  ScriptedPlatform platform;
};

TEST_F(Validation, ADocumentIsAskedAboutByTypeReasonAndSaveMode) {
  const std::string question =
      "box 52 [Validate Document] no server\r\n Would you like to save/run the document anyway?";
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
      {"Report Definition", "RunSaveOn", Variant("no server"), kAnswerNo, false, true},
      {"Report Definition", "RunSaveOn", Variant("no server"), kAnswerOk, false, true},
      {"Report Definition", "SaveOff", Variant("no server"), kAnswerYes, false, false},
      {"Report Definition", "saveon", Variant("no server"), kAnswerYes, false, false},
      {"Report Definition", "SaveOn", std::nullopt, kAnswerYes, false, false},
  };
  for (const auto& row : rows) {
    platform.box_answer = row.answer;
    const bool bound = !std::string_view(row.type).starts_with("Soft") && row.type[0] != 'r';
    if (bound && row.reason) platform.Answer(Text(*row.reason));
    if (!row.reason) platform.Answer(Refuse(942));
    EXPECT_EQ(GSabrel::IsServerGroupDocumentValid(row.type, Variant(7), row.mode), row.valid)
        << row.type << " " << row.mode;
    const std::string told = platform.Conversation();
    EXPECT_EQ(Has(told,
                  "query [SELECT EA_Client.IsServerGroupDocumentValid( 7,0,1,1 ) FROM DUAL] "
                  "host= port=0 user= password= timeout=0\n"),
              bound);
    EXPECT_EQ(Has(told, question), row.asks) << row.type << " " << row.mode;
    EXPECT_EQ(Has(told, "Validate Document"), row.asks);
  }
  platform.Answer(Text(Variant("  ")));
  platform.box_answer = kAnswerNo;
  EXPECT_FALSE(GSabrel::IsServerGroupDocumentValid("Report Group", Variant(Null{})));
  EXPECT_THAT(platform.Conversation(), HasSubstr("Valid( NULL,0,1,1 )"));
}

TEST_F(Validation, AGroupIsValidUpToItsFirstInvalidServerGroup) {
  const auto valid = [&](const char* type, std::vector<std::optional<std::string>> reasons) {
    Rows groups{{"SERVERGROUPID"}, {}};
    for (std::size_t i = 0; i < reasons.size(); ++i) {
      groups.rows.push_back({reasons[i] ? Variant(static_cast<double>(i)) : Variant(Null{})});
    }
    platform.Answer(groups);
    for (const auto& reason : reasons) {
      if (reason) platform.Answer(Text(Variant(*reason)));
    }
    const bool answer = GSabrel::IsReportGroupServerDocumentValid(type, -4, "SaveOff", "x");
    platform.DropAnswers();
    EXPECT_EQ(platform.OpenCursors(), 0);
    return answer;
  };
  EXPECT_TRUE(valid("Report Group", {}));
  EXPECT_EQ(
      Only("query"),
      "query [Select b.ServerGroupID From Job_Group_Item a, PM_Report b Where a.Document_ID = "
      "b.Id And a.Group_ID = -4] host= port=0 user= password= timeout=60");
  EXPECT_TRUE(valid("Report Group", {std::nullopt, "", ""}));
  EXPECT_THAT(Only("query"),
              ::testing::AllOf(HasSubstr("( 1,0"), HasSubstr("( 2,0"), Not(HasSubstr("( 0,0"))));
  EXPECT_FALSE(valid("Report Group", {"", "down", ""}));
  EXPECT_THAT(Only("query"), ::testing::AllOf(HasSubstr("( 1,0"), Not(HasSubstr("( 2,0"))));
  EXPECT_TRUE(valid("Soft Alarm", {"down"})) << "no type that is bound to servers";
  platform.Answer(Refuse(942));
  EXPECT_FALSE(GSabrel::IsReportGroupServerDocumentValid("Report Group", 1, "SaveOn", ""));
  platform.Answer(Rows{{"ServerGroupID"}, {{Variant("many")}}});
  EXPECT_EQ(OutcomeOf([] {
              return GSabrel::IsReportGroupServerDocumentValid("Report Group", 1, "SaveOn", "");
            }),
            "raises 13 Type mismatch");
  EXPECT_EQ(platform.OpenCursors(), 0);
}

TEST_F(Validation, AServerTestSaysWhatStandsInTheWay) {
  const std::string caption = " [Test Server Connection] ";
  const std::string unknown = "box 16" + caption +
                              "[o'neil]\r\n\r\nUser doesn't exist\r\nPlease contact the System "
                              "Administrator of\r\nthe remote server.";
  const struct {
    const char* name;
    std::variant<const char*, testing::Refusal> answer;
    bool show;
    bool usable;
    std::string box;
  } rows[] = {
      {"shown", "TRUE", true, true, "box 48" + caption + "Test Server Connection Successfull!!"},
      {"not shown", "TRUE", false, true, ""},
      {"lower case", "true", false, false, "box 48" + caption + "true"},
      {"unknown user", "User doesn't exist", false, false, unknown},
      {"any other answer", "LOCKED", false, false, "box 48" + caption + "LOCKED"},
      {"no answer", "", false, false, "box 48" + caption + "Error in creating user [o'neil]"},
      {"refused", ConnectionRefusal(30), true, false,
       "box 48" + caption + "Error in creating user [o'neil]"},
      {"database error", Refuse(942, "gone"), true, false,
       "box 48 [FindOrCreateUser] Connection failed.\r\ngone"},
      {"not remote", Refuse(20011, "20011"), true, false,
       "box 48" + caption + "User Not an Enterprise Remote User."},
      {"no data admin", Refuse(20012, "20012"), false, false,
       "box 48" + caption + "User Not a Data Admin User."},
  };
  for (const auto& row : rows) {
    if (const auto* refusal = std::get_if<testing::Refusal>(&row.answer)) {
      platform.Answer(*refusal);
    } else {
      platform.Answer(RoutineOutcome{Variant(std::get<const char*>(row.answer)), {}});
    }
    EXPECT_EQ(GSabrel::TestServerConnection("h", 5, "o'neil", "pw", 9, "Caption", row.show),
              row.usable)
        << row.name;
    std::string told = platform.Conversation();
    EXPECT_THAT(told, HasSubstr("call [EA_FindOrCreateUser] host=h port=5 user=system password= "
                                "timeout=9 (o'neil,string,) (<pw>,string,) (FALSE,string,)\n"));
    const auto box = told.find("box");
    EXPECT_EQ(box == std::string::npos ? "" : told.substr(box, told.size() - box - 1), row.box)
        << row.name;
  }
}

}  // namespace
}  // namespace sabrel
