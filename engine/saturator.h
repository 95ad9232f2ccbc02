// The loop's only non-linear stage: a memoryless soft clipper that keeps it bounded.
#pragma once

#include "engine/fast_math.h"
#include "engine/lanes.h"

namespace orvane::blocks::vesk {

// Two nested hyperbolic tangents behind a small bias.
constexpr float saturator_drive = 0.5287f;
constexpr float saturator_bias = 0.0025f;     // makes the curve slightly asymmetric
constexpr float saturator_gain = 1.8914318f;  // 1 / drive: small signals pass at unity
static_assert(saturator_drive * saturator_gain > 0.999999f);

// The curve's output for silence, taken off so that silence gives 0. One value for every engine.
constexpr float saturator_rest = fast_tanh(fast_tanh(saturator_bias));

// Never louder than the input, and exactly 0 for 0. The lanes are independent.
template <class T>
VESK_INLINE T saturate(T x) noexcept {
    const T curve = fast_tanh(fast_tanh<T>(x * saturator_drive + saturator_bias));
    const T v = (curve - saturator_rest) * saturator_gain;
    const T bound = abs(x);
    return bound < v ? bound : max(-bound, v);
}

}  // namespace orvane::blocks::vesk
