#include "tools/seed.h"

#include <unistd.h>

#include <optional>
#include <random>
#include <stdexcept>

namespace program {

namespace {

std::optional<std::mt19937_64> generator;
std::int64_t draws = 0;

std::uint32_t next_word() {
    if (generator) {
        ++draws;
        return static_cast<std::uint32_t>((*generator)() >> 32);
    }
    std::uint32_t word = 0;
    if (getentropy(&word, sizeof word) != 0)
        throw std::runtime_error("the system has no random word to give");
    return word;
}

}  // namespace

void seed_random_device(std::optional<std::uint64_t> seed) {
    generator.reset();
    if (seed) generator.emplace(*seed);
    draws = 0;
}

std::int64_t seeded_draws() {
    return draws;
}

}  // namespace program

// std::random_device::operator() calls this function, which the standard library does not inline.
// An object that is linked to the library dynamically calls this definition, since the program
// exports it.
__attribute__((visibility("default"))) std::random_device::result_type
std::random_device::_M_getval() {
    return program::next_word();
}
