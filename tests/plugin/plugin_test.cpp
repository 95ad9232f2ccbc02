// The plugin through its C interface, compared with the driver it is made of: equal to the bit, and
// no heap on the audio thread.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <lv2/core/lv2.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "dice.h"
#include "port_list.h"
#include "vesk_driver.h"

namespace {

thread_local bool counting = false;
thread_local long heap_calls = 0;
thread_local bool heap_is_full = false;

void* counted_new(std::size_t size) {
    if (counting) ++heap_calls;
    void* const memory = heap_is_full ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (memory != nullptr) return memory;
    throw std::bad_alloc();
}
void counted_delete(void* memory) noexcept {
    if (counting) ++heap_calls;
    std::free(memory);
}

}  // namespace

// The plugin's calls come here too.
#define COUNTED [[gnu::visibility("default")]]
COUNTED void* operator new(std::size_t size) {
    return counted_new(size);
}
COUNTED void operator delete(void* memory) noexcept {
    counted_delete(memory);
}
COUNTED void operator delete(void* memory, std::size_t) noexcept {
    counted_delete(memory);
}

namespace kv7::orv::lv2 {
namespace {

constexpr double rate = 44100.0;
constexpr std::size_t most_frames = 300;

const LV2_Descriptor* descriptor(std::uint32_t index) {
    void* const library = dlopen(VESK_LV2_BINARY, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) throw std::runtime_error(dlerror());
    return reinterpret_cast<LV2_Descriptor_Function>(dlsym(library, "lv2_descriptor"))(index);
}

// What a host plays through the plugin, what the same moves give on a driver alone.
class Pair {
public:
    Pair() {
        for (const control_port port : controls_)
            values_.push_back(static_cast<float>(attribute_table[port.attribute].default_value));
        values_.resize(controls_.size() + trigger_count, 0.0f);
        for (std::size_t i = 0; i < values_.size(); ++i) connect(audio_port_count + i, &values_[i]);
    }
    ~Pair() { calls_.cleanup(plugin_); }

    // As a patch author types the box: the delay first.
    void activate() {
        calls_.activate(plugin_);
        driver_ = std::make_unique<vesk_driver>(rate);
        driver_->set(attribute_index("delay"), values_of(attribute_index("delay")));
        for (std::size_t i = 0; i < attribute_count; ++i) driver_->set(i, values_of(i));
        driver_->prepare(rate);
        seen_ = values_;
    }
    // Without memory the engine stays, and starts from silence.
    void activate_without_memory() {
        heap_is_full = true;
        calls_.activate(plugin_);
        heap_is_full = false;
        driver_->core.request_reset();
    }
    // Noise in, with what isn't finite here and there; asserts that both give the same.
    void block(std::size_t frames) {
        take_changes();
        std::array<std::array<double, most_frames>, 2> wanted;
        for (std::size_t c = 0; c < 2; ++c)
            for (std::size_t i = 0; i < frames; ++i) {
                const float odd[] = {NAN, -INFINITY};
                const bool is_odd = dice_.below(50) == 0;
                in_[c][i] = is_odd ? odd[dice_.below(2)] : static_cast<float>(0.3 * dice_.swing());
                wanted[c][i] = is_odd ? 0.0 : double{in_[c][i]};
            }
        double* const channels[2] = {wanted[0].data(), wanted[1].data()};
        const signal_bundle bundle{channels, 2, static_cast<std::int32_t>(frames)};
        driver_->core.perform(bundle, bundle);

        const int sharing = dice_.below(3);
        std::array<float*, 4> ports{in_[0].data(), in_[1].data(), out_[0].data(), out_[1].data()};
        if (sharing == 1) ports = {ports[0], ports[1], ports[0], ports[1]};
        if (sharing == 2) ports = {ports[0], ports[1], ports[1], ports[0]};
        for (std::size_t i = 0; i < ports.size(); ++i) connect(i, ports[i]);
        counting = true;
        calls_.run(plugin_, static_cast<std::uint32_t>(frames));
        counting = false;
        for (std::size_t c = 0; c < 2; ++c)
            for (std::size_t i = 0; i < frames; ++i) {
                const float got = ports[out_left + c][i];
                ASSERT_EQ(got, static_cast<float>(wanted[c][i])) << "channel " << c << " " << i;
                loudest = std::max(loudest, std::abs(got));
            }
    }
    // Any port to any value, often an end of its range or none of it.
    void turn_a_knob() {
        const auto n = static_cast<std::size_t>(dice_.below(static_cast<int>(values_.size())));
        if (n >= controls_.size()) {  // a trigger, which may be held
            const float held[] = {1.0f, 0.2f, 0.0f, -1.0f};
            values_[n] = held[dice_.below(4)];
            return;
        }
        const attribute_row& row = attribute_table[controls_[n].attribute];
        const auto low = static_cast<float>(row.low), high = static_cast<float>(row.high);
        const float odd[] = {low, high, low - 3.0f, high + 3.0f, INFINITY, -INFINITY, NAN};
        const float switched[] = {0.0f, 1.0f, 0.25f, INFINITY, -0.5f, -7.0f, -INFINITY};
        if (row.kind == attribute_kind::toggle)
            values_[n] = switched[dice_.below(7)];
        else if (dice_.below(3) == 0)
            values_[n] = odd[dice_.below(7)];
        else
            values_[n] = low + (high - low) * static_cast<float>(dice_.unit());
        // Drawn at random by each engine for itself.
        if (values_[n] >= 4.5f && std::string(row.info.name) == "mod_waveform") values_[n] = 4.0f;
    }
    std::size_t any_frames() {
        return static_cast<std::size_t>(dice_.below(static_cast<int>(most_frames) + 1));
    }

    float loudest = 0.0f;

private:
    void connect(std::size_t port, float* data) {
        calls_.connect_port(plugin_, static_cast<std::uint32_t>(port), data);
    }
    std::vector<double> values_of(std::size_t attribute) const {
        const bool toggles = attribute_table[attribute].kind == attribute_kind::toggle;
        const bool is_choice = attribute_table[attribute].kind == attribute_kind::choice;
        std::vector<double> values;
        for (std::size_t i = 0; i < controls_.size(); ++i)
            if (controls_[i].attribute == attribute)
                // A toggle is on above 0, whatever whole number the attribute makes of it.
                values.push_back(toggles     ? (values_[i] > 0.0f ? 1.0 : 0.0)
                                 : is_choice ? std::round(double{values_[i]})
                                             : double{values_[i]});
        return values;
    }
    // In the order of registration, each attribute once.
    void take_changes() {
        const std::size_t triggers = controls_.size();
        for (std::size_t i = 0, set = attribute_count; i < triggers; ++i) {
            const std::size_t attribute = controls_[i].attribute;
            const float now = values_[i], before = seen_[i];
            if (now == before || (std::isnan(now) && std::isnan(before)) || set == attribute)
                continue;
            driver_->set(set = attribute, values_of(attribute));
        }
        const auto rises = [&](std::size_t i) { return values_[i] > 0.0f && !(seen_[i] > 0.0f); };
        if (rises(triggers)) driver_->core.request_clear();
        if (rises(triggers + 1)) driver_->core.request_reset();
        seen_ = values_;
    }

    const LV2_Descriptor& calls_ = *descriptor(0);
    LV2_Handle plugin_ = calls_.instantiate(&calls_, rate, "", nullptr);
    const std::vector<control_port> controls_ = control_ports();
    std::vector<float> values_, seen_;  // of the controls, then of the triggers
    Dice dice_{3};
    std::unique_ptr<vesk_driver> driver_;
    std::array<std::array<float, most_frames>, 2> in_{}, out_{};
};

TEST(Plugin, IsOneEffectUnderItsNameAtAnyRateAboveZero) {
    EXPECT_STREQ(descriptor(0)->URI, "urn:orvane:vesk");
    EXPECT_EQ(descriptor(1), nullptr);
    for (const double none : {0.0, -44100.0, std::nan("")})
        EXPECT_EQ(descriptor(0)->instantiate(descriptor(0), none, "", nullptr), nullptr) << none;
}

TEST(Plugin, PlaysAsTheDriverDoesThroughAnyBlocksKnobsTriggersAndActivations) {
    Pair pair;
    heap_calls = 0;
    for (int life = 0; life < 12; ++life) {
        SCOPED_TRACE(life);
        for (int n = 0; n < 3 * life; ++n) pair.turn_a_knob();
        pair.activate();
        for (int n = 0; n < 300; ++n) {
            if (n == 150) pair.activate_without_memory();
            for (int k = n % 12 / 3; k > 0 && n % 3 == 0; --k) pair.turn_a_knob();
            ASSERT_NO_FATAL_FAILURE(pair.block(pair.any_frames())) << n;
        }
    }
    EXPECT_GT(pair.loudest, 0.1f);
    EXPECT_EQ(heap_calls, 0);
    counting = true;
    pair.activate();
    counting = false;
    EXPECT_GT(heap_calls, 0) << "the plugin's calls are counted";
}

// Hosts may leave ports unconnected, and connect them with null.
TEST(Plugin, TakesAnUnconnectedControlForItsDefaultAndSilenceForAnInput) {
    const LV2_Descriptor& calls = *descriptor(0);
    std::vector<float> defaults;
    for (const control_port port : control_ports())
        defaults.push_back(static_cast<float>(attribute_table[port.attribute].default_value));
    std::array<std::array<float, 64>, 2> heard{};
    for (const bool connected : {false, true}) {
        const LV2_Handle plugin = calls.instantiate(&calls, 8000.0, "", nullptr);
        calls.connect_port(plugin, audio_port_count, nullptr);
        calls.activate(plugin);
        calls.run(plugin, 64);
        if (connected)
            for (std::size_t i = 0; i < defaults.size(); ++i)
                calls.connect_port(plugin, static_cast<std::uint32_t>(audio_port_count + i),
                                   &defaults[i]);
        std::array<float, 64> left{1.0f, -0.5f};
        calls.connect_port(plugin, in_left, left.data());
        calls.connect_port(plugin, out_left, heard[connected].data());
        for (int n = 0; n < 47; ++n) {  // the echo comes in the last block, after 3000 frames
            calls.run(plugin, 64);
            left.fill(0.0f);
        }
        calls.cleanup(plugin);
    }
    EXPECT_EQ(heard[0], heard[1]);
    EXPECT_NE(heard[0], decltype(heard)::value_type{});
}

}  // namespace
}  // namespace kv7::orv::lv2
