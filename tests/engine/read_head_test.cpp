// The read head against a walk through the entries one by one.
#include "engine/read_head.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

namespace orvane::blocks::vesk {
namespace {

// One channel.
struct PlainHead {
    std::vector<std::int64_t> entries;  // oldest first
    std::size_t history;

    struct Found {
        float remainder;
        float entry;
        std::int32_t offset;
    };
    Found push(float newest, float span) {
        entries.push_back(static_cast<std::int64_t>(newest));
        const std::int64_t* const last = &entries.back();
        const auto filled = static_cast<std::int64_t>(std::min(entries.size(), history));
        std::int64_t remainder =
            static_cast<std::int64_t>(limited_span(span * fixed_point_one)) + (*last >> 1) - *last;
        std::int64_t offset = 1;
        for (; offset + 1 < filled && remainder >= *(last - offset); ++offset)
            remainder -= *(last - offset);
        return {static_cast<float>(remainder), static_cast<float>(*(last - offset)),
                static_cast<std::int32_t>(offset)};
    }
};

TEST(ReadHead, FindsWhatAWalkThroughTheEntriesFinds) {
    std::minstd_rand random;
    const auto uniform = [&](double from, double to) {
        return std::uniform_real_distribution(from, to)(random);
    };
    for (const std::size_t history : {150U, 1000U, 3000U}) {
        EntryRings rings(history);
        ReadHead head;
        PlainHead left{{}, history}, right{{}, history};
        constexpr auto one = static_cast<std::int64_t>(fixed_point_one);
        rings.seed(one, one);
        left.entries = right.entries = {one, one};
        Pair spans{20, 20};
        double octaves = 0, drift = 0, jitter = 0;
        for (int block = 0; block < 8000; ++block) {
            const std::string place = std::to_string(history) + " block " + std::to_string(block);
            // Every few blocks another way to move: rest, a glide, noise of up to 40 octaves.
            if (random() % 12 == 0) {
                octaves = random() % 3 == 0 ? uniform(-20, 30) : uniform(-2, 2);
                drift = random() % 2 == 0 ? 0 : uniform(-0.02, 0.02);
                jitter = random() % 3 == 0 ? uniform(0, random() % 4 == 0 ? 40 : 2) : 0;
            }
            const double burst = random() % 30 == 0 ? uniform(10, 30) : 0;
            // Spans of up to the history and more, also at wild speeds.
            if (random() % 8 == 0)
                for (int c = 0; c < 2; ++c)
                    spans[c] = static_cast<float>(
                        std::exp2(uniform(0, 12) + (random() % 2 ? octaves : uniform(0, 18))));
            const std::size_t n = random() % 3 ? max_block : 1 + random() % max_block;
            Block entries = uninitialised_block();
            for (std::size_t i = 0; i < n; ++i) {
                octaves += drift;
                for (int c = 0; c < 2; ++c)
                    entries[i][c] = limited_entry(
                        fixed_point_one *
                        static_cast<float>(std::exp2(octaves + burst + uniform(-jitter, jitter))));
            }
            RingPosition position(rings);
            rings.push(entries, n);
            ReadPositions of_left, of_right;
            head.locate(rings, position, spans, 0, n, of_left, of_right);
            rings.filled = static_cast<std::uint64_t>(position.filled);
            for (std::size_t i = 0; i < n; ++i) {
                const auto expect_found = [&](const ReadPositions& found, PlainHead& plain, int c) {
                    const PlainHead::Found wanted = plain.push(entries[i][c], spans[c]);
                    ASSERT_EQ(found.offset[i], wanted.offset) << place << " frame " << i;
                    ASSERT_EQ(found.remainder[i], wanted.remainder) << place << " frame " << i;
                    ASSERT_EQ(found.entry[i], wanted.entry) << place << " frame " << i;
                };
                ASSERT_NO_FATAL_FAILURE(expect_found(of_left, left, 0));
                ASSERT_NO_FATAL_FAILURE(expect_found(of_right, right, 1));
            }
        }
    }
}

}  // namespace
}  // namespace orvane::blocks::vesk
