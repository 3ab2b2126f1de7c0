// The object rules of the shared recordset, procedure call and row-set writer.
#include "sabrel/platform/recordset.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>

#include "sabrel/platform/row_text.h"
#include "tests/platform/failures.h"
#include "tests/support/scripted_platform.h"

namespace sabrel {
namespace {

using testing::NumberOf;
using testing::Rows;
using testing::ScriptedPlatform;

struct Records : ::testing::Test {
  std::shared_ptr<Recordset> Open(Rows rows) {
    platform.Answer(std::move(rows));
    auto records = CurrentPlatform().rowlink->MakeRecordset();
    records->Open("Q", "", 0, "", "", 60);
    return records;
  }
  ScriptedPlatform platform;
};

// About 10 MB of rows, so that Open leaves some with the server.
Rows ManyRows(int count) {
  Rows rows{{"N", "T"}, {}};
  for (int i = 0; i < count; ++i)
    rows.rows.push_back({Variant(i), Variant(std::string(1000, 'x'))});
  return rows;
}

TEST_F(Records, RefuseWhatIsNotThere) {
  const auto records = Open({{"A"}, {{Variant(1)}}});
  for (const int i : {-1, 1}) EXPECT_EQ(NumberOf([&] { return records->Fields().Item(i); }), 3265);
  records->MoveNext();
  EXPECT_EQ(NumberOf([&] { return records->Fields().Item(0).Value(); }), 3021);
  EXPECT_EQ(NumberOf([&] { return records->MoveNext(), 0; }), 3021);
  const FieldList fields = records->Fields();
  const Field field = fields.Item(0);
  records->Close();
  const std::function<void()> readings[] = {
      [&] { static_cast<void>(records->RecordCount()); },
      [&] { static_cast<void>(records->EndOfFile()); },
      [&] { static_cast<void>(records->Fields()); },
      [&] { records->MoveNext(); },
      [&] { static_cast<void>(fields.Count()); },
      [&] { static_cast<void>(fields.Item("A")); },
      [&] { static_cast<void>(field.Name()); },
      [&] { static_cast<void>(field.Value()); },
  };
  for (const auto& read : readings) {
    EXPECT_EQ(NumberOf([&] { return read(), 0; }), 3704) << &read - readings;
  }
}

TEST_F(Records, ReadOnAsTheReaderMovesAndCountTheRestOnRequest) {
  const auto walked = Open(ManyRows(10'000));
  EXPECT_EQ(platform.OpenCursors(), 1) << "the rest stays with the server";
  int rows = 0;
  for (; !walked->EndOfFile(); walked->MoveNext()) {
    ASSERT_EQ(walked->Fields().Item("N").Value(), Variant(rows)) << rows;
    ++rows;
  }
  EXPECT_EQ(rows, 10'000);
  EXPECT_EQ(platform.OpenCursors(), 0);
  const auto counted = Open(ManyRows(10'000));
  EXPECT_EQ(counted->RecordCount(), 10'000);
  EXPECT_EQ(platform.OpenCursors(), 0);
  counted->MoveNext();
  EXPECT_EQ(counted->Fields().Item("N").Value(), Variant(1));
}

TEST_F(Records, AFailureInMovingOnReachesWhoeverMovesEveryTime) {
  Rows rows = ManyRows(10'000);
  rows.fail_at_fetch = 25;
  rows.failure = RuntimeError(77, "S", "severed");
  const auto records = Open(rows);
  for (int moved = 0; moved < 4'000; ++moved) records->MoveNext();
  const auto move_on = [&] {
    for (;;) records->MoveNext();
    return 0;
  };
  EXPECT_EQ(NumberOf(move_on), 77);
  EXPECT_EQ(NumberOf(move_on), 77);
  EXPECT_EQ(NumberOf([&] { return records->RecordCount(); }), 77);
  rows.fail_at_fetch = 2;
  EXPECT_EQ(NumberOf([&] { return Open(rows); }), 77) << "inside Open it belongs to Open";
}

TEST_F(Records, ACallAnswersByPositionOnceItRan) {
  platform.Answer(RoutineOutcome{Variant(3), {std::nullopt, Variant(Null{})}});
  const auto call = CurrentPlatform().rowlink->MakeProcedureCall();
  for (const char* value : {"6", "7", "8", ""}) call->AppendParameter(value, "integer", "");
  EXPECT_EQ(call->ParameterValue(1), Variant("7")) << "as appended before execution";
  EXPECT_EQ(call->Execute(), Variant(3));
  EXPECT_EQ(call->ParameterValue(0), Variant("6"));
  EXPECT_EQ(call->ParameterValue(1), Variant(Null{}));
  EXPECT_EQ(call->ParameterValue(2), Variant("8"));
  EXPECT_EQ(call->ParameterValue(3), Variant(Null{})) << "appended empty";
  for (const int i : {-1, 4}) EXPECT_EQ(NumberOf([&] { return call->ParameterValue(i); }), 9) << i;
}

TEST_F(Records, ARowThatIsBrokenIsRefused) {
  for (const char* broken : {"a\\", "\\x", "\\Nx"}) {
    EXPECT_EQ(NumberOf([&] { return DecodeRow(broken); }), 5) << broken;
  }
}

TEST_F(Records, RowTextsComeOutInOrderWhateverTheirLength) {
  constexpr std::size_t kBlock = std::size_t{1} << 20U;
  std::vector<std::string> rows;
  for (const std::size_t length : {std::size_t{0}, std::size_t{3}, kBlock - 20, std::size_t{1},
                                   kBlock - 4, kBlock, 3 * kBlock, std::size_t{0}}) {
    rows.emplace_back(length, static_cast<char>('a' + rows.size()));
  }
  RowTexts texts;
  EXPECT_TRUE(texts.empty() && texts.begin() == texts.end());
  texts.Add(rows[0]);
  const char* const first = (*texts.begin()).data();
  for (std::size_t i = 1; i < rows.size(); ++i) texts.Add(rows[i]);
  EXPECT_EQ((*texts.begin()).data(), first) << "a block that grows copies its rows";
  RowTexts copied = texts;
  copied.Add("more");
  EXPECT_TRUE(std::equal(texts.begin(), texts.end(), rows.begin(), rows.end()));
  rows.emplace_back("more");
  EXPECT_TRUE(std::equal(copied.begin(), copied.end(), rows.begin(), rows.end()));
}

TEST_F(Records, ARowOfAnotherWidthIsRefusedBeforeSending) {
  const auto writer = CurrentPlatform().rowlink->MakeRowSetWriter();
  writer->Table("T");
  writer->DeclareColumn("A", "INT");
  writer->DeclareColumn("B", "STRING");
  writer->AddRow("1|x");
  writer->Submit();
  writer->AddRow("1");
  EXPECT_EQ(NumberOf([&] { return writer->Submit(), 0; }), 5);
  EXPECT_EQ(platform.Conversation(), "make row-set writer\nwrite [T] A:INT B:STRING [1|x]\n");
}

}  // namespace
}  // namespace sabrel
