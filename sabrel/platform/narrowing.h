// Numbers that a parameter of 32 bits would cut without a word.
//
// Operations take ids and counts as `std::int32_t`. Beside each stands a deleted overload that wins
// for a wider argument, so that the caller converts where the range is known.
#pragma once

#include <concepts>
#include <limits>
#include <type_traits>

namespace sabrel {

/// Whether a T can hold a number that 32 bits with a sign cannot.
template <class T>
concept WiderThan32Bits = std::floating_point<std::remove_cvref_t<T>> ||
    (std::integral<std::remove_cvref_t<T>>&& std::numeric_limits<std::remove_cvref_t<T>>::digits >
     31);

template <class... Arguments>
concept AnyWiderThan32Bits = (WiderThan32Bits<Arguments> || ...);

}  // namespace sabrel
