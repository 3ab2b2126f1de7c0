#include "sabrel/platform/utf8.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace sabrel {
namespace {

std::string CodePoint(char32_t code_point) {
  std::string text;
  AppendUtf8(text, code_point);
  return text;
}

TEST(Utf8, EveryCodePointIsOneValidCharacter) {
  for (char32_t c = 0; c <= 0x10FFFF; ++c) {
    const std::string text = CodePoint(c);
    ASSERT_TRUE(IsValidUtf8(text)) << std::uint32_t{c};
    ASSERT_EQ(FirstCharacterLength(text), text.size()) << std::uint32_t{c};
    ASSERT_EQ(text == "\xEF\xBF\xBD", (c >= 0xD800 && c <= 0xDFFF) || c == 0xFFFD)
        << std::uint32_t{c};
  }
  EXPECT_EQ(CodePoint(0x110000), "\xEF\xBF\xBD");
}

TEST(Utf8, InvalidBytesCountOneEach) {
  const struct {
    const char* name;
    std::string_view text;
    std::size_t characters;
  } rows[] = {{"lone continuation", "a\x80z", 3},
              {"overlong slash", "\xC0\xAF", 2},
              {"overlong three bytes", "\xE0\x9F\xBF", 3},
              {"overlong four bytes", "\xF0\x8F\xBF\xBF", 4},
              {"surrogate", "\xED\xA0\x80", 3},
              {"above the last", "\xF4\x90\x80\x80", 4},
              {"cut short", "€\xE2\x82", 3},
              {"broken inside", "\xE2\x82z", 3},
              {"never a lead", "\xFF\xFE", 2}};
  for (const auto& row : rows) {
    EXPECT_FALSE(IsValidUtf8(row.text)) << row.name;
    EXPECT_EQ(CharacterCount(row.text), row.characters) << row.name;
    EXPECT_EQ(UpperCase(LowerCase(row.text)).size(), row.text.size()) << row.name;
  }
  EXPECT_FALSE(IsSendableText(std::string_view("a\0b", 3)));
  EXPECT_TRUE(IsSendableText("€"));
}

TEST(Utf8, CutsFallBetweenCharacters) {
  for (const auto& [characters, bytes] :
       {std::pair{0U, 0U}, {2U, 3U}, {3U, 6U}, {4U, 10U}, {5U, 10U}}) {
    EXPECT_EQ(ByteLengthOf("aé€😀", characters), bytes) << characters;
  }
}

TEST(Utf8, CaseMapsOneLetterToOne) {
  const struct {
    const char* name;
    std::string_view lower;
    std::string_view upper;
  } rows[] = {{"ascii", "az{`", "AZ{`"},
              {"latin-1", "àöøþÿ÷", "ÀÖØÞŸ÷"},
              {"no single partner", "ßµŉĸ", "ßµŉĸ"},
              {"latin extended-a", "āįĳķĺňŋŷźž", "ĀĮĲĶĹŇŊŶŹŽ"},
              {"greek", "άέήίαρσϋόύώϗ", "ΆΈΉΊΑΡΣΫΌΎΏϏ"},
              {"cyrillic", "аяѐџѡҁҋҿӂӎӏӑԯ", "АЯЀЏѠҀҊҾӁӍӀӐԮ"}};
  for (const auto& row : rows) {
    EXPECT_EQ(UpperCase(row.lower), row.upper) << row.name;
    EXPECT_EQ(LowerCase(row.upper), row.lower) << row.name;
  }
  EXPECT_EQ(UpperCase("ςſı"), "ΣSI");
  EXPECT_EQ(LowerCase("İ"), "i");
}

TEST(Utf8, ComparisonIgnoresCaseAndNothingElse) {
  const struct {
    std::string_view a;
    std::string_view b;
    bool equal;
  } rows[] = {{"ab", "abc", false},    {"@", "`", false},  {"ΣΑΣ", "σας", true}, {"ſ", "S", true},
              {"é", "e", false},       {"", "", true},     {"aé", "AÉ", true},   {"ß", "ss", false},
              {"\x80", "\x81", false}, {"ab", "ba", false}};
  for (const auto& row : rows) {
    EXPECT_EQ(EqualIgnoringCase(row.a, row.b), row.equal) << row.a << " " << row.b;
    EXPECT_EQ(HashIgnoringCase(row.a) == HashIgnoringCase(row.b), row.equal) << row.a;
  }
  EXPECT_TRUE(ContainsIgnoringCase("xaaÄb", "AäB"));
  EXPECT_TRUE(ContainsIgnoringCase("", ""));
  EXPECT_FALSE(ContainsIgnoringCase("ab", "abc"));
  EXPECT_FALSE(ContainsIgnoringCase("é", "\xA9"));
}

TEST(Utf8, BlanksAreSpacesAndReplacementRunsOnce) {
  EXPECT_EQ(TrimBlanks("  a \t "), "a \t");
  EXPECT_EQ(TrimBlanks("   "), "");
  EXPECT_EQ(ReplaceAll("aaa", "aa", "a"), "aa");
  EXPECT_EQ(ReplaceAll("abc", "", "x"), "abc");
}

}  // namespace
}  // namespace sabrel
