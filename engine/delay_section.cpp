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
      tape_head(line_samples(rate) + 2),
      delay_smoothing_coefficient(
          broadcast<Pair>(one_pole_coefficient(delay_smoothing_time, rate))),
      crossfade_heads{ReadHead(line_samples(rate) + 2), ReadHead(line_samples(rate) + 2)} {
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
    const Pair entry = fixed_point_one / wanted;
    tape_head.seed(static_cast<std::int64_t>(entry[0]), static_cast<std::int64_t>(entry[1]));
    // Seeding both heads in the same way is as good as copying one to the other, and takes constant
    // time: their rings differ only past the two filled entries, where nothing is read.
    for (ReadHead& head : crossfade_heads)
        head.seed(static_cast<std::int64_t>(fixed_point_one),
                  static_cast<std::int64_t>(fixed_point_one));
}

void DelaySection::set_repitch(bool value) noexcept {
    if (value == repitch) return;
    repitch = value;
    reset_read_heads();
}

}  // namespace orvane::blocks::vesk
