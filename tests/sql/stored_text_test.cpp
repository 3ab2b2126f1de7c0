// Stored texts: the statements that they become, in order, and what comes back from rows.
#include "sabrel/sql/stored_text.h"

#include <gmock/gmock.h>

#include "tests/support/outcome.h"
#include "tests/support/scripted_platform.h"

namespace sabrel {
namespace {

using ::testing::ElementsAre;
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
  // Statements and row sets since the last call, shortened to what differs: "I1 'abc'" is an insert
  // with ordinal 1, "W 1|abc 2|d" a row set, all of Id 7.
  std::vector<std::string> Sent() {
    const std::pair<std::string, std::string> shortened[] = {
        {"execute [INSERT INTO PM_StringTable (Id, Ordinal, StringData) VALUES (7,", "I"},
        {"execute [DELETE FROM PM_StringTable WHERE Id = 7]", "D"},
        {"query [SELECT FS_GetColumnLength('pm_stringtable','stringdata') FROM DUAL]", "C"},
        {"query [SELECT PM_StringTable_SQ.NEXTVAL FROM DUAL]", "S"},
        {"query [SELECT StringData FROM PM_StringTable WHERE Id = 7 ORDER BY Ordinal]", "L"},
        {"write [PM_StringTable] Id:INT Ordinal:INT StringData:STRING", "W"},
    };
    std::vector<std::string> sent;
    const std::string told = platform.Conversation();
    for (std::size_t at = 0; at < told.size();) {
      const std::size_t end = told.find('\n', at);
      std::string line = told.substr(at, end - at);
      at = end + 1;
      for (const auto& [text, name] : shortened) {
        if (!line.starts_with(text)) continue;
        line.replace(0, text.size(), name);
        const auto address = line.find(name == "I" ? ")] host=" : " host=");
        sent.push_back(line.substr(0, address));
      }
    }
    return sent;
  }
  // What saving `text` as Id 7 sends, a statement a line; the deletion is left out.
  std::string Saved(std::string text, bool lines = false, std::string_view delimiter = "\r\n") {
    GDBString::UpdateDBString(7, std::move(text), lines, delimiter);
    std::string all;
    for (const std::string& line : Sent()) {
      if (line != "D") all += line + "\n";
    }
    return all;
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
  const struct {
    const char* name;
    std::string text;
    std::string sent;
  } rows[] = {
      {"empty", "", "I1,NULL\n"},
      {"shorter", "abc", "I1,'abc'\n"},
      {"just as long", "abcd", "I1,'abcd'\n"},
      {"one longer", "abcde", "I1,'abcd'\nI2,'e'\n"},
      {"quotes doubled after cutting", "ab''''''", "I1,'ab'''''\nI2,''''''''''\n"},
      {"wide", Repeated(wide, 2) + "€", "I1,'aé€𝄞'\nI2,'aé€𝄞'\nI3,'€'\n"},
      {"invalid bytes count one each", "\xFF\xFE\xC3zy", "I1,'\xFF\xFE\xC3z'\nI2,'y'\n"},
      {"ten pieces", Repeated(wide, 10),
       "I1,'aé€𝄞'\nI2,'aé€𝄞'\nI3,'aé€𝄞'\nI4,'aé€𝄞'\nI5,'aé€𝄞'\nI6,'aé€𝄞'\nI7,'aé€𝄞'\nI8,"
       "'aé€𝄞'\nI9,'aé€𝄞'\nI10,'aé€𝄞'\n"},
      {"eleven", Repeated("|'\\\r", 10) + "\n",
       "W [7|1|\\p'\\\\\\r] [7|2|\\p'\\\\\\r] [7|3|\\p'\\\\\\r] [7|4|\\p'\\\\\\r] "
       "[7|5|\\p'\\\\\\r] "
       "[7|6|\\p'\\\\\\r] [7|7|\\p'\\\\\\r] [7|8|\\p'\\\\\\r] [7|9|\\p'\\\\\\r] [7|10|\\p'\\\\\\r] "
       "[7|11|\\n]\n"},
  };
  Chunk(4);
  for (const auto& row : rows) EXPECT_EQ(Saved(row.text), row.sent) << row.name;
}

TEST_F(StoredText, LinesAreRowsAndTheLastOneIsCutWithoutADelimiter) {
  const struct {
    const char* name;
    std::string text;
    std::string_view delimiter;
    std::string sent;
  } rows[] = {
      {"ends with the delimiter", "ab\r\ncd\r\n", "\r\n", "W [7|1|ab] [7|2|cd]\n"},
      {"does not", "ab\r\ncd", "\r\n", "W [7|1|ab] [7|2|c]\n"},
      {"one line", "abc", "\r\n", "W [7|1|ab]\n"},
      {"a wide last character", "aé", "\r\n", "W [7|1|a]\n"},
      {"one character", "a", "\r\n", "W\n"},
      {"an empty line leaves a gap", "a\r\n\r\nb\r\n", "\r\n", "W [7|1|a] [7|3|b]\n"},
      {"empty lines alone", "\r\n\r\n", "\r\n", "W\n"},
      {"long lines are cut", "𝄞bcdefg\r\nab", "\r\n", "W [7|1|𝄞bcd] [7|2|a]\n"},
      {"half a delimiter is text", "a\rb\n\r\n", "\r\n", "W [7|1|a\\rb\\n]\n"},
      {"another delimiter", "a€€b€€", "€€", "W [7|1|a] [7|2|b]\n"},
      {"found without overlap", "aaaxb", "aa", "W [7|2|ax]\n"},
      {"none", "ab\r\nc", "", "W [7|1|ab\\r\\n]\n"},
      {"empty", "", "\r\n", "I1,NULL\n"},
  };
  Chunk(4);
  for (const auto& row : rows)
    EXPECT_EQ(Saved(row.text, true, row.delimiter), row.sent) << row.name;
}

TEST_F(StoredText, TheLengthOfARowIsAskedForWhenItIsNeededUntilItIsKnown) {
  CDBString text;
  text.Id(7);
  text.Save();
  EXPECT_THAT(Sent(), ElementsAre("D", "I1,NULL")) << "not for an empty text";
  text.Text("abc");
  platform.Answer(Rows{});
  for (int i = 0; i < 2; ++i) {
    platform.DropAnswers();
    EXPECT_EQ(OutcomeOf([&] { return (text.Save(), true); }), "raises 11 Division by zero");
    EXPECT_THAT(Sent(), ElementsAre("D", "C")) << "the rows are gone";
  }
  platform.Answer(Rows{});
  platform.Answer(One(Variant(2)));
  text.Save();
  text.Save();
  EXPECT_THAT(Sent(), ElementsAre("D", "C", "I1,'ab'", "I2,'c'", "D", "I1,'ab'", "I2,'c'"));
}

// The n-th statement fails, for every n: what was sent before stays sent, nothing follows.
TEST_F(StoredText, ASaveThatFailsStopsWhereItFails) {
  for (const bool bulk : {false, true}) {
    Chunk(4);
    const std::string whole = Repeated("abcd", bulk ? 11 : 3);
    const std::size_t statements = bulk ? 2 : 4;
    for (std::size_t n = 0; n < statements; ++n) {
      platform.DropAnswers();
      for (std::size_t i = 0; i < n; ++i) platform.Answer(Rows{});
      platform.Answer(Refuse(1653, "full"));
      EXPECT_EQ(OutcomeOf([&] { return (GDBString::UpdateDBString(7, whole), true); }),
                "raises database 1653");
      EXPECT_EQ(Sent().size(), n + 1);
    }
  }
}

TEST_F(StoredText, IdentifiersDecideWhatHappens) {
  Chunk(4);
  CDBString text;
  text.Text("ab");
  text.Update();
  text.Delete();
  text.Load();
  text.Load(-7);
  EXPECT_THAT(Sent(), ElementsAre()) << "nothing without an Id";
  EXPECT_EQ(text.Text(), "ab");
  platform.Answer(One(Variant(7)));
  text.Save(-1);
  EXPECT_THAT(Sent(), ElementsAre("S", "I1,'ab'"));
  EXPECT_TRUE(text.IsValid());
  text.Delete();
  EXPECT_THAT(Sent(), ElementsAre("D"));
  EXPECT_EQ(std::to_string(text.Id()) + text.Text(), "7ab") << "Id and text stay";
  platform.Answer(One(Variant(8)));
  platform.Answer(Refuse(1653));
  EXPECT_EQ(OutcomeOf([&] { return (text.Create(), true); }), "raises database 1653");
  EXPECT_EQ(text.Id(), 8) << "the new Id, though nothing is there";
  static_cast<void>(platform.Conversation());
  platform.Answer(Refuse(2289));
  text.Create();
  EXPECT_EQ(text.Id(), 0);
  const std::string told = platform.Conversation();
  EXPECT_TRUE(testing::Has(told, "assertion false")) << told;
  EXPECT_TRUE(testing::Has(told, "VALUES (0,1,'ab')")) << told;
}

TEST_F(StoredText, RowsBecomeTextAgain) {
  const Rows stored{{"STRINGDATA"}, {{Variant("aé")}, {Variant(Null{})}, {Variant(" 'b' ")}}};
  platform.trace = true;
  platform.Answer(stored);
  EXPECT_EQ(GDBString::LoadDBString(7)->Text(), "aé 'b' ");
  EXPECT_TRUE(testing::Has(platform.Conversation(), "trace switch\ntrace aé 'b' \n"));
  platform.Answer(stored);
  EXPECT_EQ(GDBString::LoadDBString(7, true, "|")->Text(), "aé|| 'b' |");
  platform.Answer(Rows{{"StringData"}, {}});
  EXPECT_EQ(GDBString::LoadDBString(7, true)->Text(), "");
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
  for (int line = 1; line <= 4; ++line) {
    UnloadThread();
    static_cast<void>(platform.Conversation());
    platform.trace = true;
    CDBString text;
    EXPECT_EQ(text.RowDelimiter(), "\r\n");
    text.Text(std::string(50, 'a'));
    int lines = 0;
    platform.on_trace = [&] {
      if (++lines != line) return;
      text.Text("another");
      text.Id(9);
      text.ClearText();
    };
    platform.Answer(Rows{});
    platform.Answer(One(Variant(20)));
    text.Save(7);
    platform.on_trace = nullptr;
    platform.trace = false;
    const std::string rest(10, 'a');
    if (line > 2) {
      EXPECT_THAT(Sent(), ElementsAre("D", "C", "I1,'" + rest + rest + "'",
                                      "I2,'" + rest + rest + "'", "I3,'" + rest + "'"));
    }
  }
  platform.on_trace = [] { throw std::logic_error("disk"); };
  platform.trace = true;
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
  EXPECT_THAT(Sent(), ElementsAre());
}

TEST_F(StoredText, TheEnvelopeOfAQueryIsNeverSent) {
  CDBString text;
  EXPECT_EQ(text.ExecuteXMLQuery(), "");
  NamedValues arguments;
  arguments.Add("A", Variant(1));
  EXPECT_EQ(text.ExecuteXMLQuery(-7, &arguments), "");
  EXPECT_EQ(OutcomeOf([&] { return text.ExecuteXMLQuery(7, &arguments); }),
            "raises 13 Type mismatch");
  EXPECT_EQ(text.Id(), 7);
  EXPECT_EQ(platform.Conversation(), "");
}

}  // namespace
}  // namespace sabrel
