#include "sabrel/platform/keyed_collection.h"

#include <gtest/gtest.h>

#include "sabrel/platform/flag_array.h"

namespace sabrel {
namespace {

template <class Action>
std::int32_t FailureNumber(Action action) {
  try {
    action();
  } catch (const RuntimeError& failure) {
    return failure.Number();
  }
  return 0;
}

TEST(KeyedCollection, KeepsOrderAndFindsByPositionAndByKeyInAnyCase) {
  KeyedCollection<std::string> all;
  all.Add("one", "Erste");
  all.Add("two");
  all.Add("three", "ÄÖ");
  all.Add("four", "");
  EXPECT_EQ(std::vector<std::string>(all.begin(), all.end()),
            (std::vector<std::string>{"one", "two", "three", "four"}));
  EXPECT_EQ(all.Item(2), "two");
  EXPECT_EQ(all.Item("eRSTE"), "one");
  EXPECT_EQ(all.Item("äö"), "three");
  EXPECT_EQ(*all.Find(""), "four");
  EXPECT_EQ(all.Find("2"), nullptr);
}

TEST(KeyedCollection, FailuresHaveTheirNumbers) {
  KeyedCollection<int> all;
  all.Add(1, "a");
  EXPECT_EQ(FailureNumber([&] { all.Add(2, "A"); }), 457);
  EXPECT_EQ(all.Count(), 1);
  EXPECT_EQ(FailureNumber([&] { static_cast<void>(all.Item("1")); }), 5);
  EXPECT_EQ(FailureNumber([&] { all.Remove("b"); }), 5);
  for (const std::int32_t position : {-1, 0, 2}) {
    EXPECT_EQ(FailureNumber([&] { static_cast<void>(all.Item(position)); }), 9) << position;
    EXPECT_EQ(FailureNumber([&] { all.Remove(position); }), 9) << position;
  }
}

TEST(KeyedCollection, KeysFollowTheirMembersAfterRemoval) {
  KeyedCollection<int> all;
  all.Add(1, "a");
  all.Add(2);
  all.Add(3, "c");
  all.Add(4, "d");
  all.Remove(2);
  all.Remove("A");
  EXPECT_EQ(all.Item("c"), 3);
  EXPECT_EQ(all.Item("d"), 4);
  EXPECT_EQ(all.Item(1), 3);
  all.Add(5, "a");
  EXPECT_EQ(all.Item(3), 5);
  all.Clear();
  EXPECT_EQ(all.Find("c"), nullptr);
}

TEST(FlagArray, IsNumberedFromOne) {
  FlagArray flags(2);
  flags.Flag(2, true);
  EXPECT_FALSE(flags.Flag(1));
  EXPECT_TRUE(flags.Flag(2));
  EXPECT_EQ(FailureNumber([&] { static_cast<void>(flags.Flag(0)); }), 9);
  EXPECT_EQ(FailureNumber([&] { flags.Flag(3, true); }), 9);
  EXPECT_EQ(FlagArray(-1).Count(), 0);
}

}  // namespace
}  // namespace sabrel
