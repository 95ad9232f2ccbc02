// Fused multiply-add: a * b + c with a single rounding, the same bits on every processor.
//
// A processor with the instruction uses it. Elsewhere the product is exact in 64 bits, and the sum
// is rounded twice, to 64 and to 32 bits. That differs from a single rounding only where the 64-bit
// sum is half-way between two 32-bit floats or below the normal ones; for these a slower path
// rounds the sum to odd first. The C library's fmaf is a call, and wrong on some platforms.
#pragma once

#include <cstdint>
#include <type_traits>

#if defined(__FMA__)
#include <immintrin.h>
#elif defined(__ARM_FEATURE_FMA)
#include <arm_neon.h>
#endif

#include "engine/lanes.h"

namespace orvane::blocks::vesk {

// product + c rounded to 32 bits once; sum is their sum in 64 bits. The error of that sum is exact,
// so rounding it to odd (its last bit set where anything was lost) leaves the second rounding
// right.
[[gnu::noinline]] static constexpr float round_sum_once(double product, double c, double sum) {
    if (!(sum - sum == 0.0)) return static_cast<float>(sum);  // infinite or not a number
    const double c_part = sum - product;
    const double error = (product - (sum - c_part)) + (c - c_part);
    if (error != 0.0) {
        auto bits = __builtin_bit_cast(std::uint64_t, sum);
        if ((bits & 1) == 0) bits = ((error > 0) == (sum > 0)) ? bits + 1 : bits - 1;
        sum = __builtin_bit_cast(double, bits);
    }
    return static_cast<float>(sum);
}

constexpr std::int64_t bits_below_float = 0x1FFFFFFF;  // of a 64-bit mantissa
constexpr std::int64_t half_way = 0x10000000;          // between two floats
constexpr double min_normal_float = 0x1p-126;

VESK_INLINE constexpr float fused_in_software(float a, float b, float c) noexcept {
    const double product = static_cast<double>(a) * static_cast<double>(b);
    const double sum = product + static_cast<double>(c);
    const auto bits = __builtin_bit_cast(std::int64_t, sum);
    const double magnitude = sum < 0.0 ? -sum : sum;
    if ((bits & bits_below_float) != half_way && (magnitude >= min_normal_float || sum == 0.0))
        [[likely]]
        return static_cast<float>(sum);
    return round_sum_once(product, static_cast<double>(c), sum);
}

// 64-bit lanes, as many as T has.
template <class T>
struct Wide;
template <>
struct Wide<Pair> {
    using Doubles = double __attribute__((vector_size(16)));
    using Longs = std::int64_t __attribute__((vector_size(16)));
};
template <>
struct Wide<Quad> {
    using Doubles = double __attribute__((vector_size(32)));
    using Longs = LongQuad;
};

// Whether any bit of a vector is set. WebAssembly has an instruction for it that clang doesn't make
// of the loop.
template <class Longs>
VESK_INLINE bool any_bit(Longs x) noexcept {
#if defined(__wasm_simd128__)
    using Bytes = signed char __attribute__((vector_size(16)));
    struct Parts {
        Bytes part[sizeof(Longs) / sizeof(Bytes)];
    };
    const auto parts = __builtin_bit_cast(Parts, x);
    Bytes any{};
    for (const Bytes part : parts.part) any |= part;
    return __builtin_wasm_any_true_v128(any) != 0;
#else
    std::int64_t any = 0;
    for (std::size_t i = 0; i < sizeof(Longs) / sizeof(std::int64_t); ++i) any |= x[i];
    return any != 0;
#endif
}

// Rounds the doubtful lanes of a sum once. Not inlined: called rarely, and from very many places.
template <class T, class Doubles, class Longs>
[[gnu::noinline]] static T round_lanes_once(T rounded, Longs doubtful, const Doubles& product,
                                            const Doubles& addend, const Doubles& sum) noexcept {
    for (std::size_t i = 0; i < lane_count<T>; ++i)
        if (doubtful[i] != 0) rounded[i] = round_sum_once(product[i], addend[i], sum[i]);
    return rounded;
}

// Lane by lane the same, with one test for all lanes. T is Pair or Quad.
template <class T>
VESK_INLINE T fused_in_software(T a, T b, T c) noexcept requires(!std::is_same_v<T, float>) {
    using Doubles = typename Wide<T>::Doubles;
    using Longs = typename Wide<T>::Longs;
    const Doubles product =
        __builtin_convertvector(a, Doubles) * __builtin_convertvector(b, Doubles);
    const Doubles addend = __builtin_convertvector(c, Doubles);
    const Doubles sum = product + addend;
    const Longs bits = __builtin_bit_cast(Longs, sum);
    const auto magnitude = __builtin_bit_cast(Doubles, bits & INT64_MAX);
    const Longs doubtful =
        ((bits & bits_below_float) == half_way) | ((magnitude < min_normal_float) & (sum != 0.0));
    const T rounded = __builtin_convertvector(sum, T);
    if (any_bit(doubtful)) [[unlikely]]
        return round_lanes_once(rounded, doubtful, product, addend, sum);
    return rounded;
}

#if defined(__FMA__) || defined(__ARM_FEATURE_FMA)
VESK_INLINE constexpr float fused(float a, float b, float c) noexcept {
    return std::is_constant_evaluated() ? fused_in_software(a, b, c) : __builtin_fmaf(a, b, c);
}
#else
VESK_INLINE constexpr float fused(float a, float b, float c) noexcept {
    return fused_in_software(a, b, c);
}
#endif
// The compilers' vector types have no fused operation, and scalar ones are not always made into one
// instruction. So here are the only intrinsics of the engine.
#if defined(__FMA__)
VESK_INLINE Quad fused(Quad a, Quad b, Quad c) noexcept {
    return _mm_fmadd_ps(a, b, c);
}
VESK_INLINE Oct fused(Oct a, Oct b, Oct c) noexcept {
    return _mm256_fmadd_ps(a, b, c);
}
#else
VESK_INLINE Quad fused(Quad a, Quad b, Quad c) noexcept {
#if defined(__ARM_FEATURE_FMA)
    return vfmaq_f32(c, a, b);
#else
    return fused_in_software(a, b, c);
#endif
}
VESK_INLINE Oct fused(Oct a, Oct b, Oct c) noexcept {
    return combine(fused(lower_half(a), lower_half(b), lower_half(c)),
                   fused(upper_half(a), upper_half(b), upper_half(c)));
}
#endif
VESK_INLINE Pair fused(Pair a, Pair b, Pair c) noexcept {
#if defined(__FMA__) || defined(__ARM_FEATURE_FMA)
    return lower_half(fused(combine(a, a), combine(b, b), combine(c, c)));
#else
    return fused_in_software(a, b, c);
#endif
}
// With constants for c, or for b and c.
template <class T>
VESK_INLINE constexpr T fused(T a, T b, float c) noexcept requires(!std::is_same_v<T, float>) {
    return fused(a, b, broadcast<T>(c));
}
template <class T>
VESK_INLINE constexpr T fused(T a, float b, float c) noexcept requires(!std::is_same_v<T, float>) {
    return fused(a, broadcast<T>(b), broadcast<T>(c));
}

}  // namespace orvane::blocks::vesk
