#include "tools/player.h"

#include <algorithm>
#include <array>
#include <string>

#include "tools/effect.h"
#include "tools/failure.h"

namespace program {

player::player(const tesk::class_info& of_class, tesk::instance& effect, score& events,
               int vector_size)
    : effect_(effect),
      events_(events),
      vector_size_(static_cast<std::size_t>(vector_size)),
      left_(vector_size_),
      right_(vector_size_),
      started_(std::none_of(of_class.methods.begin(), of_class.methods.end(),
                            [](const tesk::method_info& m) { return m.name == "reset"; })) {}

void player::play(const float* in, int channels, float* out) {
    tesk::host::the().serve();
    while (const message* next = events_.due(position_)) send(*next);
    if (!started_) start();
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

void player::send(const message& sent) {
    if (!effect_.send(sent.selector, sent.values))
        throw failure("message at frame " + std::to_string(position_) +
                      " refused: " + take_posted_errors());
}

void player::start() {
    const std::array<double*, 2> none{left_.data(), right_.data()};
    effect_.run(none.data(), none.data(), 0);  // takes the settings
    send({"reset", {}});                       // in their place the read heads start
    started_ = true;
}

}  // namespace program
