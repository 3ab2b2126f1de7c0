#include "adapters/console/environment_locale.h"

#include <langinfo.h>
#include <locale.h>

#include <cstddef>
#include <memory>
#include <string>
#include <type_traits>

#include "sabrel/platform/utf8.h"

namespace sabrel {
namespace {

struct FreeLocale {
  void operator()(locale_t locale) const { ::freelocale(locale); }
};
using OwnedLocale = std::unique_ptr<std::remove_pointer_t<locale_t>, FreeLocale>;

// One category at a time, so that a missing LC_TIME does not cost the decimal separator.
OwnedLocale LocaleOf(int category_mask) {
  OwnedLocale locale(::newlocale(category_mask, "", nullptr));
  if (!locale) locale.reset(::newlocale(category_mask, "C", nullptr));
  return locale;
}

// In a single-byte character set the one separator outside ASCII is the no-break space.
std::string Utf8Separator(std::string_view separator) {
  return IsValidUtf8(separator) ? std::string(separator) : "\u00A0";
}

struct Pattern {
  std::string fields;     // conversion letters in order: "dmY"
  std::string separator;  // what stands between the first two, blanks removed
};

Pattern TakeApart(std::string_view pattern) {
  Pattern parts;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] != '%') {
      if (parts.fields.size() == 1 && pattern[i] != ' ') parts.separator += pattern[i];
      continue;
    }
    while (i + 1 < pattern.size() &&
           std::string_view("EO-_0^#").find(pattern[i + 1]) != std::string_view::npos) {
      ++i;
    }
    if (++i == pattern.size()) break;
    // A weekday in front is decoration: the separator is sought behind the next field.
    const bool weekday = pattern[i] == 'a' || pattern[i] == 'A';
    if (weekday && parts.fields.empty()) continue;
    parts.fields += pattern[i];
  }
  return parts;
}

// Words, as between the fields of an East Asian date, are no separator for a date written with
// numbers only.
bool IsSeparator(std::string_view text) {
  return text.size() == 1 && std::string_view("/-.:").find(text[0]) != std::string_view::npos;
}

}  // namespace

LocaleFacts LocaleFactsOf(std::string_view decimal, std::string_view thousands,
                          std::string_view date_pattern, std::string_view time_pattern) {
  LocaleFacts facts;
  if (!decimal.empty()) facts.decimal_separator = Utf8Separator(decimal);
  if (!thousands.empty()) facts.thousands_separator = Utf8Separator(thousands);
  if (thousands.empty() && facts.decimal_separator == ",") facts.thousands_separator = ".";

  if (date_pattern == "%F") date_pattern = "%Y-%m-%d";
  const Pattern date = TakeApart(date_pattern);
  if (IsSeparator(date.separator)) facts.date_separator = date.separator;
  const char first = date.fields.empty() ? 'D' : date.fields.front();
  if (first == 'd' || first == 'e') facts.date_order = DateOrder::kDayMonthYear;
  if (first == 'Y' || first == 'y' || first == 'C') facts.date_order = DateOrder::kYearMonthDay;

  const Pattern time = TakeApart(time_pattern);
  if (IsSeparator(time.separator)) facts.time_separator = time.separator;
  return facts;
}

LocaleFacts EnvironmentLocale() {
  const OwnedLocale numeric = LocaleOf(LC_NUMERIC_MASK);
  const OwnedLocale time = LocaleOf(LC_TIME_MASK);
  if (!numeric || !time) return {};
  return LocaleFactsOf(::nl_langinfo_l(RADIXCHAR, numeric.get()),
                       ::nl_langinfo_l(THOUSEP, numeric.get()), ::nl_langinfo_l(D_FMT, time.get()),
                       ::nl_langinfo_l(T_FMT, time.get()));
}

}  // namespace sabrel
