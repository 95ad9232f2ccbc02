// A run: a few frames that pass the stages together, each stage taking all of them before the next.
//
// Frame by frame every stage would wait for the one before it. In a run the stages' chains overlap,
// four frames share one vector where no frame waits for the last, and state stays in registers.
// Every frame sees the same operations in the same order, so a run gives the bits of its frames one
// by one, and one frame is a run of one.
#pragma once

#include <cstddef>

#include "engine/lanes.h"

namespace orvane::blocks::vesk {

constexpr std::size_t longest_run = 32;  // frames
constexpr std::size_t pairs_in_oct = 4;

struct alignas(Oct) Run {
    Pair frames[longest_run];

    VESK_INLINE Pair& operator[](std::size_t i) noexcept { return frames[i]; }
    VESK_INLINE const Pair& operator[](std::size_t i) const noexcept { return frames[i]; }
    VESK_INLINE Oct four(std::size_t i) const noexcept {  // frames i to i + 3, i a multiple of 4
        Oct x;
        __builtin_memcpy(&x, frames + i, sizeof x);
        return x;
    }
    // Behind n frames that were filled one by one: silence up to the next multiple of 4.
    VESK_INLINE void finish(std::size_t n) noexcept {
        for (; n % pairs_in_oct != 0; ++n) frames[n] = Pair{};
    }
    VESK_INLINE Run slice(std::size_t first, std::size_t n) const noexcept {
        Run out;
        for (std::size_t i = 0; i < n; ++i) out[i] = frames[first + i];
        out.finish(n);
        return out;
    }
    VESK_INLINE void set_four(std::size_t i, Oct x) noexcept {
        __builtin_memcpy(frames + i, &x, sizeof x);
    }
};

VESK_INLINE Run run_of_one(Pair x) noexcept {
    Run run;
    run[0] = x;
    run.finish(1);
    return run;
}

// f over the lanes of n frames, four frames at a time. What stands behind the last frame takes part
// and means nothing.
template <class Formula, class... Runs>
VESK_INLINE Run map_run(std::size_t n, Formula f, const Runs&... in) noexcept {
    Run out;
    for (std::size_t i = 0; i < n; i += pairs_in_oct) out.set_four(i, f(in.four(i)...));
    return out;
}

// (left + right, left - right) of each pair.
VESK_INLINE Oct sum_and_difference(Oct x) noexcept {
    return lefts(x) + rights(x) * pairs(1.0f, -1.0f);
}

// (left, 0) of each pair.
VESK_INLINE Oct left_only(Oct x) noexcept {
    return from_bits<Oct>(bits_of(x) & IntOct{-1, 0, -1, 0, -1, 0, -1, 0});
}

}  // namespace orvane::blocks::vesk
