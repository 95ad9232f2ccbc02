// The engine's elementary functions: short polynomials in place of the standard library's.
//
// Pure functions without tables, accurate to about five decimal digits. Their errors are part of
// the sound: filters, gains and the saturator are defined by these polynomials. Each is one formula
// over a lane type T, so a vector's lanes have the bits of the scalar function.
#pragma once

#include "engine/fused.h"
#include "engine/lanes.h"

namespace orvane::blocks::vesk {

constexpr float log2_of_e = 1.442695f;
constexpr float half_pi = 1.5707964f;

// 2 to the power f for f from 0 to 1; exactly 1 at 0 and 2 at 1, so that fast_exp2 is continuous.
template <class T>
VESK_INLINE constexpr T fast_exp2_fraction(T f) noexcept {
    return fused(f, fused(f, fused(f, fused(f, 0.013487903f, 0.0521745f), 0.24128748f), 0.6930501f),
                 1.0f);
}

// 2 to the power x. Exact at integers; 0 below -126, so that no denormal arises, and for a
// not-a-number; infinity from 128 on.
template <class T>
VESK_INLINE constexpr T fast_exp2(T x) noexcept {
    constexpr float exponent_bias = 127.0f;
    constexpr float max_exponent = 255.0f;
    const T limited = min(broadcast<T>(max_exponent), x + exponent_bias);
    const T v = max(limited, broadcast<T>(0.0f));
    const Integers<T> i = to_int(v);
    const T scale = from_bits<T>(i << 23);  // the exponent field alone: a power of two
    return fast_exp2_fraction<T>(v - to_float(i)) * scale;
}

template <class T>
VESK_INLINE constexpr T fast_exp(T x) noexcept {
    return fast_exp2<T>(x * log2_of_e);
}
template <class T>
VESK_INLINE constexpr T fast_pow10(T x) noexcept {
    constexpr float log2_of_10 = 3.321928f;
    return fast_exp2<T>(x * log2_of_10);
}
template <class T>
VESK_INLINE constexpr T fast_db_to_gain(T x) noexcept {
    constexpr float octaves_per_db = 0.1660964f;  // log2(10) / 20
    return fast_exp2<T>(x * octaves_per_db);
}

// log2(1 + m) for m from 0 to 1, as a rational function; exactly 0 at 0 and 1 at 1.
template <class T>
VESK_INLINE T fast_log2_of_one_plus(T m) noexcept {
    return (fused(m, fused(m, -0.038423624f, 0.3883265f), 2.1196218f) * m) / (m + 1.4695246f);
}
template <class T>
VESK_INLINE T fast_log2_mantissa(T x) noexcept {
    return fast_log2_of_one_plus<T>(x - 1.0f);
}

// x must be positive and finite; that is not checked. 0 gives -127.
template <class T>
VESK_INLINE T fast_log2(T x) noexcept {
    const Integers<T> bits = bits_of(x);
    const T exponent = to_float((bits >> 23) - 127);
    const T mantissa = from_bits<T>((bits & 0x7FFFFF) | 0x3F800000);
    return exponent + fast_log2_mantissa(mantissa);
}
template <class T>
VESK_INLINE T fast_log10(T x) noexcept {
    constexpr float log10_of_2 = 0.30103f;
    return fast_log2(x) * log10_of_2;
}
template <class T>
VESK_INLINE T fast_gain_to_db(T x) noexcept {
    constexpr float db_per_octave = 6.0206f;  // 20 * log10(2)
    return fast_log2(x) * db_per_octave;
}

// sin(x) / x as a polynomial in z = x * x, for x from -pi/2 to pi/2.
template <class T>
VESK_INLINE constexpr T sine_over_angle(T z) noexcept {
    return fused(z, fused(z, fused(z, -0.00018284567f, 0.008304825f), -0.16664949f), 0.99999833f);
}

// x in radians from -pi/2 to pi/2. The result exceeds 1 by up to 2e-6 at pi/2.
template <class T>
VESK_INLINE constexpr T fast_sine(T x) noexcept {
    return sine_over_angle<T>(x * x) * x;
}

// sin(u * pi/2) for u from 0 to 1.
template <class T>
VESK_INLINE constexpr T fast_sine_unit(T u) noexcept {
    constexpr float half_pi_squared = 2.4674013f;
    return sine_over_angle<T>(u * u * half_pi_squared) * u * half_pi;
}

// A triangle wave of phase p, 0 up to 1: 0 at 0, 1 at 0.25, -1 at 0.75.
template <class T>
VESK_INLINE T triangle_of_phase(T p) noexcept {
    return 1.0f - abs<T>(2.0f - abs<T>(p * 4.0f - 3.0f));
}

// sin(2 * pi * p) for a phase p, 0 up to 1.
template <class T>
VESK_INLINE T fast_sine_cycle(T p) noexcept {
    constexpr float half_pi_squared = 2.467401f;  // the float next below that of fast_sine_unit
    const T t = triangle_of_phase(p);
    return sine_over_angle<T>(t * t * half_pi_squared) * (t * half_pi);
}

template <class T>
VESK_INLINE constexpr T fast_tanh(T x) noexcept {
    constexpr float minus_two_log2_of_e = -2.88539f;
    const T e = fast_exp2<T>(abs(x) * minus_two_log2_of_e);
    return copysign<T>((1.0f - e) / (e + 1.0f), x);
}

// The k of the one-pole smoother state = (1 - k) * state + k * goal: 1 - exp(-1 / (seconds *
// rate)), rate in Hz. A time constant of 0 gives 1 to float accuracy, a smoother that follows at
// once.
template <class T>
VESK_INLINE constexpr T one_pole_coefficient(T seconds, T rate) noexcept {
    const T samples = seconds * rate;
    const T floor = broadcast<T>(1e-6f);
    return 1.0f - fast_exp2<T>(-log2_of_e / (samples < floor ? floor : samples));
}

// Four-point, third-order Hermite interpolation (Catmull-Rom) between b at t = 0, which is exact,
// and c at t = 1.
template <class T>
VESK_INLINE constexpr T hermite_interpolate(T a, T b, T c, T d, T t) noexcept {
    const T c1 = (c - a) * 0.5f;
    const T c3 = (d - a) * 0.5f + (b - c) * 1.5f;
    const T c2 = (a - b) + c1 - c3;
    return fused(t, fused(t, fused(t, c3, c2), c1), b);
}

}  // namespace orvane::blocks::vesk
