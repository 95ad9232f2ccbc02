// The loaded object beside the driver without a host: both get the same moves, and every vector of
// the two must be equal to the bit.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "dice.h"
#include "host/host.h"
#include "vesk_driver.h"

namespace kv7::orv {

// The class name of the object under test, loaded by the first call.
inline const std::string& object_name() {
    static const std::string name = tesk::host::the().load(VESK_OBJECT_FILE);
    return name;
}

// A value in the attribute's range that sounds the same in both: not the Random waveform.
inline double value_of(Dice& dice, const attribute_row& row) {
    const double any = row.low + (row.high - row.low) * dice.unit();
    if (row.kind == attribute_kind::toggle) return dice.below(2);
    if (row.kind != attribute_kind::choice) return any;
    return dice.below(std::string(row.info.name) == "mod_waveform" ? 5 : int(row.high) + 1);
}

inline const attribute_row& any_row(Dice& dice) {
    return attribute_table[static_cast<std::size_t>(dice.below(int(attribute_count)))];
}

class Twin {
public:
    void prepare(double rate) {
        instance->prepare(rate, 64);
        driver.prepare(rate);
    }
    // Asserts that the object reports the value.
    void set(const std::string& name, const std::vector<double>& values) {
        ASSERT_TRUE(instance->set(name, values)) << name;
        driver.set(attribute_index(name), values);
        ASSERT_EQ(instance->get_numbers(name)[0], values[0]) << name;
    }
    void clear() {
        instance->send("clear");
        driver.core.request_clear();
    }
    void reset() {
        instance->send("reset");
        driver.core.request_reset();
    }
    // Noise in; asserts that both give the same.
    void vector(int frames, double level = 0.3) {
        std::vector<double> ours[2], theirs[2];
        for (std::size_t c = 0; c < 2; ++c) {
            for (int i = 0; i < frames; ++i)
                ours[c].push_back(static_cast<float>(noise_.swing() * level));
            theirs[c] = ours[c];
        }
        double* const object_channels[2] = {ours[0].data(), ours[1].data()};
        double* const driver_channels[2] = {theirs[0].data(), theirs[1].data()};
        ASSERT_TRUE(instance->run(object_channels, object_channels, frames));
        const signal_bundle bundle{driver_channels, 2, frames};
        driver.core.perform(bundle, bundle);
        for (std::size_t c = 0; c < 2; ++c) ASSERT_EQ(ours[c], theirs[c]) << "channel " << c;
    }
    void vectors(int count, int frames, double level = 0.3) {
        for (int n = 0; n < count; ++n) vector(frames, level);
    }

    std::unique_ptr<tesk::instance> instance = tesk::host::the().make(object_name());
    vesk_driver driver{44100.0};

private:
    Dice noise_{1};
};

}  // namespace kv7::orv
