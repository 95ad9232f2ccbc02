// The plugin through its C interface beside the driver it is made of: equal to the bit, and no heap
// on the audio thread.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "dice.h"
#include "loaded_plugin.h"
#include "vesk_driver.h"

namespace {

thread_local bool counting = false;
thread_local long heap_calls = 0;

void* counted_new(std::size_t size) {
    if (counting) ++heap_calls;
    if (void* const memory = std::malloc(size == 0 ? 1 : size)) return memory;
    throw std::bad_alloc();
}
void counted_delete(void* memory) noexcept {
    if (counting) ++heap_calls;
    std::free(memory);
}

}  // namespace

// The plugin's calls come here too.
[[gnu::visibility("default")]] void* operator new(std::size_t size) {
    return counted_new(size);
}
[[gnu::visibility("default")]] void operator delete(void* memory) noexcept {
    counted_delete(memory);
}
[[gnu::visibility("default")]] void operator delete(void* memory, std::size_t) noexcept {
    counted_delete(memory);
}

namespace kv7::orv::lv2 {
namespace {

constexpr double rate = 44100.0;
constexpr float infinite = std::numeric_limits<float>::infinity();
constexpr std::size_t most_frames = 300;

// What a host plays through the plugin, what the same moves give on a driver alone.
class Pair {
public:
    LoadedPlugin plugin{rate};

    // As a patch author types the box: the delay first.
    void activate() {
        plugin.activate();
        driver_ = std::make_unique<vesk_driver>(rate);
        driver_->set(attribute_index("delay"), values_of(attribute_index("delay")));
        for (std::size_t i = 0; i < attribute_count; ++i) driver_->set(i, values_of(i));
        driver_->prepare(rate);
        seen_ = plugin.values;
    }
    // Noise in, with what isn't finite here and there; asserts that both give the same.
    void block(std::size_t frames) {
        take_changes();
        for (auto& channel : in_)
            for (float& x : channel) x = next_sample();
        const int sharing = dice_.below(3);
        std::array<float*, 4> ports{in_[0].data(), in_[1].data(), out_[0].data(), out_[1].data()};
        if (sharing == 1) ports = {ports[0], ports[1], ports[0], ports[1]};
        if (sharing == 2) ports = {ports[0], ports[1], ports[1], ports[0]};
        for (std::size_t i = 0; i < ports.size(); ++i) plugin.connect(i, ports[i]);

        std::array<std::array<double, most_frames>, 2> wanted;
        for (std::size_t c = 0; c < 2; ++c)
            for (std::size_t i = 0; i < frames; ++i)
                wanted[c][i] = std::isfinite(in_[c][i]) ? double{in_[c][i]} : 0.0;
        double* const channels[2] = {wanted[0].data(), wanted[1].data()};
        const signal_bundle bundle{channels, 2, static_cast<std::int32_t>(frames)};
        driver_->core.perform(bundle, bundle);

        counting = true;
        plugin.run(frames);
        counting = false;
        for (std::size_t c = 0; c < 2; ++c)
            for (std::size_t i = 0; i < frames; ++i) {
                const float got = ports[out_left + c][i];
                ASSERT_EQ(got, static_cast<float>(wanted[c][i])) << "channel " << c << " " << i;
                loudest = std::max(loudest, std::abs(got));
            }
    }
    void blocks(int count) {
        for (int n = 0; n < count && !testing::Test::HasFatalFailure(); ++n)
            block(static_cast<std::size_t>(dice_.below(static_cast<int>(most_frames) + 1)));
    }
    // Any port but the triggers to any value, often an end of its range or none of it.
    void turn_a_knob() {
        const auto n =
            static_cast<std::size_t>(dice_.below(static_cast<int>(plugin.controls.size())));
        const attribute_row& row = attribute_table[plugin.controls[n].attribute];
        const auto low = static_cast<float>(row.low), high = static_cast<float>(row.high);
        const float odd[] = {NAN, infinite, -infinite, low - 3.0f, high + 3.0f, low, high};
        float& value = plugin.values[n];
        if (row.kind == attribute_kind::toggle)
            value = static_cast<float>(dice_.below(2));
        else if (dice_.below(3) == 0)
            value = odd[dice_.below(7)];
        else
            value = low + (high - low) * static_cast<float>(dice_.unit());
        // Drawn at random by each engine for itself.
        if (value >= 5.0f && std::string(row.info.name) == "mod_waveform") value = 4.0f;
    }

    float loudest = 0.0f;

private:
    float next_sample() {
        if (dice_.below(50) == 0) return dice_.below(2) == 0 ? NAN : -infinite;
        return static_cast<float>(0.3 * dice_.swing());
    }
    std::vector<double> values_of(std::size_t attribute) const {
        std::vector<double> values;
        for (std::size_t i = 0; i < plugin.controls.size(); ++i)
            if (plugin.controls[i].attribute == attribute) values.push_back(plugin.values[i]);
        return values;
    }
    // In the order of registration, each attribute once.
    void take_changes() {
        const auto changed = [this](std::size_t i) {
            const float now = plugin.values[i], before = seen_[i];
            return now != before && !(std::isnan(now) && std::isnan(before));
        };
        for (std::size_t a = 0; a < attribute_count; ++a)
            for (std::size_t i = 0; i < plugin.controls.size(); ++i)
                if (plugin.controls[i].attribute == a && changed(i)) {
                    driver_->set(a, values_of(a));
                    break;
                }
        const std::size_t triggers = plugin.controls.size();
        if (plugin.values[triggers] > 0.0f && !(seen_[triggers] > 0.0f))
            driver_->core.request_clear();
        if (plugin.values[triggers + 1] > 0.0f && !(seen_[triggers + 1] > 0.0f))
            driver_->core.request_reset();
        seen_ = plugin.values;
    }

    Dice dice_{3};
    std::unique_ptr<vesk_driver> driver_;
    std::vector<float> seen_;
    std::array<std::array<float, most_frames>, 2> in_{}, out_{};
};

TEST(Plugin, ShowsOneEffectUnderItsName) {
    ASSERT_NE(descriptor(0), nullptr);
    EXPECT_STREQ(descriptor(0)->URI, "urn:orvane:vesk");
    EXPECT_EQ(descriptor(1), nullptr);
    for (const double none : {0.0, -44100.0, std::nan("")})
        EXPECT_EQ(descriptor(0)->instantiate(descriptor(0), none, "", nullptr), nullptr) << none;
    EXPECT_EQ(LoadedPlugin(rate).values.size(), 33U);
}

TEST(Plugin, PlaysAsTheDriverDoesThroughAnyBlocksKnobsAndActivations) {
    Pair pair;
    heap_calls = 0;
    for (int life = 0; life < 12; ++life) {
        SCOPED_TRACE(life);
        for (int n = 0; n < 3 * life; ++n) pair.turn_a_knob();
        pair.activate();
        for (int n = 0; n < 100; ++n) {
            for (int k = n % 4; k > 0; --k) pair.turn_a_knob();
            ASSERT_NO_FATAL_FAILURE(pair.blocks(3));
        }
        pair.plugin.deactivate();
    }
    EXPECT_GT(pair.loudest, 0.1f);
    EXPECT_EQ(heap_calls, 0);
    counting = true;
    pair.activate();
    counting = false;
    EXPECT_GT(heap_calls, 0) << "the plugin's calls are counted";
}

TEST(Plugin, ATriggerActsOnceWhenItRisesHoweverLongItIsHeld) {
    Pair pair;
    pair.plugin.at("delay_left") = pair.plugin.at("delay_right") = 0.01f;
    pair.plugin.at("mod_delay") = 0.3f;
    pair.plugin.at("reset") = 1.0f;  // held before the first run
    pair.activate();
    ASSERT_NO_FATAL_FAILURE(pair.blocks(30));
    for (const char* trigger : {"clear", "reset", "clear"})
        for (const float held : {1.0f, 0.2f, -1.0f, 0.0f}) {
            SCOPED_TRACE(trigger);
            pair.plugin.at(trigger) = held;
            ASSERT_NO_FATAL_FAILURE(pair.blocks(10));
        }
}

// A toggle's port is on above 0 and off up to it, whatever whole numbers the attribute takes.
TEST(Plugin, ATogglePortIsOnAboveZero) {
    const auto inverted = [](float port) {
        LoadedPlugin plugin(rate);
        plugin.at("delay_left") = plugin.at("delay_right") = 0.03f;
        plugin.at("fbinvert") = port;
        std::vector<float> left(3000), right(3000);
        left[0] = right[0] = 0.1f;
        for (const std::size_t in : {in_left, out_left}) {
            plugin.connect(in, left.data());
            plugin.connect(in + 1, right.data());
        }
        plugin.activate();
        plugin.run(left.size());
        // The second echo is the first that has been fed back.
        return *std::min_element(left.begin() + 2000, left.end()) < -0.01f;
    };
    for (const float on : {1.0f, 0.25f, infinite}) EXPECT_TRUE(inverted(on)) << on;
    for (const float off : {0.0f, -0.5f, -7.0f, -infinite}) EXPECT_FALSE(inverted(off)) << off;
}

}  // namespace
}  // namespace kv7::orv::lv2
