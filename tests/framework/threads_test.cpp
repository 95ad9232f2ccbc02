// What crosses from other threads to the main one, with real threads.
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "tests/framework/objects.h"

namespace {

template <class Function>
void elsewhere(Function&& function) {
    std::thread(function).join();
}

}  // namespace

TEST(Threads, AMessageWaitsForTheMainThreadInOrderAndTheFourthIsDropped) {
    const example_box made;
    made.said();
    made.box->send("later 0");
    EXPECT_EQ(made.said(), lines{"later 0"}) << "at once on the main thread";
    elsewhere([&] {
        for (const char* text : {"later 1", "later 2", "later 3", "later 4"}) made.box->send(text);
        made.box->send("here 5", 1);
    });
    EXPECT_EQ(made.said(), lines{"here 5 1"}) << "on the calling thread";
    EXPECT_EQ(made.host.serve(), 3);
    EXPECT_EQ(made.said(), (lines{"later 1", "later 2", "later 3"}));
    elsewhere([&] { made.box->send("later 6"); });
    made.host.serve();
    EXPECT_EQ(made.said(), lines{"later 6"}) << "and takes one more once it is empty";
}

TEST(Threads, TheLastOfSeveralWritesIsTheOneApplied) {
    const example_box made;
    made.said();
    elsewhere([&] {
        for (const double value : {1.0, 2.0, 3.0}) made.box->set("steps", value);
        made.box->set("gain", 0.125);
    });
    EXPECT_EQ(made.said(), lines{"gain 0.125"}) << "written on the calling thread";
    EXPECT_EQ(made.box->get_number("steps"), 0.0);
    EXPECT_EQ(made.host.serve(), 1);
    EXPECT_EQ(made.said(), lines{"steps 3.0"});
    EXPECT_EQ(made.box->get_number("steps"), 3.0);
    EXPECT_EQ(made.host.serve(), 0);
}

TEST(Threads, WhatStillWaitsDoesNotReachAFreedObject) {
    example_box made;
    made.box.reset();
    const tesk::live_memory before = made.host.live();
    const auto box = made.host.make("example~");
    made.said();
    elsewhere([&] {
        box->send("later 1");
        box->set("steps", 4.0);
    });
    box->free();
    EXPECT_EQ(made.host.serve(), 0);
    EXPECT_TRUE(made.said().empty());
    EXPECT_EQ(made.host.live(), before);
}

TEST(Threads, AFreeAwaitsCallsUnderWayAndRefusesLaterOnes) {
    example_box made;
    for (int round = 0; round < 20; ++round) {
        const auto box = made.host.make("example~");
        box->prepare(44100.0, 8);
        std::atomic<bool> stop{false};
        std::atomic<int> taken{0};
        std::thread other([&] {
            while (!stop) {
                taken += box->send("later 1") && box->set("steps", 1.0) ? 1 : 0;
                box->get("value");
            }
        });
        const tesk::audio_thread audio(*box, {});
        while (taken < 3) std::this_thread::yield();
        box->free();
        EXPECT_FALSE(box->send("here 1"));
        stop = true;
        other.join();
        EXPECT_EQ(made.host.serve(), 0);
    }
}

// One thread runs vectors and sends, the main one serves, changes the rate and reads: whatever
// the order, a sanitizer sees no race, writes end up applied and messages keep their order.
TEST(Threads, AudioAndMainThreadShareAnInstance) {
    const example_box made;
    tesk::instance& box = *made.box;
    ASSERT_TRUE(box.prepare(44100.0, 32));
    made.said();
    std::atomic<int> sent{0};
    tesk::audio_thread audio(box, {.vector_size = 32,
                                   .flush_denormals = true,
                                   .before_vector = [&](std::int64_t, double* const*) {
                                       const int number = ++sent;
                                       if (number > 400) return;
                                       box.send("later " + std::to_string(number));
                                       box.set("steps", number);
                                       box.set("gain", number);
                                   }});
    int last = 0, arrived = 0;
    const auto receive = [&] {
        made.host.serve();
        for (const std::string& line : made.said()) {
            if (line.rfind("later ", 0) != 0) continue;
            const int number = std::stoi(line.substr(6));
            EXPECT_GT(number, last);
            last = number;
            ++arrived;
        }
    };
    for (int round = 0; sent.load() < 500 || audio.vectors() == 0; ++round) {
        receive();
        if (round % 16 == 0) box.prepare(round % 32 == 0 ? 48000.0 : 44100.0, 32);
        box.get_number("gain");
        box.set("value", 1.0);
    }
    audio.stop();
    receive();
    EXPECT_GT(arrived, 0);
    EXPECT_EQ(box.get_number("steps"), 400.0);
    EXPECT_EQ(box.get_number("gain"), 400.0);
}

TEST(Threads, PerformStandsStillDuringSetUpUnlessThatIsSwitchedOff) {
    for (const bool guarded : {true, false}) {
        SCOPED_TRACE(guarded);
        const example_box made;
        tesk::instance& box = *made.box;
        ASSERT_TRUE(box.prepare(44100.0, 8));
        made.host.set_perform_guarded_by_dsp64(guarded);
        made.said();
        bool ran = false;
        std::thread audio([&] {
            while (made.said().empty()) std::this_thread::yield();  // set-up has begun
            std::vector<double> samples(8);
            const double* const in[] = {samples.data(), samples.data()};
            double* const out[] = {samples.data(), samples.data()};
            ran = box.run(in, out, 8);
            box.set("gain", 13.0);  // and ends
        });
        box.prepare(44100.0, 13);
        audio.join();
        EXPECT_EQ(ran, !guarded);
        made.host.set_perform_guarded_by_dsp64(true);
    }
}
