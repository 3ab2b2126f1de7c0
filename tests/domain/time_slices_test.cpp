// Slices of the day, compared with a slow and obvious computation for every supported count.
#include <gmock/gmock.h>

#include <limits>
#include <random>

#include "sabrel/core/gsabrel.h"
#include "tests/support/outcome.h"
#include "tests/support/scripted_platform.h"

namespace sabrel {
namespace {

using testing::ScriptedPlatform;
using testing::Shown;

constexpr int kCounts[] = {24, 48, 72, 96, 120, 144, 240, 288, 360, 480, 720, 1440};

class TimeSlices : public ::testing::Test {
 protected:
  void SetCounts(const std::string& reports, const std::string& busy_hour = "") {
    UnloadThread();
    platform.Answer(testing::Rows{{"Property", "Value"},
                                  {{Variant("TimeSlices"), Variant(reports)},
                                   {Variant("BusyHourTimeSlices"), Variant(busy_hour)}}});
    static_cast<void>(GSabrel::GetTimeSliceSecondsValue(false));
  }
  // "first last" of what an operation tells, behind what it raised.
  template <class Operation>
  static std::string Told(Operation operation, std::int32_t start, const FlagArray& flags,
                          bool busy_hour) {
    std::int32_t first = -1;
    std::int32_t last = -1;
    const auto failure = FailureIn([&] { operation(start, first, last, flags, busy_hour); });
    return (failure ? failure->Description() + " " : "") + Shown(std::pair(first, last));
  }
  static std::string Slices(std::int32_t start, const FlagArray& flags, bool busy_hour = false) {
    return Told(GSabrel::GetSelRange, start, flags, busy_hour);
  }
  static std::string Seconds(std::int32_t start, const FlagArray& flags, bool busy_hour = false) {
    return Told(GSabrel::GetSecondsRange, start, flags, busy_hour);
  }
  static std::string Hours(std::int32_t first_s, std::int32_t last_s) {
    std::int32_t begin = -1;
    std::int32_t end = -1;
    EXPECT_TRUE(GSabrel::GetStartEndHour(0, 0, first_s, last_s, begin, end, false).IsEmpty());
    return Shown(std::pair(begin, end));
  }
  ScriptedPlatform platform;
};

FlagArray Selected(std::int32_t count, const std::vector<std::int32_t>& slices) {
  FlagArray flags(count);
  for (const std::int32_t slice : slices) flags.Flag(slice, true);
  return flags;
}

// Slice by slice: the first selected one from `start` on and the last of its run, or zeros.
std::pair<int, int> Walk(const FlagArray& flags, int start, int count) {
  int first = start;
  while (first <= count && !flags.Flag(first)) ++first;
  if (first > count) return {0, 0};
  int last = first;
  while (last < count && flags.Flag(last + 1)) ++last;
  return {first, last};
}

TEST_F(TimeSlices, RunsAreThoseOfAWalk) {
  std::mt19937 random(7);
  for (const int count : kCounts) {
    const int seconds = 86400 / count;
    SetCounts(std::to_string(count));
    EXPECT_EQ(GSabrel::GetTimeSliceSecondsValue(false), seconds);
    std::vector<FlagArray> patterns = {FlagArray(count), Selected(count, {count - 1, count}),
                                       Selected(count, {1, 2, count})};
    for (const int density : {1, 2, 8}) {  // of 8: the last one selects all
      FlagArray flags(count);
      for (int i = 1; i <= count; ++i) flags.Flag(i, random() % 8 < static_cast<unsigned>(density));
      patterns.push_back(flags);
    }
    for (std::size_t p = 0; p < patterns.size(); ++p) {
      for (const int start : {1, 2, count / 2, count - 1, count, count + 1}) {
        const auto [first, last] = Walk(patterns[p], start, count);
        EXPECT_EQ(Slices(start, patterns[p]), Shown(std::pair(first, last)));
        const int first_s = first == 0 ? 0 : (first - 1) * seconds;
        const int last_s = first == 0 ? seconds - 1 : last * seconds - (first == count ? 0 : 1);
        ASSERT_EQ(Seconds(start, patterns[p]), Shown(std::pair(first_s, last_s)))
            << count << " slices, pattern " << p << ", start " << start;
        if (first == 0 || first == count) continue;
        EXPECT_EQ(Hours(first_s, last_s), Shown(std::pair(first, last))) << "and back";
      }
    }
  }
}

TEST_F(TimeSlices, StartsOutsideTheDayAreErrorsOrNothing) {
  SetCounts("24", "96");
  const FlagArray some = Selected(24, {3, 4, 5});
  const std::string none = "Subscript out of range 0 0";
  const std::tuple<std::int32_t, std::string, std::string> rows[] = {
      {4, "4 5", "10800 17999"},
      {0, none, none},
      {596524, "0 0", "0 3599"},
      {596525, "0 0", "Overflow 0 0"},
      {std::numeric_limits<std::int32_t>::min(), none, "Overflow 0 0"},
  };
  for (const auto& [start, slices, seconds] : rows) {
    EXPECT_EQ(Slices(start, some), slices) << start;
    EXPECT_EQ(Seconds(start, some), seconds) << start;
  }
  EXPECT_EQ(Seconds(1, Selected(4, {3, 4})), "Subscript out of range 7200 10800")
      << "too few flags keep what was found so far";
  const FlagArray end = Selected(96, {96});
  EXPECT_EQ(Slices(1, end, true) + "; " + Seconds(1, end, true), "96 96; 85500 86400");
}

TEST_F(TimeSlices, CountsThatAreNotSupportedHaveNoSeconds) {
  for (const std::string count : {"0", "-24", "", "many", "23", "100"}) {
    SetCounts(count);
    EXPECT_EQ(GSabrel::GetTimeSliceSecondsValue(false), 0) << count;
  }
  EXPECT_EQ(Hours(0, -1) + "; " + Hours(5, 5), "-1 -1; -1 -1") << "fails before anything is set";
  EXPECT_EQ(Hours(0, 5) + "; " + Hours(0, 0), "1 -1; 1 0");
  EXPECT_EQ(Slices(1, Selected(100, {99, 100})), "99 100") << "slices need no seconds";
  EXPECT_EQ(Seconds(1, Selected(100, {99, 100})), "0 -1");
  SetCounts("1,440");
  EXPECT_EQ(GSabrel::GetTimeSliceSecondsValue(false), 60);
  UnloadThread();
  platform.Answer(testing::Refuse(942));
  EXPECT_EQ(GSabrel::GetTimeSliceSecondsValue(true), 0);
}

TEST_F(TimeSlices, SecondsBecomeSlicesWithHalvesToEven) {
  SetCounts("24");
  const std::tuple<std::int32_t, std::int32_t, const char*> rows[] = {
      {0, 3599, "1 1"},    {0, 3600, "1 1"},        {1800, 5400, "2 2"},    {5400, 9000, "2 2"},
      {5401, 9001, "3 3"}, {82800, 86400, "24 24"}, {-3600, -3600, "0 -1"}, {0, 0, "1 0"},
  };
  for (const auto& [first, last, hours] : rows) EXPECT_EQ(Hours(first, last), hours) << first;
}

}  // namespace
}  // namespace sabrel
