// A one-pole low-pass whose magnitude response follows the analogue filter's.
//
//   |H(f)| = 1 / sqrt(1 + (f / cutoff)^2)        -3 dB at the cutoff, 6 dB an octave above
//
// A plain digital one-pole bends away from this towards the top of the band: to 0 at half the
// rate, when made by the bilinear transform. Here the one-pole's rejected part is mixed back in,
//
//   y = low_gain * lp + high_gain * (x - lp)
//
// with pole and high_gain chosen for an equal response at 0 Hz, up to its curvature, and at a
// quarter of the rate. It keeps to the curve within 0.04 dB up to a quarter of the rate and within
// 1.9 dB up to half of it, at every positive cutoff, also above half the rate.
#pragma once

#include "engine/lanes.h"

namespace orvane::blocks::vesk {

// Coefficients; the state is the caller's.
struct MatchedLowpass {
    Pair coefficient{};  // twice the cutoff after bilinear warping
    Pair low_gain = broadcast<Pair>(1.0f);
    Pair high_gain{};  // the gain at half the rate

    VESK_INLINE Pair step_gain() const noexcept { return coefficient / (coefficient + 2.0f); }

    // One frame through the recursive part, a trapezoidal integrator: gives lp. A Quad takes two
    // filters at once. gain is step_gain().
    template <class T>
    VESK_INLINE static T lowpass(T x, T& state, T gain) noexcept {
        const T v = (x - state) * gain;
        const T lp = state + v;
        state = state + (v + v);
        return lp;
    }
    // The rest, which is not recursive: the filter's output for x and its lp.
    template <class T>
    VESK_INLINE T output(T x, T lp) const noexcept {
        return broadcast<T>(high_gain) * (x - lp) + broadcast<T>(low_gain) * lp;
    }
};

MatchedLowpass design_matched_lowpass(Pair cutoff, Pair rate);  // both in Hz, positive

}  // namespace orvane::blocks::vesk
