// What crosses from other threads to the main one, with real threads.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "tests/framework/objects.h"

TEST(Threads, MessagesAndWritesWaitForTheMainThread) {
    example_box made;
    made.box.reset();
    const tesk::live_memory before = made.host.live();
    const auto box = made.host.make("example~");
    made.said();
    const auto elsewhere = [&](const lines& texts) {
        std::thread([&] {
            for (const std::string& text : texts) box->send(text, 1);
        }).join();
        return made.said();
    };
    box->send("later 0");
    EXPECT_EQ(made.said(), lines{"later 0"}) << "at once on the main thread";
    // "here" and "gain" act on the calling thread, the rest waits in order.
    EXPECT_EQ(elsewhere({"later 1", "later 2", "later 3", "later 4", "here 5"}), lines{"here 5 1"});
    EXPECT_EQ(made.host.serve(), 3) << "the fourth is dropped";
    EXPECT_EQ(made.said(), (lines{"later 1", "later 2", "later 3"}));
    EXPECT_EQ(elsewhere({"later 6", "steps 1", "steps 2", "steps 3", "gain 0.125"}),
              lines{"gain 0.125"});
    EXPECT_EQ(box->get_number("steps"), 0.0);
    EXPECT_EQ(made.host.serve(), 2) << "there is room again, and the last write wins";
    EXPECT_EQ(made.said(), (lines{"later 6", "steps 3"}));
    elsewhere({"later_at"});
    made.host.serve();
    EXPECT_EQ(made.said(), lines{"later_at 1"}) << "the inlet of the call";
    EXPECT_EQ(box->get_number("steps"), 3.0);
    elsewhere({"later 7", "steps 4"});
    box->free();
    EXPECT_EQ(made.host.serve(), 0) << "nothing reaches a freed object";
    EXPECT_TRUE(made.said().empty());
    EXPECT_EQ(made.host.live(), before);
}

// One thread runs vectors and sends, the main one serves, changes the rate, reads and at last
// frees: whatever the order, a sanitizer sees no race, writes end up applied, messages keep their
// order, and the free awaits calls under way.
TEST(Threads, AudioAndMainThreadShareAnInstanceUntilItsFree) {
    example_box made;
    for (int round = 0; round < 10; ++round) {
        const auto box = made.host.make("example~");
        ASSERT_TRUE(box->prepare(44100.0, 32));
        box->set("value", 1.0);
        made.said();
        std::atomic<int> sent{0};
        const auto act = [&](std::int64_t, double* const*) {
            const int number = ++sent;
            box->send("later " + std::to_string(number));
            box->set("steps", std::min(number, 100));
            box->set("gain", std::min(number, 100));
            const std::vector<double> value = box->get_numbers("value");
            for (const double x : value) EXPECT_EQ(x, value.front()) << "torn";
        };
        const tesk::audio_thread audio(*box, {32, true, act});
        int last = 0;
        bool more = true;
        for (int n = 0; more; ++n) {
            more = sent < 200;  // what was sent by now arrives in this round
            if (n % 16 == 0) box->prepare(n % 32 == 0 ? 48000.0 : 44100.0, 32);
            box->get_number("gain");
            box->set("value", std::vector<double>(static_cast<std::size_t>(1 + n % 9), n));
            made.host.serve();
            for (const std::string& line : made.said()) {
                EXPECT_EQ(line.find("destroyed"), line.npos) << line;
                if (line.rfind("later ", 0) != 0) continue;
                EXPECT_GT(std::stoi(line.substr(6)), last);
                last = std::stoi(line.substr(6));
            }
        }
        EXPECT_GT(last, 0) << "none arrived";
        EXPECT_EQ(box->get_number("steps"), 100.0);
        EXPECT_EQ(box->get_number("gain"), 100.0);
        box->free();
        EXPECT_FALSE(box->send("here 1"));
        EXPECT_EQ(made.host.serve(), 0);
        for (const std::string& line : made.said())
            EXPECT_EQ(line.find("destroyed"), line.npos) << line;
    }
}

// A call that finds another thread queueing one counts as one too many: dropped, never torn.
TEST(Threads, OneMessageFromTwoThreadsArrivesWholeOrNotAtAll) {
    const example_box made;
    std::atomic<bool> stop{false};
    const auto send = [&](const std::string& text) {
        while (!stop) made.box->send("later " + text + " " + text);
    };
    std::thread first(send, "one"), second(send, "two");
    std::size_t arrived = 0;
    while (arrived < 2000) {
        made.host.serve();
        for (const std::string& line : made.said()) {
            EXPECT_TRUE(line == "later one one" || line == "later two two") << line;
            ++arrived;
        }
    }
    stop = true;
    first.join();
    second.join();
}

TEST(Threads, PerformStandsStillDuringSetUpUnlessThatIsSwitchedOff) {
    for (const bool guarded : {true, false}) {
        const example_box made;
        tesk::instance& box = *made.box;
        ASSERT_TRUE(box.prepare(44100.0, 8));
        made.said();
        made.host.set_perform_guarded_by_dsp64(guarded);
        bool ran = false;
        std::thread audio([&] {
            while (made.said().empty()) std::this_thread::yield();  // set-up has begun
            double samples[8] = {};
            double* const channels[] = {samples, samples};
            ran = box.run(channels, channels, 8);
            box.set("gain", 13.0);  // and ends
        });
        box.prepare(44100.0, 13);
        audio.join();
        EXPECT_EQ(ran, !guarded);
        made.host.set_perform_guarded_by_dsp64(true);
    }
}
