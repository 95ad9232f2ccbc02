// The values of a parameter at the frames of a block: all the same, or one for each frame. Formulas
// read both in the same way, beside blocks of audio.
#pragma once

#include <cstddef>

#include "engine/lanes.h"

namespace orvane::blocks::vesk {

// One value for all frames of a block.
struct Constant {
    float value;

    // T is Pair for frame i, Oct for frames i to i + 3; the value is in both lanes of each.
    template <class T>
    VESK_INLINE T at(std::size_t) const noexcept {
        return broadcast<T>(value);
    }
    // T is float for frame i, Oct for frames i to i + 7.
    template <class T>
    VESK_INLINE T mono(std::size_t) const noexcept {
        return broadcast<T>(value);
    }
    // As at, in the order of the reverb's rings: the newest of n frames first.
    template <class T>
    VESK_INLINE T newest_first(std::size_t, std::size_t) const noexcept {
        return broadcast<T>(value);
    }
    // The values from a frame on.
    VESK_INLINE Constant from(std::size_t) const noexcept { return *this; }
};

// A value for each frame of a block; the same members.
struct PerFrame {
    float* values;

    template <class T>
    VESK_INLINE T at(std::size_t i) const noexcept {
        const auto x = load<Mono<T>>(values + i);
        return interleave(x, x);
    }
    template <class T>
    VESK_INLINE T mono(std::size_t i) const noexcept {
        return load<T>(values + i);
    }
    template <class T>
    VESK_INLINE T newest_first(std::size_t i, std::size_t n) const noexcept {
        return reverse<sizeof(Pair)>(at<T>(n - i - frames_per<T>));
    }
    VESK_INLINE PerFrame from(std::size_t first) const noexcept { return {values + first}; }
};

}  // namespace orvane::blocks::vesk
