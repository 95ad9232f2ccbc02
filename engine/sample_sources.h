// The built-in recordings of hum, hiss and wobble.
#pragma once

#include <array>
#include <vector>

namespace orvane::blocks::vesk {

const std::array<std::vector<float>, 5>& noise_sources();
const std::array<std::vector<float>, 4>& wobble_sources();

}  // namespace orvane::blocks::vesk
