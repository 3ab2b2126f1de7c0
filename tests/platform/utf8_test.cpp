#include "sabrel/platform/utf8.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace sabrel {
namespace {

TEST(Utf8, EveryCodePointIsOneValidCharacter) {
  for (char32_t c = 0; c <= 0x110000; ++c) {
    std::string text;
    AppendUtf8(text, c);
    ASSERT_TRUE(IsValidUtf8(text) && FirstCharacterLength(text) == text.size()) << std::uint32_t{c};
    const bool replaced = (c >= 0xD800 && c <= 0xDFFF) || c == 0xFFFD || c == 0x110000;
    ASSERT_EQ(text == "\xEF\xBF\xBD", replaced) << std::uint32_t{c};
  }
}

TEST(Utf8, InvalidBytesCountOneEach) {
  const std::pair<const char*, std::string_view> rows[] = {
      {"lone continuation", "\x80z"},
      {"overlong slash", "\xC0\xAF"},
      {"overlong three bytes", "\xE0\x9F\xBF"},
      {"overlong four bytes", "\xF0\x8F\xBF\xBF"},
      {"surrogate", "\xED\xA0\x80"},
      {"above the last", "\xF4\x90\x80\x80"},
      {"cut short", "\xE2\x82"},
      {"broken inside", "\xE2\x82z"}};
  for (const auto& [name, text] : rows) {
    EXPECT_FALSE(IsValidUtf8(text)) << name;
    EXPECT_EQ(CharacterCount(text), text.size()) << name;
    EXPECT_EQ(UpperCase(LowerCase(text)).size(), text.size()) << name;
  }
  EXPECT_TRUE(IsSendableText("€") && !IsSendableText(std::string_view("a\0b", 3)));
}

TEST(Utf8, CaseMapsOneLetterToOne) {
  const std::tuple<const char*, std::string_view, std::string_view> rows[] = {
      {"ascii", "az{`", "AZ{`"},
      {"latin", "àöøþÿ÷āįĳķĺňŋŷźž", "ÀÖØÞŸ÷ĀĮĲĶĹŇŊŶŹŽ"},
      {"no single partner", "ßµŉĸ", "ßµŉĸ"},
      {"greek", "άέήίαρσϋόύώϗ", "ΆΈΉΊΑΡΣΫΌΎΏϏ"},
      {"cyrillic", "аяѐџѡҁҋҿӂӎӏӑԯ", "АЯЀЏѠҀҊҾӁӍӀӐԮ"}};
  for (const auto& [name, lower, upper] : rows) {
    EXPECT_EQ(UpperCase(lower), upper) << name;
    EXPECT_EQ(LowerCase(upper), lower) << name;
  }
  EXPECT_EQ(UpperCase("ςſı") + LowerCase("İ"), "ΣSIi");
}

TEST(Utf8, ComparisonIgnoresCaseAndNothingElse) {
  const std::tuple<std::string_view, std::string_view, bool> rows[] = {
      {"ab", "abc", false},    {"@", "`", false},  {"ΣΑΣ", "σας", true}, {"ſ", "S", true},
      {"é", "e", false},       {"", "", true},     {"aé", "AÉ", true},   {"ß", "ss", false},
      {"\x80", "\x81", false}, {"ab", "ba", false}};
  for (const auto& [a, b, equal] : rows) {
    EXPECT_EQ(EqualIgnoringCase(a, b), equal) << a << " " << b;
    EXPECT_EQ(HashIgnoringCase(a) == HashIgnoringCase(b), equal) << a;
  }
  EXPECT_TRUE(ContainsIgnoringCase("xaaÄb", "AäB") && ContainsIgnoringCase("", ""));
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
