// Texts with numbered places: "$1" is the first argument.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace sabrel {

/// `text` with every "$n" replaced by argument n as it is, n having one or more digits and counting
/// from 1; a number without an argument leaves nothing, "$" before anything else stays. What an
/// argument brings is not looked at again.
[[nodiscard]] std::string FillTemplate(std::string_view text,
                                       std::span<const std::string> arguments);

}  // namespace sabrel
