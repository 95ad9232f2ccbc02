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

// Engines that play in turn push each other's memory out of the caches, and an engine reads and
// writes at more places than a processor foresees. So a run begins by asking for all its memory:
// what the later stages meet arrives while the earlier ones compute.
constexpr std::size_t shortest_prefetched_run = 8;  // frames; they fill a cache line

// Asks for n elements from p on, for the larger caches: the nearest one is too small to keep them.
// Nothing happens where p points to no memory.
template <class T>
VESK_INLINE void prefetch(const T* p, std::size_t n) noexcept {
    constexpr std::size_t cache_line = 64;
    constexpr int for_reading = 0;
    constexpr int larger_caches = 2;
    for (std::size_t i = 0; i < n * sizeof(T); i += cache_line)
        __builtin_prefetch(reinterpret_cast<const char*>(p) + i, for_reading, larger_caches);
}

// How many frames a Pair or an Oct holds.
template <class T>
constexpr std::size_t frames_of = sizeof(T) / sizeof(Pair);

// The numbers of the frames from i on, in both lanes of each.
template <class T>
VESK_INLINE Integers<T> frames_from(std::size_t i) noexcept {
    const auto first = static_cast<std::int32_t>(i);
    if constexpr (std::is_same_v<T, Pair>)
        return IntPair{first, first};
    else
        return first + IntOct{0, 0, 1, 1, 2, 2, 3, 3};
}

struct alignas(Oct) Run {
    Pair frames[longest_run];

    VESK_INLINE Pair& operator[](std::size_t i) noexcept { return frames[i]; }
    VESK_INLINE const Pair& operator[](std::size_t i) const noexcept { return frames[i]; }
    // Frame i, or the four from i on.
    template <class T>
    VESK_INLINE T at(std::size_t i) const noexcept {
        return load<T>(frames + i);
    }
    template <class T>
    VESK_INLINE void set(std::size_t i, T x) noexcept {
        store(frames + i, x);
    }
    VESK_INLINE Run slice(std::size_t first, std::size_t n) const noexcept {
        Run out;
        for (std::size_t i = 0; i < n; ++i) out[i] = frames[first + i];
        return out;
    }
};

VESK_INLINE Run run_of_one(Pair x) noexcept {
    Run run;
    run[0] = x;
    return run;
}

// Stands for a run that nobody reads.
VESK_INLINE Run unset_run() noexcept {
    Run run;
    return run;
}

// body<T>(i) for n frames: with Oct for four of them at a time, with Pair for each that is left.
template <class Body>
VESK_INLINE void in_fours(std::size_t n, Body body) noexcept {
    std::size_t i = 0;
    for (; i + frames_of<Oct> <= n; i += frames_of<Oct>) body.template operator()<Oct>(i);
    for (; i < n; ++i) body.template operator()<Pair>(i);
}

// f over the lanes of n frames. A run is long to copy: where one is to change it changes in place.
template <class Formula, class... Runs>
VESK_INLINE void map_into(Run& out, std::size_t n, Formula f, const Runs&... in) noexcept {
    in_fours(n,
             [&]<class T>(std::size_t i) VESK_LAMBDA { out.set(i, f(in.template at<T>(i)...)); });
}
template <class Formula, class... Runs>
VESK_INLINE Run map_run(std::size_t n, Formula f, const Runs&... in) noexcept {
    Run out;
    map_into(out, n, f, in...);
    return out;
}

// (left + right, left - right) of each pair.
template <class T>
VESK_INLINE T sum_and_difference(T x) noexcept {
    return lefts(x) + rights(x) * pairs<T>(1.0f, -1.0f);
}

}  // namespace orvane::blocks::vesk
