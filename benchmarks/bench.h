// What the benchmarks share: a driver with settings, and vectors of noise for it.
#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <vector>

#include "settings.h"

namespace kv7::orv {

constexpr double bench_rate = 48000.0;

// A second of noise at about -17 dBFS, in bursts so that gate and ducker move.
class Noise {
public:
    Noise() : left_(second), right_(second) {
        std::uint64_t state = 1;
        const auto next = [&state] {
            state = state * 6364136223846793005U + 1442695040888963407U;
            return static_cast<double>(state >> 40) / 8388608.0 - 1.0;
        };
        for (std::size_t i = 0; i < second; ++i) {
            const double gain = i % 24576 < 4608 ? 0.25 : 0.0;
            left_[i] = next() * gain;
            right_[i] = next() * gain;
        }
    }
    // The vector that begins at sample `at`, copied out; at becomes where the next one begins.
    void fill(std::vector<double>& left, std::vector<double>& right, std::size_t& at) const {
        if (at + left.size() > second) at = 0;
        std::copy_n(left_.begin() + static_cast<std::ptrdiff_t>(at), left.size(), left.begin());
        std::copy_n(right_.begin() + static_cast<std::ptrdiff_t>(at), right.size(), right.begin());
        at += left.size();
    }

private:
    static constexpr std::size_t second = 48000;
    std::vector<double> left_, right_;
};

class Bench {
public:
    Bench(const settings& all, int frames)
        : driver(bench_rate),
          left_(static_cast<std::size_t>(frames)),
          right_(static_cast<std::size_t>(frames)) {
        apply(driver, all);
        driver.prepare(bench_rate);
        for (int n = 0; n < 2 * 48000; n += frames) vector();  // lines filled, caches warm
    }
    void vector() {
        static const Noise noise;  // of all of them: only what engines hold fights for the caches
        noise.fill(left_, right_, at_);
        double* const channels[2] = {left_.data(), right_.data()};
        const signal_bundle bundle{channels, 2, static_cast<std::int32_t>(left_.size())};
        driver.core.perform(bundle, bundle);
        benchmark::DoNotOptimize(left_.data());
        benchmark::ClobberMemory();
    }

    vesk_driver driver;

private:
    std::size_t at_ = 0;
    std::vector<double> left_, right_;
};

}  // namespace kv7::orv
