// Values as they are typed: `5`, `2.5`, `date:2024-03-09T17:05:00`, `null`, `text:5`.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "sabrel/platform/date.h"
#include "sabrel/platform/variant.h"

namespace sabrel::cli {

/// How values are written, for the help.
inline constexpr std::string_view kArgumentHelp =
    "Values: 5 (whole number), 2.5 (double), null, empty, true, false,\n"
    "  date:2024-03-09T17:05:00 or date:2024-03-09, text:5 (text whatever it looks like);\n"
    "  anything else is text, also 007. Whole numbers beyond 32 bits are decimals.\n"
    "  Options stand before the values; write -- before a text that starts with a dash.";

/// Errors: UsageError naming `text` when it announces a date or a number that it is not
[[nodiscard]] Variant ParseArgument(std::string_view text);
[[nodiscard]] std::vector<Variant> ParseArguments(std::span<const std::string> texts);

/// "2024-03-09T17:05:00", "2024-03-09 17:05", "2024-03-09". Errors: UsageError naming `text`
[[nodiscard]] Date ParseIsoDate(std::string_view text);

/// Whether `text` is a negative number: the one thing with a dash in front that is no option.
[[nodiscard]] bool IsNegativeNumber(std::string_view text) noexcept;

}  // namespace sabrel::cli
