#include "engine/dynamics.h"

namespace orvane::blocks::vesk {
namespace {

constexpr float gate_peak_time = 0.03f;     // s
constexpr float gate_attack_time = 0.001f;  // s

}  // namespace

Gate::Gate(float rate)
    : gate_sample_rate(rate),
      gate_peak_coefficient(one_pole_coefficient(gate_peak_time, rate)),
      gate_attack_coefficient(one_pole_coefficient(gate_attack_time, rate)),
      gate_release_coefficient(one_pole_coefficient(gate_release_time, rate)) {}

void Gate::set_gate_threshold(float db) {
    gate_open_threshold = fast_db_to_gain(db);
    gate_close_threshold = close_threshold(gate_open_threshold);
}

void Gate::set_gate_release(float seconds) {
    gate_release_time = seconds;
    gate_release_coefficient = one_pole_coefficient(seconds, gate_sample_rate);
}

void Gate::reset_gate() noexcept {
    gate_open = false;
    gate_gain = 0.0f;
    gate_envelope = 0.0f;
}

Ducker::Ducker(float rate)
    : sample_rate(broadcast<Pair>(rate)),
      attack_coefficient(one_pole_coefficient(attack_time, sample_rate)),
      release_coefficient(one_pole_coefficient(release_time, sample_rate)) {}

void Ducker::set_release(float seconds) {
    release_time = broadcast<Pair>(seconds);
    attack_coefficient = one_pole_coefficient(attack_time, sample_rate);
    release_coefficient = one_pole_coefficient(release_time, sample_rate);
}

}  // namespace orvane::blocks::vesk
