// Reading dates: TO_DATE.
#include <algorithm>
#include <utility>

#include "adapters/sqlite/date_format.h"
#include "adapters/sqlite/date_text.h"
#include "adapters/sqlite/failure.h"
#include "adapters/sqlite/value.h"
#include "sabrel/platform/utf8.h"

namespace sabrel::sqlite {
namespace {

/// Reads what TO_DATE takes.
class Reader {
 public:
  explicit Reader(std::string_view text) : text_(text) {}

  std::string Read(std::string_view format) {
    const CivilDate now = PartsOf(Now());
    parts_ = {now.year, now.month, 1, 0, 0, 0};
    while (!format.empty()) {
      const Element element = TakeElement(format);
      following_ = format;
      if (text_.empty() && !MayBeLeftOut(element.part)) {
        throw ServerFailure(1840, "input value not long enough for date format");
      }
      if (!text_.empty()) Take(element);
    }
    if (!text_.empty()) {
      throw ServerFailure(1830, "date format picture ends before converting entire input string");
    }
    return Finished();
  }

 private:
  static bool MayBeLeftOut(Part part) {
    return part == Part::kPunctuation || part == Part::kHour24 || part == Part::kHour12 ||
           part == Part::kMinute || part == Part::kSecond || part == Part::kHalf ||
           part == Part::kFill;
  }

  /// The kind of element that the format has behind the present one; punctuation at its end.
  [[nodiscard]] Part NextPart() const {
    std::string_view rest = following_;
    Part next = Part::kPunctuation;
    while (!rest.empty() && (next = TakeElement(rest).part) == Part::kFill) {
    }
    return next;
  }

  static bool IsWritten(Part part) {
    return part == Part::kMonthShort || part == Part::kMonthName || part == Part::kDayShort ||
           part == Part::kDayName || part == Part::kHalf || part == Part::kLiteral;
  }

  int Number(std::size_t most_digits) {
    if (!IsDigit(text_.front())) {
      throw ServerFailure(1858, "a non-numeric character was found where a numeric was expected");
    }
    int number = 0;
    std::size_t digits = 0;
    for (; digits < most_digits && !text_.empty() && IsDigit(text_.front()); ++digits) {
      number = number * 10 + (text_.front() - '0');
      text_.remove_prefix(1);
    }
    has_end_ = digits == most_digits;
    return number;
  }

  int NumberIn(std::size_t digits, int low, int high, std::int32_t native, const char* message) {
    const int number = Number(digits);
    if (number < low || number > high) throw ServerFailure(native, message);
    return number;
  }

  int MonthByName() {
    for (const bool full : {true, false}) {
      for (std::size_t i = 0; i < kMonths.size(); ++i) {
        const std::string_view name = full ? kMonths[i] : kMonths[i].substr(0, 3);
        if (EqualIgnoringCase(text_.substr(0, name.size()), name)) {
          text_.remove_prefix(name.size());
          return static_cast<int>(i) + 1;
        }
      }
    }
    throw ServerFailure(1843, "not a valid month");
  }

  void Year(Part part, std::size_t digits) {
    const std::size_t before = text_.size();
    // A year in full does for the short forms, too, where its end can be seen.
    const bool is_short = part == Part::kYear2 || part == Part::kRound2;
    int year = Number(is_short && HasDigits(4) && EndsApart() ? 4 : digits);
    const std::size_t read = before - text_.size();
    const int now = PartsOf(Now()).year;
    if (part == Part::kYear2 && read <= 2) year += now / 100 * 100;
    if (part == Part::kYear3) year += now / 1000 * 1000;
    if ((part == Part::kRound2 || part == Part::kRound4) && read <= 2) {
      const int century =
          now / 100 + (year < 50 ? (now % 100 >= 50 ? 1 : 0) : (now % 100 < 50 ? -1 : 0));
      year += century * 100;
    }
    if (year < 100) throw ServerFailure(1841, "(full) year must be between 100 and 9999");
    parts_.year = year;
  }

  /// Whether no digit of another element can follow the present one.
  [[nodiscard]] bool EndsApart() const {
    const Part next = NextPart();
    return next == Part::kPunctuation || IsWritten(next);
  }

  [[nodiscard]] bool HasDigits(std::size_t count) const {
    return text_.size() >= count && std::all_of(text_.begin(), text_.begin() + count, IsDigit);
  }

  void Half() {
    for (const std::string_view word : {"A.M.", "P.M.", "AM", "PM"}) {
      if (EqualIgnoringCase(text_.substr(0, word.size()), word)) {
        afternoon_ = word.front() == 'P' ? 1 : 0;
        text_.remove_prefix(word.size());
        return;
      }
    }
    throw ServerFailure(1855, "AM/A.M. or PM/P.M. required");
  }

  void Literal(std::string_view literal) {
    if (!text_.starts_with(literal)) {
      throw ServerFailure(1861, "literal does not match format string");
    }
    text_.remove_prefix(literal.size());
  }

  void Take(const Element& element) {
    const bool has_end = std::exchange(has_end_, true);
    switch (element.part) {
      case Part::kYear4: Year(element.part, 4); return;
      case Part::kRound4: Year(element.part, 4); return;
      case Part::kYear3: Year(element.part, 3); return;
      case Part::kYear2: Year(element.part, 2); return;
      case Part::kRound2: Year(element.part, 2); return;
      case Part::kMonthShort:
      case Part::kMonthName: parts_.month = MonthByName(); return;
      case Part::kMonth:
        parts_.month =
            IsLetter(text_.front()) ? MonthByName() : NumberIn(2, 1, 12, 1843, "not a valid month");
        return;
      case Part::kDay:
        parts_.day =
            NumberIn(2, 1, 31, 1847, "day of month must be between 1 and last day of month");
        return;
      case Part::kHour24:
        parts_.hour = NumberIn(2, 0, 23, 1850, "hour must be between 0 and 23");
        return;
      case Part::kHour12:
        hour12_ = NumberIn(2, 1, 12, 1849, "hour must be between 1 and 12");
        return;
      case Part::kMinute:
        parts_.minute = NumberIn(2, 0, 59, 1851, "minutes must be between 0 and 59");
        return;
      case Part::kSecond:
        parts_.second = NumberIn(2, 0, 59, 1852, "seconds must be between 0 and 59");
        return;
      case Part::kSecondsOfDay: {
        const int seconds =
            NumberIn(5, 0, 86399, 1853, "seconds in day must be between 0 and 86399");
        parts_.hour = seconds / 3600;
        parts_.minute = seconds / 60 % 60;
        parts_.second = seconds % 60;
        return;
      }
      case Part::kHalf: Half(); return;
      case Part::kLiteral: Literal(element.text); return;
      case Part::kPunctuation: Punctuation(has_end); return;
      case Part::kFill: return;
      default: throw ServerFailure(1820, "format code cannot appear in date input format");
    }
  }

  void Punctuation(bool has_end) {
    if (!IsDigit(text_.front()) && !IsLetter(text_.front())) {
      text_.remove_prefix(FirstCharacterLength(text_));
      return;
    }
    // The text may leave it out where the end of what was read is clear.
    const bool fits = IsWritten(NextPart()) == IsLetter(text_.front());
    if (!has_end || !fits) throw ServerFailure(1861, "literal does not match format string");
  }

  std::string Finished() {
    if (hour12_ > 0) parts_.hour = hour12_ % 12 + (afternoon_ == 1 ? 12 : 0);
    if (!Date::IsValidCivil(parts_))
      throw ServerFailure(1839, "date not valid for month specified");
    return MomentOf(parts_);
  }

  std::string_view text_;
  CivilDate parts_;
  std::string_view following_;  // the format behind the present element
  bool has_end_ = true;         // the last element: no number with fewer digits than it may have
  int hour12_ = 0;
  int afternoon_ = 0;
};

}  // namespace

std::string ParseMoment(std::string_view text, std::string_view format) {
  return Reader(TrimBlanks(text)).Read(format);
}

}  // namespace sabrel::sqlite
