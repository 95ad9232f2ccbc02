// Makes the random start of the object repeatable: the program stands in for the system's random
// source, which the loader then finds here first.
#pragma once

#include <cstdint>

namespace program {

// From here on every std::random_device draws from a generator with this seed.
void seed_random_device(std::uint64_t seed);

std::int64_t seeded_draws();  // since then

}  // namespace program
