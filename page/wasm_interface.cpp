// The functions that the page calls: one instance of the effect in a module's memory, played by
// attribute through the same driver as the object.
//
// Samples pass through two pairs of 64-bit buffers, as the driver takes them; the page's typed
// arrays convert from and to the 32 bits of Web Audio. All functions run on one thread.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "sample_rate.h"
#include "vesk_driver.h"

#define VESK_EXPORT(name) extern "C" [[clang::export_name(#name)]]

namespace {

using namespace kv7::orv;

constexpr std::size_t buffer_frames = 1024;

std::optional<vesk_driver> driver;
std::array<std::array<double, buffer_frames>, 2> input;   // left, right
std::array<std::array<double, buffer_frames>, 2> output;  // left, right

// Of values a and b the ones that count. There is no list of more than two.
std::span<const double> values(const double (&both)[list_length], std::uint32_t count) {
    return std::span(both).first(std::min<std::size_t>(count, list_length));
}

}  // namespace

// Makes the instance, or rebuilds it for another rate in Hz, keeping its values. False: the rate is
// not accepted, and nothing has changed. A lack of memory traps.
VESK_EXPORT(prepare) bool prepare(double rate) {
    if (!is_sample_rate(rate)) return false;
    // Its first engine is replaced at once: the smallest one does.
    if (!driver) driver.emplace(lowest_sample_rate);
    driver->prepare(rate);
    return true;
}

// The functions below need a prepared instance.

// The state of the random generator, not both 0, that a new rate otherwise draws.
VESK_EXPORT(seed) void seed(std::uint32_t first, std::uint32_t second) {
    auto& modulator = driver->core.engine->modulator;
    modulator.random_state = {first, second};
    modulator.reset();
}

VESK_EXPORT(attributes) std::uint32_t attributes() {
    return attribute_count;
}

// An attribute by its index, with count values: a number, of a list one or two. A number ramps.
VESK_EXPORT(set) void set(std::uint32_t attribute, std::uint32_t count, double a, double b) {
    if (attribute < attribute_count) driver->set(attribute, values({a, b}, count));
}

// The same without a ramp, before the first block.
VESK_EXPORT(jump_to)
void jump_to(std::uint32_t attribute, std::uint32_t count, double a, double b) {
    if (attribute < attribute_count) driver->jump_to(attribute, values({a, b}, count));
}

// After the values, before the first frame: they sound from there, without fade or glide.
VESK_EXPORT(start) void start() {
    driver->start();
}

VESK_EXPORT(clear) void clear() {
    driver->core.request_clear();
}

VESK_EXPORT(reset) void reset() {
    driver->core.request_reset();
}

// Frames that a buffer holds; process takes at most so many.
VESK_EXPORT(max_frames) std::uint32_t max_frames() {
    return buffer_frames;
}

// Where a channel's samples are, 0: left, 1: right.
VESK_EXPORT(input_buffer) double* input_buffer(std::uint32_t channel) {
    return input[channel & 1].data();
}
VESK_EXPORT(output_buffer) double* output_buffer(std::uint32_t channel) {
    return output[channel & 1].data();
}

// Plays frames from the input buffers into the output buffers. An input that is no number counts as
// silence.
VESK_EXPORT(process) void process(std::uint32_t frames) {
    const std::size_t n = std::min<std::size_t>(frames, buffer_frames);
    for (auto& channel : input)
        for (std::size_t i = 0; i < n; ++i)
            if (!std::isfinite(channel[i])) channel[i] = 0.0;
    double* const in[2] = {input[0].data(), input[1].data()};
    double* const out[2] = {output[0].data(), output[1].data()};
    const auto count = static_cast<std::int32_t>(n);
    driver->core.perform({in, 2, count}, {out, 2, count});
}

// How far in the past a channel reads now, in seconds, through the head that is heard most.
VESK_EXPORT(read_delay) double read_delay(std::uint32_t channel) {
    return double{driver->core.engine->delay_heard()[channel & 1]};
}

// The gate's gain, linear; 1 while it is off.
VESK_EXPORT(gate_gain) double gate_gain() {
    const auto& engine = *driver->core.engine;
    return engine.gate_on ? double{engine.gate_gain} : 1.0;
}

// What the ducker takes from the wet signal, in dB; 0 while it is off.
VESK_EXPORT(duck_gain_db) double duck_gain_db() {
    const auto& engine = *driver->core.engine;
    return engine.duck_on ? double{engine.ducker.reduction_db[0]} : 0.0;
}
