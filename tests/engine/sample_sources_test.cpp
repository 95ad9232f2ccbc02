// The nine sample tables are the same bits in every build: two that disagreed here would not render
// the same sound.
#include "engine/sample_sources.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace orvane::blocks::vesk {
namespace {

// FNV-1a over the 16-bit integers, low byte first; tables of one length each.
template <class Tables>
std::uint64_t hash(const Tables& tables, std::size_t length) {
    std::uint64_t result = 14695981039346656037U;
    for (const std::vector<float>& table : tables) {
        EXPECT_EQ(table.size(), length);
        for (const float x : table) {
            const auto integer = static_cast<std::int16_t>(x * 32768.0f);
            EXPECT_EQ(static_cast<float>(integer), x * 32768.0f) << "a multiple of 2^-15 below 1";
            const auto bits = static_cast<std::uint16_t>(integer);
            result = (result ^ (bits & 255U)) * 1099511628211U;
            result = (result ^ (bits >> 8U)) * 1099511628211U;
        }
    }
    return result;
}

TEST(SampleSources, AreTheSameBitsInEveryBuild) {
    EXPECT_EQ(hash(noise_sources(), 88200), 0x397a976ee44ed530U);
    EXPECT_EQ(hash(wobble_sources(), 384), 0x368e21f538b4f4deU);
}

}  // namespace
}  // namespace orvane::blocks::vesk
