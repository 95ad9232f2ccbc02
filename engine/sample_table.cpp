#include "engine/sample_table.h"

namespace orvane::blocks::vesk {

SampleTable::SampleTable(const std::vector<float>& source, double rate) : sample_rate(rate) {
    constexpr std::size_t guards = 3;
    samples.reserve(source.size() + 1 + guards);
    samples.push_back(0.0f);  // the first guard, known below
    samples.insert(samples.end(), source.begin(), source.end());
    if (source.empty()) samples.push_back(0.0f);
    length = samples.size() - 1;
    samples[0] = samples[length];
    samples.push_back(samples[1]);
    samples.push_back(samples[length == 1 ? 1 : 2]);
}

}  // namespace orvane::blocks::vesk
