// `slices`: the day's time slices and a run of selected ones.
#include <algorithm>
#include <charconv>
#include <memory>
#include <optional>
#include <utility>

#include "cli/commands/commands.h"
#include "cli/commands/outcome.h"
#include "cli/slice_picture.h"
#include "sabrel/core/gsabrel.h"
#include "sabrel/core/session.h"

namespace sabrel::cli {
namespace {

struct SliceArguments {
  std::string selection;
  std::int32_t start = 1;
  std::vector<std::int32_t> seconds;
  bool busy_hour = false;
};

constexpr std::int32_t kDay_s = 86400;

// Of the site's product; 0 when that could not be read. Errors: 5 when the component has no seconds
// for their number
std::int32_t SecondsPerSlice(bool busy_hour) {
  const std::int32_t seconds = GSabrel::GetTimeSliceSecondsValue(busy_hour);
  if (seconds != 0 || HasFailed()) return seconds;
  const std::string property = busy_hour ? "BusyHourTimeSlices" : "TimeSlices";
  // Of all that the program asks the component, this alone is no operation of gsabrel.h.
  throw RuntimeError(RuntimeErrorNumber::kInvalidCall,
                     "The product's " + property + " is '" + MSabrel::ProductProperty(property) +
                         "' in PM_PRODUCT_INFO; it has to be 24, 48, 72, 96, 120, 144, 240, 288, "
                         "360, 480, 720 or 1440");
}

std::optional<std::int32_t> SliceNumber(std::string_view text, std::int32_t count) {
  std::int32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool whole = error == std::errc() && end == text.data() + text.size();
  return whole && number >= 1 && number <= count ? std::optional(number) : std::nullopt;
}

// One number or one run; false when it is neither.
bool Select(FlagArray& selected, const std::string& part) {
  const std::size_t dash = part.find('-');
  const auto first = SliceNumber(part.substr(0, dash), selected.Count());
  const auto last =
      dash == std::string::npos ? first : SliceNumber(part.substr(dash + 1), selected.Count());
  if (!first || !last || *first > *last) return false;
  for (std::int32_t slice = *first; slice <= *last; ++slice) selected.Flag(slice, true);
  return true;
}

// "3-5,8"; "" and "none" select nothing.
FlagArray ParseSelection(const std::string& text, std::int32_t count) {
  FlagArray selected(count);
  if (text.empty() || text == "none") return selected;
  for (std::size_t at = 0; at <= text.size();) {
    const std::size_t comma = std::min(text.find(',', at), text.size());
    if (!Select(selected, text.substr(at, comma - at))) {
      throw UsageError("'" + text + "' is no selection of slices; write numbers from 1 to " +
                       std::to_string(count) + " and runs of them, for example 3-5,8");
    }
    at = comma + 1;
  }
  return selected;
}

using Figures = std::vector<std::pair<std::string, std::int32_t>>;

// A line each for a person, one record for a program.
void PrintFigures(Context& context, const Figures& figures) {
  std::vector<std::string> names;
  std::vector<std::vector<Variant>> lines;
  std::vector<Variant> record;
  for (const auto& [name, value] : figures) {
    names.push_back(name);
    record.emplace_back(value);
    lines.push_back({Variant(name), Variant(value)});
  }
  if (context.options.format == Format::kTable) {
    PrintTable(context, {"WHAT", "VALUE"}, lines);
  } else {
    PrintTable(context, names, {record});
  }
}

int Slices(Context& context, const SliceArguments& arguments) {
  const bool busy_hour = arguments.busy_hour;
  const std::int32_t seconds = SecondsPerSlice(busy_hour);
  if (seconds == 0) return kFailed;
  const FlagArray selected = ParseSelection(arguments.selection, kDay_s / seconds);
  std::int32_t first = 0;
  std::int32_t last = 0;
  GSabrel::GetSelRange(arguments.start, first, last, selected, busy_hour);
  std::int32_t first_s = 0;
  std::int32_t last_s = 0;
  GSabrel::GetSecondsRange(arguments.start, first_s, last_s, selected, busy_hour);
  std::int32_t begin = 0;
  std::int32_t ending = 0;
  GSabrel::GetStartEndHour(first, last, first_s, last_s, begin, ending, busy_hour);

  if (context.options.format == Format::kTable) {
    const auto width = context.Out().Width().value_or(kUsualWidth);
    const std::string picture = SlicePicture(selected, first, last, width);
    if (!picture.empty()) context.Out().Write(picture + "\n");
  }
  PrintFigures(context, {{"SLICES", selected.Count()},
                         {"SLICE_SECONDS", seconds},
                         {"FIRST_SLICE", first},
                         {"LAST_SLICE", last},
                         {"FIRST_SECOND", first_s},
                         {"LAST_SECOND", last_s},
                         {"BEGIN_HOUR", begin},
                         {"ENDING_HOUR", ending}});
  if (first == 0) {
    context.Out().Flush();
    context.Note("No slice is selected from slice " + std::to_string(arguments.start) +
                 " on: the seconds are those of the day's first slice");
  }
  return kDone;
}

int Hours(Context& context, const SliceArguments& arguments) {
  if (!arguments.selection.empty()) throw UsageError("--seconds stands without SELECTION");
  if (arguments.seconds[0] > arguments.seconds[1]) {
    throw UsageError("--seconds takes FIRST LAST, and " + std::to_string(arguments.seconds[0]) +
                     " is after " + std::to_string(arguments.seconds[1]));
  }
  if (SecondsPerSlice(arguments.busy_hour) == 0) return kFailed;
  std::int32_t begin = 0;
  std::int32_t ending = 0;
  GSabrel::GetStartEndHour(0, 0, arguments.seconds[0], arguments.seconds[1], begin, ending,
                           arguments.busy_hour);
  PrintFigures(context, {{"BEGIN_HOUR", begin}, {"ENDING_HOUR", ending}});
  return kDone;
}

}  // namespace

void AddSliceCommand(CLI::App& parent, Context& context) {
  const auto arguments = std::make_shared<SliceArguments>();
  CLI::App& slices = AddCommand(
      parent, context, "slices",
      "Draw the day's time slices; print a run of selected ones in slices, seconds and hours",
      "  sabrel slices 3-5,8\n"
      "  sabrel slices --busy-hour 1-4,90-96 --start 5\n"
      "  sabrel --format json slices --seconds 7200 17999\n\n"
      "The run is the first one at or after --start; hours are counted in slices. A run that is\n"
      "  the last slice alone ends a second after the day. In the picture \u2588 is the run, "
      "\u2592 what is\n"
      "  selected besides; csv and json hold the figures only.",
      [arguments](Context& c) {
        c.RequireServer();
        return arguments->seconds.empty() ? Slices(c, *arguments) : Hours(c, *arguments);
      });
  slices.add_option("SELECTION", arguments->selection,
                    "Numbers and runs of slices, counted from 1: 3-5,8 (default: none)");
  slices.add_flag("--busy-hour", arguments->busy_hour, "The slices of busy-hour work");
  slices.add_option("--start", arguments->start, "The run is looked for from this slice on")
      ->capture_default_str();
  slices
      .add_option("--seconds", arguments->seconds,
                  "FIRST LAST: print the hours of these seconds of the day instead")
      ->expected(2)
      ->check(CLI::Range(0, kDay_s));
}

}  // namespace sabrel::cli
