#include "adapters/shared/conversation.h"

#include <gmock/gmock.h>

#include <fstream>
#include <limits>
#include <sstream>

#include "sabrel/core/gsabrel.h"
#include "tests/cli/program.h"
#include "tests/support/scripted_platform.h"

namespace sabrel::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::SizeIs;
using Entry = ConversationEntry;

class Listener final : public ConversationListener {
 public:
  void Sent(const Entry&) noexcept override {}
  void Answered(const Entry& entry) noexcept override {
    ++parts;
    WriteEntry(text, entry);
  }
  [[nodiscard]] std::vector<Entry> Entries() {
    std::istringstream in(text.str());
    return ReadEntries(in);
  }
  std::ostringstream text;
  int parts = 0;
};

class Conversation : public ::testing::Test {
 protected:
  ScriptedPlatform platform_;
  std::shared_ptr<Listener> listener_ = std::make_shared<Listener>();
  OverheardRowlink rowlink_{CurrentPlatform().rowlink, listener_};
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
  std::vector<Variant> read;
  for (std::int32_t i = 0; i < rows->Fields().Count(); ++i) {
    read.push_back(rows->Fields().Item(i).Value());
  }
  EXPECT_EQ(read, values) << "listening changed what was said";

  const auto entries = listener_->Entries();
  ASSERT_THAT(entries, SizeIs(1));
  EXPECT_THAT(entries[0].rows, ElementsAre(values));
  EXPECT_EQ(entries[0].end, Entry::End::kDone);
  EXPECT_EQ(entries[0].address.host, "host");
  EXPECT_EQ(entries[0].address.port, 7);
  EXPECT_EQ(entries[0].address.timeout_s, 9);
  EXPECT_EQ(listener_->text.str().find("secret"), std::string::npos);
}

TEST_F(Conversation, TellsLongAnswersInPartsAndWhereTheyWereLeft) {
  Rows many{{"T"}, std::vector<std::vector<Variant>>(60000, {Variant(std::string(100, 'x'))})};
  platform_.Answer(many);
  const auto rows = rowlink_.MakeRecordset();
  rows->Open("SELECT", "", 0, "", "", 0);
  rows->Close();
  const auto entries = listener_->Entries();
  ASSERT_THAT(entries, SizeIs(1));
  EXPECT_GT(listener_->parts, 2);
  EXPECT_EQ(entries[0].end, Entry::End::kLeft);
  EXPECT_GT(entries[0].rows.size(), 30000U);
  EXPECT_LT(entries[0].rows.size(), many.rows.size());
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

  const auto entries = listener_->Entries();
  ASSERT_THAT(entries, SizeIs(2));
  EXPECT_EQ(entries[0].parameters[2].value, "***");
  EXPECT_THAT(entries[0].outcome.outputs, ElementsAre(std::nullopt, Variant(5), Variant(Null{})));
  EXPECT_EQ(entries[1].row_set.table, "T");
  EXPECT_THAT(entries[1].row_set.rows, ElementsAre("1"));
}

TEST_F(Conversation, RefusesLinesThatAreNoEntriesAndIgnoresOneCutShort) {
  for (const char* text : {"[]\n", "{}\n", "{\"id\":1,\"end\":\"done\"}\n", "nonsense\n"}) {
    std::istringstream in(text);
    EXPECT_THROW(static_cast<void>(ReadEntries(in)), RuntimeError) << text;
  }
  std::istringstream cut("{\"id\":1,\"operation\":\"que");
  EXPECT_THAT(ReadEntries(cut), SizeIs(0));
}

// What a real server said answers the scripted double.
TEST(Record, OfTheProgramCanBeReplayed) {
  const SiteFolder folder;
  const std::string sql = "SELECT Id, Name, Changed, DTSCOPEID FROM PM_REPORT ORDER BY Id";
  const std::string bad = "INSERT INTO JOB_GROUP (ID, NAME) VALUES (1, 'again')";
  const std::string record = folder.Path() + "/record";
  const Outcome outcome = RunProgram(
      {.arguments = {"--site", folder.Site(), "--record", record, "shell", "--keep-going"},
       .input = "format csv\n" + sql + "\n" + bad + "\n"});
  ASSERT_EQ(outcome.status, 4);
  std::ifstream in(record, std::ios::binary);
  const auto entries = ReadEntries(in);
  ASSERT_THAT(entries, SizeIs(2));

  ScriptedPlatform platform;
  for (const Entry& entry : entries) {
    if (entry.failure && entry.failure->database) {
      platform.Answer(Refusal{*entry.failure->database, 0});
    } else {
      platform.Answer(Rows{entry.columns, entry.rows});
    }
  }
  const auto rows = GSabrel::ExecuteQuery(entries[0].statement);
  ASSERT_TRUE(rows);
  EXPECT_EQ(entries[0].statement, sql);
  EXPECT_EQ(rows->RecordCount(), std::count(outcome.out.begin(), outcome.out.end(), '\n') - 1);
  EXPECT_EQ(rows->Fields().Item("CHANGED").Value().kind(), VariantKind::kDate);
  EXPECT_THROW(GSabrel::ExecuteRequest(entries[1].statement), RuntimeError);
  EXPECT_EQ(GSabrel::SabrelErrorObject()->DBErrorType(), dbeUniqueConstraintViolated);
}

}  // namespace
}  // namespace sabrel::testing
