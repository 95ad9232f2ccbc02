// Fused multiply-add: a * b + c with a single rounding, the same bits on every processor.
//
// A processor with the instruction uses it. Elsewhere the product is exact in 64 bits, and the sum
// is rounded twice, to 64 and to 32 bits. That differs from a single rounding only where the 64-bit
// sum is half-way between two 32-bit floats or below the normal ones; for these a slower path
// rounds the sum to odd first. The C library's fmaf is a call, and wrong on some platforms.
#pragma once

#include <cstdint>
#include <type_traits>

#ifdef __FMA__
#include <immintrin.h>
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

VESK_INLINE constexpr float fused_in_software(float a, float b, float c) noexcept {
    constexpr std::uint64_t below_float = 0x1FFFFFFF;  // mantissa bits that a float lacks
    constexpr std::uint64_t half_way = 0x10000000;
    constexpr double min_normal = 0x1p-126;  // of a float
    const double product = static_cast<double>(a) * static_cast<double>(b);
    const double sum = product + static_cast<double>(c);
    const auto bits = __builtin_bit_cast(std::uint64_t, sum);
    const double magnitude = sum < 0.0 ? -sum : sum;
    if ((bits & below_float) != half_way && magnitude >= min_normal) [[likely]]
        return static_cast<float>(sum);
    return round_sum_once(product, static_cast<double>(c), sum);
}

VESK_INLINE constexpr float fused(float a, float b, float c) noexcept {
#ifdef __FMA__
    if (!std::is_constant_evaluated()) return __builtin_fmaf(a, b, c);
#endif
    return fused_in_software(a, b, c);
}
// The compilers' vector types have no fused operation, and eight scalar ones are not always made
// into one instruction. So these two are the only intrinsics of the engine.
#ifdef __FMA__
VESK_INLINE Quad fused(Quad a, Quad b, Quad c) noexcept {
    return _mm_fmadd_ps(a, b, c);
}
VESK_INLINE Oct fused(Oct a, Oct b, Oct c) noexcept {
    return _mm256_fmadd_ps(a, b, c);
}
#else
VESK_INLINE Quad fused(Quad a, Quad b, Quad c) noexcept {
    return Quad{fused(a[0], b[0], c[0]), fused(a[1], b[1], c[1]), fused(a[2], b[2], c[2]),
                fused(a[3], b[3], c[3])};
}
VESK_INLINE Oct fused(Oct a, Oct b, Oct c) noexcept {
    return combine(fused(lower_half(a), lower_half(b), lower_half(c)),
                   fused(upper_half(a), upper_half(b), upper_half(c)));
}
#endif
VESK_INLINE Pair fused(Pair a, Pair b, Pair c) noexcept {
    return lower_half(fused(combine(a, a), combine(b, b), combine(c, c)));
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
