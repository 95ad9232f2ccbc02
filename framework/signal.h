// What the audio thread hands to a device: channels of 64-bit samples, and the operation on them.
#pragma once

#include <atomic>
#include <cstdint>

#include "framework/host_interface.h"

namespace kv7::ply {

struct signal_bundle {
    double** channels = nullptr;
    std::int32_t channel_count = 0;
    std::int32_t frame_count = 0;
};

template <int Unused>
class vector_operator;

// The second base of a signal class. Rate and size may be read on any thread.
template <>
class vector_operator<0> {
public:
    vector_operator() : sample_rate_(sys_getsr()), vector_size_(sys_getblksize()) {}
    vector_operator(const vector_operator&) = delete;
    vector_operator& operator=(const vector_operator&) = delete;

    virtual void operator()(signal_bundle input, signal_bundle output) = 0;  // audio thread

    double sample_rate() const noexcept { return sample_rate_.load(std::memory_order_relaxed); }
    std::int64_t vector_size() const noexcept {
        return vector_size_.load(std::memory_order_relaxed);
    }
    void prepare(double rate, std::int64_t size) noexcept {  // "dsp64"
        sample_rate_.store(rate, std::memory_order_relaxed);
        vector_size_.store(size, std::memory_order_relaxed);
    }

protected:
    ~vector_operator() = default;

private:
    std::atomic<double> sample_rate_;        // Hz
    std::atomic<std::int64_t> vector_size_;  // samples
};

}  // namespace kv7::ply
