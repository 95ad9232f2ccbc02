#include "tools/picture/spectrogram.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>
#include <numeric>

namespace program {

namespace {

constexpr double window_seconds = 0.045;
constexpr std::size_t most_hops_per_window = 32;  // of a short sound
constexpr std::size_t least_hops_per_window = 4;  // of a long one
constexpr std::size_t max_columns = 1400;
constexpr double highest_shown = 20000;  // Hz

std::size_t window_length(int rate) {
    return std::bit_ceil(static_cast<std::size_t>(std::max(64.0, rate * window_seconds)));
}

}  // namespace

spectrogram::spectrogram(int rate)
    : length_(window_length(rate)),
      highest_(std::max(2 * lowest, std::min(highest_shown, rate / 2.0))),
      bin_hz_(rate / static_cast<double>(length_)),
      recent_(length_),
      hop_(length_ / most_hops_per_window),
      until_hop_(hop_),
      bins_(fftwf_alloc_complex(length_)),
      plan_(fftwf_plan_dft_1d(static_cast<int>(length_), bins_.get(), bins_.get(), FFTW_FORWARD,
                              FFTW_ESTIMATE)),
      columns_(max_columns, static_cast<std::int64_t>(hop_)) {
    for (std::size_t i = 0; i < length_; ++i)
        window_.push_back(static_cast<float>(
            0.5 - 0.5 * std::cos(2 * std::numbers::pi * (static_cast<double>(i) + 0.5) /
                                 static_cast<double>(length_))));
    // A sine of full scale has a peak of half the window's sum.
    const float sum = std::accumulate(window_.begin(), window_.end(), 0.0f);
    for (float& w : window_) w *= 2 / sum;
}

void spectrogram::add(const float* interleaved, std::int64_t frames) {
    for (std::int64_t i = 0; i < frames; ++i) {
        recent_[next_] = {interleaved[2 * i], interleaved[2 * i + 1]};
        next_ = (next_ + 1) % length_;
        if (--until_hop_ > 0) continue;
        transform();
        if (columns_.last_is_full())
            hop_ = std::clamp(static_cast<std::size_t>(columns_.span()) / 2,
                              length_ / most_hops_per_window, length_ / least_hops_per_window);
        until_hop_ = hop_;
    }
}

void spectrogram::finish() {
    const std::vector<float> silence(2 * length_);
    add(silence.data(), lag());
}

// One transform serves both channels: the even part of its spectrum is the left one's.
void spectrogram::transform() {
    for (std::size_t i = 0; i < length_; ++i) {
        const auto& [left, right] = recent_[(next_ + i) % length_];
        bins_[i][0] = left * window_[i];
        bins_[i][1] = right * window_[i];
    }
    fftwf_execute(plan_.get());
    const auto power_of = [this](std::size_t k) {
        const auto& a = bins_[k];
        const auto& b = bins_[(length_ - k) % length_];
        // The powers of left and right add up to half of this sum.
        return 0.25f * (a[0] * a[0] + a[1] * a[1] + b[0] * b[0] + b[1] * b[1]);
    };
    spectrum now;
    const double ratio = std::pow(highest_ / lowest, 1.0 / row_count);
    double low = lowest;
    for (float& row : now.power) {
        const double high = low * ratio;
        // The strongest bin in reach; where rows are closer than bins, the nearest one.
        auto first = static_cast<std::size_t>(std::lround(low / bin_hz_));
        const auto last = std::max(first, static_cast<std::size_t>(std::lround(high / bin_hz_)));
        for (; first <= last && first <= length_ / 2; ++first) row = std::max(row, power_of(first));
        low = high;
    }
    columns_.add(now, static_cast<std::int64_t>(hop_));
}

}  // namespace program
