// The nine tables of one engine, five of noise and four of wobble: about 1.77 million bytes.
#pragma once

#include <array>
#include <vector>

#include "engine/sample_table.h"

namespace orvane::blocks::vesk {

struct Vesk;

// Attached to the engine's banks by construction. The engine's players point into it, so it must
// outlive every call of the engine with noise_on or wobble_on set.
struct SampleTableSet {
    std::array<SampleTable, 5> noise_tables;
    std::array<SampleTable, 4> wobble_tables;

    SampleTableSet(Vesk& engine, float rate);  // of the built-in recordings
    SampleTableSet(Vesk& engine, float rate, const std::array<std::vector<float>, 5>& noise,
                   const std::array<std::vector<float>, 4>& wobble);
};

}  // namespace orvane::blocks::vesk
