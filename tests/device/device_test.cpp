// The whole object, loaded and played through the host.
#include <gtest/gtest.h>
#include <malloc.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "twin.h"

namespace kv7::orv {
namespace {

using tesk::host;

std::string box(const std::string& rest = {}) {
    return object_name() + " " + rest;
}

TEST(Object, RefusesAHostBelowVersionNine) {
    object_name();
    host::the().set_version(0x8FF);
    try {
        host::the().make(box());
        ADD_FAILURE() << "made";
    } catch (const std::runtime_error& refused) {
        EXPECT_PRED_FORMAT2(testing::IsSubstring, "Orvane DSP objects require Tesk 9 or later",
                            refused.what());
    }
    host::the().set_version(0x900);
    host::the().take_errors();
    EXPECT_NO_THROW(host::the().make(box()));
}

TEST(Object, IsSilentBeforeTheFirstSetUpAndSoundsAsItsDefaultsSayAfterIt) {
    const auto instance = host::the().make(box());
    std::vector<double> left(32768), right(32768);
    double* const channels[2] = {left.data(), right.data()};
    instance->prepare(48000, 64);
    left[0] = 0.01;
    ASSERT_TRUE(instance->run(channels, channels, 32768));
    for (std::size_t n = 0; n < left.size(); ++n) {
        if (n == 18000)
            EXPECT_NEAR(left[n], 0.01, 1e-5) << "375 ms later, fully wet";
        else
            ASSERT_EQ(left[n], 0.0) << n;
        ASSERT_EQ(right[n], 0.0) << n;
    }
}

TEST(Object, RegistersAsItAlwaysDid) {
    object_name();
    std::string calls;
    for (const std::string& line : host::the().registrations()) calls += line + "\n";
    std::ifstream file(REGISTRATION_FILE);
    EXPECT_EQ(calls, std::string(std::istreambuf_iterator<char>(file), {}))
        << "host calls, one a line: names, labels, categories, defaults, bounds";
}

TEST(Object, ClampsNumbersWithoutAWordAndReportsAChoiceAsItWasSet) {
    const auto instance = host::the().make(box());
    for (const attribute_row& row : attribute_table) {
        SCOPED_TRACE(row.info.name);
        if (row.kind == attribute_kind::toggle) continue;
        instance->set(row.info.name, row.high + 1000.0);
        EXPECT_EQ(instance->get_number(row.info.name),
                  row.kind == attribute_kind::choice ? row.high + 1000.0 : row.high);
    }
    EXPECT_TRUE(host::the().take_errors().empty());
}

TEST(Object, TakesAttributesFromItsBoxAndNamesOfValues) {
    const auto instance =
        host::the().make(box("@feedback 0.8 @delay 0.25 0.5 @channel_mode pingpong @gate 1"));
    EXPECT_EQ(instance->get_numbers("delay"), (std::vector<double>{0.25, 0.5}));
    EXPECT_TRUE(instance->send("mod_waveform \"Saw up\""));
    for (const auto& [name, value] :
         {std::pair{"feedback", 0.8}, {"channel_mode", 1.0}, {"gate", 1.0}, {"mod_waveform", 2.0}})
        EXPECT_EQ(instance->get_number(name), value) << name;
    EXPECT_TRUE(instance->send("0.5")) << "a number to an inlet changes nothing";
    for (const char* refused : {"setup", "mod_waveform Sinus", "feedbak 1"})
        EXPECT_FALSE(instance->send(refused)) << refused;
    EXPECT_EQ(host::the().take_errors().size(), 3U);
}

// Every attribute reads back what was set and reaches the engine, also when a new rate comes in
// mid-ramp and with changes waiting; the same rate again keeps the sound.
TEST(Object, PlaysRandomScoresLikeTheDriver) {
    for (std::uint64_t seed = 1; seed <= 12; ++seed) {
        SCOPED_TRACE(seed);
        Dice dice(seed);
        Twin twin;
        twin.prepare(44100);
        for (int n = 0; n < 400; ++n) {
            std::map<std::string, double> set;
            for (int k = dice.below(4); k > 0; --k) {
                const attribute_row& row = any_row(dice);
                const double value = set[row.info.name] = value_of(dice, row);
                twin.set(row.info.name, {value, value * 0.5});
            }
            if (dice.below(60) == 0) twin.clear();
            if (dice.below(60) == 0) twin.reset();
            if (dice.below(40) == 0)
                twin.prepare(dice.below(2) == 0 ? 44100 : 22050 + dice.below(50000));
            for (const auto& [name, value] : set)
                EXPECT_EQ(twin.instance->get_number(name), value) << name;
            twin.vector(dice.below(200));
            if (testing::Test::HasFatalFailure()) return;
        }
    }
}

TEST(Object, AnOverrunQueueIsRepairedByTheNextSet) {
    Twin twin;
    twin.prepare(44100);
    twin.vector(64);
    for (int i = 0; i < 600; ++i) twin.set("clip", {double(i % 2)});
    twin.set("channel_mode", {1});
    EXPECT_EQ(twin.instance->get_number("channel_mode"), 1.0) << "reported though it was dropped";
    twin.vector(64);
    twin.set("channel_mode", {1});
    twin.vectors(20, 64);
}

// The sanitizers end the program instead of throwing.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST(Object, AFailedRebuildIsToldAndTheOldSoundPlaysOn) {
    const auto instance = host::the().make(box());
    ASSERT_TRUE(instance->prepare(44100, 64));
    ASSERT_TRUE(instance->prepare(1e13, 64)) << "no memory for it, but perform is still added";
    EXPECT_EQ(host::the().take_errors().size(), 1U);
    std::vector<double> left(20000), right(20000);
    double* const channels[2] = {left.data(), right.data()};
    left[0] = 0.01;
    ASSERT_TRUE(instance->run(channels, channels, 20000));
    EXPECT_NEAR(*std::max_element(left.begin(), left.end()), 0.0056, 1e-3)
        << "half-way between two samples";
}

#endif

TEST(Object, ShowsFourPortsAndDocumentsItself) {
    const auto instance = host::the().make(box());
    EXPECT_EQ(instance->inlets(), 2);
    EXPECT_EQ(instance->outlets(), 2);
    for (const bool outlet : {false, true}) {
        EXPECT_EQ(instance->assist(outlet, 0), "left channel");
        EXPECT_EQ(instance->assist(outlet, 1), "right channel");
        EXPECT_EQ(instance->assist(outlet, 2, "as before"), "as before");
    }
    const std::string path = VESK_OBJECT_FILE;
    std::ifstream file(path.substr(0, path.find("/externals/")) +
                       "/docs/orv.device.vesk~.teskref.xml");
    const std::string page(std::istreambuf_iterator<char>(file), {});
    std::vector<std::string> texts{"<kv7object name='orv.device.vesk~' category='effect'>",
                                   "<digest>A modulation delay effect</digest>",
                                   "Velmarine",
                                   "<method name='float'>",
                                   "<digest>Reset</digest>",
                                   "<digest>Clear feedback</digest>"};
    for (const attribute_row& row : attribute_table) texts.push_back(row.info.description);
    for (const std::string& text : texts) EXPECT_NE(page.find(text), std::string::npos) << text;
    EXPECT_EQ(page.find("setup"), std::string::npos) << "what users can't send is not on the page";
}

// Twenty at once share nothing. VESK_INSTANCES says how many there are in all; 50 at first.
TEST(Object, InstancesMadeAndFreedLeaveTheProcessAsItWas) {
    const char* const wanted = std::getenv("VESK_INSTANCES");
    Dice dice(9);
    const auto lives = [&](int count) {
        std::vector<std::unique_ptr<Twin>> twins;
        while (count > 0 || !twins.empty()) {
            for (; count > 0 && twins.size() < 20; --count) {
                twins.push_back(std::make_unique<Twin>());
                twins.back()->set("reverb", {0.3});
                twins.back()->prepare(8000 + dice.below(20000));
            }
            const auto any = twins.begin() + dice.below(int(twins.size()));
            (*any)->prepare(8000 + dice.below(20000));
            for (auto& twin : twins) {
                twin->set("delay", {0.001 + 0.1 * dice.unit()});
                twin->vector(64);
            }
            twins.erase(any);
        }
    };
    const auto heap = [] {
#ifdef __GLIBC__
        const struct mallinfo2 held = mallinfo2();  // zeros under a sanitizer, which looks itself
        return static_cast<std::int64_t>(held.uordblks + held.hblkhd);
#else
        return std::int64_t{0};
#endif
    };
    const auto address_space = [] {
        std::int64_t pages = 0;
        std::ifstream("/proc/self/statm") >> pages;  // 0 elsewhere
        return pages * 4096;
    };
    lives(100);  // what is made once stays
    const tesk::live_memory before = host::the().live();
    const std::int64_t heap_before = heap();
    const std::int64_t address_space_before = address_space();
    lives(wanted != nullptr ? std::atoi(wanted) : 50);
    EXPECT_TRUE(host::the().live() == before);
    // What the C library keeps for later sways; an instance holds a thousand times more.
    EXPECT_LE(heap(), heap_before + 32768);
    // Large rings are mappings. Eight of up to 2 MiB are kept; so many instances have hundreds.
    if (heap() != 0) {
        EXPECT_LE(address_space(), address_space_before + (24 << 20));
    }
    EXPECT_TRUE(host::the().take_errors().empty());
}

}  // namespace
}  // namespace kv7::orv
