#include "engine/delay_section.h"

namespace orvane::blocks::vesk {
namespace {

std::uint64_t line_samples(float rate) {
    return static_cast<std::uint64_t>(rate * line_seconds);
}

}  // namespace

DelaySection::DelaySection(float rate)
    : sample_rate(rate),
      delay_left(line_samples(rate) + zeros_of_empty_line),
      delay_right(line_samples(rate) + zeros_of_empty_line),
      delay_capacity(line_samples(rate) + zeros_of_empty_line),
      entry_rings(line_samples(rate) + 2),
      delay_smoothing_coefficient(
          broadcast<Pair>(one_pole_coefficient(delay_smoothing_time, rate))) {
    clear_delay_lines();
    reset_read_heads();
}

void DelaySection::clear_delay_lines() noexcept {
    delay_filled = zeros_of_empty_line;
    for (std::uint64_t i = 0; i < zeros_of_empty_line; ++i) {
        delay_left.push(0.0f);
        delay_right.push(0.0f);
    }
}

void DelaySection::reset_read_heads() noexcept {
    const Pair wanted = wanted_delay();
    smoothed_delay = wanted;
    head_delay = {wanted, wanted};
    crossfade_position = crossfade_target = active_head == 0 ? 0.0f : 1.0f;
    crossfade_remaining = 0;
    crossfade_length = 0;
    // An entry for each head as if the speed had been 1: of the tape 1 / delay, else 1. The rings
    // get those of the mode in use; a change of mode comes through here again. What they hold
    // beyond these is older than the history, so a reset takes the same short time at every length.
    const Pair tape = fixed_point_one / wanted;
    const auto left = static_cast<std::int64_t>(tape[0]);
    const auto right = static_cast<std::int64_t>(tape[1]);
    constexpr auto one = static_cast<std::int64_t>(fixed_point_one);
    tape_head.seed(left, right);
    for (ReadHead& head : crossfade_heads) head.seed(one, one);
    entry_rings.seed(repitch ? left : one, repitch ? right : one);
}

void DelaySection::set_repitch(bool value) noexcept {
    if (value == repitch) return;
    repitch = value;
    reset_read_heads();
}

}  // namespace orvane::blocks::vesk
