// Numbers that a 32-bit parameter would silently truncate.
//
// Operations take ids and counts as `std::int32_t`. Most of them have a deleted overload that is
// chosen for a wider argument, so that the caller converts where the range is known.
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
