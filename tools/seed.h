// Makes what the object draws at random repeatable: the program defines std::random_device's draw,
// and the dynamic linker finds it before the standard library's.
#pragma once

#include <cstdint>
#include <optional>

namespace program {

// After this call every std::random_device draws from one generator with this seed, without one
// from the system.
void seed_random_device(std::optional<std::uint64_t> seed);

std::int64_t seeded_draws();  // draws since then

}  // namespace program
