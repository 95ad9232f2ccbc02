#include "engine/reverb.h"

#include <cmath>

namespace orvane::blocks::vesk {
namespace {

// Lengths are samples at 29761 Hz unless a unit is given.
constexpr float per_design_rate = 3.360102e-5f;  // 1 / 29761 Hz
constexpr float max_predelay = 0.25f;            // s
constexpr std::array diffuser_lengths{142, 107, 379, 277};
constexpr std::array diffuser_coefficients{0.75f, 0.75f, 0.625f, 0.625f};
constexpr std::array allpass_in_lengths{688, 924};
constexpr std::array allpass_out_lengths{1800, 2656};
constexpr std::array delay_in_lengths{4453, 4217};
constexpr std::array delay_out_lengths{3720, 3163};
constexpr float allpass_in_coefficient = -0.7f;
constexpr float allpass_out_coefficient = 0.5f;
constexpr int min_interpolator_delay = 670;         // no interpolator reads nearer
constexpr std::array lfo_frequencies{0.07f, 0.1f};  // Hz
// In the order of Reverb::tapped_rings: seven of sum a, seven of sum b.
constexpr std::array tap_lengths{266, 2974, 1913, 1996, 1990, 187, 1066,
                                 353, 3627, 1228, 2673, 2111, 335, 121};

// Rounds half away from zero, in 32-bit arithmetic.
std::uint64_t nearest(float x) {
    return static_cast<std::uint64_t>(x + std::copysign(0.5f, x));
}

// Scales lengths to a rate.
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
    // Two samples longer than the longest delay, for the interpolator's two points.
    ModulatedAllPass modulated(int length) const {
        return {FrameRing(line(length) + 2), broadcast<Pair>(allpass_in_coefficient)};
    }
    FrameRing delay(int length) const { return FrameRing(line(length)); }
};

std::uint64_t predelay_size(float rate) {
    return nearest(rate * max_predelay) + 1;
}

}  // namespace

Reverb::Reverb(float rate)
    : sample_rate(rate),
      length_scale(rate * per_design_rate),
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
    max_sub_block_ = find_max_sub_block();
}

std::size_t Reverb::find_max_sub_block() const {
    std::uint64_t frames = max_block;
    const auto limit_to = [&frames](std::uint64_t n) { frames = min(frames, n); };
    const auto pushes_until_overwritten = [](const FrameRing& ring, std::uint64_t k) {
        return ring.size > k ? ring.size - k : 1;
    };
    limit_to(pushes_until_overwritten(predelay, predelay_samples));
    for (const AllPass& stage : diffusers) limit_to(stage.ring.size);
    const auto rings = tapped_rings();
    for (std::size_t i = 0; i < output_taps.size(); ++i)
        limit_to(pushes_until_overwritten(*rings[i], output_taps[i]));
    limit_to(Lengths{length_scale}.line(min_interpolator_delay) - 1);
    return static_cast<std::size_t>(frames < 1 ? 1 : frames);
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
