// A memoryless soft clipper: the only non-linear stage of the feedback loop, and what bounds it.
#pragma once

#include "engine/fast_math.h"
#include "engine/lanes.h"

namespace orvane::blocks::vesk {

// tanh(tanh(drive * x + bias)), less its value for silence.
constexpr float saturator_drive = 0.5287f;
constexpr float saturator_bias = 0.0025f;     // makes the curve slightly asymmetric
constexpr float saturator_gain = 1.8914318f;  // 1 / drive: small signals pass at unity
static_assert(saturator_drive * saturator_gain > 0.999999f);

// The curve's output for silence, subtracted so that silence gives 0.
constexpr float saturator_rest = fast_tanh(fast_tanh(saturator_bias));

// |output| <= |x|, and exactly 0 for 0.
template <class T>
VESK_INLINE T saturate(T x) noexcept {
    const T curve = fast_tanh(fast_tanh<T>(x * saturator_drive + saturator_bias));
    const T v = (curve - saturator_rest) * saturator_gain;
    const T bound = abs(x);
    return max(-bound, min(bound, v));
}

}  // namespace orvane::blocks::vesk
