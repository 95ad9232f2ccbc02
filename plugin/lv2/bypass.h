// Takes the effect out of the way and brings it back, without a click and without cutting what is
// in the delay lines: the effect's input fades out while the dry signal fades in beside it.
#pragma once

#include <algorithm>
#include <cstddef>

namespace kv7::orv::lv2 {

class bypass {
public:
    static constexpr double fade_seconds = 0.005;

    explicit bypass(double rate) : step_(1.0 / std::max(rate * fade_seconds, 1.0)) {}

    void start(bool enabled) noexcept { share_ = enabled ? 1.0 : 0.0; }
    bool is_out_of_the_way(bool enabled) const noexcept { return enabled && share_ == 1.0; }

    // The effect's share of the input in the next frame, 0 to 1; the rest of the input passes dry.
    double next_share(bool enabled) noexcept {
        share_ = std::clamp(share_ + (enabled ? step_ : -step_), 0.0, 1.0);
        return share_;
    }

private:
    double step_;  // a frame
    double share_ = 1.0;
};

}  // namespace kv7::orv::lv2
