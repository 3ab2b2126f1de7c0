// How many columns of a terminal a text takes.
//
// East Asian wide characters and most pictures take two, combining marks and joiners none. The
// ranges are the broad ones: a rare character may be off by one column, which costs an edge that is
// not straight and nothing else.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace sabrel::cli {

[[nodiscard]] std::size_t DisplayWidth(std::string_view text) noexcept;
/// `text` cut so that it takes at most `columns`, the last of them an ellipsis when something was
/// cut.
[[nodiscard]] std::string FitToWidth(std::string_view text, std::size_t columns);

}  // namespace sabrel::cli
