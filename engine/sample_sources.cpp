// Silent until the recordings are made.
#include "engine/sample_sources.h"

namespace orvane::blocks::vesk {

const std::array<std::vector<float>, 5>& noise_sources() {
    static const std::array<std::vector<float>, 5> silent;
    return silent;
}

const std::array<std::vector<float>, 4>& wobble_sources() {
    static const std::array<std::vector<float>, 4> silent;
    return silent;
}

}  // namespace orvane::blocks::vesk
