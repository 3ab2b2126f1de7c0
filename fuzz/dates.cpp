// Dates by a format's elements on the embedded server: documented failures only, and a date that
// was written reads back where its format tells all of it.
#include "adapters/sqlite/date_text.h"

#include <algorithm>
#include <array>

#include "adapters/sqlite/failure.h"
#include "adapters/sqlite/value.h"
#include "fuzz/target.h"

namespace sabrel::fuzz {
namespace {

using namespace sqlite;

constexpr std::array<std::int32_t, 16> kRefusals = {1820, 1821, 1830, 1839, 1840, 1841, 1843, 1847,
                                                    1849, 1850, 1851, 1852, 1855, 1858, 1861, 1898};

/// What `work` gives; nothing where it refuses with one of the numbers.
template <class Work>
std::optional<std::string> Tried(Work&& work) {
  try {
    return work();
  } catch (const ServerFailure& failure) {
    const std::int32_t number = failure.Error().native_number;
    Require(std::ranges::find(kRefusals, number) != kRefusals.end(),
            "is refused with a date's number", std::to_string(number) + failure.what());
    return std::nullopt;
  }
}

std::string TakeMoment(Input& input) {
  const CivilDate parts{
      static_cast<int>(100 + input.Bits(2) % 9900), static_cast<int>(1 + input.Choice(12)),
      static_cast<int>(1 + input.Choice(28)),       static_cast<int>(input.Choice(24)),
      static_cast<int>(input.Choice(60)),           static_cast<int>(input.Choice(60))};
  return MomentOf(parts);
}

void CheckFormats(const std::string& moment, std::string_view format) {
  const auto text = Tried([&] { return FormatMoment(moment, format); });
  if (text) {
    // What is read may lack parts that the format does not tell, but says the same again.
    if (const auto read = Tried([&] { return ParseMoment(*text, format); })) {
      Require(IsMoment(*read), "what was read is a moment", *read);
    }
  }
  constexpr std::array<std::string_view, 4> kWhole = {"YYYY-MM-DD HH24:MI:SS",
                                                      "DD.MON.YYYY HH12:MI:SS PM",
                                                      "FMMONTH DD, YYYY SSSSS", "YYYYMMDDHH24MISS"};
  for (const std::string_view whole : kWhole) {
    const std::string written = FormatMoment(moment, whole);
    const auto read = Tried([&] { return ParseMoment(written, whole); });
    Require(read == moment, "a date's text reads back", written);
  }
}

void CheckArithmetic(const std::string& moment, std::string_view unit) {
  if (const auto cut = Tried([&] { return TruncateMoment(moment, unit); })) {
    Require(IsMoment(*cut) && *cut <= moment, "a date is cut to one before it", *cut);
    Require(Tried([&] { return TruncateMoment(*cut, unit); }) == cut, "what is cut stays", *cut);
  }
  const std::string last = LastDay(moment);
  Require(IsMoment(last) && last >= moment, "the last day is not before the date", last);
  const auto moved = Tried([&] { return MoveMoment(moment, 86399.0); });
  if (moved) Require(SecondsBetween(moment, *moved) == 86399.0, "a date moves by seconds", *moved);
  const auto later = Tried([&] { return AddMonths(moment, 13); });
  if (later) Require(MonthsBetween(*later, moment) <= 13.0, "a date moves by months", *later);
}

}  // namespace

void Check(std::string_view bytes) {
  Input input(bytes);
  const std::string moment = TakeMoment(input);
  const std::string_view format = input.Text();
  CheckFormats(moment, format);
  CheckArithmetic(moment, format);
  if (const auto read = Tried([&] { return ParseMoment(input.Rest(), format); })) {
    Require(IsMoment(*read), "what was read is a moment", *read);
    const auto text = Tried([&] { return FormatMoment(*read, format); });
    Require(text.has_value(), "a format that reads also writes", format);
  }
}

}  // namespace sabrel::fuzz
