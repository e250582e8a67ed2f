/* bit_cast.h - std::bit_cast, also where the standard library does not have it yet. */
#ifndef CLUTTER_BASE_BIT_CAST_H
#define CLUTTER_BASE_BIT_CAST_H

#include <type_traits>

namespace clutter::base {

/* The object of type To with the bytes of from. */
template <class To, class From>
constexpr To bitCast(const From& from) noexcept {
    static_assert(sizeof(To) == sizeof(From));
    static_assert(std::is_trivially_copyable_v<To> && std::is_trivially_copyable_v<From>);
    return __builtin_bit_cast(To, from);
}

}  // namespace clutter::base

#endif
