#include "sabrel/platform/keyed_collection.h"

#include <gtest/gtest.h>

#include "sabrel/platform/flag_array.h"
#include "tests/platform/failures.h"

namespace sabrel {
namespace {

using testing::NumberOf;

TEST(KeyedCollection, FindsByPositionAndByKeyInAnyCaseAlsoAfterRemoval) {
  KeyedCollection<std::string> all;
  all.Add("one", "Erste");
  all.Add("two");
  all.Add("three", "ÄÖ");
  all.Add("four", "");
  EXPECT_EQ(NumberOf([&] { return all.Add("five", "eRSTE"), 0; }), 457);
  EXPECT_EQ(std::vector<std::string>(all.begin(), all.end()),
            (std::vector<std::string>{"one", "two", "three", "four"}));
  EXPECT_EQ(all.Item("eRSTE"), "one");
  EXPECT_EQ(all.Find("2"), nullptr);
  EXPECT_EQ(NumberOf([&] { return all.Item("1"); }), 5);
  EXPECT_EQ(NumberOf([&] { return all.Remove("b"), 0; }), 5);
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
  all.Clear();
  EXPECT_EQ(all.Find(""), nullptr);
}

TEST(FlagArray, IsNumberedFromOne) {
  FlagArray flags(2);
  flags.Flag(2, true);
  EXPECT_TRUE(flags.Flag(2) && !flags.Flag(1));
  EXPECT_EQ(NumberOf([&] { return flags.Flag(0); }), 9);
  EXPECT_EQ(NumberOf([&] { return flags.Flag(3, true), 0; }), 9);
  EXPECT_EQ(FlagArray(-1).Count(), 0);
}

}  // namespace
}  // namespace sabrel
