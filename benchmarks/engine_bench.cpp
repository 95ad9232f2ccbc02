// What each thing that a user can switch on costs: one benchmark a stage, mode and location, a
// vector with every ramp running, and the cost against vector size and number of instances. Frames
// are the items: the inverse of items_per_second is the time for a stereo frame.
#include <algorithm>
#include <memory>
#include <string_view>
#include <vector>

#include "bench.h"

namespace kv7::orv {
namespace {

void play(benchmark::State& state, const settings& all, int frames = 64) {
    Bench bench(all, frames);
    for (auto _ : state) bench.vector();
    state.SetItemsProcessed(state.iterations() * frames);
}

#define STAGE(name, ...) BENCHMARK_CAPTURE(play, name, settings __VA_ARGS__)
STAGE(defaults, {});
STAGE(repitch, {{"repitch", {1}}});
STAGE(pingpong, {{"channel_mode", {1}}});
STAGE(midside, {{"channel_mode", {2}}});
STAGE(modulated_sine, {{"mod_delay", {0.2}}});
STAGE(modulated_repitch, {{"mod_delay", {0.2}}, {"repitch", {1}}});
STAGE(modulated_square, {{"mod_delay", {0.2}}, {"mod_waveform", {4}}});
STAGE(modulated_random, {{"mod_delay", {0.2}}, {"mod_waveform", {5}}});
STAGE(modulated_by_envelope, {{"mod_delay", {0.2}}, {"mod_envelope", {1}}});
STAGE(wobble, {{"wobble", {0.05}}});
STAGE(noise, {{"noise", {0.1}}});
STAGE(gate, {{"gate", {1}}, {"gate_threshold", {-40}}});
STAGE(ducker, {{"duck", {1}}, {"duck_threshold", {-20}}});
STAGE(clip_dry, {{"clip", {1}}});
STAGE(reverb_pre, {{"reverb", {0.3}}, {"reverb_location", {0}}});
STAGE(reverb_post, {{"reverb", {0.3}}, {"reverb_location", {1}}});
STAGE(reverb_feedback, {{"reverb", {0.3}}, {"reverb_location", {2}}});

void delay(benchmark::State& state) {
    play(state, delay_settings(), static_cast<int>(state.range(0)));
}
void full(benchmark::State& state) {
    play(state, full_settings(), static_cast<int>(state.range(0)));
}
BENCHMARK(delay)->ArgName("frames")->Arg(1)->Arg(16)->Arg(64)->Arg(512);
BENCHMARK(full)->ArgName("frames")->Arg(1)->Arg(16)->Arg(64)->Arg(512);

// Continuous attributes that ramp without a pause: set to another value before every vector, which
// is shorter than a ramp. Each stays within the part of its range from 0.3 to 0.4.
void ramping(benchmark::State& state, const settings& all, std::vector<std::string_view> names) {
    Bench bench(all, 64);
    int n = 0;
    for (auto _ : state) {
        ++n;
        for (std::size_t i = 0; i < attribute_count; ++i) {
            const attribute_row& row = attribute_table[i];
            if (row.kind != attribute_kind::continuous) continue;
            if (!names.empty() && std::ranges::find(names, row.info.name) == names.end()) continue;
            const double value = row.low + (row.high - row.low) * (0.3 + 0.1 * (n % 2));
            bench.driver.set(i, {&value, 1});
        }
        bench.vector();
    }
    state.SetItemsProcessed(state.iterations() * 64);
}
#define RAMP(name)                                                       \
    BENCHMARK_CAPTURE(ramping, delay_##name, delay_settings(), {#name}); \
    BENCHMARK_CAPTURE(ramping, full_##name, full_settings(), {#name})
RAMP(mix);
RAMP(feedback);
RAMP(input);
RAMP(mod_freq);
RAMP(mod_delay);
RAMP(reverb_decay);
RAMP(noise_morph);
BENCHMARK_CAPTURE(ramping, full_all_nineteen, full_settings(), {});

// Vectors of several instances in turn, as in a patch with many boxes.
void in_turn(benchmark::State& state, const settings& all) {
    std::vector<std::unique_ptr<Bench>> many;
    for (std::int64_t i = 0; i < state.range(0); ++i)
        many.push_back(std::make_unique<Bench>(all, 64));
    for (auto _ : state)
        for (const auto& bench : many) bench->vector();
    state.SetItemsProcessed(state.iterations() * state.range(0) * 64);
}
BENCHMARK_CAPTURE(in_turn, delay, delay_settings())->Arg(1)->Arg(8)->Arg(64);
BENCHMARK_CAPTURE(in_turn, full, full_settings())->Arg(1)->Arg(8)->Arg(64);

}  // namespace
}  // namespace kv7::orv
