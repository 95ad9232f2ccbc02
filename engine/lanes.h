// The SIMD vectors that audio is computed in, and the operations on their lanes.
//
// A vector holds stereo frames, interleaved: left, right, left, right. Pair, Quad and Oct are the
// compilers' vector types, so + - * / and comparisons act lane by lane, each lane with the bits of
// the scalar operation, and x[0] reads a lane. A formula over a lane type T is written once and
// serves float, Pair, Quad and Oct.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

// For functions and lambdas that the kernels call. The kernels are compiled for two processors; an
// inline function left as a call would reach the linker from both and one copy would serve all.
#define VESK_INLINE [[gnu::always_inline]] inline
#define VESK_LAMBDA __attribute__((always_inline))

namespace orvane::blocks::vesk {

// One stereo sample. On the delay lines of mid/side mode left holds mid and right holds side.
struct Frame {
    float left = 0.0f;
    float right = 0.0f;
};

using Pair = float __attribute__((vector_size(8)));   // one frame
using Quad = float __attribute__((vector_size(16)));  // two frames, or four samples of one channel
using Oct = float __attribute__((vector_size(32)));   // four frames
using IntPair = std::int32_t __attribute__((vector_size(8)));
using IntQuad = std::int32_t __attribute__((vector_size(16)));
using IntOct = std::int32_t __attribute__((vector_size(32)));
using LongQuad = std::int64_t __attribute__((vector_size(32)));
using UnsignedLongQuad = std::uint64_t __attribute__((vector_size(32)));
using DoubleQuad = double __attribute__((vector_size(32)));

template <class T>
constexpr std::size_t lane_count = sizeof(T) / sizeof(float);
template <class T>
constexpr std::size_t frames_per = sizeof(T) / sizeof(Pair);

// 32-bit integers, as many as T has lanes.
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

// One channel of T's frames.
template <class T>
using Mono = std::conditional_t<std::is_same_v<T, Pair>, float, Quad>;

// ---- memory ------------------------------------------------------------------------------------

// Pointers need no alignment.
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

// ---- conversion --------------------------------------------------------------------------------

VESK_INLINE Pair to_pair(Frame x) noexcept {
    return __builtin_bit_cast(Pair, x);
}
VESK_INLINE Frame to_frame(Pair x) noexcept {
    return __builtin_bit_cast(Frame, x);
}

// The bit pattern of each lane, and the float of a bit pattern.
template <class T>
VESK_INLINE constexpr Integers<T> bits_of(T x) noexcept {
    return __builtin_bit_cast(Integers<T>, x);
}
template <class T>
VESK_INLINE constexpr T from_bits(Integers<T> x) noexcept {
    return __builtin_bit_cast(T, x);
}

// Truncates towards zero; x must lie within 32 bits.
VESK_INLINE constexpr std::int32_t to_int(float x) noexcept {
    return static_cast<std::int32_t>(x);
}
VESK_INLINE IntPair to_int(Pair x) noexcept {
    return __builtin_convertvector(x, IntPair);
}
VESK_INLINE IntQuad to_int(Quad x) noexcept {
    return __builtin_convertvector(x, IntQuad);
}
VESK_INLINE IntOct to_int(Oct x) noexcept {
    return __builtin_convertvector(x, IntOct);
}
VESK_INLINE constexpr float to_float(std::int32_t x) noexcept {
    return static_cast<float>(x);
}
VESK_INLINE Pair to_float(IntPair x) noexcept {
    return __builtin_convertvector(x, Pair);
}
VESK_INLINE Quad to_float(IntQuad x) noexcept {
    return __builtin_convertvector(x, Quad);
}
VESK_INLINE Oct to_float(IntOct x) noexcept {
    return __builtin_convertvector(x, Oct);
}

// Integers from 0 to 2^52 - 1, which are exact in a double: rounded once, as from 64 bits.
VESK_INLINE Quad to_float(UnsignedLongQuad x) noexcept {
    constexpr double two_to_52 = 4503599627370496.0;  // its neighbours are 1 apart
    const auto raised =
        __builtin_bit_cast(DoubleQuad, x | __builtin_bit_cast(std::uint64_t, two_to_52));
    return __builtin_convertvector(raised - two_to_52, Quad);
}

// ---- broadcast ---------------------------------------------------------------------------------

// x in every lane, sign of zero included.
template <class T>
VESK_INLINE constexpr T broadcast(float x) noexcept {
    if constexpr (std::is_same_v<T, float>)
        return x;
    else if constexpr (std::is_same_v<T, Pair>)
        return Pair{x, x};
    else if constexpr (std::is_same_v<T, Quad>)
        return Quad{x, x, x, x};
    else if constexpr (std::is_same_v<T, Oct>)
        return Oct{x, x, x, x, x, x, x, x};
    else
        return T::broadcast(x);
}

// x in every frame. As four elements of 64 bits, for which the compilers use one instruction.
template <class T>
VESK_INLINE T broadcast(Pair x) noexcept {
    if constexpr (std::is_same_v<T, Pair>) {
        return x;
    } else {
        const auto frame = __builtin_bit_cast(std::int64_t, x);
        const LongQuad four{frame, frame, frame, frame};
        return __builtin_bit_cast(T, four);
    }
}
template <class T>
VESK_INLINE Integers<T> broadcast(IntPair x) noexcept {
    return __builtin_bit_cast(Integers<T>, broadcast<T>(__builtin_bit_cast(Pair, x)));
}
template <class T>
VESK_INLINE T broadcast(float left, float right) noexcept {
    return broadcast<T>(Pair{left, right});
}

// ---- halves ------------------------------------------------------------------------------------

VESK_INLINE Pair lower_half(Quad x) noexcept {
    return __builtin_shufflevector(x, x, 0, 1);
}
VESK_INLINE Pair upper_half(Quad x) noexcept {
    return __builtin_shufflevector(x, x, 2, 3);
}
VESK_INLINE Quad combine(Pair lower, Pair upper) noexcept {
    return __builtin_shufflevector(lower, upper, 0, 1, 2, 3);
}
VESK_INLINE Quad lower_half(Oct x) noexcept {
    return __builtin_shufflevector(x, x, 0, 1, 2, 3);
}
VESK_INLINE Quad upper_half(Oct x) noexcept {
    return __builtin_shufflevector(x, x, 4, 5, 6, 7);
}
VESK_INLINE Oct combine(Quad lower, Quad upper) noexcept {
    return __builtin_shufflevector(lower, upper, 0, 1, 2, 3, 4, 5, 6, 7);
}

// ---- permutation within each frame -------------------------------------------------------------

// (right, left)
VESK_INLINE Pair swap_left_right(Pair x) noexcept {
    return __builtin_shufflevector(x, x, 1, 0);
}
VESK_INLINE Oct swap_left_right(Oct x) noexcept {
    return __builtin_shufflevector(x, x, 1, 0, 3, 2, 5, 4, 7, 6);
}
// (left, left)
VESK_INLINE Pair dup_left(Pair x) noexcept {
    return __builtin_shufflevector(x, x, 0, 0);
}
VESK_INLINE Oct dup_left(Oct x) noexcept {
    return __builtin_shufflevector(x, x, 0, 0, 2, 2, 4, 4, 6, 6);
}
// (right, right)
VESK_INLINE Pair dup_right(Pair x) noexcept {
    return __builtin_shufflevector(x, x, 1, 1);
}
VESK_INLINE Oct dup_right(Oct x) noexcept {
    return __builtin_shufflevector(x, x, 1, 1, 3, 3, 5, 5, 7, 7);
}
// (left of a, right of b)
VESK_INLINE Pair merge_left_right(Pair a, Pair b) noexcept {
    return __builtin_shufflevector(a, b, 0, 3);
}
VESK_INLINE Oct merge_left_right(Oct a, Oct b) noexcept {
    return __builtin_shufflevector(a, b, 0, 9, 2, 11, 4, 13, 6, 15);
}
// (left, 0)
VESK_INLINE Pair zero_right(Pair x) noexcept {
    return merge_left_right(x, Pair{});
}
VESK_INLINE Oct zero_right(Oct x) noexcept {
    return merge_left_right(x, Oct{});
}
// (left + right, left - right)
template <class T>
VESK_INLINE T sum_and_difference(T x) noexcept {
    return dup_left(x) + dup_right(x) * broadcast<T>(1.0f, -1.0f);
}

// ---- channels ----------------------------------------------------------------------------------

VESK_INLINE float left_lanes(Pair x) noexcept {
    return x[0];
}
VESK_INLINE Quad left_lanes(Oct x) noexcept {
    return __builtin_shufflevector(x, x, 0, 2, 4, 6);
}
VESK_INLINE float right_lanes(Pair x) noexcept {
    return x[1];
}
VESK_INLINE Quad right_lanes(Oct x) noexcept {
    return __builtin_shufflevector(x, x, 1, 3, 5, 7);
}
VESK_INLINE Pair interleave(float left, float right) noexcept {
    return Pair{left, right};
}
VESK_INLINE Oct interleave(Quad left, Quad right) noexcept {
    return __builtin_shufflevector(left, right, 0, 4, 1, 5, 2, 6, 3, 7);
}
// Planar order: all left lanes, then all right lanes.
VESK_INLINE Pair planar(float left, float right) noexcept {
    return Pair{left, right};
}
VESK_INLINE Oct planar(Quad left, Quad right) noexcept {
    return combine(left, right);
}
VESK_INLINE Pair planar_to_interleaved(Pair x) noexcept {
    return x;
}
VESK_INLINE Oct planar_to_interleaved(Oct x) noexcept {
    return interleave(lower_half(x), upper_half(x));
}

// ---- permutation across a vector ---------------------------------------------------------------

// Elements of 4 bytes (samples) or 8 bytes (frames) in the opposite order.
template <std::size_t Bytes, class T>
VESK_INLINE T reverse(T x) noexcept {
    if constexpr (sizeof(T) == Bytes)
        return x;
    else if constexpr (sizeof(T) == 2 * Bytes)
        return __builtin_shufflevector(x, x, 1, 0);
    else if constexpr (lane_count<T> == 4 && Bytes == 4)
        return __builtin_shufflevector(x, x, 3, 2, 1, 0);
    else if constexpr (std::is_same_v<T, Oct> && Bytes == 8)
        return __builtin_shufflevector(x, x, 6, 7, 4, 5, 2, 3, 0, 1);
    else
        return __builtin_shufflevector(x, x, 7, 6, 5, 4, 3, 2, 1, 0);
}

// Transposes two 4 x 4 matrices, one in the lower and one in the upper halves of the four rows.
struct Transposed {
    Oct a, b, c, d;
};
VESK_INLINE Transposed transpose(Oct p, Oct q, Oct r, Oct s) noexcept {
    const Oct pq = __builtin_shufflevector(p, q, 0, 8, 1, 9, 4, 12, 5, 13);
    const Oct rs = __builtin_shufflevector(r, s, 0, 8, 1, 9, 4, 12, 5, 13);
    const Oct pq_high = __builtin_shufflevector(p, q, 2, 10, 3, 11, 6, 14, 7, 15);
    const Oct rs_high = __builtin_shufflevector(r, s, 2, 10, 3, 11, 6, 14, 7, 15);
    return {__builtin_shufflevector(pq, rs, 0, 1, 8, 9, 4, 5, 12, 13),
            __builtin_shufflevector(pq, rs, 2, 3, 10, 11, 6, 7, 14, 15),
            __builtin_shufflevector(pq_high, rs_high, 0, 1, 8, 9, 4, 5, 12, 13),
            __builtin_shufflevector(pq_high, rs_high, 2, 3, 10, 11, 6, 7, 14, 15)};
}

// ---- arithmetic --------------------------------------------------------------------------------

template <class T>
VESK_INLINE constexpr T abs(T x) noexcept {
    return from_bits<T>(bits_of(x) & 0x7FFFFFFF);
}
VESK_INLINE std::int64_t sign(std::int64_t x) noexcept {
    return (x > 0) - (x < 0);
}
// The upper 32 bits of each.
VESK_INLINE IntQuad high_halves(LongQuad x) noexcept {
    const auto halves = __builtin_bit_cast(IntOct, x);
    return __builtin_shufflevector(halves, halves, 1, 3, 5, 7);
}
VESK_INLINE bool any_negative(LongQuad x) noexcept {
    return (x[0] | x[1] | x[2] | x[3]) < 0;
}
// The absolute value of x with the sign of y.
template <class T>
VESK_INLINE constexpr T copysign(T x, T y) noexcept {
    return from_bits<T>((bits_of(x) & 0x7FFFFFFF) | (bits_of(y) & INT32_MIN));
}
// a > b ? a : b and a < b ? a : b: b where the two are equal or a is not a number.
template <class T>
VESK_INLINE constexpr T max(T a, T b) noexcept {
    return a > b ? a : b;
}
template <class T>
VESK_INLINE constexpr T min(T a, T b) noexcept {
    return a < b ? a : b;
}

}  // namespace orvane::blocks::vesk
