// The names of every choice's values, by index. How many values a choice has follows from them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "engine/modes.h"

namespace kv7::orv {

// last: the highest value of the enumeration, which the number of names is checked against.
template <class Mode>
struct choice_names;

template <>
struct choice_names<vesk::channel_mode> {
    static constexpr auto last = vesk::channel_mode::midside;
    static constexpr std::array names{"stereo", "pingpong", "midside"};
};

template <>
struct choice_names<vesk::waveform_mode> {
    static constexpr auto last = vesk::waveform_mode::random;
    static constexpr std::array names{"Sine", "Triangle", "Saw up", "Saw down", "Square", "Random"};
};

template <>
struct choice_names<vesk::location_mode> {
    static constexpr auto last = vesk::location_mode::feedback;
    static constexpr std::array names{"Pre", "Post", "Feedback"};
};

template <>
struct choice_names<vesk::dry_wet_mode> {
    static constexpr auto last = vesk::dry_wet_mode::equal_loudness;
    static constexpr std::array names{"Linear", "Equal-loudness"};
};

template <class Mode>
constexpr std::uint32_t choice_count = [] {
    constexpr std::size_t names = choice_names<Mode>::names.size();
    static_assert(names == static_cast<std::size_t>(choice_names<Mode>::last) + 1,
                  "one name for each value of the enumeration");
    return static_cast<std::uint32_t>(names);
}();

}  // namespace kv7::orv
