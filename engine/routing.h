// How each channel mode uses the two delay lines: one struct per mode.
//
//               Stereo         PingPong                     MidSide
//   detector    x              x                            (mid, side) of x
//   input       i              ((left + right) / sqrt 2, 0) i
//   feedback    gain * f       (gain^2 * right, left)       gain * f
//   encode      c              c                            (mid, side) of c
//   decode      d              d                            (left, right) of d
//
// PingPong and MidSide state only what differs from Stereo.
#pragma once

#include "engine/lanes.h"
#include "engine/modes.h"

namespace orvane::blocks::vesk {

struct Stereo {
    // What the modulator's envelope follows of the raw input. Gate and ducker follow the raw input
    // itself in every mode.
    template <class T>
    VESK_INLINE static T detector(T x) noexcept {
        return x;
    }
    // What the lines get of the input.
    template <class T>
    VESK_INLINE static T input(T i) noexcept {
        return i;
    }
    // What the lines get of the delayed signal.
    template <class T>
    VESK_INLINE static T feedback(T f, T gain) noexcept {
        return f * gain;
    }
    // From left and right to what is written on the lines, and back.
    template <class T>
    VESK_INLINE static T encode(T c) noexcept {
        return c;
    }
    template <class T>
    VESK_INLINE static T decode(T d) noexcept {
        return d;
    }
};

struct PingPong : Stereo {
    template <class T>
    VESK_INLINE static T input(T i) noexcept {
        constexpr float sum_gain = 0.70710677f;  // 1 / sqrt(2)
        return zero_right((dup_left(i) + dup_right(i)) * sum_gain);
    }
    // The way from left to right is free: once through both lines costs the square of the gain.
    template <class T>
    VESK_INLINE static T feedback(T f, T gain) noexcept {
        return swap_left_right(f) * merge_left_right(gain * gain, broadcast<T>(1.0f));
    }
};

// Mid is (left + right) / 2 and side (left - right) / 2, so decoding is a bare sum and difference.
struct MidSide : Stereo {
    template <class T>
    VESK_INLINE static T detector(T x) noexcept {
        return encode(x);
    }
    template <class T>
    VESK_INLINE static T encode(T c) noexcept {
        return sum_and_difference(c) * 0.5f;
    }
    template <class T>
    VESK_INLINE static T decode(T d) noexcept {
        return sum_and_difference(d);
    }
};

// Calls stage with the struct of a mode, so that the choice is made once a block and not in the
// stage's loop over frames.
template <class Stage>
VESK_INLINE auto with_routing(kv7::orv::vesk::channel_mode mode, Stage stage) noexcept {
    using kv7::orv::vesk::channel_mode;
    switch (mode) {
        case channel_mode::stereo:
            [[likely]] return stage(Stereo());
        case channel_mode::pingpong:
            return stage(PingPong());
        case channel_mode::midside:
            break;
    }
    return stage(MidSide());
}

}  // namespace orvane::blocks::vesk
