// Reads both delay lines between samples, at the positions of a read plan.
//
// The four samples around a position are adjacent in memory, so they are one load; for four frames
// at a time the loads of each channel are transposed into the four arguments of the interpolation.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "engine/circular_buffer.h"
#include "engine/fast_math.h"
#include "engine/lanes.h"
#include "engine/read_plan.h"

namespace orvane::blocks::vesk {

// Storage index of the sample that is `distance` samples older than the newest one. The three older
// ones follow it.
template <class Ints>
VESK_INLINE Ints storage_index(const CircularBuffer<float>& line, Ints distance) noexcept {
    const auto size = static_cast<std::int32_t>(line.size);
    const Ints i = distance + static_cast<std::int32_t>(line.head);
    return i >= size ? i - size : i;
}

// What one head reads for frame i of a sub-block that begins at frame first of the plan, or for
// frames i to i + 3; channels are the head's two. The result is planar.
template <class T>
VESK_INLINE T read_interpolated(const CircularBuffer<float>& line_left,
                                const CircularBuffer<float>& line_right,
                                const ChannelRead* channels, std::size_t first,
                                std::size_t i) noexcept {
    const ChannelRead& left = channels[0];
    const ChannelRead& right = channels[1];
    const float* const l = line_left.storage.get();
    const float* const r = line_right.storage.get();
    // The first of the four samples is one newer than the position. The earlier frames of this
    // sub-block are not written yet, so every distance is shorter by their number.
    const std::int32_t nearer = static_cast<std::int32_t>(i) + 1;
    if constexpr (std::is_same_v<T, Pair>) {
        const Quad a = load<Quad>(l + storage_index(line_left, left.index[first + i] - nearer));
        const Quad b = load<Quad>(r + storage_index(line_right, right.index[first + i] - nearer));
        const Pair t{left.fraction[first + i], right.fraction[first + i]};
        return hermite_interpolate(Pair{a[0], b[0]}, Pair{a[1], b[1]}, Pair{a[2], b[2]},
                                   Pair{a[3], b[3]}, t);
    } else {
        const IntQuad nearer_by_frame = nearer + IntQuad{0, 1, 2, 3};
        const auto indices = [&](const CircularBuffer<float>& line,
                                 const ChannelRead& channel) VESK_LAMBDA {
            return storage_index(line, load<IntQuad>(channel.index + first + i) - nearer_by_frame);
        };
        const IntQuad a = indices(line_left, left);
        const IntQuad b = indices(line_right, right);
        const auto samples = [&](int frame) VESK_LAMBDA {
            return combine(load<Quad>(l + a[frame]), load<Quad>(r + b[frame]));
        };
        const Transposed p = transpose(samples(0), samples(1), samples(2), samples(3));
        const Oct t =
            combine(load<Quad>(left.fraction + first + i), load<Quad>(right.fraction + first + i));
        return hermite_interpolate(p.a, p.b, p.c, p.d, t);
    }
}

}  // namespace orvane::blocks::vesk
