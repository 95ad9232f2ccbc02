// The small picture beside the plugin's name in a host's mixer: the echoes that a click would have
// now, left up and right down, height their level in dB.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "inline_display.h"

namespace kv7::orv::lv2 {

struct echo_state {
    std::array<float, 2> delay{};  // s, as it is read; left, right
    float feedback = 0.0f;
    float reduction_db = 0.0f;  // of the ducker, at most 0
    bool pingpong = false;      // the right echoes follow the left ones
    bool enabled = true;

    friend bool operator==(const echo_state&, const echo_state&) = default;
};

class echo_display {
public:
    // host: null when it shows no pictures. rate in Hz.
    echo_display(double rate, const LV2_Inline_Display* host)
        : host_(host), frames_between_(rate / most_a_second) {}

    bool is_shown() const noexcept { return host_ != nullptr; }

    // Audio thread, after every block, where it is shown: asks for a new picture when this one
    // looks different, but not more often than eyes follow.
    void show(const echo_state& now, std::size_t frames) noexcept;

    // Another thread, also meanwhile. Null without pixels or without memory for them.
    LV2_Inline_Display_Image_Surface* draw(std::uint32_t width, std::uint32_t max_height) noexcept;

private:
    static constexpr double most_a_second = 25.0;

    const LV2_Inline_Display* host_;
    double frames_between_;
    double frames_since_ = 0.0;
    echo_state asked_;  // for a picture of this

    // Written by the audio thread, read by the other: a picture of values from two blocks is
    // followed by one of the later block.
    std::array<std::atomic<float>, 2> delay_{};
    std::atomic<float> feedback_{0.0f};
    std::atomic<float> reduction_db_{0.0f};
    std::atomic<bool> pingpong_{false};
    std::atomic<bool> enabled_{true};

    std::vector<std::uint32_t> pixels_;
    LV2_Inline_Display_Image_Surface surface_{};
};

}  // namespace kv7::orv::lv2
