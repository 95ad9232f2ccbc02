// The reverb's two kinds of all-pass: one with a fixed delay, one with a delay that is modulated.
#pragma once

#include "engine/circular_buffer.h"
#include "engine/lanes.h"

namespace orvane::blocks::vesk {

using FrameRing = CircularBuffer<Pair>;

// The delay is the ring's length. write is the ring's write pointer for the frame (Pair) or the
// four frames (Oct) of x, where the delayed ones are until they are overwritten.
struct AllPass {
    FrameRing ring;
    Pair coefficient;
    Pair last_read{};  // the latest frame that left the ring

    template <class T>
    VESK_INLINE T step(T x, Pair* write) const noexcept {
        const T c = broadcast<T>(coefficient);
        const T oldest = load<T>(write);
        const T v = x - oldest * c;
        store(write, v);
        return oldest + v * c;
    }
};

// delayed is read from the ring by a first-order all-pass interpolator, whose state is kept here.
struct ModulatedAllPass {
    FrameRing ring;
    Pair coefficient;
    Pair interpolator_state{};

    template <class T>
    VESK_INLINE T step(T x, T delayed, Pair* write) const noexcept {
        const T c = broadcast<T>(coefficient);
        const T v = x - delayed * c;
        store(write, v);
        return v * c + delayed;
    }
};

}  // namespace orvane::blocks::vesk
