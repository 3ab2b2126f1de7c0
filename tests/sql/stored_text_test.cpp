// Stored texts: the statements that they become, in order, and what comes back from rows.
#include "sabrel/sql/stored_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "tests/support/outcome.h"
#include "tests/support/scripted_platform.h"

namespace sabrel {
namespace {

using testing::OutcomeOf;
using testing::Refuse;
using testing::Rows;
using testing::ScriptedPlatform;

Rows One(Variant value) { return {{"V"}, {{std::move(value)}}}; }

std::string Repeated(std::string_view part, int times) {
  std::string text;
  while (times-- > 0) text += part;
  return text;
}

class StoredText : public ::testing::Test {
 protected:
  // Statements and row sets since the last call, a line each, shortened to what differs: "I1,'abc'"
  // is an insert with ordinal 1, "W [7|1|abc]" a row set, all of Id 7.
  std::string Sent() {
    const std::pair<std::string, std::string> shortened[] = {
        {"execute [INSERT INTO PM_StringTable (Id, Ordinal, StringData) VALUES (7,", "I"},
        {"execute [DELETE FROM PM_StringTable WHERE Id = 7]", "D"},
        {"query [SELECT FS_GetColumnLength('pm_stringtable','stringdata') FROM DUAL]", "C"},
        {"query [SELECT PM_StringTable_SQ.NEXTVAL FROM DUAL]", "S"},
        {"query [SELECT StringData FROM PM_StringTable WHERE Id = 7 ORDER BY Ordinal]", "L"},
        {"write [PM_StringTable] Id:INT Ordinal:INT StringData:STRING", "W"},
    };
    std::string sent;
    std::istringstream told(platform.Conversation());
    for (std::string line; std::getline(told, line);) {
      for (const auto& [text, name] : shortened) {
        if (!line.starts_with(text)) continue;
        const auto end = line.find(name == "I" ? ")] host=" : " host=");
        sent += name + line.substr(0, end).substr(text.size()) + "\n";
      }
    }
    return sent;
  }
  // What saving `text` as Id 7 sends after the deletion.
  std::string Saved(std::string text, bool lines = false, std::string_view delimiter = "\r\n") {
    GDBString::UpdateDBString(7, std::move(text), lines, delimiter);
    const std::string sent = Sent();
    EXPECT_TRUE(sent.starts_with("D\n"));
    return sent.substr(2);
  }
  void Chunk(std::int32_t length) {
    UnloadThread();
    platform.Answer(One(Variant(7)));
    platform.Answer(One(Variant(length)));
    GDBString::CreateDBString("x");
    static_cast<void>(platform.Conversation());
  }
  ScriptedPlatform platform;
};

TEST_F(StoredText, PiecesAreCutByCharactersInOneRequestFromElevenOn) {
  const std::string wide = "aé€𝄞";
  std::string ten;
  std::string eleven = "W";
  for (int i = 1; i <= 10; ++i) {
    ten += "I" + std::to_string(i) + ",'" + wide + "'\n";
    eleven += " [7|" + std::to_string(i) + "|\\p'\\\\\\r]";
  }
  const std::tuple<const char*, std::string, std::string> rows[] = {
      {"empty", "", "I1,NULL\n"},
      {"just as long", "abcd", "I1,'abcd'\n"},
      {"quotes doubled after cutting", "ab''''''", "I1,'ab'''''\nI2,''''''''''\n"},
      {"invalid bytes count one each", "\xFF\xFE\xC3zy", "I1,'\xFF\xFE\xC3z'\nI2,'y'\n"},
      {"ten pieces", Repeated(wide, 10), ten},
      {"eleven", Repeated("|'\\\r", 10) + "\n", eleven + " [7|11|\\n]\n"},
  };
  Chunk(4);
  for (const auto& [name, text, sent] : rows) EXPECT_EQ(Saved(text), sent) << name;
}

TEST_F(StoredText, LinesAreRowsAndTheLastOneIsCutWithoutADelimiter) {
  const std::tuple<const char*, std::string, std::string_view, std::string> rows[] = {
      {"ends with the delimiter", "ab\r\ncd\r\n", "\r\n", "W [7|1|ab] [7|2|cd]\n"},
      {"a wide last character", "aé", "\r\n", "W [7|1|a]\n"},
      {"one character", "a", "\r\n", "W\n"},
      {"an empty line leaves a gap", "a\r\n\r\nb\r\n", "\r\n", "W [7|1|a] [7|3|b]\n"},
      {"long lines are cut", "𝄞bcdefg\r\nab", "\r\n", "W [7|1|𝄞bcd] [7|2|a]\n"},
      {"another delimiter", "a€€b€€", "€€", "W [7|1|a] [7|2|b]\n"},
      {"found without overlap", "aaaxb", "aa", "W [7|2|ax]\n"},
      {"none", "ab\r\nc", "", "W [7|1|ab\\r\\n]\n"},
  };
  Chunk(4);
  for (const auto& [name, text, delimiter, sent] : rows) {
    EXPECT_EQ(Saved(text, true, delimiter), sent) << name;
  }
}

TEST_F(StoredText, TheLengthOfARowIsAskedForWhenItIsNeededUntilItIsKnown) {
  CDBString text;
  text.Id(7);
  text.Save();
  EXPECT_EQ(Sent(), "D\nI1,NULL\n") << "not for an empty text";
  text.Text("abc");
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(OutcomeOf([&] { return (text.Save(), true); }), "raises 11 Division by zero");
    EXPECT_EQ(Sent(), "D\nC\n") << "the rows are gone";
  }
  platform.Answer(Rows{});
  platform.Answer(One(Variant(2)));
  text.Save();
  text.Save();
  EXPECT_EQ(Sent(), "D\nC\nI1,'ab'\nI2,'c'\nD\nI1,'ab'\nI2,'c'\n");
}

// The n-th statement fails, for every n: what was sent before stays sent, nothing follows.
TEST_F(StoredText, ASaveThatFailsStopsWhereItFails) {
  for (const bool bulk : {false, true}) {
    Chunk(4);
    const std::string whole = Repeated("abcd", bulk ? 11 : 3);
    for (int n = 1; n <= (bulk ? 2 : 4); ++n) {
      platform.DropAnswers();
      for (int i = 1; i < n; ++i) platform.Answer(Rows{});
      platform.Answer(Refuse(1653, "full"));
      EXPECT_EQ(OutcomeOf([&] { return (GDBString::UpdateDBString(7, whole), true); }),
                "raises database 1653");
      const std::string sent = Sent();
      EXPECT_EQ(std::count(sent.begin(), sent.end(), '\n'), n);
    }
  }
}

TEST_F(StoredText, IdentifiersDecideWhatHappens) {
  Chunk(4);
  CDBString text;
  text.Text("ab");
  text.Update();
  text.Delete();
  text.Load(-7);
  EXPECT_EQ(text.Text() + Sent(), "ab") << "nothing without an Id";
  platform.Answer(One(Variant(7)));
  text.Save(-1);
  text.Delete();
  EXPECT_EQ(Sent(), "S\nI1,'ab'\nD\n");
  EXPECT_EQ(std::to_string(text.Id()) + text.Text(), "7ab") << "Id and text stay";
  platform.Answer(One(Variant(8)));
  platform.Answer(Refuse(1653));
  EXPECT_EQ(OutcomeOf([&] { return (text.Create(), true); }), "raises database 1653");
  EXPECT_EQ(text.Id(), 8) << "the new Id, though nothing is there";
  platform.Answer(Refuse(2289));
  text.Create();
  EXPECT_EQ(text.Id(), 0);
  EXPECT_TRUE(testing::Has(platform.Conversation(), "VALUES (0,1,'ab')")) << "sent all the same";
}

TEST_F(StoredText, RowsBecomeTextAgain) {
  const Rows stored{{"STRINGDATA"}, {{Variant("aé")}, {Variant(Null{})}, {Variant(" 'b' ")}}};
  platform.trace = true;
  platform.Answer(stored);
  EXPECT_EQ(GDBString::LoadDBString(7)->Text(), "aé 'b' ");
  EXPECT_TRUE(testing::Has(platform.Conversation(), "trace switch\ntrace aé 'b' \n"));
  platform.Answer(stored);
  EXPECT_EQ(GDBString::LoadDBString(7, true, "|")->Text(), "aé|| 'b' |");
  platform.Answer(Rows{{"StringData"}, {{Variant(Null{})}}});
  EXPECT_EQ(GDBString::LoadDBString(7, true)->Text(), "\r\n") << "an empty text has one row";

  CDBString text;
  text.Text("old");
  platform.Answer(Refuse(942));
  EXPECT_EQ(OutcomeOf([&] { return (text.Load(7), true); }).substr(0, 9), "raises 91");
  EXPECT_EQ(std::to_string(text.Id()) + text.Text(), "7");
  platform.Answer(Rows{{"OTHER"}, {{Variant("x")}}});
  EXPECT_EQ(OutcomeOf([&] { return (text.Load(), true); }).substr(0, 11), "raises 3265");
  EXPECT_EQ(platform.OpenCursors(), 0);
}

// A trace line is the host's code: it may give the object another text and Id, or fail in its own
// way.
TEST_F(StoredText, AHostMayMeddleWhileATextIsSaved) {
  const std::string rest = "D\nC\nI1,'aa'\nI2,'aa'\nI3,'a'\n";
  const std::string sent[] = {"D\nI1,NULL\n", "D\nC\nI1,NULL\n", rest, rest};
  for (int line = 0; line < 4; ++line) {
    UnloadThread();
    platform.trace = true;
    CDBString text;
    text.Text("aaaaa");
    int lines = 0;
    platform.on_trace = [&] {
      if (lines++ != line) return;
      text.Text("another");
      text.Id(9);
      text.ClearText();
    };
    platform.Answer(Rows{});
    platform.Answer(One(Variant(2)));
    text.Save(7);
    EXPECT_EQ(Sent(), sent[line]) << line;
    platform.DropAnswers();
  }
  platform.on_trace = [] { throw std::logic_error("disk"); };
  EXPECT_EQ(OutcomeOf([] { return (GDBString::UpdateDBString(7, "x"), true); }), "raises 51 disk");
}

TEST_F(StoredText, TheTextObjectIsSharedAndNeverAbsent) {
  const auto held = std::make_shared<TextString>("abc");
  const auto text = GDBString::DBString(held, -3, true, ";");
  held->Append("d");
  EXPECT_EQ(text->Text() + text->RowDelimiter() + std::to_string(text->Id()), "abcd;-3");
  text->TextString(nullptr);
  text->ClearText();
  EXPECT_EQ(held->Text(), "");
}

TEST_F(StoredText, TheEnvelopeOfAQueryIsNeverSent) {
  CDBString text;
  const NamedValues arguments;
  EXPECT_EQ(text.ExecuteXMLQuery(-7, &arguments), "");
  EXPECT_EQ(OutcomeOf([&] { return text.ExecuteXMLQuery(7); }), "raises 13 Type mismatch");
  EXPECT_EQ(std::to_string(text.Id()) + platform.Conversation(), "7");
}

}  // namespace
}  // namespace sabrel
