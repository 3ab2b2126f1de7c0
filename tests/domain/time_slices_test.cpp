// Slices of the day, compared with a slow and obvious computation for every supported count.
#include <gmock/gmock.h>

#include <random>

#include "sabrel/core/gsabrel.h"
#include "tests/support/outcome.h"
#include "tests/support/scripted_platform.h"

namespace sabrel {
namespace {

using testing::OutcomeOf;
using testing::ScriptedPlatform;

constexpr std::pair<int, int> kSlices[] = {{24, 3600}, {48, 1800}, {72, 1200}, {96, 900},
                                           {120, 720}, {144, 600}, {240, 360}, {288, 300},
                                           {360, 240}, {480, 180}, {720, 120}, {1440, 60}};
constexpr std::int32_t kHuge = 2147483647;

class TimeSlices : public ::testing::Test {
 protected:
  void SetCounts(const std::string& reports, const std::string& busy_hour = "") {
    UnloadThread();
    platform.Answer(testing::Rows{{"Property", "Value"},
                                  {{Variant("TimeSlices"), Variant(reports)},
                                   {Variant("BusyHourTimeSlices"), Variant(busy_hour)}}});
    static_cast<void>(GSabrel::GetTimeSliceSecondsValue(false));
  }
  // "first last" of slices, or what was raised; likewise of seconds.
  static std::string Slices(std::int32_t start, const FlagArray& flags, bool busy_hour = false) {
    std::int32_t first = -1;
    std::int32_t last = -1;
    return OutcomeOf([&] {
      GSabrel::GetSelRange(start, first, last, flags, busy_hour);
      return std::pair(first, last);
    });
  }
  static std::string Seconds(std::int32_t start, const FlagArray& flags, bool busy_hour = false) {
    std::int32_t first = -1;
    std::int32_t last = -1;
    const std::string outcome = OutcomeOf([&] {
      GSabrel::GetSecondsRange(start, first, last, flags, busy_hour);
      return std::pair(first, last);
    });
    return outcome.starts_with("raises")
               ? outcome + " " + std::to_string(first) + " " + std::to_string(last)
               : outcome;
  }
  static std::string Hours(std::int32_t first_s, std::int32_t last_s) {
    std::int32_t begin = -1;
    std::int32_t end = -1;
    const Variant result = GSabrel::GetStartEndHour(0, 0, first_s, last_s, begin, end, false);
    return (result.IsEmpty() ? "" : "not empty ") + std::to_string(begin) + " " +
           std::to_string(end);
  }
  ScriptedPlatform platform;
};

FlagArray Selected(std::int32_t count, const std::vector<std::int32_t>& slices) {
  FlagArray flags(count);
  for (const std::int32_t slice : slices) flags.Flag(slice, true);
  return flags;
}

// Second by second: the first selected second from slice `start` on, and the last of its run.
std::pair<int, int> Walk(const FlagArray& flags, int start, int slices, int seconds) {
  int first = -1;
  int last = -1;
  for (int second = (start - 1) * seconds; second < slices * seconds; ++second) {
    const bool selected = flags.Flag(second / seconds + 1);
    if (selected && first < 0) first = second;
    if (selected && first >= 0) last = second;
    if (!selected && first >= 0) break;
  }
  return {first, last};
}

TEST_F(TimeSlices, RunsAreThoseOfASecondBySecondWalk) {
  std::mt19937 random(7);
  for (const auto& [count, seconds] : kSlices) {
    SetCounts(std::to_string(count), "24");
    EXPECT_EQ(GSabrel::GetTimeSliceSecondsValue(false), seconds);
    EXPECT_EQ(GSabrel::GetTimeSliceSecondsValue(true), 3600);
    std::vector<FlagArray> patterns = {
        FlagArray(count), Selected(count, {1}), Selected(count, {count}),
        Selected(count, {count - 1, count}), Selected(count, {1, 2, count})};
    for (const int density : {1, 2, 8}) {
      FlagArray flags(count);
      for (int i = 1; i <= count; ++i) flags.Flag(i, random() % 8 < static_cast<unsigned>(density));
      patterns.push_back(flags);
    }
    patterns.push_back(FlagArray(count));
    for (int i = 1; i <= count; ++i) patterns.back().Flag(i, true);
    for (std::size_t p = 0; p < patterns.size(); ++p) {
      for (const int start : {1, 2, count / 2, count - 1, count, count + 1}) {
        const auto [first, last] = Walk(patterns[p], start, count, seconds);
        const int first_slice = first < 0 ? 0 : first / seconds + 1;
        const int last_slice = first < 0 ? 0 : last / seconds + 1;
        EXPECT_EQ(Slices(start, patterns[p]),
                  std::to_string(first_slice) + " " + std::to_string(last_slice));
        const int last_told = first < 0 ? seconds - 1 : first_slice == count ? last + 1 : last;
        const int first_told = first < 0 ? 0 : first;
        ASSERT_EQ(Seconds(start, patterns[p]),
                  std::to_string(first_told) + " " + std::to_string(last_told))
            << count << " slices, pattern " << p << ", start " << start;
        if (first < 0 || first_slice == count) continue;
        EXPECT_EQ(Hours(first_told, last_told),
                  std::to_string(first_slice) + " " + std::to_string(last_slice))
            << "and back";
      }
    }
  }
}

TEST_F(TimeSlices, StartsOutsideTheDayAreErrorsOrNothing) {
  SetCounts("24", "96");
  const FlagArray some = Selected(24, {3, 4, 5});
  const struct {
    std::int32_t start;
    std::string slices, seconds;
  } rows[] = {
      {1, "3 5", "7200 17999"},
      {4, "4 5", "10800 17999"},
      {0, "raises 9 Subscript out of range", "raises 9 Subscript out of range 0 0"},
      {-3, "raises 9 Subscript out of range", "raises 9 Subscript out of range 0 0"},
      {25, "0 0", "0 3599"},
      {26, "0 0", "0 3599"},
      {596524, "0 0", "0 3599"},
      {596525, "0 0", "raises 6 Overflow 0 0"},
      {kHuge, "0 0", "raises 6 Overflow 0 0"},
      {-kHuge - 1, "raises 9 Subscript out of range", "raises 6 Overflow 0 0"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Slices(row.start, some), row.slices) << row.start;
    EXPECT_EQ(Seconds(row.start, some), row.seconds) << row.start;
  }
  EXPECT_EQ(Seconds(1, Selected(4, {3, 4})), "raises 9 Subscript out of range 7200 10800")
      << "too few flags keep what was found so far";
  EXPECT_EQ(Slices(1, Selected(96, {96}), true) + "; " + Seconds(1, Selected(96, {96}), true),
            "96 96; 85500 86400");
}

TEST_F(TimeSlices, CountsThatAreNotSupportedHaveNoSeconds) {
  for (const std::string count : {"100", "0", "-24", "", "many", "23"}) {
    SetCounts(count);
    EXPECT_EQ(GSabrel::GetTimeSliceSecondsValue(false), 0) << count;
    EXPECT_EQ(Seconds(1, FlagArray(200)), "0 -1") << count;
    EXPECT_EQ(Hours(0, -1), "-1 -1") << "the division fails before anything is set";
    EXPECT_EQ(Hours(0, 5), "1 -1");
    EXPECT_EQ(Hours(0, 0), "1 0");
    EXPECT_EQ(Hours(5, 5), "-1 -1");
  }
  SetCounts("100");
  EXPECT_EQ(Slices(1, Selected(100, {99, 100})), "99 100") << "slices need no seconds";
  EXPECT_EQ(Seconds(1, Selected(100, {99, 100})), "0 -1");
  EXPECT_EQ(Seconds(1, Selected(100, {100})), "0 0");
  SetCounts("1,440");
  EXPECT_EQ(OutcomeOf([] { return GSabrel::GetTimeSliceSecondsValue(false); }), "60");
  UnloadThread();
  platform.Answer(testing::Refuse(942));
  EXPECT_EQ(GSabrel::GetTimeSliceSecondsValue(true), 0);
}

TEST_F(TimeSlices, SecondsBecomeSlicesWithHalvesToEven) {
  SetCounts("24");
  const struct {
    std::int32_t first, last;
    const char* hours;
  } rows[] = {
      {0, 3599, "1 1"},        {1800, 3599, "2 1"},    {0, 3600, "1 1"},
      {7200, 17999, "3 5"},    {1800, 5400, "2 2"},    {5400, 9000, "2 2"},
      {9000, 12600, "4 4"},    {5401, 9001, "3 3"},    {0, 0, "1 0"},
      {82800, 86400, "24 24"}, {-3600, -3600, "0 -1"}, {kHuge, kHuge, "596524 596523"},
  };
  for (const auto& [first, last, hours] : rows) EXPECT_EQ(Hours(first, last), hours) << first;
}

}  // namespace
}  // namespace sabrel
