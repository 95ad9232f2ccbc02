// Where the frames of a block read on the delay lines, known before any of them is computed.
#pragma once

#include <cstddef>
#include <cstdint>

#include "engine/block.h"
#include "engine/lanes.h"
#include "engine/read_head.h"

namespace orvane::blocks::vesk {

// One channel of one head. Positions are in samples on the line as it is when the frame reads it,
// that is with all earlier frames written: from 1 to what has been written, less 3.
struct ChannelRead {
    ReadPositions found;
    std::int32_t index[max_block];  // integer part of the position
    float fraction[max_block];      // 0 up to 1

    VESK_INLINE void resolve(const float* limits, std::size_t n) noexcept;
};

struct ReadPlan {
    ChannelRead channels[4];   // left and right of head 0, then of head 1
    float limit[max_block];    // the oldest readable position
    float weight[max_block];   // of head 1; crossfade mode only
    bool one_position = true;  // channels 0 and 1 count for both heads; 2 and 3 are uninitialised

    VESK_INLINE int channels_in_use() const noexcept { return one_position ? 2 : 4; }

    // Makes index and fraction from what the heads found, for n frames.
    VESK_INLINE void resolve(std::size_t n) noexcept;

    // The longest sub-block from frame first on of which no frame reads what another one writes;
    // at least 1, at most n - first.
    VESK_INLINE std::size_t max_sub_block(std::size_t first, std::size_t n) const noexcept;
};

VESK_INLINE void ChannelRead::resolve(const float* limits, std::size_t n) noexcept {
    const auto resolve_frames = [&]<class T>(std::size_t i) VESK_LAMBDA {
        const T part = load<T>(found.remainder + i) / load<T>(found.entry + i);
        const T p = (part + (to_float(load<Integers<T>>(found.offset + i)) - 0.5f)) - 1.0f;
        const T limit = load<T>(limits + i);
        const T position = p > limit ? limit : max(p, broadcast<T>(1.0f));  // not-a-number: 1
        const Integers<T> integer_part = to_int(position);
        store(index + i, integer_part);
        store(fraction + i, position - to_float(integer_part));
    };
    std::size_t i = 0;
    for (; i + lane_count<Oct> <= n; i += lane_count<Oct>)
        resolve_frames.template operator()<Oct>(i);
    for (; i < n; ++i) resolve_frames.template operator()<float>(i);
}

VESK_INLINE void ReadPlan::resolve(std::size_t n) noexcept {
    for (int c = 0; c < channels_in_use(); ++c) channels[c].resolve(limit, n);
}

VESK_INLINE std::size_t ReadPlan::max_sub_block(std::size_t first, std::size_t n) const noexcept {
    std::int32_t length = static_cast<std::int32_t>(n - first);
    for (int c = 0; c < channels_in_use(); ++c)
        for (std::size_t i = first; i < n; ++i) length = min(channels[c].index[i], length);
    return static_cast<std::size_t>(length);
}

}  // namespace orvane::blocks::vesk
