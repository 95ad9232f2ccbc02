// Several vectors that take each operation one after the other.
//
// A long formula is a chain of dependent operations, and a processor looks only so far ahead: of
// vectors that pass the formula one by one it has few in work at a time. Side by side, the next
// operation in the program is always one that need not wait. A formula over a lane type takes them
// as such a type.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

#include "engine/block.h"
#include "engine/fused.h"
#include "engine/lanes.h"

namespace orvane::blocks::vesk {

template <class Vector>
struct SideBySide {
    static constexpr std::size_t count = 4;
    Vector of[count];

    VESK_INLINE static constexpr SideBySide broadcast(float x) noexcept {
        const Vector v = vesk::broadcast<Vector>(x);
        return {{v, v, v, v}};
    }
};
using Octs = SideBySide<Oct>;
using IntOcts = SideBySide<IntOct>;
template <>
struct IntegersOf<Octs> {
    using type = IntOcts;
};

// operation(0), operation(1) and so on, each a vector.
template <class Operation>
VESK_INLINE auto side_by_side(Operation operation) noexcept {
    return [&]<std::size_t... K>(std::index_sequence<K...>) VESK_LAMBDA {
        return SideBySide<decltype(operation(0))>{{operation(K)...}};
    }
    (std::make_index_sequence<Octs::count>());
}

VESK_INLINE Octs operator+(const Octs& a, const Octs& b) noexcept {
    return side_by_side([&](std::size_t k) VESK_LAMBDA { return a.of[k] + b.of[k]; });
}
VESK_INLINE Octs operator+(const Octs& a, float b) noexcept {
    return side_by_side([&](std::size_t k) VESK_LAMBDA { return a.of[k] + b; });
}
VESK_INLINE Octs operator-(const Octs& a, const Octs& b) noexcept {
    return side_by_side([&](std::size_t k) VESK_LAMBDA { return a.of[k] - b.of[k]; });
}
VESK_INLINE Octs operator-(const Octs& a, float b) noexcept {
    return side_by_side([&](std::size_t k) VESK_LAMBDA { return a.of[k] - b; });
}
VESK_INLINE Octs operator-(float a, const Octs& b) noexcept {
    return side_by_side([&](std::size_t k) VESK_LAMBDA { return a - b.of[k]; });
}
VESK_INLINE Octs operator-(const Octs& a) noexcept {
    return side_by_side([&](std::size_t k) VESK_LAMBDA { return -a.of[k]; });
}
VESK_INLINE Octs operator*(const Octs& a, const Octs& b) noexcept {
    return side_by_side([&](std::size_t k) VESK_LAMBDA { return a.of[k] * b.of[k]; });
}
VESK_INLINE Octs operator*(const Octs& a, float b) noexcept {
    return side_by_side([&](std::size_t k) VESK_LAMBDA { return a.of[k] * b; });
}
VESK_INLINE Octs operator/(const Octs& a, const Octs& b) noexcept {
    return side_by_side([&](std::size_t k) VESK_LAMBDA { return a.of[k] / b.of[k]; });
}
VESK_INLINE IntOcts operator<<(const IntOcts& a, int bits) noexcept {
    return side_by_side([&](std::size_t k) VESK_LAMBDA { return a.of[k] << bits; });
}
VESK_INLINE IntOcts operator&(const IntOcts& a, std::int32_t b) noexcept {
    return side_by_side([&](std::size_t k) VESK_LAMBDA { return a.of[k] & b; });
}
VESK_INLINE IntOcts operator|(const IntOcts& a, const IntOcts& b) noexcept {
    return side_by_side([&](std::size_t k) VESK_LAMBDA { return a.of[k] | b.of[k]; });
}
VESK_INLINE Octs max(const Octs& a, const Octs& b) noexcept {
    return side_by_side([&](std::size_t k) VESK_LAMBDA { return max(a.of[k], b.of[k]); });
}
VESK_INLINE Octs min(const Octs& a, const Octs& b) noexcept {
    return side_by_side([&](std::size_t k) VESK_LAMBDA { return min(a.of[k], b.of[k]); });
}
VESK_INLINE IntOcts to_int(const Octs& a) noexcept {
    return side_by_side([&](std::size_t k) VESK_LAMBDA { return to_int(a.of[k]); });
}
VESK_INLINE Octs to_float(const IntOcts& a) noexcept {
    return side_by_side([&](std::size_t k) VESK_LAMBDA { return to_float(a.of[k]); });
}
VESK_INLINE Octs fused(const Octs& a, const Octs& b, const Octs& c) noexcept {
    return side_by_side([&](std::size_t k)
                            VESK_LAMBDA { return fused(a.of[k], b.of[k], c.of[k]); });
}

// As map_into, but with Octs as long as there are frames for them: for a formula that is a long
// chain.
template <class Formula, class... Blocks>
VESK_INLINE void map_side_by_side_into(Block& out, std::size_t n, Formula f,
                                       const Blocks&... in) noexcept {
    constexpr std::size_t frames = Octs::count * frames_per<Oct>;
    const std::size_t whole = n - n % frames;
    for (std::size_t i = 0; i < whole; i += frames) out.set(i, f(in.template at<Octs>(i)...));
    for_each_vector(n - whole, [&]<class T>(std::size_t i) VESK_LAMBDA {
        out.set(whole + i, f(in.template at<T>(whole + i)...));
    });
}

}  // namespace orvane::blocks::vesk
