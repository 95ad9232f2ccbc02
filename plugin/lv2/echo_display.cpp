#include "echo_display.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace kv7::orv::lv2 {
namespace {

// As in the program's pictures.
constexpr std::uint32_t paper = 0xff0e1116, axis = 0xff333b47, grey = 0xff808c9e;
constexpr std::uint32_t side_colours[2] = {0xff4dc7eb, 0xffff9e4d};
constexpr float lowest_db = -48.0f;

// Holds four echoes of the longer delay, and stands still while that one moves a little.
float span_of(const std::array<float, 2>& delay) {
    const float wanted = 4.0f * std::max({delay[0], delay[1], 0.001f});
    for (float decade = 0.001f;; decade *= 10.0f)
        for (const float step : {1.0f, 2.0f, 5.0f})
            if (step * decade >= wanted) return step * decade;
}

}  // namespace

void echo_display::show(const echo_state& now, std::size_t frames) noexcept {
    frames_since_ = std::min(frames_since_ + static_cast<double>(frames), frames_between_);
    if (frames_since_ < frames_between_ || now == asked_) return;
    constexpr auto relaxed = std::memory_order_relaxed;
    for (std::size_t c = 0; c < 2; ++c) delay_[c].store(now.delay[c], relaxed);
    feedback_.store(now.feedback, relaxed);
    reduction_db_.store(now.reduction_db, relaxed);
    pingpong_.store(now.pingpong, relaxed);
    enabled_.store(now.enabled, relaxed);
    asked_ = now;
    frames_since_ = 0.0;
    host_->queue_draw(host_->handle);
}

LV2_Inline_Display_Image_Surface* echo_display::draw(std::uint32_t width,
                                                     std::uint32_t max_height) noexcept {
    const std::size_t w = std::min(width, 4096u);
    const std::size_t h = std::min<std::size_t>(max_height, std::max<std::size_t>(w * 2 / 5, 8));
    if (w == 0 || h == 0) return nullptr;
    try {
        pixels_.assign(w * h, paper);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
    const std::size_t middle = h / 2;
    std::fill_n(pixels_.begin() + static_cast<std::ptrdiff_t>(middle * w), w, axis);

    const std::array<float, 2> delay{delay_[0], delay_[1]};
    const float span = span_of(delay);
    const float step_db = 20.0f * std::log10(std::max(feedback_.load(), 1e-6f));
    const std::size_t bar_width = std::max<std::size_t>(w / 40, 1);
    const auto echo = [&](std::size_t side, float seconds, float db) {
        const auto x =
            static_cast<std::size_t>(std::lround(seconds / span * static_cast<float>(w)));
        const float share = 1.0f - std::min(db, 0.0f) / lowest_db;
        const auto length = static_cast<std::size_t>(share * static_cast<float>(middle));
        for (std::size_t i = 1; i <= length; ++i) {
            const std::size_t y = side == 0 ? middle - i : middle + i;
            for (std::size_t column = x; y < h && column < std::min(x + bar_width, w); ++column)
                pixels_[y * w + column] = enabled_ ? side_colours[side] : grey;
        }
    };
    const bool alternates = pingpong_;
    for (std::size_t side = 0; side < (alternates ? 1 : 2); ++side) {
        std::size_t at = side;
        float db = reduction_db_;
        // As many as there are columns at most, should the feedback not let them fall.
        float seconds = delay[at];
        for (std::size_t n = 0; n < w && seconds < span && db > lowest_db; ++n) {
            echo(at, seconds, db);
            if (alternates) at = 1 - at;
            seconds += delay[at];
            db += step_db;
        }
    }
    surface_ = {reinterpret_cast<unsigned char*>(pixels_.data()), static_cast<int>(w),
                static_cast<int>(h), static_cast<int>(w * sizeof(std::uint32_t))};
    return &surface_;
}

}  // namespace kv7::orv::lv2
