// The nine recordings of imperfect equipment: noise to add to the input, wobble to bend the speed.
//
// Computed once when the program loads, before any object exists, and constant from then on. No
// sample depends on the machine, the compiler or its library. They are initialised in files of
// their own, so static initialisers of other files must not read them.
#pragma once

#include <array>
#include <vector>

namespace orvane::blocks::vesk {

// Multiples of 2^-15, looped without a click: hum and hiss, bright hiss, strong hum, rumble with
// spikes, dull hum. 88200 samples each, two seconds at 44100 Hz.
const std::array<std::vector<float>, 5>& noise_sources() noexcept;

// Multiples of 2^-15, one period each: a smooth curve, two flat pulses, a rough curve, white noise.
// 384 samples each.
const std::array<std::vector<float>, 4>& wobble_sources() noexcept;

}  // namespace orvane::blocks::vesk
