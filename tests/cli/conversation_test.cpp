#include "adapters/shared/conversation.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <sstream>

#include "tests/cli/program.h"
#include "tests/support/scripted_platform.h"

namespace sabrel::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::HasSubstr;
using ::testing::SizeIs;
using Entry = ConversationEntry;

std::vector<Entry> EntriesIn(const std::string& text) {
  std::istringstream in(text);
  return ReadEntries(in);
}

class Listener final : public ConversationListener {
 public:
  void Sent(const Entry& entry) noexcept override { Answered(entry); }
  void Answered(const Entry& entry) noexcept override {
    ++parts;
    text += EntryLine(entry);
  }
  std::string text;
  int parts = 0;
};

class Conversation : public ::testing::Test {
 protected:
  [[nodiscard]] std::vector<Entry> Entries() const { return EntriesIn(listener_->text); }

  ScriptedPlatform platform_;
  std::shared_ptr<Listener> listener_ = std::make_shared<Listener>();
  RecordingRowlink rowlink_{CurrentPlatform().rowlink, listener_};
};

TEST_F(Conversation, KeepsEveryValueOfTheKindItHad) {
  const std::vector<Variant> values = {Variant(Null{}), Variant("5"), Variant(Date(-1.25))};
  platform_.Answer(Rows{std::vector<std::string>(values.size(), "C"), {values}});
  const auto rows = rowlink_.MakeRecordset();
  rows->Open("SELECT", "host", 7, "user", "secret", 9);
  for (std::size_t i = 0; i < values.size(); ++i) {
    EXPECT_EQ(rows->Fields().Item(static_cast<std::int32_t>(i)).Value(), values[i])
        << "listening changed what was said";
  }
  const auto entries = Entries();
  ASSERT_THAT(entries, SizeIs(1));
  EXPECT_THAT(entries[0].rows, ElementsAre(values));
  EXPECT_EQ(entries[0].end, Entry::End::kDone);
  EXPECT_EQ(entries[0].address.host, "host");
  EXPECT_EQ(entries[0].address.port, 7);
  EXPECT_EQ(entries[0].address.timeout_s, 9);
  EXPECT_EQ(listener_->text.find("secret"), std::string::npos);
}

TEST_F(Conversation, TellsLongAnswersInPartsAndWhereTheyWereLeft) {
  platform_.Answer(
      Rows{{"T"}, std::vector<std::vector<Variant>>(60000, {Variant(std::string(100, 'x'))})});
  const auto rows = rowlink_.MakeRecordset();
  rows->Open("SELECT", "", 0, "", "", 0);
  rows->Close();
  const auto entries = Entries();
  ASSERT_THAT(entries, SizeIs(1));
  EXPECT_GT(listener_->parts, 3);
  EXPECT_EQ(entries[0].end, Entry::End::kLeft);
  EXPECT_GT(entries[0].rows.size(), 30000U);
  EXPECT_LT(entries[0].rows.size(), 60000U);
}

TEST_F(Conversation, KeepsCallsAndWritesAndHidesPasswordsInThem) {
  platform_.Answer(RoutineOutcome{Variant(1), {std::nullopt, Variant(5), Variant(Null{})}});
  const auto call = rowlink_.MakeProcedureCall();
  call->ProcedureName("P");
  call->AppendParameter("in", "string", "sName");
  call->AppendParameter("", "integer", "");
  call->AppendParameter("hush", "string", "sPwd");
  EXPECT_EQ(call->Execute(), Variant(1));
  EXPECT_EQ(call->ParameterValue(0), Variant("in"));
  EXPECT_EQ(call->ParameterValue(1), Variant(5));
  const auto writer = rowlink_.MakeRowSetWriter();
  writer->Table("T");
  writer->DeclareColumn("ID", "INT");
  writer->AddRow("1");
  writer->Submit();

  const auto entries = Entries();
  ASSERT_THAT(entries, SizeIs(2));
  EXPECT_EQ(entries[0].parameters[2].value, "***");
  EXPECT_THAT(entries[0].outcome.outputs, ElementsAre(std::nullopt, Variant(5), Variant(Null{})));
  EXPECT_EQ(entries[1].row_set.table, "T");
  EXPECT_THAT(entries[1].row_set.rows, ElementsAre("1"));
}

// A statement without an answer is in the record, with no word that is a password.
TEST_F(Conversation, HoldsWhatIsSentBeforeItIsAnswered) {
  const std::pair<const char*, const char*> rows[] = {
      {"ALTER USER a IDENTIFIED BY s3cret REPLACE \"s3cret 2\"",
       "ALTER USER a IDENTIFIED BY *** REPLACE ***"},
      {"create user a identified/**/by values 's3''cret';",
       "create user a identified/**/by values ***;"},
      {"BEGIN EXECUTE IMMEDIATE 'ALTER ROLE a PASSWORD ''s3cret'''; END;",
       "BEGIN EXECUTE IMMEDIATE 'ALTER ROLE a PASSWORD ***'; END;"},
      {"CREATE USER a IDENTIFIED BY \"s3cret", "CREATE USER a IDENTIFIED BY ***"},
      {"SELECT Password, 'IDENTIFIED' FROM T", "SELECT Password, 'IDENTIFIED' FROM T"},
  };
  for (const auto& [sql, kept] : rows) {
    listener_->text.clear();
    platform_.Answer(Refusal{DatabaseError{942, "S", "O", sql, "D"}, 0});
    EXPECT_THROW(rowlink_.MakeRecordset()->Open(sql, "", 0, "", "", 0), RuntimeError);
    const auto cut = EntriesIn(listener_->text.substr(0, listener_->text.find('\n') + 1));
    ASSERT_THAT(cut, ElementsAre(Field(&Entry::statement, kept)));
    EXPECT_EQ(cut[0].end, Entry::End::kOpen);
    EXPECT_EQ(Entries()[0].failure->database->message, kept);
  }
}

TEST(Record, RefusesWhatIsNoEntryNamingLineAndReason) {
  const std::string call =
      "{`id`:1,`operation`:`call`,`statement`:`P`,`host`:``,`port`:0,`user`:``,`timeout`:0,"
      "`parameters`:[{`value`:`v`,`type`:`t`,`name`:`n`}],`end`:`open`}\n";
  const std::string query =
      "{`id`:2,`operation`:`query`,`statement`:`S`,`host`:``,`port`:0,`user`:``,`timeout`:0,"
      "`end`:`open`}\n{`id`:2,`columns`:[`A`],`rows`:[[1.5]],`end`:`open`}\n";
  const std::string end = "{`id`:1,`result`:null,`outputs`:[[]],`end`:`done`}\n";
  const struct {
    const char* name;
    std::string part;
    std::string instead;
    const char* told;
  } rows[] = {
      {"word", call, "nonsense\n", "Line 1 is no recorded entry: its byte 2 is no JSON"},
      {"nested", "[[1.5]]", std::string(200000, '['),
       "Line 3 is no recorded entry: it is nested too deeply"},
      {"beyond 32 bits", "`port`:0", "`port`:4294967301", "the port is out of range"},
      {"truth for a number", "`port`:0", "`port`:true", "the port is no whole number"},
      {"number for a text", "`statement`:`S`", "`statement`:5", "the statement is no text"},
      {"byte", "`S`", "{`bytes`:[256]}", "a byte is out of range"},
      {"date", "1.5", "{`date`:1e300}", "a date is out of range"},
      {"decimal", "1.5", "{`decimal`:`1,5`}", "a decimal is no number"},
      {"two kinds", "1.5", "{`date`:1.5,`decimal`:`1`}", "unknown or misplaced"},
      {"object for rows", "[[1.5]]", "{`a`:1}", "\"rows\" is no array"},
      {"cells", "[[1.5]]", "[[1.5,2]]", "a row has 2 values for 1 columns"},
      {"columns again", "{`id`:1,`res", "{`id`:2,`columns`:[`B`],`end`:`done`}\n{`id`:1,`res",
       "Line 4 is no recorded entry: it has an unknown or misplaced \"columns\""},
      {"rows of a call", "`result`:null", "`rows`:[],`result`:null", "\"rows\""},
      {"no result", "`result`:null,", "", "it has no \"result\""},
      {"failure of a success", "`done`}", "`done`,`failure`:{}}", "\"failure\""},
      {"no failure", "`done`", "`failed`", "it has no \"failure\""},
      {"unknown end", "`done`", "`gone`", "\"gone\" is no end"},
      {"unknown operation", "`query`", "`ask`", "\"ask\" is no operation"},
      {"unknown key", "`host`", "`boast`", "it has no \"host\""},
      {"number twice", "`id`:2,`op", "`id`:1,`op", "Line 2 is no recorded entry: its id has been"},
      {"number 0", "`id`:2,`op", "`id`:0,`op", "the id is out of range"},
      {"after the end", end, end + end, "Line 5 is no recorded entry: the entry that it continues"},
      {"torn otherwise", end, "site", "Line 4 is no recorded entry: it is not complete"},
  };
  const auto json = [](std::string text) {
    std::ranges::replace(text, '`', '"');
    return text;
  };
  const std::string whole = json(call + query + end);
  EXPECT_THAT(EntriesIn(whole + "{\"id\":5,\"operation\":\"que"), SizeIs(2));
  for (const auto& [name, part, instead, told] : rows) {
    std::string text = whole;
    const std::size_t at = text.find(json(part));
    ASSERT_NE(at, std::string::npos) << name;
    text.replace(at, part.size(), json(instead));
    try {
      ADD_FAILURE() << name << " gave " << EntriesIn(text).size() << " entries";
    } catch (const RuntimeError& failure) {
      EXPECT_EQ(failure.Number(), 321) << name;
      EXPECT_THAT(failure.Description(), HasSubstr(told)) << name;
    }
  }
}

TEST(Record, OfTheProgramHoldsRowsAndFailures) {
  const SiteFolder folder;
  const std::string sql = "SELECT Id, Name, Changed, DTSCOPEID FROM PM_REPORT ORDER BY Id";
  const std::string bad = "INSERT INTO JOB_GROUP (ID, NAME) VALUES (1, 'again')";
  const Outcome outcome = RunProgram({.line = folder.Filled("--record @/record shell --keep-going"),
                                      .input = "format csv\n" + sql + ";\n" + bad + ";\n",
                                      .site = folder.Site()});
  ASSERT_EQ(outcome.status, 4);
  const auto entries = EntriesIn(folder.Read("record"));
  ASSERT_THAT(entries, ElementsAre(Field(&Entry::statement, sql), Field(&Entry::statement, bad)));
  ASSERT_TRUE(entries[1].failure && entries[1].failure->database);
  EXPECT_EQ(entries[0].rows.size(), std::count(outcome.out.begin(), outcome.out.end(), '\n') - 1U);
}

}  // namespace
}  // namespace sabrel::testing
