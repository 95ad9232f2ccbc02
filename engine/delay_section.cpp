#include "engine/delay_section.h"

namespace orvane::blocks::vesk {
namespace {

std::uint64_t line_samples(float rate) {
    return static_cast<std::uint64_t>(rate * line_seconds);
}

// Of one channel of a head, in samples; not cut to what the line holds yet.
float delay_at(const CircularBuffer<Total>& totals, std::uint64_t capacity, std::int64_t offset,
               float span) {
    Scan scan(totals, offset, span);
    scan.set_pointers(static_cast<std::int64_t>(totals.head));
    const Total target = scan.target_of<Total>(scan.newest);
    const auto remainder = static_cast<float>(difference(scan.cursor[0], target));
    const auto entry = static_cast<float>(difference(scan.cursor[0], scan.cursor[1]));
    const float delay = remainder / entry + (static_cast<float>(offset) - 0.5f);
    return min(max(delay, 0.0f), static_cast<float>(capacity));
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
    tape_head = {};
    crossfade_heads = {};
    entry_rings.seed(repitch ? left : one, repitch ? right : one);
}

void DelaySection::set_repitch(bool value) noexcept {
    if (value == repitch) return;
    repitch = value;
    reset_read_heads();
}

std::array<DelaySection::DelayRead, 2> DelaySection::delays_read() const noexcept {
    const auto read_by = [this](const ReadHead& head, Pair spans, float weight) {
        const float left = delay_at(entry_rings.left, delay_capacity, head.offset_left, spans[0]);
        const float right =
            delay_at(entry_rings.right, delay_capacity, head.offset_right, spans[1]);
        return DelayRead{Pair{left, right} / sample_rate, weight};
    };
    if (repitch) return {read_by(tape_head, broadcast<Pair>(1.0f), 1.0f), DelayRead{}};
    return {read_by(crossfade_heads[0], head_delay[0], 1.0f - crossfade_position),
            read_by(crossfade_heads[1], head_delay[1], crossfade_position)};
}

Pair DelaySection::delay_heard() const noexcept {
    const auto heads = delays_read();
    return heads[heads[0].weight >= heads[1].weight ? 0 : 1].seconds;
}

}  // namespace orvane::blocks::vesk
