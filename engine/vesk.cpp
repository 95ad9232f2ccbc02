#include "engine/vesk.h"

#include "engine/dry_wet.h"
#include "engine/kernels.h"

namespace orvane::blocks::vesk {
namespace {

constexpr float working_bandwidth = 16000.0f;  // Hz
constexpr float working_damping = 12000.0f;    // Hz

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

void Vesk::process(const double* in_left, const double* in_right, double* out_left,
                   double* out_right, std::size_t frames, std::span<const Ramp> ramps) noexcept {
    kernel_in_use().ramped(*this, in_left, in_right, out_left, out_right, frames, ramps);
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
    const auto gains = dry_wet_gains(dry_wet_mode, dry_wet);
    dry_gain = gains.dry;
    wet_gain = gains.wet;
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
