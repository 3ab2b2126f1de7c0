#include <gtest/gtest.h>

#include "sabrel/platform/error_handler.h"
#include "sabrel/platform/keyed_collection.h"
#include "sabrel/platform/release_comparison.h"
#include "sabrel/platform/template_text.h"
#include "sabrel/platform/text_string.h"
#include "sabrel/platform/text_to_number.h"
#include "tests/platform/failures.h"

namespace sabrel {
namespace {

using testing::NumberOf;
using testing::Outcomes;

TEST(TemplateText, FillsEachPlaceOnceAndNeverLooksAgain) {
  const std::vector<std::string> arguments = {"one", "$1$2"};
  EXPECT_EQ(FillTemplate("a $1 b $2 c $01", arguments), "a one b $1$2 c one");
  EXPECT_EQ(FillTemplate("$ $$1 $x $", arguments), "$ $one $x $");
}

TEST(TextString, CountsCutsAndComparesByCharacters) {
  TextString text("aé€");
  text.Append(Variant(Null()));
  text.Append(Variant("😀z"));
  EXPECT_EQ(text.Length(), 5);
  EXPECT_EQ(text.Substring(2, 2), "é€");
  EXPECT_EQ(text.Substring(4, INT64_MAX), "😀z");
  EXPECT_EQ(text.Substring(INT64_MAX, 1), "");
  EXPECT_EQ(NumberOf([&] { return text.Substring(0, 1); }), 5);
  EXPECT_EQ(NumberOf([&] { return text.Substring(1, -1); }), 5);
  EXPECT_EQ(TextString("é").Compare("É", true), 0);
  EXPECT_EQ(TextString("B").Compare("c", true), -1);
  EXPECT_EQ(TextString("€").Compare("😀", false), -1);
}

TEST(ReleaseComparison, ComparesPartByPart) {
  const auto with = [](const char* second, const std::vector<const char*>& firsts) {
    return Outcomes(firsts, [&](auto first) { return CompareReleases(first, second, 2); });
  };
  EXPECT_EQ(with("7.3", {"7.3.9", "10.0", "7.2", "7.03", "7.99999999999999999999"}), " 0 1 -1 0 1");
  EXPECT_EQ(with("7.3", {"", "abc", "7.", "7.-3", " 7.3"}), " -2 -2 -2 -2 -2") << "no releases";
  EXPECT_EQ(with("7.0", {"7"}) + with("9.oops", {"0.1", "0.0"}), " 0 1 0");
  EXPECT_EQ(CompareReleases("7.3.1", "7.3", 3), 1);
}

TEST(TextToNumber, ReadsThePointAndTheLocalesSeparator) {
  EXPECT_EQ(TextToNumber("-2,5", ","), -2.5);
  EXPECT_EQ(TextToNumber("0.0000000000000000000001e330", ","), 1e308);
  for (const char* zero : {"  ", "-1e-400", "00e9999999999999"}) {
    EXPECT_EQ(TextToNumber(zero, ","), 0.0) << zero;
  }
  EXPECT_EQ(Outcomes(std::vector{"1,234", "1.5.", "inf", "1e309"},
                     [](const char* text) { return TextToNumber(text, "."); }),
            " !13 !13 !13 !6");
}

TEST(ErrorHandler, RaisesTheMessageRegisteredLastOrTheBareCode) {
  ErrorHandler handler;
  handler.Register(5, "old");
  handler.Register(5, "no $1");
  const auto raised = [&](std::int32_t code) {
    return testing::FailureIn([&] { return handler.Raise(code, "M", "P", {"table"}), 0; });
  };
  EXPECT_EQ(raised(5).Description() + raised(6).Description(), "no tableError 6");
}

TEST(KeyedCollection, FindsByPositionAndByKeyInAnyCaseAlsoAfterRemoval) {
  KeyedCollection<std::string> all;
  all.Add("one", "Erste");
  all.Add("two");
  all.Add("three", "ÄÖ");
  all.Add("four", "");
  EXPECT_EQ(NumberOf([&] { return all.Add("five", "eRSTE"), 0; }), 457);
  EXPECT_EQ(all.Item("eRSTE"), "one");
  EXPECT_EQ(all.Find("2"), nullptr);
  EXPECT_EQ(NumberOf([&] { return all.Item("1"); }), 5);
  for (const std::int32_t position : {-1, 0, 5}) {
    EXPECT_EQ(NumberOf([&] { return all.Item(position); }), 9) << position;
    EXPECT_EQ(NumberOf([&] { return all.Remove(position), 0; }), 9) << position;
  }
  all.Remove(2);
  all.Remove("ERSTE");
  EXPECT_EQ(all.Item(1), "three");
  EXPECT_EQ(all.Item("äö"), "three");
  EXPECT_EQ(*all.Find(""), "four");
  all.Add("five", "erste");
  EXPECT_EQ(all.Item(3), "five");
}

}  // namespace
}  // namespace sabrel
