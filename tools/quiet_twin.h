// A second instance that plays the same without noise: with noise on, the output never falls
// silent, and the automatic tail listens to this one instead.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/host.h"
#include "tools/message_text.h"
#include "tools/player.h"
#include "tools/score.h"

namespace program {

class quiet_twin {
public:
    // Settings or events turn the noise of the effect on.
    static bool is_needed(const std::vector<message>& settings, const score& events);

    // seed: draws the same random words as the first instance. Throws failure.
    quiet_twin(const tesk::class_info& of_class, std::vector<message> settings, const score& events,
               int rate, int vector_size, std::optional<std::uint64_t> seed);

    // One vector; the output in two interleaved channels, valid until the next call.
    const float* play(const float* in, int channels);

private:
    std::unique_ptr<tesk::instance> effect_;
    score events_;
    std::vector<float> out_;
    player player_;
};

bool is_noisy(tesk::instance& effect);  // its noise is on now

}  // namespace program
