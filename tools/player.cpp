#include "tools/player.h"

#include <array>
#include <string>

#include "tools/effect.h"
#include "tools/failure.h"

namespace program {

player::player(tesk::instance& effect, score& events, int vector_size)
    : effect_(effect),
      events_(events),
      vector_size_(static_cast<std::size_t>(vector_size)),
      left_(vector_size_),
      right_(vector_size_) {}

void player::play(const float* in, int channels, float* out) {
    tesk::host::the().serve();
    while (const message* next = events_.due(position_))
        if (!effect_.send(next->selector, next->values))
            throw failure("message at frame " + std::to_string(position_) +
                          " refused: " + take_posted_errors());
    const auto stride = static_cast<std::size_t>(channels);
    for (std::size_t i = 0; i < vector_size_; ++i) {
        left_[i] = double{in[i * stride]};
        right_[i] = double{in[i * stride + stride - 1]};
    }
    const std::array<double*, 2> signals{left_.data(), right_.data()};
    effect_.run(signals.data(), signals.data(), static_cast<int>(vector_size_));
    for (std::size_t i = 0; i < vector_size_; ++i) {
        out[2 * i] = static_cast<float>(left_[i]);
        out[2 * i + 1] = static_cast<float>(right_[i]);
    }
    position_ += static_cast<std::int64_t>(vector_size_);
}

}  // namespace program
