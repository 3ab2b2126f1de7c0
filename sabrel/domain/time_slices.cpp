#include "sabrel/domain/time_slices.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string>

#include "sabrel/core/session.h"
#include "sabrel/platform/conversions.h"
#include "sabrel/platform/platform.h"

namespace sabrel::MSabrel {
namespace {

constexpr std::int32_t kLow = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kHigh = std::numeric_limits<std::int32_t>::max();

std::int32_t SliceCount(bool busy_hour) {
  const Variant stored(ProductProperty(busy_hour ? "BusyHourTimeSlices" : "TimeSlices"));
  const LocaleFacts locale = CurrentPlatform().services->Locale();
  return IsNumeric(stored, locale) ? ToInt32(stored, locale) : 0;
}

std::int32_t SecondsPerSlice(std::int32_t count) {
  constexpr std::int32_t kDay_s = 86400;
  constexpr std::array kSupported = {24, 48, 72, 96, 120, 144, 240, 288, 360, 480, 720, 1440};
  return std::ranges::find(kSupported, count) == kSupported.end() ? 0 : kDay_s / count;
}

// Callers compute in 64 bits, which one step on 32-bit numbers cannot leave.
std::int32_t Checked(std::int64_t number) {
  if (number < kLow || number > kHigh) throw RuntimeError(RuntimeErrorNumber::kOverflow);
  return static_cast<std::int32_t>(number);
}

std::int32_t Sum(std::int32_t a, std::int32_t b) { return Checked(std::int64_t{a} + b); }
std::int32_t Product(std::int32_t a, std::int32_t b) { return Checked(std::int64_t{a} * b); }

// The first selected slice from `start` on, `count` + 1 when there is none.
std::int32_t FirstSelected(const FlagArray& selected, std::int32_t start, std::int32_t count) {
  for (std::int32_t slice = start; slice <= count; ++slice) {
    if (selected.Flag(slice)) return slice;
  }
  return Sum(count, 1);
}

}  // namespace

std::int32_t GetTimeSliceSecondsValue(bool UseBusyhourTimeSlices) {
  return SecondsPerSlice(SliceCount(UseBusyhourTimeSlices));
}

void GetSelRange(std::int32_t lStartNo, std::int32_t& lFirstHr, std::int32_t& lLastHr,
                 const FlagArray& afHrs, bool UseBusyhourTimeSlices) {
  lFirstHr = 0;
  lLastHr = 0;
  const std::int32_t count = SliceCount(UseBusyhourTimeSlices);
  const std::int32_t first = FirstSelected(afHrs, lStartNo, count);
  if (first > count) return;
  lFirstHr = first;
  lLastHr = first;
  while (lLastHr < count && afHrs.Flag(lLastHr + 1)) ++lLastHr;
}

void GetSecondsRange(std::int32_t iStart, std::int32_t& lFirstSec, std::int32_t& lLastSec,
                     const FlagArray& afHrs, bool UseBusyhourTimeSlices) {
  lFirstSec = 0;
  lLastSec = 0;
  const std::int32_t count = SliceCount(UseBusyhourTimeSlices);
  const std::int32_t seconds = SecondsPerSlice(count);
  std::int32_t begin = iStart == 1 ? 0 : Product(seconds, Sum(iStart, -1));

  std::int32_t first = iStart;
  while (first <= count && !afHrs.Flag(first)) {
    begin = Sum(begin, seconds);
    ++first;
  }
  if (first <= count) lFirstSec = begin;
  if (first == count) {
    // A run that starts at the day's last slice ends one second after the day.
    lLastSec = Product(count, seconds);
    return;
  }

  // First the second in which the run's last slice begins, then the one in which it ends.
  lLastSec = lFirstSec;
  for (std::int32_t slice = first; slice < count && afHrs.Flag(slice + 1); ++slice) {
    lLastSec = lLastSec == 0 ? Product(seconds, first) : Sum(lLastSec, seconds);
  }
  lLastSec = Sum(lLastSec, seconds);
  if (lLastSec > 0) {
    --lLastSec;
  } else if (lLastSec == lFirstSec) {
    lLastSec = seconds - 1;
  }
}

Variant GetStartEndHour(std::int32_t /*lFirsHr*/, std::int32_t /*lLastHr*/, std::int32_t lFirstSec,
                        std::int32_t lLastSec, std::int32_t& BeginHour, std::int32_t& EndingHour,
                        bool UseBusyhourTimeSlices) {
  RequirePlatform();
  try {
    const double seconds = GetTimeSliceSecondsValue(UseBusyhourTimeSlices);
    const bool is_first_slice = lFirstSec == 0 && lLastSec == seconds - 1;
    const auto slice_of = [&](double slices) {
      return static_cast<std::int32_t>(RoundHalfEven(slices, kLow, kHigh));
    };
    const auto divided = [&](std::int32_t by_slices) {
      if (seconds == 0) throw RuntimeError(RuntimeErrorNumber::kDivisionByZero);
      return by_slices / seconds;
    };
    if (is_first_slice) {
      static_cast<void>(divided(3600));  // fails without a supported slice count
      BeginHour = 1;
      EndingHour = 1;
      return {};
    }
    BeginHour = lFirstSec == 0 ? 1 : slice_of(divided(lFirstSec) + 1);
    EndingHour = lLastSec == 0 ? 0 : slice_of(divided(lLastSec));
  } catch (...) {
    // The outputs keep what was set so far.
  }
  return {};
}

}  // namespace sabrel::MSabrel
