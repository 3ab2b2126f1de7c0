// Which of Oracle's types hold numbers.
#pragma once

#include <string_view>

namespace sabrel {

/// Whether `type` is one of numbers, of columns or of routines' arguments.
/// Shape:  any case, without sizes; of DOUBLE PRECISION also the first word alone
[[nodiscard]] bool IsNumberType(std::string_view type) noexcept;

}  // namespace sabrel
