// The user's locale as the environment names it (LC_ALL, LC_NUMERIC, LC_TIME, LANG).
//
// The process-wide locale is neither read nor set: a host's `setlocale` and this module do not
// touch each other.
#pragma once

#include <string_view>

#include "sabrel/platform/locale_facts.h"

namespace sabrel {

/// Reads the environment; a locale that is not installed reads as the default facts.
/// Errors: none. Not to be called while another thread changes the environment
[[nodiscard]] LocaleFacts EnvironmentLocale();

/// The facts behind a locale's separators and its strftime patterns of a date and a time of day.
/// What is empty or not usable falls back: "." for the decimal separator, "," or "." for thousands,
/// "/" and ":" for dates and times. Errors: none
[[nodiscard]] LocaleFacts LocaleFactsOf(std::string_view decimal, std::string_view thousands,
                                        std::string_view date_pattern,
                                        std::string_view time_pattern);

}  // namespace sabrel
