#include "cli/slice_picture.h"

#include <algorithm>

namespace sabrel::cli {
namespace {

constexpr std::int32_t kHours = 24;
// "24" at the end of the ruler.
constexpr std::size_t kBehindTheDay = 2;
// A ruler's number and a blank.
constexpr std::int32_t kLabel = 3;

// Characters for an hour of `slices`: a whole number for each slice, or a whole number of slices
// for each.
std::int32_t CharactersPerHour(std::int32_t slices, std::int32_t room) {
  std::int32_t characters = std::min(room, std::max(slices, kLabel));
  while (characters > 1 && characters % slices != 0 && slices % characters != 0) --characters;
  return characters;
}

class Day {
 public:
  Day(const FlagArray& selected, std::int32_t first, std::int32_t last)
      : selected_(selected), first_(first), last_(last) {}

  // What slices `from` up to, but not including, `end` look like together.
  [[nodiscard]] const char* Mark(std::int32_t from, std::int32_t end) const {
    if (first_ < end && from <= last_) return "\u2588";
    for (std::int32_t slice = from; slice < end; ++slice) {
      if (selected_.Flag(slice)) return "\u2592";
    }
    return "\u00B7";
  }

 private:
  const FlagArray& selected_;
  std::int32_t first_;
  std::int32_t last_;
};

std::string Ruler(std::int32_t per_hour) {
  const std::int32_t step = (kLabel + per_hour - 1) / per_hour;
  std::string ruler;
  for (std::int32_t hour = 0; hour <= kHours; hour += step) {
    std::string label = std::to_string(hour);
    label.resize(static_cast<std::size_t>(step) * static_cast<std::size_t>(per_hour), ' ');
    ruler += label;
  }
  ruler.erase(ruler.find_last_not_of(' ') + 1);
  return ruler;
}

}  // namespace

std::string SlicePicture(const FlagArray& selected, std::int32_t first, std::int32_t last,
                         std::size_t columns) {
  const auto room = static_cast<std::int32_t>(
      (std::min<std::size_t>(columns, 10000) - std::min(columns, kBehindTheDay)) / kHours);
  if (room == 0) return {};
  const std::int32_t slices = selected.Count() / kHours;
  const std::int32_t per_hour = CharactersPerHour(slices, room);
  const Day day(selected, first, last);
  std::string picture;
  for (std::int32_t character = 0; character < kHours * per_hour; ++character) {
    const std::int32_t from = character * slices / per_hour;
    const std::int32_t end = std::max((character + 1) * slices / per_hour, from + 1);
    picture += day.Mark(from + 1, end + 1);
  }
  return picture + "\n" + Ruler(per_hour) + "\n";
}

}  // namespace sabrel::cli
