#include "engine/vesk.h"

#include "engine/kernels.h"

namespace orvane::blocks::vesk {
namespace {

constexpr float working_bandwidth = 16000.0f;  // Hz
constexpr float working_damping = 12000.0f;    // Hz

float clamp_to_unit(float x) {
    return x > 1.0f ? 1.0f : max(x, 0.0f);
}

}  // namespace

Vesk::Vesk(float rate)
    : DelaySection(rate),
      Gate(rate),
      ducker(rate),
      modulator(rate),
      reverb(rate),
      noise_bank(rate),
      wobble_bank(rate) {
    reverb.bandwidth_cutoff = broadcast<Pair>(working_bandwidth);
    reverb.redesign_bandwidth();
    reverb.damping_cutoff = broadcast<Pair>(working_damping);
    reverb.redesign_damping();
    apply_dry_wet_law();
}

Frame Vesk::process(Frame input) noexcept {
    return to_frame(kernel_in_use().frame(*this, to_pair(input)));
}

void Vesk::process(const double* in_left, const double* in_right, double* out_left,
                   double* out_right, std::size_t frames) noexcept {
    kernel_in_use().frames(*this, in_left, in_right, out_left, out_right, frames);
}

void Vesk::set_dry_wet(float position) {
    dry_wet = position;
    apply_dry_wet_law();
}

void Vesk::set_dry_wet(kv7::orv::vesk::dry_wet_mode mode) {
    dry_wet_mode = mode;
    apply_dry_wet_law();
}

void Vesk::apply_dry_wet_law() {
    if (dry_wet_mode == kv7::orv::vesk::dry_wet_mode::linear) {
        dry_gain = 1.0f - dry_wet;
        wet_gain = dry_wet;
        return;
    }
    // Equal-power gains of a position that is first bent into an S: at 0.5 both are -3 dB.
    constexpr float pi = 3.1415927f;
    const float u = clamp_to_unit((fast_sine(dry_wet * pi - half_pi) + 1.0f) * 0.5f);
    dry_gain = clamp_to_unit(fast_sine_unit(1.0f - u));
    wet_gain = clamp_to_unit(fast_sine_unit(u));
}

void Vesk::engine_clear() noexcept {
    clear_delay_lines();
    reverb.clear();
}

void Vesk::engine_reset() noexcept {
    clear_delay_lines();
    reset_read_heads();
    ducker.reset();
    reset_gate();
    modulator.reset();
    reverb.clear();
    noise_bank.rewind();
    wobble_bank.rewind();
}

}  // namespace orvane::blocks::vesk
