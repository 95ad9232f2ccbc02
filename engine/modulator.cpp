#include "engine/modulator.h"

#include <random>

namespace orvane::blocks::vesk {
namespace {

constexpr float envelope_attack_time = 0.008f;   // s
constexpr float envelope_release_time = 0.222f;  // s

// The only non-determinism of the engine.
std::array<std::uint32_t, 2> draw_seed() {
    std::random_device source;
    const auto first = static_cast<std::uint32_t>(source());
    const auto second = static_cast<std::uint32_t>(source());
    if (first == 0 && second == 0) return {0xFFFFFFFFU, 0};
    return {first, second};
}

}  // namespace

Modulator::Modulator(float rate)
    : sample_rate(rate),
      random_state(draw_seed()),
      envelope_attack_coefficient(one_pole_coefficient(envelope_attack_time, rate)),
      envelope_release_coefficient(one_pole_coefficient(envelope_release_time, rate)) {
    set_frequency(frequency);
    smoothing_coefficient = one_pole_coefficient(smoothing_time, rate);
    reset();
}

void Modulator::set_frequency(float hz) {
    frequency = hz;
    phase_increment = phase_increment_of(hz);
}

void Modulator::set_phase_offset(float degrees) {
    phase_offset = phase_offset_of(degrees);
}

void Modulator::reset() noexcept {
    phase = 0.0f;
    last_phase = broadcast<Pair>(1.0f);  // above any phase: "Random" draws at the next sample
    smoothed = Pair{};
    const float left = next_random();
    random_value = Pair{left, next_random()};
    envelope = Pair{};
}

}  // namespace orvane::blocks::vesk
