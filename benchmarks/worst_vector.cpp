// The slowest single vector of 64 frames under the wildest automation, beside the median one: what
// a user must keep free. One script is played several times; of each of its vectors the shortest
// time counts, since what the machine does besides falls on another vector every time, and what the
// vector itself costs is there every time.
//
//   worst_vector [seconds of audio] [repetitions]
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "settings.h"
#include "vesk_driver.h"

namespace kv7::orv {
namespace {

constexpr double rate = 48000.0;
constexpr int frames = 64;

class Script {
public:
    explicit Script(vesk_driver& driver) : driver_(driver) {}

    // The moves before one vector, and their names.
    std::string before_vector(long n) {
        std::string moves;
        if (n % 40 == 0) {
            ramp_everything();
            moves += " ramps";
        }
        if (n % 97 == 0) {
            far_ = !far_;
            const double near_or_far[2] = {far_ ? 5.0 : 0.001, far_ ? 4.9 : 0.0015};
            driver_.set(attribute_index("delay"), near_or_far);
            moves += far_ ? " far delay" : " near delay";
        }
        if (n % 211 == 0) {
            for (int k = 0; k < 520; ++k) set("clip", k % 2);
            moves += " full queue";
        }
        if (n % 1009 == 0) {
            set("repitch", repitch_ = !repitch_);
            moves += repitch_ ? " repitch" : " crossfade";
        }
        if (n % 499 == 0) {
            set("channel_mode", next_below(3));
            set("reverb_location", next_below(3));
            set("mod_waveform", next_below(6));
            moves += " modes";
        }
        if (n % 3001 == 0) {
            driver_.core.request_reset();
            moves += " reset";
        }
        return moves;
    }

private:
    void ramp_everything() {
        for (std::size_t i = 0; i < attribute_count; ++i) {
            const attribute_row& row = attribute_table[i];
            if (row.kind != attribute_kind::continuous) continue;
            const double value[1] = {row.low + (row.high - row.low) * next_below(1000) / 999.0};
            driver_.set(i, value);
        }
    }
    void set(const char* name, double value) {
        const double values[1] = {value};
        driver_.set(attribute_index(name), values);
    }
    int next_below(int n) {
        state_ = state_ * 6364136223846793005U + 1442695040888963407U;
        return static_cast<int>((state_ >> 33) % static_cast<std::uint64_t>(n));
    }

    vesk_driver& driver_;
    std::uint64_t state_ = 1;
    bool far_ = false;
    bool repitch_ = false;
};

// Shortens the vectors' times, in nanoseconds, to those of one more playing.
void play(std::vector<double>& times, std::vector<std::string>& moves) {
    vesk_driver driver(rate);
    kv7::orv::apply(driver, full_settings());
    driver.prepare(rate);
    Script script(driver);
    std::vector<double> left(frames), right(frames);
    double* const channels[2] = {left.data(), right.data()};
    const signal_bundle bundle{channels, 2, frames};
    std::uint64_t noise = 7;
    for (std::size_t n = 0; n < times.size(); ++n) {
        for (auto* channel : {&left, &right})
            for (double& x : *channel) {
                noise = noise * 6364136223846793005U + 1442695040888963407U;
                x = static_cast<double>(noise >> 40) / 8388608.0 - 1.0;
            }
        moves[n] = script.before_vector(static_cast<long>(n));
        const auto begin = std::chrono::steady_clock::now();
        driver.core.perform(bundle, bundle);
        const auto end = std::chrono::steady_clock::now();
        times[n] =
            std::min(times[n], std::chrono::duration<double, std::nano>(end - begin).count());
    }
}

void report(const std::vector<double>& times, const std::vector<std::string>& moves) {
    std::vector<std::size_t> order(times.size());
    for (std::size_t n = 0; n < order.size(); ++n) order[n] = n;
    std::sort(order.begin(), order.end(),
              [&](std::size_t a, std::size_t b) { return times[a] < times[b]; });
    const auto at = [&](double share) {
        return order[static_cast<std::size_t>(share * static_cast<double>(order.size() - 1))];
    };
    const double median = times[at(0.5)];
    constexpr double available = frames / rate * 1e9;
    std::printf("%zu vectors of %d frames at %.0f Hz, everything on\n", times.size(), frames, rate);
    struct {
        const char* name;
        double share;
    } const rows[] = {{"median", 0.5}, {"99 %", 0.99}, {"99.9 %", 0.999}, {"worst", 1.0}};
    for (const auto& [name, share] : rows) {
        const double t = times[at(share)];
        std::printf("%-7s %9.1f us  %6.2f of the median  %6.2f %% of the vector's time\n", name,
                    t * 1e-3, t / median, t / available * 100.0);
    }
    std::puts("the slowest, and what had been moved before it:");
    for (std::size_t k = 1; k <= std::min<std::size_t>(8, order.size()); ++k) {
        const std::size_t n = order[order.size() - k];
        std::size_t moved = n;
        while (moves[moved].empty()) --moved;
        std::printf("%9.1f us  vector %zu, %zu after%s\n", times[n] * 1e-3, n, n - moved,
                    moves[moved].c_str());
    }
}

}  // namespace
}  // namespace kv7::orv

int main(int count, char** words) {
    const double seconds = count > 1 ? std::atof(words[1]) : 60.0;
    const int repetitions = count > 2 ? std::atoi(words[2]) : 5;
    const auto vectors = static_cast<std::size_t>(seconds * kv7::orv::rate / kv7::orv::frames);
    std::vector<double> times(std::max<std::size_t>(vectors, 1), 1e18);
    std::vector<std::string> moves(times.size());
    for (int n = 0; n < std::max(repetitions, 1); ++n) kv7::orv::play(times, moves);
    kv7::orv::report(times, moves);
}
