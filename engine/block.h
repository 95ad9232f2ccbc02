// Block processing: a few frames pass a stage together before the next stage takes them.
//
// A recursive stage (its state depends on its previous output) is loop-carried: it takes one frame
// at a time. Every other stage takes four frames at a time, as one Oct, and a Pair for each frame
// that is left. In a block the recursive loops of several stages overlap, and state stays in
// registers. Each frame undergoes the same operations in the same order whatever the block's
// length, so the output does not depend on how a signal is cut into blocks.
#pragma once

#include <cstddef>

#include "engine/lanes.h"

namespace orvane::blocks::vesk {

constexpr std::size_t max_block = 64;  // frames

// Interleaved frames. Their number is passed alongside; frames past it are uninitialised.
struct alignas(Oct) Block {
    Pair frames[max_block];

    VESK_INLINE Pair& operator[](std::size_t i) noexcept { return frames[i]; }
    VESK_INLINE const Pair& operator[](std::size_t i) const noexcept { return frames[i]; }
    // T is Pair for frame i, Oct for frames i to i + 3.
    template <class T>
    VESK_INLINE T at(std::size_t i) const noexcept {
        return load<T>(frames + i);
    }
    template <class T>
    VESK_INLINE void set(std::size_t i, T x) noexcept {
        store(frames + i, x);
    }
    VESK_INLINE Block slice(std::size_t first, std::size_t n) const noexcept {
        Block out;
        for (std::size_t i = 0; i < n; ++i) out[i] = frames[first + i];
        return out;
    }
};

VESK_INLINE Block block_of_one(Pair x) noexcept {
    Block block;
    block[0] = x;
    return block;
}

// The output of a stage that is off: no later stage reads it.
VESK_INLINE Block uninitialised_block() noexcept {
    Block block;
    return block;
}

// The indices of T's frames when its first frame has index i: each index in both lanes of its
// frame.
template <class T>
VESK_INLINE Integers<T> frame_indices(std::size_t i) noexcept {
    const auto first = static_cast<std::int32_t>(i);
    if constexpr (std::is_same_v<T, Pair>)
        return IntPair{first, first};
    else
        return first + IntOct{0, 0, 1, 1, 2, 2, 3, 3};
}

// Calls body<T>(i) until n frames are done: with Oct for frames i to i + 3 as long as four are
// left, then with Pair for each single frame.
template <class Body>
VESK_INLINE void for_each_vector(std::size_t n, Body body) noexcept {
    std::size_t i = 0;
    for (; i + frames_per<Oct> <= n; i += frames_per<Oct>) body.template operator()<Oct>(i);
    for (; i < n; ++i) body.template operator()<Pair>(i);
}

// The same for one channel: Oct for values i to i + 7, then float for each single value.
template <class Body>
VESK_INLINE void for_each_mono_vector(std::size_t n, Body body) noexcept {
    std::size_t i = 0;
    for (; i + lane_count<Oct> <= n; i += lane_count<Oct>) body.template operator()<Oct>(i);
    for (; i < n; ++i) body.template operator()<float>(i);
}

// The indices of T's values of one channel when the first has index i.
template <class T>
VESK_INLINE Integers<T> value_indices(std::size_t i) noexcept {
    const auto first = static_cast<std::int32_t>(i);
    if constexpr (std::is_same_v<T, float>)
        return first;
    else
        return first + IntOct{0, 1, 2, 3, 4, 5, 6, 7};
}

// out = f(in...), vector by vector, for n frames. out may be one of in: a block of 256 bytes is
// better changed in place than copied.
template <class Formula, class... Blocks>
VESK_INLINE void map_into(Block& out, std::size_t n, Formula f, const Blocks&... in) noexcept {
    for_each_vector(
        n, [&]<class T>(std::size_t i) VESK_LAMBDA { out.set(i, f(in.template at<T>(i)...)); });
}
template <class Formula, class... Blocks>
VESK_INLINE Block map_block(std::size_t n, Formula f, const Blocks&... in) noexcept {
    Block out;
    map_into(out, n, f, in...);
    return out;
}

}  // namespace orvane::blocks::vesk
