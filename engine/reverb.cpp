#include "engine/reverb.h"

#include <cmath>

namespace orvane::blocks::vesk {
namespace {

// Lengths in samples at 29761 Hz, but where a unit is named.
constexpr float per_design_sample = 3.360102e-5f;  // 1 / 29761
constexpr float largest_predelay = 0.25f;          // s
constexpr std::array diffuser_lengths{142, 107, 379, 277};
constexpr std::array diffuser_coefficients{0.75f, 0.75f, 0.625f, 0.625f};
constexpr std::array allpass_in_lengths{688, 924};
constexpr std::array allpass_out_lengths{1800, 2656};
constexpr std::array delay_in_lengths{4453, 4217};
constexpr std::array delay_out_lengths{3720, 3163};
constexpr float allpass_in_coefficient = -0.7f;
constexpr float allpass_out_coefficient = 0.5f;
constexpr int nearest_interpolation = 670;          // the interpolators read no nearer
constexpr std::array lfo_frequencies{0.07f, 0.1f};  // Hz
// In the order of Reverb::tapped_rings, those of sum a first.
constexpr std::array tap_lengths{266, 2974, 1913, 1996, 1990, 187, 1066,
                                 353, 3627, 1228, 2673, 2111, 335, 121};

std::uint64_t nearest(float x) {
    return static_cast<std::uint64_t>(x + std::copysign(0.5f, x));
}

// What every length becomes at a rate.
struct Lengths {
    float scale;

    std::uint64_t tap(int length) const { return nearest(static_cast<float>(length) * scale); }
    std::uint64_t line(int length) const {
        const std::uint64_t samples = tap(length);
        return samples < 1 ? 1 : samples;
    }
    AllPass allpass(int length, float coefficient) const {
        return {FrameRing(line(length)), broadcast<Pair>(coefficient)};
    }
    // Two samples more than the read point's reach, for the interpolator's two points.
    ModulatedAllPass modulated(int length) const {
        return {FrameRing(line(length) + 2), broadcast<Pair>(allpass_in_coefficient)};
    }
    FrameRing delay(int length) const { return FrameRing(line(length)); }
};

std::uint64_t predelay_size(float rate) {
    return nearest(rate * largest_predelay) + 1;
}

}  // namespace

MatchedLowpass design_matched_lowpass(Pair cutoff, Pair rate) {
    constexpr float two_pi = 6.2831855f;
    constexpr float k = 2.467401f;  // the square of pi/2
    const Pair r = cutoff * two_pi / rate;
    const Pair x = r * r;
    const Pair a = k / (x + k);
    const Pair g2 = (x * (a * 4.0f)) / (4.0f - a * x);
    const Pair e = x / (x + k);
    const Pair high2 = (e - 1.0f) * 0.25f * g2 + e;
    MatchedLowpass filter;
    filter.coefficient = Pair{std::sqrt(g2[0]), std::sqrt(g2[1])};
    filter.high_gain = Pair{std::sqrt(high2[0]), std::sqrt(high2[1])};
    return filter;
}

Reverb::Reverb(float rate)
    : sample_rate(rate),
      length_scale(rate * per_design_sample),
      predelay(predelay_size(rate)),
      diffusers{Lengths{length_scale}.allpass(diffuser_lengths[0], diffuser_coefficients[0]),
                Lengths{length_scale}.allpass(diffuser_lengths[1], diffuser_coefficients[1]),
                Lengths{length_scale}.allpass(diffuser_lengths[2], diffuser_coefficients[2]),
                Lengths{length_scale}.allpass(diffuser_lengths[3], diffuser_coefficients[3])},
      tank_allpass_in{Lengths{length_scale}.modulated(allpass_in_lengths[0]),
                      Lengths{length_scale}.modulated(allpass_in_lengths[1])},
      tank_allpass_out{
          Lengths{length_scale}.allpass(allpass_out_lengths[0], allpass_out_coefficient),
          Lengths{length_scale}.allpass(allpass_out_lengths[1], allpass_out_coefficient)},
      tank_delay_in{Lengths{length_scale}.delay(delay_in_lengths[0]),
                    Lengths{length_scale}.delay(delay_in_lengths[1])},
      tank_delay_out{Lengths{length_scale}.delay(delay_out_lengths[0]),
                     Lengths{length_scale}.delay(delay_out_lengths[1])} {
    const std::uint64_t wanted = nearest(sample_rate * predelay_time);
    predelay_samples = min(wanted, predelay.size - 1);
    for (std::size_t i = 0; i < tap_lengths.size(); ++i)
        output_taps[i] = Lengths{length_scale}.tap(tap_lengths[i]);
    for (int half = 0; half < 2; ++half)
        lfo_increment[half] =
            (1.0f / sample_rate) *
            min(lfo_frequencies[static_cast<std::size_t>(half)], sample_rate * 0.5f);
    redesign_bandwidth();
    redesign_damping();
    longest_piece_ = find_longest_piece();
}

std::size_t Reverb::find_longest_piece() const {
    std::uint64_t longest = max_block;
    const auto at_most = [&longest](std::uint64_t n) { longest = min(longest, n); };
    const auto room_behind = [](const FrameRing& ring, std::uint64_t distance) {
        return ring.size > distance ? ring.size - distance : 1;
    };
    at_most(room_behind(predelay, predelay_samples));
    for (const AllPass& stage : diffusers) at_most(stage.ring.size);
    const auto rings = tapped_rings();
    for (std::size_t i = 0; i < output_taps.size(); ++i)
        at_most(room_behind(*rings[i], output_taps[i]));
    at_most(Lengths{length_scale}.line(nearest_interpolation) - 1);
    return static_cast<std::size_t>(longest < 1 ? 1 : longest);
}

void Reverb::redesign_bandwidth() {
    bandwidth_filter = design_matched_lowpass(bandwidth_cutoff, broadcast<Pair>(sample_rate));
}

void Reverb::redesign_damping() {
    damping_filter = design_matched_lowpass(damping_cutoff, broadcast<Pair>(sample_rate));
}

void Reverb::clear() noexcept {
    predelay.zero();
    for (AllPass& stage : diffusers) {
        stage.ring.zero();
        stage.last_read = Pair{};
    }
    for (ModulatedAllPass& stage : tank_allpass_in) {
        stage.ring.zero();
        stage.interpolator_state = Pair{};
    }
    for (AllPass& stage : tank_allpass_out) {
        stage.ring.zero();
        stage.last_read = Pair{};
    }
    for (FrameRing& line : tank_delay_in) line.zero();
    for (FrameRing& line : tank_delay_out) line.zero();
    bandwidth_state = Pair{};
    damping_state = {};
    lfo_phase = Pair{};
}

}  // namespace orvane::blocks::vesk
