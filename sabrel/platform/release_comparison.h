// Comparison of release texts such as "7.3".
#pragma once

#include <string_view>

namespace sabrel {

/// Compares the first `parts` dot-separated numbers of two releases.
/// Shape: 1 when `first` is the newer, 0 when equal, -1 when it is the older, -2 when it is no
/// release (a part that is no number, or an empty text). Missing parts count as 0, further parts
/// are not looked at; numbers may be of any length; an invalid `second` counts as 0.
[[nodiscard]] int CompareReleases(std::string_view first, std::string_view second,
                                  int parts) noexcept;

}  // namespace sabrel
