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

class Twin {
public:
    explicit Twin(const std::string& box_attributes = {})
        : instance(tesk::host::the().make(object_name() + " " + box_attributes)) {}

    void prepare(double rate) {
        instance->prepare(rate, 64);
        driver.prepare(rate);
    }
    void set(const std::string& name, const std::vector<double>& values) {
        ASSERT_TRUE(instance->set(name, values)) << name;
        driver.set(attribute_index(name), values);
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
        const auto n = static_cast<std::size_t>(frames);
        for (auto& channel : ours_) channel.resize(n);
        for (std::size_t c = 0; c < 2; ++c)
            for (double& x : ours_[c]) x = static_cast<float>(noise_.swing() * level);
        theirs_[0] = ours_[0];
        theirs_[1] = ours_[1];
        double* const object_channels[2] = {ours_[0].data(), ours_[1].data()};
        double* const driver_channels[2] = {theirs_[0].data(), theirs_[1].data()};
        ASSERT_TRUE(instance->run(object_channels, object_channels, frames));
        const signal_bundle bundle{driver_channels, 2, frames};
        driver.core.perform(bundle, bundle);
        for (std::size_t c = 0; c < 2; ++c) ASSERT_EQ(ours_[c], theirs_[c]) << "channel " << c;
    }

    std::unique_ptr<tesk::instance> instance;
    vesk_driver driver{44100.0};

private:
    Dice noise_{1};
    std::vector<double> ours_[2], theirs_[2];
};

}  // namespace kv7::orv
