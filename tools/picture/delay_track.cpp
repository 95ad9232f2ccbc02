#include "tools/picture/delay_track.h"

#include <algorithm>
#include <string>

#include "tools/failure.h"
#include "tools/seed.h"

namespace program {

namespace {

constexpr std::size_t max_columns = 3000;

// The rate of a first engine, which draws its random state as that of the object does.
double seeded(int rate, std::optional<std::uint64_t> seed) {
    if (seed) seed_random_device(*seed);
    return rate;
}

}  // namespace

void read_delays::merge(const read_delays& later, double share) {
    for (std::size_t head = 0; head < 2; ++head)
        for (std::size_t side = 0; side < 2; ++side) {
            read_delay& all = head_side[head][side];
            const read_delay& more = later.head_side[head][side];
            all.low = std::min(all.low, more.low);
            all.high = std::max(all.high, more.high);
            all.weight += static_cast<float>(share) * (more.weight - all.weight);
        }
}

bool delay_track::knows(const std::string& class_name) {
    return class_name == "orv.device.vesk~";
}

delay_track::delay_track(const std::vector<message>& settings, const score& events, int rate,
                         int vector_size, std::optional<std::uint64_t> seed)
    : driver_(seeded(rate, seed)),
      events_(events.without("")),
      vector_size_(static_cast<std::size_t>(vector_size)),
      left_(vector_size_),
      right_(vector_size_),
      columns_(max_columns, vector_size) {
    for (const message& setting : settings) send(setting);
    driver_.prepare(rate);
}

void delay_track::send(const message& sent) {
    if (sent.selector == "clear") return driver_.core.request_clear();
    if (sent.selector == "reset") return driver_.core.request_reset();
    const std::size_t attribute = kv7::orv::attribute_index(sent.selector);
    if (attribute == kv7::orv::attribute_count)
        throw failure(sent.selector + ": unknown to the picture of the delay");
    std::vector<double> values;
    for (const auto& value : sent.values)
        values.push_back(value.type == 2 ? value.value.as_float
                                         : static_cast<double>(value.value.as_long));
    driver_.set(attribute, values);
}

void delay_track::play(const float* in, int channels) {
    while (const message* next = events_.due(position_)) send(*next);
    if (position_ == 0) driver_.start();
    const auto stride = static_cast<std::size_t>(channels);
    for (std::size_t i = 0; i < vector_size_; ++i) {
        left_[i] = double{in[i * stride]};
        right_[i] = double{in[i * stride + stride - 1]};
    }
    double* const signals[2] = {left_.data(), right_.data()};
    const kv7::orv::signal_bundle bundle{signals, 2, static_cast<std::int32_t>(vector_size_)};
    driver_.core.perform(bundle, bundle);
    position_ += static_cast<std::int64_t>(vector_size_);
    read_delays now;
    const auto heads = driver_.core.engine->delays_read();
    for (std::size_t head = 0; head < 2; ++head)
        for (std::size_t side = 0; side < 2; ++side)
            if (heads[head].weight > 0) {
                const float seconds = heads[head].seconds[static_cast<int>(side)];
                now.head_side[head][side] = {seconds, seconds, heads[head].weight};
            }
    columns_.add(now, static_cast<std::int64_t>(vector_size_));
}

}  // namespace program
