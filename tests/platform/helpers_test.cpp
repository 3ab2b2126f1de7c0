#include <gtest/gtest.h>

#include "sabrel/platform/error_handler.h"
#include "sabrel/platform/named_values.h"
#include "sabrel/platform/release_comparison.h"
#include "sabrel/platform/runtime_error.h"
#include "sabrel/platform/template_text.h"
#include "sabrel/platform/text_string.h"
#include "sabrel/platform/text_to_number.h"
#include "sabrel/platform/xml_fragment.h"
#include "tests/platform/failures.h"

namespace sabrel {
namespace {

TEST(TemplateText, FillsEachPlaceOnceAndNeverLooksAgain) {
  const std::vector<std::string> arguments = {"one", "$1$2"};
  const std::pair<const char*, const char*> rows[] = {{"a $1 b $2 c", "a one b $1$2 c"},
                                                      {"$1$1", "oneone"},
                                                      {"$3|$0|$12|$99999999999999999999", "|||"},
                                                      {"$01", "one"},
                                                      {"$ $$1 $x $", "$ $one $x $"},
                                                      {"", ""}};
  for (const auto& [text, expected] : rows) EXPECT_EQ(FillTemplate(text, arguments), expected);
}

TEST(TextString, CountsCutsAndComparesByCharacters) {
  TextString text("aé€");
  text.Append("😀");
  text.Append(Variant(Null()));
  text.Append(Variant("z"));
  EXPECT_EQ(text.Length(), 5);
  EXPECT_EQ(text.Substring(2, 2), "é€");
  EXPECT_EQ(text.Substring(4, INT64_MAX), "😀z");
  EXPECT_EQ(text.Substring(INT64_MAX, 1), "");
  EXPECT_EQ(testing::NumberOf([&] { return text.Substring(0, 1); }), 5);
  EXPECT_EQ(testing::NumberOf([&] { return text.Substring(1, -1); }), 5);
  EXPECT_EQ(TextString("é").Compare("É", true), 0);
  EXPECT_EQ(TextString("b").Compare("B", false), 1);
  EXPECT_EQ(TextString("B").Compare("c", true), -1);
  EXPECT_EQ(TextString("€").Compare("😀", false), -1);
}

TEST(NamedValues, AddingAgainReplacesInPlace) {
  NamedValues values;
  values.Add("First", Variant(1));
  values.Add("second");
  values.Add("FIRST", Variant("x"));
  ASSERT_EQ(values.Count(), 2);
  EXPECT_EQ(values.begin()->name, "First");
  EXPECT_EQ(*values.Find("first"), Variant("x"));
  EXPECT_EQ(values.Find("third"), nullptr);
}

TEST(ReleaseComparison, ComparesPartByPart) {
  const struct {
    const char* first;
    const char* second;
    int expected;
  } rows[] = {{"7.3", "7.3", 0},   {"10.0", "7.3", 1},   {"7.2", "7.3", -1},
              {"7.3.9", "7.3", 0}, {"7", "7.0", 0},      {"7.03", "7.3", 0},
              {"7.3.x", "7.3", 0}, {"", "7.3", -2},      {"abc", "7.3", -2},
              {"7.", "7.3", -2},   {"7.-3", "7.3", -2},  {" 7.3", "7.3", -2},
              {"0.1", "oops", 1},  {"0.0", "9.oops", 0}, {"7.99999999999999999999", "7.3", 1}};
  for (const auto& row : rows) {
    EXPECT_EQ(CompareReleases(row.first, row.second, 2), row.expected) << row.first;
  }
  EXPECT_EQ(CompareReleases("7.3.1", "7.3", 3), 1);
}

TEST(TextToNumber, ReadsThePointAndTheLocalesSeparator) {
  for (const auto& [text, number] : {std::pair{"  ", 0.0},
                                     {" 2.5 ", 2.5},
                                     {"-2,5", -2.5},
                                     {"-1e-400", 0.0},
                                     {"0.0000000000000000000001e330", 1e308},
                                     {"00e9999999999999", 0.0}}) {
    EXPECT_EQ(TextToNumber(text, ","), number) << text;
  }
  for (const auto& [text, number] :
       {std::pair{"1,234", 13}, {"1.5.", 13}, {"inf", 13}, {"1e309", 6}}) {
    EXPECT_EQ(testing::NumberOf([text = text] { return TextToNumber(text, "."); }), number) << text;
  }
}

TEST(XmlFragment, EscapesNameAndValue) {
  EXPECT_EQ(NamedValueFragment("a'b", "<&\">é"),
            "<PARAM Name='a&apos;b' Value='&lt;&amp;&quot;&gt;é'/>");
}

TEST(ErrorHandler, RaisesTheRegisteredMessageFilled) {
  ErrorHandler handler;
  handler.Source("Sabrel");
  handler.Register(5, "old");
  handler.Register(5, "no $1");
  for (const auto& [code, expected] : {std::pair{5, "no table"}, std::pair{6, "Error 6"}}) {
    const RuntimeError failure = testing::FailureIn(
        [&, code = code] { return handler.Raise(code, "Module", "Procedure", {"table"}), 0; });
    EXPECT_EQ(CarriedCode(failure.Number()), code);
    EXPECT_EQ(failure.Description(), expected);
    EXPECT_EQ(failure.Source() + failure.Module() + failure.Procedure(), "SabrelModuleProcedure");
  }
}

}  // namespace
}  // namespace sabrel
