#include "adapters/sqlite/date_format.h"

#include "adapters/sqlite/failure.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::sqlite {
namespace {

struct Name {
  std::string_view word;
  Part part;
};
// Longer names before those that they begin with.
constexpr Name kNames[] = {
    {"YYYY", Part::kYear4},     {"YYY", Part::kYear3},   {"YY", Part::kYear2},
    {"RRRR", Part::kRound4},    {"RR", Part::kRound2},   {"MONTH", Part::kMonthName},
    {"MON", Part::kMonthShort}, {"MM", Part::kMonth},    {"MI", Part::kMinute},
    {"DDD", Part::kDayOfYear},  {"DD", Part::kDay},      {"DAY", Part::kDayName},
    {"DY", Part::kDayShort},    {"D", Part::kDayOfWeek}, {"HH24", Part::kHour24},
    {"HH12", Part::kHour12},    {"HH", Part::kHour12},   {"SSSSS", Part::kSecondsOfDay},
    {"SS", Part::kSecond},      {"A.M.", Part::kHalf},   {"P.M.", Part::kHalf},
    {"AM", Part::kHalf},        {"PM", Part::kHalf},     {"Q", Part::kQuarter},
    {"J", Part::kJulian},       {"FM", Part::kFill},
};

}  // namespace

Element TakeElement(std::string_view& format) {
  if (format.front() == '"') {
    const std::size_t end = format.find('"', 1);
    if (end == std::string_view::npos) throw ServerFailure(1821, "date format not recognized");
    const Element literal{Part::kLiteral, format.substr(1, end - 1)};
    format.remove_prefix(end + 1);
    return literal;
  }
  for (const Name& name : kNames) {
    if (EqualIgnoringCase(format.substr(0, name.word.size()), name.word)) {
      const Element element{name.part, format.substr(0, name.word.size())};
      format.remove_prefix(name.word.size());
      return element;
    }
  }
  if (IsLetter(format.front()) || IsDigit(format.front())) {
    throw ServerFailure(1821, "date format not recognized");
  }
  const Element element{Part::kPunctuation, format.substr(0, FirstCharacterLength(format))};
  format.remove_prefix(element.text.size());
  return element;
}

}  // namespace sabrel::sqlite
