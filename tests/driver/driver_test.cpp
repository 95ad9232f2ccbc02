// The driver: how values, requests and rebuilds reach the engine between vectors.
#include "vesk_driver.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <set>
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

TEST(AttributeTable, IsWholeAndEachKindHasASetterOfItsKind) {
    std::set<std::string> names;
    int kinds[4] = {};
    for (std::size_t i = 0; i < attribute_count; ++i) {
        const attribute_row& row = attribute_table[i];
        SCOPED_TRACE(row.info.name);
        names.insert(row.info.name);
        EXPECT_EQ(attribute_index(row.info.name), i);
        EXPECT_EQ(attribute_setters[i].index(), static_cast<std::size_t>(row.kind));
        ++kinds[static_cast<int>(row.kind)];
        EXPECT_GE(row.default_value, row.low);
        EXPECT_LE(row.default_value, row.kind == attribute_kind::toggle ? 0.0 : row.high);
    }
    EXPECT_EQ(names.size(), 30U);
    const int expected[4] = {19, 6, 4, 1};
    for (int k = 0; k < 4; ++k) EXPECT_EQ(kinds[k], expected[k]);
    EXPECT_EQ(attribute_index("delays"), attribute_count);
}

// Each attribute by name moves its own engine member, and no other attribute's.
TEST(Setters, EveryAttributeReachesItsMember) {
    struct {
        const char* name;
        std::vector<double> set;
        double (*read)(const Vesk&);
        double expected;
    } const rows[] = {
        {"mix", {0.25}, [](const Vesk& e) -> double { return e.wet_gain; }, 0.25},
        {"channel_mode", {2}, [](const Vesk& e) -> double { return int(e.channel_mode); }, 2},
        {"channel_mode", {3}, [](const Vesk& e) -> double { return int(e.channel_mode); }, 0},
        {"channel_mode", {-1}, [](const Vesk& e) -> double { return int(e.channel_mode); }, 0},
        {"gate", {1}, [](const Vesk& e) -> double { return e.gate_on; }, 1},
        {"gate_threshold",
         {-20},
         [](const Vesk& e) -> double { return e.gate_close_threshold; },
         0.05},
        {"gate_release", {1}, [](const Vesk& e) -> double { return e.gate_release_time; }, 1},
        {"repitch", {1}, [](const Vesk& e) -> double { return e.repitch; }, 1},
        {"feedback", {2}, [](const Vesk& e) -> double { return e.feedback; }, 1.5},
        {"fbinvert", {5}, [](const Vesk& e) -> double { return e.feedback_invert; }, 1},
        {"delay", {0.25, 9}, [](const Vesk& e) -> double { return e.delay_time[1]; }, 5},
        {"delay", {0.25}, [](const Vesk& e) -> double { return e.delay_time[1]; }, 0.25},
        {"delay", {}, [](const Vesk& e) -> double { return e.delay_time[1]; }, 0.375},
        {"delay", {NAN, 1, 2}, [](const Vesk& e) -> double { return e.delay_time[0]; }, 0.001},
        {"input", {20}, [](const Vesk& e) -> double { return e.input_gain; }, 10},
        {"output", {-40}, [](const Vesk& e) -> double { return e.output_gain; }, 0.01},
        {"duck", {1}, [](const Vesk& e) -> double { return e.duck_on; }, 1},
        {"duck_threshold",
         {-30},
         [](const Vesk& e) -> double { return e.ducker.threshold_db[1]; },
         -30},
        {"duck_release", {1}, [](const Vesk& e) -> double { return e.ducker.release_time[1]; }, 1},
        {"clip", {1}, [](const Vesk& e) -> double { return e.clip_dry; }, 1},
        {"mod_waveform",
         {5.9},
         [](const Vesk& e) -> double { return int(e.modulator.waveform); },
         5},
        {"mod_waveform", {6}, [](const Vesk& e) -> double { return int(e.modulator.waveform); }, 0},
        {"mod_freq",
         {4.41},
         [](const Vesk& e) -> double { return e.modulator.phase_increment; },
         1e-4},
        {"mod_envelope",
         {0.5},
         [](const Vesk& e) -> double { return e.modulator.envelope_mix; },
         0.5},
        {"mod_phase", {180}, [](const Vesk& e) -> double { return e.modulator.phase_offset; }, 0.5},
        {"mod_delay", {0.5}, [](const Vesk& e) -> double { return e.mod_delay; }, 0.5},
        {"mod_mult", {1}, [](const Vesk& e) -> double { return e.mod_mult; }, 1},
        {"reverb", {0.5}, [](const Vesk& e) -> double { return e.reverb_amount; }, 0.5},
        {"reverb_decay", {0.75}, [](const Vesk& e) -> double { return e.reverb.decay[1]; }, 0.75},
        {"reverb_location", {2}, [](const Vesk& e) -> double { return int(e.reverb_location); }, 2},
        {"noise", {0.001}, [](const Vesk& e) -> double { return e.noise_on; }, 0},
        {"noise", {0.0011}, [](const Vesk& e) -> double { return e.noise_on; }, 1},
        {"noise_morph",
         {0.5},
         [](const Vesk& e) -> double { return double(e.noise_bank.index); },
         2},
        {"wobble", {1}, [](const Vesk& e) -> double { return e.wobble_amount; }, 1},
        {"wobble_morph",
         {1},
         [](const Vesk& e) -> double { return double(e.wobble_bank.index); },
         2},
        {"width", {2}, [](const Vesk& e) -> double { return e.width; }, 2},
        {"drywetmode", {1}, [](const Vesk& e) -> double { return int(e.dry_wet_mode); }, 1},
    };
    std::set<std::string> reached;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        reached.insert(row.name);
        Played played;
        played.set(row.name, row.set);
        played.prepare();
        played.vector(64);
        EXPECT_NEAR(row.read(played.engine()), row.expected, 1e-5 * std::abs(row.expected));
    }
    EXPECT_EQ(reached.size(), attribute_count);
}

TEST(Driver, SoundsAsTheDefaultsSayFromTheFirstSample) {
    Played played;
    played.vector(64, 0.5);
    for (const double x : played.left) ASSERT_EQ(x, 0.0) << "silent before the first rate";
    played.prepare();
    played.vector(1);
    const Vesk& e = played.engine();
    EXPECT_FALSE(e.repitch);
    EXPECT_EQ(e.delay_time[0], 0.375f);
    EXPECT_EQ(e.head_delay[e.active_head][0], 0.375f * 44100.0f);
    EXPECT_EQ(e.wet_gain, 1.0f);
    EXPECT_EQ(e.modulator.frequency, 2.0f);
    EXPECT_EQ(e.modulator.phase_offset, 0.25f);
    EXPECT_EQ(e.ducker.threshold_db[0], 0.0f);
    EXPECT_EQ(e.gate_open_threshold, 1.0f);
}

// What has to wait for its audio thread's first vector may come as late as that.
TEST(Driver, ValuesLandedBehindTheRateSoundAsThoseSetBeforeIt) {
    Played before, behind;
    behind.prepare();
    for (std::size_t i = 0; i < attribute_count; ++i) {
        const attribute_row& row = attribute_table[i];
        if (std::string(row.info.name) == "mod_waveform") continue;  // one of them is random
        const double value = row.kind == attribute_kind::toggle ? 1.0
                             : row.kind == attribute_kind::list ? 0.004
                                                                : 0.3 * row.low + 0.7 * row.high;
        before.driver.set(i, std::array{value, 1.5 * value});
        behind.driver.land(i, std::array{value, 1.5 * value});
    }
    before.prepare();
    for (int n = 0; n < 50; ++n) {
        before.vector(64, 0.2);
        behind.vector(64, 0.2);
        ASSERT_EQ(before.left, behind.left) << n;
        ASSERT_EQ(before.right, behind.right) << n;
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

TEST(Driver, AFullQueueDropsChangesWithoutAWordAndTheNextSetRepairs) {
    Played played;
    played.prepare();
    played.vector(1);
    for (int i = 0; i < 600; ++i) played.set("clip", {static_cast<double>(i % 2)});
    played.set("gate", {1});
    played.vector(1);
    EXPECT_TRUE(!played.engine().gate_on && !played.engine().clip_dry)
        << "511 were taken: the last is a 0";
    played.set("gate", {1});
    played.vector(1);
    EXPECT_TRUE(played.engine().gate_on);
}

TEST(Driver, ARateChangeKeepsValuesAndDropsAudioAndTheSameRateKeepsBoth) {
    Played played;
    played.prepare();
    played.set("feedback", {1.2});
    played.set("channel_mode", {1});
    for (int i = 0; i < 40; ++i) played.vector(512, 0.5);
    const Vesk* const before = &played.engine();
    played.driver.core.request_clear();
    played.prepare(44100.0);
    EXPECT_EQ(&played.engine(), before);
    EXPECT_NE(played.engine().delay_left.at(100), 0.0f);

    played.set("width", {1.7});  // mid-ramp at the change
    played.vector(100, 0.5);
    played.set("mod_waveform", {4});  // waiting at the change
    played.driver.core.request_reset();
    played.prepare(96000.0);
    EXPECT_EQ(played.engine().sample_rate, 96000.0f);
    EXPECT_GT(played.engine().width, 1.0f);
    EXPECT_LT(played.engine().width, 1.7f) << "goes on from where it stood";
    played.vector(480);
    played.vector(1);
    EXPECT_EQ(played.engine().width, 1.7f);
    EXPECT_EQ(played.engine().feedback, 1.2f);
    EXPECT_EQ(int(played.engine().channel_mode), 1);
    EXPECT_EQ(int(played.engine().modulator.waveform), 4);
    EXPECT_EQ(played.engine().modulator.sample_rate, 96000.0f);
}

TEST(Driver, RequestsActAtTheTopOfTheNextVectorEvenWhenTheQueueIsFull) {
    Played played;
    played.prepare();
    for (int i = 0; i < 10; ++i) played.vector(512, 0.5);
    for (int i = 0; i < 600; ++i) played.set("clip", {1});
    played.driver.core.request_clear();
    played.vector(0);
    EXPECT_EQ(played.engine().delay_filled, 4U);
    EXPECT_NE(played.engine().modulator.phase, 0.0f);
    played.driver.core.request_clear();
    played.driver.core.request_reset();
    played.vector(0);
    EXPECT_EQ(played.engine().modulator.phase, 0.0f);
}

TEST(Driver, AFailedRebuildLeavesEverythingAsItWas) {
    Played played;
    played.prepare();
    played.set("feedback", {1.0});
    played.vector(512, 0.5);
    const Vesk* const before = &played.engine();
    played.driver.core.rebuild_tables = [](Vesk&, float) -> std::shared_ptr<void> {
        throw std::bad_alloc();
    };
    EXPECT_THROW(played.prepare(48000.0), std::bad_alloc);
    EXPECT_EQ(&played.engine(), before);
    EXPECT_EQ(played.driver.core.prepared_sample_rate, 44100.0);
    EXPECT_NE(played.engine().delay_left.at(0), 0.0f);
    played.driver.core.rebuild_tables = {};
    played.driver.core.set_values_again = [] { throw std::bad_alloc(); };
    EXPECT_THROW(played.prepare(48000.0), std::bad_alloc) << "after the swap";
    EXPECT_EQ(&played.engine(), before);
    EXPECT_EQ(played.driver.core.prepared_sample_rate, 44100.0);
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
        if (round % 7 == 0) {
            whole.set("feedback", {0.1 * (round % 10)});
            split.set("feedback", {0.1 * (round % 10)});
        }
        std::vector<double> pieces;
        whole.vector(500, 0.3 * (round % 3));
        for (const int frames : {1, 63, 100, 200, 136}) {
            split.vector(frames, 0.3 * (round % 3));
            pieces.insert(pieces.end(), split.left.begin(), split.left.end());
        }
        ASSERT_EQ(pieces, whole.left) << round;
    }
}

TEST(Driver, TwentyAtDifferentRatesShareNothing) {
    std::vector<std::unique_ptr<Played>> all;
    for (int i = 0; i < 20; ++i) {
        all.push_back(std::make_unique<Played>());
        all.back()->set("delay", {0.001 * (i + 1)});
        all.back()->prepare(8000.0 + 1000.0 * i);
    }
    for (int i = 0; i < 20; i += 2) all[static_cast<std::size_t>(i)].reset();
    for (int i = 1; i < 20; i += 2) {
        Played& p = *all[static_cast<std::size_t>(i)];
        p.vector(600, 0.01);
        std::size_t first = 0;
        while (first < 600 && p.left[first] == 0.0) ++first;
        EXPECT_NEAR(static_cast<double>(first), (8 + i) * (i + 1), 1) << i;
    }
}

// A rebuild may come while vectors run: none is torn, none waits, and all values arrive.
TEST(Driver, RebuildsSetsAndRequestsFromOtherThreadsLeaveTheAudioThreadSound) {
    Played played;
    played.prepare();
    std::atomic<bool> stop{false};
    std::thread audio([&] {
        std::vector<double> l(64), r(64);
        double* const channels[2] = {l.data(), r.data()};
        const signal_bundle bundle{channels, 2, 64};
        while (!stop) {
            std::fill(l.begin(), l.end(), 0.25);
            std::fill(r.begin(), r.end(), -0.25);
            played.driver.core.perform(bundle, bundle);
            for (const double x : l) ASSERT_TRUE(std::isfinite(x));
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
