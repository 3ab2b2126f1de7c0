#include "adapters/shared/conversation.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <limits>
#include <sstream>

#include "sabrel/core/gsabrel.h"
#include "tests/cli/program.h"
#include "tests/support/scripted_platform.h"

namespace sabrel::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::SizeIs;
using Entry = ConversationEntry;

std::vector<Entry> EntriesIn(const std::string& text) {
  std::istringstream in(text);
  return ReadEntries(in);
}

class Listener final : public ConversationListener {
 public:
  void Sent(const Entry&) noexcept override {}
  void Answered(const Entry& entry) noexcept override {
    ++parts;
    WriteEntry(text, entry);
  }
  std::ostringstream text;
  int parts = 0;
};

class Conversation : public ::testing::Test {
 protected:
  [[nodiscard]] std::vector<Entry> Entries() const { return EntriesIn(listener_->text.str()); }

  ScriptedPlatform platform_;
  std::shared_ptr<Listener> listener_ = std::make_shared<Listener>();
  RecordingRowlink rowlink_{CurrentPlatform().rowlink, listener_};
};

TEST_F(Conversation, KeepsEveryValueOfTheKindItHad) {
  const std::vector<Variant> values = {
      Variant(Null{}),
      Variant(std::numeric_limits<std::int32_t>::min()),
      Variant(2.0),
      Variant(0.1 + 0.2),
      Variant(Decimal::Parse("12345678901234567890.01")),
      Variant(Date(-1.25)),
      Variant(""),
      Variant("5"),
      Variant("quote \" line\n\u6771\u4eac"),
      Variant("\xff not text"),
  };
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
  EXPECT_EQ(listener_->text.str().find("secret"), std::string::npos);
}

TEST_F(Conversation, TellsLongAnswersInPartsAndWhereTheyWereLeft) {
  platform_.Answer(
      Rows{{"T"}, std::vector<std::vector<Variant>>(60000, {Variant(std::string(100, 'x'))})});
  const auto rows = rowlink_.MakeRecordset();
  rows->Open("SELECT", "", 0, "", "", 0);
  rows->Close();
  const auto entries = Entries();
  ASSERT_THAT(entries, SizeIs(1));
  EXPECT_GT(listener_->parts, 2);
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

TEST(Record, RefusesLinesThatAreNoEntriesAndIgnoresOneCutShort) {
  for (const char* text : {"[]\n", "{}\n", "{\"id\":1,\"end\":\"done\"}\n", "nonsense\n"}) {
    EXPECT_THROW(static_cast<void>(EntriesIn(text)), RuntimeError) << text;
  }
  EXPECT_THAT(EntriesIn("{\"id\":1,\"operation\":\"que"), SizeIs(0));
}

// What a real server said answers the scripted double.
TEST(Record, OfTheProgramCanBeReplayed) {
  const SiteFolder folder;
  const std::string sql = "SELECT Id, Name, Changed, DTSCOPEID FROM PM_REPORT ORDER BY Id";
  const std::string bad = "INSERT INTO JOB_GROUP (ID, NAME) VALUES (1, 'again')";
  const Outcome outcome = RunProgram({.line = folder.Filled("--record @/record shell --keep-going"),
                                      .input = "format csv\n" + sql + "\n" + bad + "\n",
                                      .site = folder.Site()});
  ASSERT_EQ(outcome.status, 4);
  const auto entries = EntriesIn(folder.Read("record"));
  ASSERT_THAT(entries, ElementsAre(Field(&Entry::statement, sql), Field(&Entry::statement, bad)));
  ASSERT_TRUE(entries[1].failure && entries[1].failure->database);

  ScriptedPlatform platform;
  platform.Answer(Rows{entries[0].columns, entries[0].rows});
  platform.Answer(Refusal{*entries[1].failure->database, 0});
  const auto rows = GSabrel::ExecuteQuery(sql);
  ASSERT_TRUE(rows);
  EXPECT_EQ(rows->RecordCount(), std::count(outcome.out.begin(), outcome.out.end(), '\n') - 1);
  EXPECT_EQ(rows->Fields().Item("CHANGED").Value().kind(), VariantKind::kDate);
  EXPECT_THROW(GSabrel::ExecuteRequest(bad), RuntimeError);
  EXPECT_EQ(GSabrel::SabrelErrorObject()->DBErrorType(), dbeUniqueConstraintViolated);
}

}  // namespace
}  // namespace sabrel::testing
