// The samples of a loop from its harmonics: an inverse Fourier transform.
#pragma once

#include <span>
#include <vector>

#include "engine/rotor.h"

namespace orvane::blocks::vesk {

// Element k of `harmonics` is the peak and phase of the cosine with k periods in the loop, element
// 0 the mean; there are n / 2 of them. `circle` is unit_circle(n), n even and without a prime
// factor above 7.
std::vector<double> sum_harmonics(std::span<const Rotor> harmonics, std::span<const Rotor> circle);

}  // namespace orvane::blocks::vesk
