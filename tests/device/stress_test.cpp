// Everything at once: audio at full speed, a main thread that sets and changes rates, and two more
// that send messages, set and read attributes. VESK_STRESS_SECONDS says how long; 2 at first.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <string>
#include <thread>

#include "twin.h"

namespace kv7::orv {
namespace {

void set_any(tesk::instance& instance, Dice& dice) {
    const attribute_row& row = any_row(dice);
    instance.set(row.info.name, dice.below(5) == 0 ? row.high : value_of(dice, row));
}

TEST(Stress, AudioMainAndTwoMoreThreadsAtOnce) {
    const char* const wanted = std::getenv("VESK_STRESS_SECONDS");
    const auto length = std::chrono::duration<double>(wanted ? std::atof(wanted) : 2.0);
    tesk::host& host = tesk::host::the();
    object_name();
    const tesk::live_memory before = host.live();
    {
        Twin twin;
        tesk::instance& instance = *twin.instance;
        instance.prepare(44100, 64);
        std::atomic<bool> stop{false};
        {
            Dice input(3);
            tesk::audio_thread audio(instance, {64, true, [&](std::int64_t, double* const* inputs) {
                                                    for (int c = 0; c < 2; ++c)
                                                        for (int i = 0; i < 64; ++i)
                                                            inputs[c][i] = input.unit() - 0.5;
                                                }});
            const auto other = [&](int seed) {
                Dice dice(static_cast<std::uint64_t>(seed));
                while (!stop) {
                    set_any(instance, dice);
                    instance.get(any_row(dice).info.name);
                    if (dice.below(20) == 0) instance.send("reset");
                    if (dice.below(20) == 0) instance.send("clear");
                    std::this_thread::sleep_for(std::chrono::microseconds(dice.below(200)));
                }
            };
            std::thread third(other, 4), fourth(other, 7);
            Dice dice(5);
            const auto end = std::chrono::steady_clock::now() + length;
            int rebuilds = 0;
            while (std::chrono::steady_clock::now() < end) {
                for (int k = 0; k < 20; ++k) {
                    set_any(instance, dice);
                    host.serve();
                }
                instance.send(dice.below(2) == 0 ? "clear" : "reset");
                instance.prepare(8000.0 + 4000.0 * (++rebuilds % 5), 64);
                std::this_thread::sleep_for(std::chrono::milliseconds(dice.below(10)));
            }
            stop = true;
            third.join();
            fourth.join();
            host.serve();
            EXPECT_GT(audio.vectors(), 10);
        }
        // One last set of each; then object and engine agree on every value: what it plays is what
        // a fresh driver with the reported values plays.
        const auto play_silence = [&](int vectors) {
            double silence[2][64] = {};
            double* const channels[2] = {silence[0], silence[1]};
            const signal_bundle bundle{channels, 2, 64};
            for (int n = 0; n < vectors; ++n) {
                instance.run(channels, channels, 64);
                twin.driver.core.perform(bundle, bundle);
                host.serve();
            }
        };
        Dice last(6);
        twin.prepare(44100);
        play_silence(3);  // what still waits
        for (const attribute_row& row : attribute_table) {
            const double value = value_of(last, row);
            twin.set(row.info.name, {value, value});
        }
        play_silence(20);  // over the ramps
        twin.reset();
        twin.vectors(200, 64);
        EXPECT_TRUE(host.take_errors().empty());
    }
    EXPECT_TRUE(host.live() == before);
}

}  // namespace
}  // namespace kv7::orv
