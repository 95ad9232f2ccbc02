// The lane types: a Frame in memory, and the vectors of floats that its arithmetic runs in.
//
// Pair, Quad and Oct are compiler vectors, so + - * / and comparisons act lane by lane, each lane
// with the bits of the scalar operation, and x[0] reads a lane. A formula over a lane type T is
// written once and serves float and all of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

// Inlined at every call. The vector loop is compiled for more than one processor; what it shares
// with other files must leave no copy behind that the linker could hand to them.
#define VESK_INLINE [[gnu::always_inline]] inline
#define VESK_LAMBDA __attribute__((always_inline))

namespace orvane::blocks::vesk {

// One stereo sample. On the delay lines of mid/side mode left holds mid and right holds side.
struct Frame {
    float left = 0.0f;
    float right = 0.0f;
};

using Pair = float __attribute__((vector_size(8)));   // left, right
using Quad = float __attribute__((vector_size(16)));  // two pairs
using Oct = float __attribute__((vector_size(32)));   // four pairs
using IntPair = std::int32_t __attribute__((vector_size(8)));
using IntQuad = std::int32_t __attribute__((vector_size(16)));
using IntOct = std::int32_t __attribute__((vector_size(32)));
using LongQuad = std::int64_t __attribute__((vector_size(32)));

// The integers of a lane type's width.
template <class T>
struct IntegersOf;
template <>
struct IntegersOf<float> {
    using type = std::int32_t;
};
template <>
struct IntegersOf<Pair> {
    using type = IntPair;
};
template <>
struct IntegersOf<Quad> {
    using type = IntQuad;
};
template <>
struct IntegersOf<Oct> {
    using type = IntOct;
};
template <class T>
using Integers = typename IntegersOf<T>::type;

VESK_INLINE Pair lanes(Frame x) noexcept {
    return __builtin_bit_cast(Pair, x);
}
VESK_INLINE Frame frame(Pair x) noexcept {
    return __builtin_bit_cast(Frame, x);
}
VESK_INLINE Pair low_half(Quad x) noexcept {
    return __builtin_shufflevector(x, x, 0, 1);
}
VESK_INLINE Pair high_half(Quad x) noexcept {
    return __builtin_shufflevector(x, x, 2, 3);
}
VESK_INLINE Quad quad(Pair low, Pair high) noexcept {
    return __builtin_shufflevector(low, high, 0, 1, 2, 3);
}

VESK_INLINE Quad first_half(Oct x) noexcept {
    return __builtin_shufflevector(x, x, 0, 1, 2, 3);
}
VESK_INLINE Quad second_half(Oct x) noexcept {
    return __builtin_shufflevector(x, x, 4, 5, 6, 7);
}
VESK_INLINE Oct joined(Quad low, Quad high) noexcept {
    return __builtin_shufflevector(low, high, 0, 1, 2, 3, 4, 5, 6, 7);
}

// Of each pair: (right, left), (left, left), (right, right).
VESK_INLINE Pair swapped(Pair x) noexcept {
    return __builtin_shufflevector(x, x, 1, 0);
}
VESK_INLINE Oct swapped(Oct x) noexcept {
    return __builtin_shufflevector(x, x, 1, 0, 3, 2, 5, 4, 7, 6);
}
VESK_INLINE Pair lefts(Pair x) noexcept {
    return __builtin_shufflevector(x, x, 0, 0);
}
VESK_INLINE Oct lefts(Oct x) noexcept {
    return __builtin_shufflevector(x, x, 0, 0, 2, 2, 4, 4, 6, 6);
}
VESK_INLINE Pair rights(Pair x) noexcept {
    return __builtin_shufflevector(x, x, 1, 1);
}
VESK_INLINE Oct rights(Oct x) noexcept {
    return __builtin_shufflevector(x, x, 1, 1, 3, 3, 5, 5, 7, 7);
}
// The left lanes of a and the right lanes of b.
VESK_INLINE Pair left_and_right(Pair a, Pair b) noexcept {
    return __builtin_shufflevector(a, b, 0, 3);
}
VESK_INLINE Oct left_and_right(Oct a, Oct b) noexcept {
    return __builtin_shufflevector(a, b, 0, 9, 2, 11, 4, 13, 6, 15);
}
// (left, 0) of each pair.
VESK_INLINE Pair left_only(Pair x) noexcept {
    return left_and_right(x, Pair{});
}
VESK_INLINE Oct left_only(Oct x) noexcept {
    return left_and_right(x, Oct{});
}

// The left or the right values of one pair or of four, and back.
template <class T>
using Side = std::conditional_t<std::is_same_v<T, Pair>, float, Quad>;
VESK_INLINE float left_side(Pair x) noexcept {
    return x[0];
}
VESK_INLINE Quad left_side(Oct x) noexcept {
    return __builtin_shufflevector(x, x, 0, 2, 4, 6);
}
VESK_INLINE float right_side(Pair x) noexcept {
    return x[1];
}
VESK_INLINE Quad right_side(Oct x) noexcept {
    return __builtin_shufflevector(x, x, 1, 3, 5, 7);
}
VESK_INLINE Pair interleaved(float left, float right) noexcept {
    return Pair{left, right};
}
VESK_INLINE Oct interleaved(Quad left, Quad right) noexcept {
    return __builtin_shufflevector(left, right, 0, 4, 1, 5, 2, 6, 3, 7);
}
// The same with all lefts before the rights.
VESK_INLINE Pair side_by_side(float left, float right) noexcept {
    return Pair{left, right};
}
VESK_INLINE Oct side_by_side(Quad left, Quad right) noexcept {
    return joined(left, right);
}
VESK_INLINE Pair interleaved(Pair side_by_side) noexcept {
    return side_by_side;
}
VESK_INLINE Oct interleaved(Oct side_by_side) noexcept {
    return interleaved(first_half(side_by_side), second_half(side_by_side));
}

// Elements of 4 or 8 bytes in the opposite order; one element stays.
template <std::size_t Bytes, class T>
VESK_INLINE T reversed(T x) noexcept {
    if constexpr (sizeof(T) == Bytes)
        return x;
    else if constexpr (sizeof(T) == 2 * Bytes)
        return __builtin_shufflevector(x, x, 1, 0);
    else if constexpr (std::is_same_v<T, Quad> && Bytes == 4)
        return __builtin_shufflevector(x, x, 3, 2, 1, 0);
    else if constexpr (std::is_same_v<T, Oct> && Bytes == 8)
        return __builtin_shufflevector(x, x, 6, 7, 4, 5, 2, 3, 0, 1);
    else
        return __builtin_shufflevector(x, x, 7, 6, 5, 4, 3, 2, 1, 0);
}

// x in every pair: one element of 64 bits four times, which the compilers know an instruction for.
template <class T>
VESK_INLINE T pairs(Pair x) noexcept {
    if constexpr (std::is_same_v<T, Pair>) {
        return x;
    } else {
        const auto both_lanes = __builtin_bit_cast(std::int64_t, x);
        const LongQuad four{both_lanes, both_lanes, both_lanes, both_lanes};
        return __builtin_bit_cast(T, four);
    }
}
template <class T>
VESK_INLINE Integers<T> pairs(IntPair x) noexcept {
    return __builtin_bit_cast(Integers<T>, pairs<T>(__builtin_bit_cast(Pair, x)));
}
template <class T>
VESK_INLINE T pairs(float left, float right) noexcept {
    return pairs<T>(Pair{left, right});
}

// Four vectors turned, each half for itself: the first lanes of every half, the second ones and so
// on.
struct Columns {
    Oct a, b, c, d;
};
VESK_INLINE Columns columns(Oct p, Oct q, Oct r, Oct s) noexcept {
    const Oct pq = __builtin_shufflevector(p, q, 0, 8, 1, 9, 4, 12, 5, 13);
    const Oct rs = __builtin_shufflevector(r, s, 0, 8, 1, 9, 4, 12, 5, 13);
    const Oct pq_high = __builtin_shufflevector(p, q, 2, 10, 3, 11, 6, 14, 7, 15);
    const Oct rs_high = __builtin_shufflevector(r, s, 2, 10, 3, 11, 6, 14, 7, 15);
    return {__builtin_shufflevector(pq, rs, 0, 1, 8, 9, 4, 5, 12, 13),
            __builtin_shufflevector(pq, rs, 2, 3, 10, 11, 6, 7, 14, 15),
            __builtin_shufflevector(pq_high, rs_high, 0, 1, 8, 9, 4, 5, 12, 13),
            __builtin_shufflevector(pq_high, rs_high, 2, 3, 10, 11, 6, 7, 14, 15)};
}

template <class T>
constexpr std::size_t lanes_of = sizeof(T) / sizeof(float);

// A vector from memory, and back, aligned or not.
template <class T, class Element>
VESK_INLINE T load(const Element* from) noexcept {
    T x;
    __builtin_memcpy(&x, from, sizeof x);
    return x;
}
template <class T, class Element>
VESK_INLINE void store(Element* to, T x) noexcept {
    __builtin_memcpy(to, &x, sizeof x);
}

// x in every lane.
template <class T>
VESK_INLINE constexpr T all(float x) noexcept {
    return T{} + x;
}
template <>
VESK_INLINE constexpr float all<float>(float x) noexcept {
    return x;
}
template <>
VESK_INLINE constexpr Pair all<Pair>(float x) noexcept {
    return Pair{x, x};
}
template <>
VESK_INLINE constexpr Quad all<Quad>(float x) noexcept {
    return Quad{x, x, x, x};
}
template <>
VESK_INLINE constexpr Oct all<Oct>(float x) noexcept {
    return Oct{x, x, x, x, x, x, x, x};
}
VESK_INLINE constexpr Pair both(float x) noexcept {
    return Pair{x, x};
}

// The bits of the lanes, and back.
template <class T>
VESK_INLINE constexpr Integers<T> bits_of(T x) noexcept {
    return __builtin_bit_cast(Integers<T>, x);
}
template <class T>
VESK_INLINE constexpr T from_bits(Integers<T> x) noexcept {
    return __builtin_bit_cast(T, x);
}

// The fraction dropped; x must fit. And whole numbers as floats.
VESK_INLINE constexpr std::int32_t whole(float x) noexcept {
    return static_cast<std::int32_t>(x);
}
VESK_INLINE IntPair whole(Pair x) noexcept {
    return __builtin_convertvector(x, IntPair);
}
VESK_INLINE IntQuad whole(Quad x) noexcept {
    return __builtin_convertvector(x, IntQuad);
}
VESK_INLINE IntOct whole(Oct x) noexcept {
    return __builtin_convertvector(x, IntOct);
}
VESK_INLINE constexpr float floats(std::int32_t x) noexcept {
    return static_cast<float>(x);
}
VESK_INLINE Pair floats(IntPair x) noexcept {
    return __builtin_convertvector(x, Pair);
}
VESK_INLINE Quad floats(IntQuad x) noexcept {
    return __builtin_convertvector(x, Quad);
}
VESK_INLINE Oct floats(IntOct x) noexcept {
    return __builtin_convertvector(x, Oct);
}

template <class T>
VESK_INLINE constexpr T magnitude(T x) noexcept {
    return from_bits<T>(bits_of(x) & 0x7FFFFFFF);
}
// The magnitude of x with the sign of y.
template <class T>
VESK_INLINE constexpr T with_sign_of(T y, T x) noexcept {
    return from_bits<T>((bits_of(x) & 0x7FFFFFFF) | (bits_of(y) & INT32_MIN));
}
// a when it is the larger (smaller), otherwise b: a that is not a number gives b.
template <class T>
VESK_INLINE constexpr T larger(T a, T b) noexcept {
    return a > b ? a : b;
}
template <class T>
VESK_INLINE constexpr T smaller(T a, T b) noexcept {
    return a < b ? a : b;
}

}  // namespace orvane::blocks::vesk
