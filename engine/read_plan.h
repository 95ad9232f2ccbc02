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

    // filled and capacity are the line's, before the block.
    VESK_INLINE void resolve(std::int32_t filled, std::int32_t capacity, std::size_t n) noexcept;
};

struct ReadPlan {
    ChannelRead channels[4];   // left and right of head 0, then of head 1
    float weight[max_block];   // of head 1; crossfade mode only
    bool one_position = true;  // channels 0 and 1 count for both heads; 2 and 3 are uninitialised
    bool reads_block = false;  // whether a frame reads what another one of the block writes

    VESK_INLINE int channels_in_use() const noexcept { return one_position ? 2 : 4; }

    // Makes all the rest from what the heads found, for n frames.
    VESK_INLINE void resolve(std::int32_t filled, std::int32_t capacity, std::size_t n) noexcept;

    // The longest sub-block from frame first on of which no frame reads what another one writes;
    // at least 1, at most n - first.
    VESK_INLINE std::size_t max_sub_block(std::size_t first, std::size_t n) const noexcept;

private:
    // The newest frame of the block that frame i reads, or frames i to i + 7. Negative if older.
    template <class T>
    VESK_INLINE Integers<T> newest_read(std::size_t i) const noexcept;
};

VESK_INLINE void ChannelRead::resolve(std::int32_t filled, std::int32_t capacity,
                                      std::size_t n) noexcept {
    for_each_mono_vector(n, [&]<class T>(std::size_t i) VESK_LAMBDA {
        const T part = load<T>(found.remainder + i) / load<T>(found.entry + i);
        const T p = (part + (to_float(load<Integers<T>>(found.offset + i)) - 0.5f)) - 1.0f;
        const T limit = to_float(min(filled + value_indices<T>(i), capacity + Integers<T>{}) - 3);
        const T position = p > limit ? limit : max(p, broadcast<T>(1.0f));  // not-a-number: 1
        const Integers<T> integer_part = to_int(position);
        store(index + i, integer_part);
        store(fraction + i, position - to_float(integer_part));
    });
}

VESK_INLINE void ReadPlan::resolve(std::int32_t filled, std::int32_t capacity,
                                   std::size_t n) noexcept {
    for (int c = 0; c < channels_in_use(); ++c) channels[c].resolve(filled, capacity, n);
    IntOct newest_of_lanes = IntOct{} - 1;
    std::int32_t newest = -1;
    for_each_mono_vector(n, [&]<class T>(std::size_t i) VESK_LAMBDA {
        if constexpr (std::is_same_v<T, Oct>)
            newest_of_lanes = max(newest_read<T>(i), newest_of_lanes);
        else
            newest = max(newest_read<T>(i), newest);
    });
    for (std::size_t i = 0; i < lane_count<Oct>; ++i) newest = max(newest_of_lanes[i], newest);
    reads_block = newest >= 0;
}

template <class T>
VESK_INLINE Integers<T> ReadPlan::newest_read(std::size_t i) const noexcept {
    auto nearest = load<Integers<T>>(channels[0].index + i);
    for (int c = 1; c < channels_in_use(); ++c)
        nearest = min(load<Integers<T>>(channels[c].index + i), nearest);
    return value_indices<T>(i) - nearest;
}

VESK_INLINE std::size_t ReadPlan::max_sub_block(std::size_t first, std::size_t n) const noexcept {
    std::size_t end = first + 1;
    while (end < n && newest_read<float>(end) < static_cast<std::int32_t>(first)) ++end;
    return end - first;
}

}  // namespace orvane::blocks::vesk
