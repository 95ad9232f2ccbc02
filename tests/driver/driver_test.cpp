// The driver: how values, requests and rebuilds reach the engine between vectors.
#include "vesk_driver.h"

#include <gtest/gtest.h>

#include <array>
#include <cfenv>
#include <cmath>
#include <string>
#include <thread>
#include <vector>

#include "setters.h"

namespace kv7::orv {
namespace {

using orvane::blocks::vesk::Vesk;

struct Played {
    vesk_driver driver{44100.0};
    std::vector<double> left, right;

    void prepare(double rate = 44100.0) { driver.prepare(rate); }
    void set(const char* name, std::vector<double> values) {
        const std::size_t index = attribute_index(name);
        ASSERT_LT(index, attribute_count) << name;
        driver.set(index, values);
    }
    void vector(int frames, double level = 0.0) {
        left.assign(static_cast<std::size_t>(frames), level);
        right = left;
        double* const channels[2] = {left.data(), right.data()};
        const signal_bundle bundle{channels, 2, frames};
        driver.core.perform(bundle, bundle);
    }
    Vesk& engine() { return *driver.core.engine; }
};

// What the golden renders leave out; they play all other attributes. No values leave the default.
TEST(Setters, TakeListsOfAnyLengthWholePartsDefaultsAndTheBanks) {
    using E = const Vesk;
    struct {
        const char* name;
        std::vector<double> set;
        float (*read)(E&);
        float expected;
    } const rows[] = {
        {"delay", {0.25, 9}, [](E& e) { return e.delay_time[1]; }, 5},
        {"delay", {0.25}, [](E& e) { return e.delay_time[1]; }, 0.25f},
        {"delay", {}, [](E& e) { return e.delay_time[1]; }, 0.375f},
        {"delay", {NAN, 1, 2}, [](E& e) { return e.delay_time[0]; }, 0.001f},
        {"fbinvert", {5}, [](E& e) { return float(e.feedback_invert); }, 1},
        {"mod_waveform", {5.9}, [](E& e) { return float(e.modulator.waveform); }, 5},
        {"mod_waveform", {6}, [](E& e) { return float(e.modulator.waveform); }, 0},
        {"channel_mode", {3}, [](E& e) { return float(e.channel_mode); }, 0},
        {"reverb_location", {3}, [](E& e) { return float(e.reverb_location); }, 1},
        {"gate_threshold", {}, [](E& e) { return e.gate_open_threshold; }, 1},
        {"duck_threshold", {}, [](E& e) { return e.ducker.threshold_db[1]; }, 0},
        {"mod_phase", {}, [](E& e) { return e.modulator.phase_offset; }, 0.25f},
        {"noise", {0.001}, [](E& e) { return float(e.noise_on); }, 0},
        {"noise", {0.0011}, [](E& e) { return e.noise_on ? e.noise_amount : 0; }, 0.0011f},
        {"noise_morph", {0.5}, [](E& e) { return float(e.noise_bank.index); }, 2},
        {"wobble", {0.001}, [](E& e) { return float(e.wobble_on); }, 0},
        {"wobble", {1}, [](E& e) { return e.wobble_on ? e.wobble_amount : 0; }, 1},
        {"wobble_morph", {1}, [](E& e) { return float(e.wobble_bank.index); }, 2},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Played played;
        played.set(row.name, row.set);
        played.prepare();
        played.vector(64);
        EXPECT_FLOAT_EQ(row.read(played.engine()), row.expected);
    }
    EXPECT_EQ(attribute_index("delays"), attribute_count) << "no such name";
}

// For drivers that learn their values only on the audio thread, at the first vector.
TEST(Driver, ValuesSetWithoutARampAfterTheRateSoundAsThoseSetBeforeIt) {
    Played before, after;
    after.vector(64, 0.5);
    EXPECT_EQ(after.left, std::vector<double>(64)) << "silent before the first rate";
    after.prepare();
    for (std::size_t i = 0; i < attribute_count; ++i) {
        const attribute_row& row = attribute_table[i];
        if (std::string(row.info.name) == "mod_waveform") continue;  // one of them is random
        const double value = row.kind == attribute_kind::toggle ? 1.0
                             : row.kind == attribute_kind::list ? 0.004
                                                                : 0.3 * row.low + 0.7 * row.high;
        before.driver.set(i, std::array{value, 1.5 * value});
        after.driver.jump_to(i, std::array{value, 1.5 * value});
    }
    before.prepare();
    for (int n = 0; n < 50; ++n) {
        before.vector(64, 0.2);
        after.vector(64, 0.2);
        ASSERT_EQ(before.left, after.left) << n;
        ASSERT_EQ(before.right, after.right) << n;
    }
    EXPECT_NE(before.left.back(), 0.0);
}

TEST(Driver, QueuedChangesActAtTheNextVectorAndRampsOverTheFollowingOnes) {
    Played played;
    played.prepare();
    played.vector(0);
    played.set("fbinvert", {1});
    played.set("feedback", {1.0});
    EXPECT_FALSE(played.engine().feedback_invert);
    played.vector(0);
    EXPECT_TRUE(played.engine().feedback_invert) << "an empty vector takes changes too";
    EXPECT_EQ(played.engine().feedback, 0.5f);
    played.vector(110);
    EXPECT_NEAR(played.engine().feedback, 0.75f, 0.005f);
    played.vector(110);
    EXPECT_EQ(played.engine().feedback, 1.0f);
}

TEST(Driver, AFullQueueDropsChangesButNoRequestsAndTheNextSetRepairs) {
    Played played;
    played.prepare();
    for (int i = 0; i < 10; ++i) played.vector(512, 0.5);
    for (int i = 0; i < 600; ++i) played.set("clip", {static_cast<double>(i % 2)});
    played.set("gate", {1});
    played.driver.core.request_clear();
    played.vector(0);
    EXPECT_TRUE(!played.engine().gate_on && !played.engine().clip_dry)
        << "511 were taken: the last is a 0";
    EXPECT_EQ(played.engine().delay_filled, 4U);
    EXPECT_NE(played.engine().modulator.phase, 0.0f);
    played.set("gate", {1});
    played.driver.core.request_clear();
    played.driver.core.request_reset();
    played.vector(0);
    EXPECT_TRUE(played.engine().gate_on);
    EXPECT_EQ(played.engine().modulator.phase, 0.0f);
}

TEST(Driver, ARateChangeKeepsValuesAndDropsAudioAndTheSameRateKeepsBoth) {
    Played played;
    played.prepare();
    played.set("feedback", {1.2});
    for (int i = 0; i < 40; ++i) played.vector(512, 0.5);
    const Vesk* const before = &played.engine();
    played.driver.core.request_clear();
    played.prepare(44100.0);
    EXPECT_EQ(&played.engine(), before);
    EXPECT_NE(played.engine().delay_left.at(100), 0.0f);

    played.set("width", {1.7});  // mid-ramp at the change
    played.vector(100, 0.5);
    const float half_way = played.engine().width;
    EXPECT_TRUE(half_way > 1.2f && half_way < 1.5f);
    played.set("mod_waveform", {4});  // queued at the change
    played.driver.core.request_reset();
    played.prepare(96000.0);
    const Vesk& e = played.engine();
    const auto drawn = e.modulator.random_state;
    played.vector(0);
    EXPECT_EQ(e.modulator.random_state, drawn) << "a reset asked for before the change is dropped";
    EXPECT_NEAR(e.width, half_way, 0.01f) << "goes on from where it stood";
    played.vector(480);
    played.vector(1);
    EXPECT_EQ(e.width, 1.7f);
    EXPECT_EQ(e.feedback, 1.2f);
    EXPECT_EQ(int(e.modulator.waveform), 4);
    EXPECT_EQ(e.modulator.sample_rate, 96000.0f);
}

// Whatever waits at a rebuild, engine and reported values agree after it.
TEST(Driver, ARebuildBringsEveryValueThroughAFullQueue) {
    for (const int changes : {490, 499, 505, 511, 600}) {
        for (const bool at_the_start : {true, false}) {
            SCOPED_TRACE(changes);
            Played played;
            if (!at_the_start) played.prepare(8000.0);
            for (int i = 0; i < changes; ++i) played.set("delay", {0.1});
            played.set("channel_mode", {1});
            played.set("gate", {1});
            played.set("drywetmode", {1});
            played.prepare(9000.0);
            played.vector(64);
            const Vesk& e = played.engine();
            EXPECT_EQ(int(e.channel_mode), 1);
            EXPECT_TRUE(e.gate_on && !e.repitch && int(e.dry_wet_mode) == 1);
            EXPECT_EQ(e.delay_time[1], 0.1f);
        }
    }
}

TEST(Driver, RefusesARateThatIsNone) {
    Played played;
    played.prepare(highest_sample_rate);
    played.prepare(8000.0);
    played.vector(64, 0.5);
    const Vesk* const before = &played.engine();
    for (const double rate : {0.0, -44100.0, double(NAN), double(INFINITY), 1e-3, 768001.0, 1e13}) {
        EXPECT_THROW(played.prepare(rate), std::invalid_argument) << rate;
        EXPECT_THROW(vesk_driver{rate}, std::invalid_argument) << rate;
        EXPECT_EQ(&played.engine(), before);
        EXPECT_NE(played.engine().delay_left.at(0), 0.0f) << "the old engine plays on";
    }
    played.prepare(lowest_sample_rate);
    played.vector(64, 0.5);
}

TEST(Driver, AFailedRebuildLeavesEverythingAsItWas) {
    Played played;
    played.prepare();
    played.set("feedback", {1.0});
    played.vector(512, 0.5);
    const Vesk* const before = &played.engine();
    for (const bool after_the_swap : {false, true}) {
        const auto fail = [] { throw std::bad_alloc(); };
        if (after_the_swap) {
            played.driver.core.restore_values = fail;
            played.driver.core.rebuild_tables = {};
        } else {
            played.driver.core.rebuild_tables = [&](Vesk&, float) { return fail(), nullptr; };
        }
        EXPECT_THROW(played.prepare(48000.0), std::bad_alloc);
        EXPECT_EQ(&played.engine(), before);
        EXPECT_EQ(played.driver.core.prepared_sample_rate, 44100.0);
        EXPECT_NE(played.engine().delay_left.at(0), 0.0f);
    }
}

TEST(Driver, SplittingVectorsChangesNoSample) {
    Played whole, split;
    for (Played* p : {&whole, &split}) {
        p->prepare();
        p->engine().modulator.random_state = {1, 2};
        p->set("delay", {0.003, 0.007});
        p->set("mod_delay", {0.3});
        p->set("reverb", {0.4});
        p->vector(0);
    }
    for (int round = 0; round < 50; ++round) {
        for (Played* p : {&whole, &split})
            if (round % 7 == 0) p->set("feedback", {0.1 * (round % 10)});
        std::vector<double> pieces;
        whole.vector(500, 0.3 * (round % 3));
        for (const int frames : {1, 63, 100, 200, 136}) {
            split.vector(frames, 0.3 * (round % 3));
            pieces.insert(pieces.end(), split.left.begin(), split.left.end());
        }
        ASSERT_EQ(pieces, whole.left) << round;
    }
}

// Hosts flush denormals to zero on their audio thread, and a careless library may leave another
// rounding behind.
TEST(Driver, SoundsTheSameInAnyFloatingPointStateAndLeavesItAsItWas) {
    Played standard, odd;
    for (Played* p : {&standard, &odd}) {
        p->prepare();
        p->engine().modulator.random_state = {1, 2};
        p->set("delay", {0.001});
        p->set("reverb", {0.4});
        p->set("feedback", {0.7});
    }
    for (int n = 0; n < 200; ++n) {
        const double level = n < 100 ? 0.3 : 1e-42;
        standard.vector(64, level);
        std::fesetround(FE_UPWARD);
#if defined(__x86_64__)
        constexpr unsigned flush_denormals = 0x8040;
        __builtin_ia32_ldmxcsr(__builtin_ia32_stmxcsr() | flush_denormals);
#endif
        odd.vector(64, level);
        EXPECT_EQ(std::fegetround(), FE_UPWARD);
#if defined(__x86_64__)
        EXPECT_EQ(__builtin_ia32_stmxcsr() & flush_denormals, flush_denormals);
        __builtin_ia32_ldmxcsr(__builtin_ia32_stmxcsr() & ~flush_denormals);
#endif
        std::fesetround(FE_TONEAREST);
        ASSERT_EQ(odd.left, standard.left) << n;
        ASSERT_EQ(odd.right, standard.right) << n;
    }
}

// A rebuild may come while vectors run: none is torn, none waits, and all values arrive.
TEST(Driver, RebuildsSetsAndRequestsFromOtherThreadsLeaveTheAudioThreadSound) {
    Played played;
    played.prepare();
    std::atomic<bool> stop{false};
    std::thread audio([&] {
        while (!stop) {
            played.vector(64, 0.25);
            for (const double x : played.left) ASSERT_TRUE(std::isfinite(x));
        }
    });
    std::thread other([&] {
        for (int i = 0; !stop; ++i) {
            played.driver.set(attribute_index("width"), std::vector{0.001 * (i % 2000)});
            if (i % 3 == 0) played.driver.core.request_reset();
            if (i % 5 == 0) played.driver.core.request_clear();
            std::this_thread::yield();
        }
    });
    for (int i = 0; i < 12; ++i) {
        played.prepare(i % 2 == 0 ? 48000.0 : 8000.0);
        for (int k = 0; k < 50; ++k) played.set("channel_mode", {static_cast<double>(k % 3)});
    }
    stop = true;
    audio.join();
    other.join();
    played.set("width", {0.5});
    played.set("channel_mode", {2});
    for (int i = 0; i < 20; ++i) played.vector(64);
    EXPECT_EQ(played.engine().width, 0.5f);
    EXPECT_EQ(int(played.engine().channel_mode), 2);
}

}  // namespace
}  // namespace kv7::orv
