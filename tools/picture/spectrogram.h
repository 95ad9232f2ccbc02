// The power of a stereo sound over frequency and time.
#pragma once

#include <fftw3.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <type_traits>
#include <vector>

#include "tools/picture/columns.h"

namespace program {

class spectrogram {
public:
    static constexpr std::size_t row_count = 240;
    static constexpr double lowest = 30;  // Hz

    // The mean of both channels' power, 1 for a sine of full scale; from the lowest frequency up.
    struct spectrum {
        std::array<float, row_count> power{};

        void merge(const spectrum& later, double share) {
            for (std::size_t i = 0; i < row_count; ++i)
                power[i] += static_cast<float>(share) * (later.power[i] - power[i]);
        }
    };

    explicit spectrogram(int rate);  // Hz

    void add(const float* interleaved, std::int64_t frames);  // two channels
    void finish();                                            // after the last frame
    // A column shows what is half a window before its end.
    const columns<spectrum>& over_time() const { return columns_; }
    std::int64_t lag() const { return static_cast<std::int64_t>(length_ / 2); }  // frames
    double highest() const { return highest_; }  // Hz; rows are in equal ratios up to it

private:
    struct plan_release {
        void operator()(fftwf_plan plan) const noexcept { fftwf_destroy_plan(plan); }
    };
    struct memory_release {
        void operator()(fftwf_complex* memory) const noexcept { fftwf_free(memory); }
    };

    void transform();

    std::size_t length_;  // of a window, in frames
    double highest_;
    double bin_hz_;
    std::vector<float> window_;
    std::vector<std::array<float, 2>> recent_;  // a ring of one window
    std::size_t next_ = 0;                      // in the ring
    std::size_t hop_;                           // frames from one transform to the next
    std::size_t until_hop_;
    std::unique_ptr<fftwf_complex[], memory_release> bins_;  // left real, right imaginary
    std::unique_ptr<std::remove_pointer_t<fftwf_plan>, plan_release> plan_;
    columns<spectrum> columns_;
};

}  // namespace program
