// The whole object, loaded and played through the host.
#include <gtest/gtest.h>
#include <malloc.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "twin.h"

namespace kv7::orv {
namespace {

using tesk::host;

std::string box(const std::string& rest = {}) {
    return object_name() + " " + rest;
}

TEST(Object, RefusesAHostBelowVersionNineAndLeavesNothingBehind) {
    object_name();
    const tesk::live_memory before = host::the().live();
    host::the().set_version(0x8FF);
    try {
        host::the().make(box());
        FAIL() << "made";
    } catch (const std::runtime_error& refused) {
        EXPECT_NE(std::string(refused.what()).find("Orvane DSP objects require Tesk 9 or later"),
                  std::string::npos);
    }
    host::the().set_version(0x900);
    host::the().take_errors();
    { const auto made = host::the().make(box()); }
    EXPECT_TRUE(host::the().live() == before);
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

// What a user sets, what the object then reports, and that it plays as the driver does.
TEST(Object, EveryAttributeByNameReadsBackAndReachesTheEngine) {
    const auto& described = host::the().described(object_name());
    ASSERT_EQ(described.attributes.size(), attribute_count);
    Dice dice(5);
    for (std::size_t i = 0; i < attribute_count; ++i) {
        const attribute_row& row = attribute_table[i];
        SCOPED_TRACE(row.info.name);
        EXPECT_EQ(described.attributes[i].name, row.info.name);
        EXPECT_EQ(described.attributes[i].property("label"), row.info.label);
        Twin twin;
        twin.prepare(44100);
        // Heard only with these.
        twin.set("mod_delay", {0.3});
        twin.set("noise", {0.3});
        twin.set("wobble", {0.2});
        twin.set("reverb", {0.4});
        for (const bool at_an_end : {true, false}) {
            double value = row.low + (row.high - row.low) * dice.unit();
            if (row.kind == attribute_kind::toggle) value = at_an_end;
            if (row.kind == attribute_kind::choice)
                value = at_an_end ? row.high : std::floor(value);
            if (std::string(row.info.name) == "mod_waveform") value = at_an_end ? 4 : 1;
            twin.set(row.info.name,
                     std::vector<double>(row.kind == attribute_kind::list ? 2 : 1, value));
            EXPECT_EQ(twin.instance->get_number(row.info.name), value);
            for (int n = 0; n < 20; ++n) twin.vector(64);
        }
        const double outside = row.high + 1000.0;
        twin.set(row.info.name, {outside});
        if (row.kind == attribute_kind::continuous || row.kind == attribute_kind::list) {
            EXPECT_EQ(twin.instance->get_number(row.info.name), row.high)
                << "clamped without a word";
        }
        if (row.kind == attribute_kind::choice) {
            EXPECT_EQ(twin.instance->get_number(row.info.name), outside) << "reported as set";
        }
        for (int n = 0; n < 20; ++n) twin.vector(64);
    }
    EXPECT_TRUE(host::the().take_errors().empty());
}

TEST(Object, TakesAttributesFromItsBoxAndNamesOfValues) {
    const auto instance =
        host::the().make(box("@feedback 0.8 @delay 0.25 0.5 @channel_mode pingpong @gate 1"));
    EXPECT_EQ(instance->get_number("feedback"), 0.8);
    EXPECT_EQ(instance->get_numbers("delay"), (std::vector<double>{0.25, 0.5}));
    EXPECT_EQ(instance->get_number("channel_mode"), 1.0);
    EXPECT_EQ(instance->get_number("gate"), 1.0);
    EXPECT_TRUE(instance->send("mod_waveform \"Saw up\""));
    EXPECT_EQ(instance->get_number("mod_waveform"), 2.0);
    EXPECT_TRUE(instance->send("0.5")) << "a number to an inlet changes nothing";
    EXPECT_FALSE(instance->send("setup"));
    EXPECT_FALSE(instance->send("mod_waveform Sinus"));
    EXPECT_FALSE(instance->send("feedbak 1"));
    EXPECT_EQ(host::the().take_errors().size(), 3U);
}

TEST(Object, PlaysRandomScoresLikeTheDriver) {
    for (std::uint64_t seed = 1; seed <= 12; ++seed) {
        SCOPED_TRACE(seed);
        Dice dice(seed);
        Twin twin;
        twin.prepare(44100);
        for (int n = 0; n < 400; ++n) {
            for (int k = dice.below(4); k > 0; --k) {
                const attribute_row& row =
                    attribute_table[static_cast<std::size_t>(dice.below(int(attribute_count)))];
                double value = row.low + (row.high - row.low) * dice.unit();
                if (row.kind == attribute_kind::toggle) value = dice.below(2);
                if (row.kind == attribute_kind::choice) value = dice.below(int(row.high) + 1);
                if (std::string(row.info.name) == "mod_waveform") value = dice.below(5);
                twin.set(row.info.name, {value, value * 0.5});
            }
            if (dice.below(60) == 0) twin.clear();
            if (dice.below(60) == 0) twin.reset();
            if (dice.below(40) == 0)
                twin.prepare(dice.below(2) == 0 ? 44100 : 22050 + dice.below(50000));
            twin.vector(dice.below(200));
            if (testing::Test::HasFatalFailure()) return;
        }
    }
}

TEST(Object, ARateChangeInMidRampKeepsEveryValueAndTheSameRateKeepsTheSound) {
    Twin twin("@delay 0.05 0.07");
    twin.driver.set(attribute_index("delay"), std::vector{0.05, 0.07});
    twin.prepare(44100);
    for (int n = 0; n < 50; ++n) twin.vector(128);
    twin.prepare(44100);
    for (int n = 0; n < 50; ++n) twin.vector(128, 0.0);
    twin.set("feedback", {1.3});
    twin.vector(100);
    twin.set("channel_mode", {2});
    twin.set("repitch", {1});
    twin.prepare(48000);
    for (const auto& [name, value] :
         {std::pair{"feedback", 1.3}, {"channel_mode", 2.0}, {"repitch", 1.0}, {"mod_phase", 90.0}})
        EXPECT_EQ(twin.instance->get_number(name), value) << name;
    for (int n = 0; n < 50; ++n) twin.vector(128);
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
    for (int n = 0; n < 20; ++n) twin.vector(64);
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
    const std::string package = path.substr(0, path.find("/externals/"));
    std::ifstream file(package + "/docs/orv.device.vesk~.teskref.xml");
    const std::string page(std::istreambuf_iterator<char>(file), {});
    std::size_t last = 0;
    for (const char* text :
         {"<kv7object name='orv.device.vesk~' category='effect'>",
          "<digest>A modulation delay effect</digest>", "Velmarine", "<method name='float'>",
          "<method name='reset'>", "<digest>Reset</digest>", "<method name='clear'>",
          "<digest>Clear feedback</digest>", "<attribute name='channel_mode'",
          "<attribute name='width'"}) {
        const std::size_t found = page.find(text, last);
        ASSERT_NE(found, std::string::npos) << text;
        last = found;
    }
    EXPECT_EQ(page.find("setup"), std::string::npos) << "what users can't send is not on the page";
    for (const attribute_row& row : attribute_table)
        EXPECT_NE(page.find(row.info.description), std::string::npos) << row.info.name;
}

TEST(Object, TwentyInstancesShareNothing) {
    object_name();
    const tesk::live_memory before = host::the().live();
    Dice dice(9);
    std::vector<std::unique_ptr<Twin>> twins;
    for (int i = 0; i < 20; ++i) {
        twins.push_back(std::make_unique<Twin>());
        twins.back()->prepare(8000 + 997 * i);
    }
    while (!twins.empty()) {
        for (auto& twin : twins) {
            twin->set("delay", {0.001 + 0.1 * dice.unit()});
            twin->set("noise", {dice.unit()});
            twin->vector(64);
        }
        twins.erase(twins.begin() + dice.below(int(twins.size())));
    }
    EXPECT_TRUE(host::the().live() == before);
}

// VESK_INSTANCES says how many; 50 at first.
TEST(Object, InstancesMadeAndFreedLeaveTheProcessAsItWas) {
    const char* const wanted = std::getenv("VESK_INSTANCES");
    const int count = wanted != nullptr ? std::atoi(wanted) : 50;
    const auto one_life = [](int i) {
        Twin twin("@delay 0.01 0.02 @reverb 0.3");
        twin.prepare(i % 2 == 0 ? 44100 : 48000);
        twin.set("feedback", {0.9});
        twin.vector(64);
        twin.prepare(32000);
        twin.vector(64);
    };
    const auto heap = [] {
#ifdef __GLIBC__
        const struct mallinfo2 held = mallinfo2();  // zeros under a sanitizer, which looks itself
        return static_cast<std::int64_t>(held.uordblks + held.hblkhd);
#else
        return std::int64_t{0};
#endif
    };
    for (int i = 0; i < 4; ++i) one_life(i);  // what is made once stays
    const tesk::live_memory before = host::the().live();
    const std::int64_t heap_before = heap();
    for (int i = 0; i < count; ++i) one_life(i);
    EXPECT_TRUE(host::the().live() == before);
    // What the C library keeps for later sways; an instance holds a thousand times more.
    EXPECT_LE(heap(), heap_before + 32768);
    EXPECT_TRUE(host::the().take_errors().empty());
}

}  // namespace
}  // namespace kv7::orv
