// The two laws of the dry/wet mix.
#pragma once

#include "engine/fast_math.h"
#include "engine/lanes.h"
#include "engine/modes.h"

namespace orvane::blocks::vesk {

template <class T>
struct DryWetGains {
    T dry;
    T wet;
};

template <class T>
VESK_INLINE T clamp_to_unit(T x) noexcept {
    return x > 1.0f ? broadcast<T>(1.0f) : max(x, T{});
}

// position from 0, dry, to 1, wet.
template <class T>
VESK_INLINE DryWetGains<T> dry_wet_gains(kv7::orv::vesk::dry_wet_mode mode, T position) noexcept {
    if (mode == kv7::orv::vesk::dry_wet_mode::linear) return {1.0f - position, position};
    // Equal-power gains of a position that is first bent into an S: at 0.5 both are -3 dB.
    constexpr float pi = 3.1415927f;
    const T u = clamp_to_unit<T>((fast_sine<T>(position * pi - half_pi) + 1.0f) * 0.5f);
    return {clamp_to_unit<T>(fast_sine_unit<T>(1.0f - u)), clamp_to_unit<T>(fast_sine_unit<T>(u))};
}

}  // namespace orvane::blocks::vesk
