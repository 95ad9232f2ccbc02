#include "engine/sample_table_set.h"

#include <utility>

#include "engine/sample_sources.h"
#include "engine/vesk.h"

namespace orvane::blocks::vesk {
namespace {

template <std::size_t N, std::size_t... I>
std::array<SampleTable, N> tables_of(const std::array<std::vector<float>, N>& sources, double rate,
                                     std::index_sequence<I...>) {
    return {SampleTable(sources[I], rate)...};
}

template <std::size_t N>
std::array<SampleTable, N> tables_of(const std::array<std::vector<float>, N>& sources,
                                     double rate) {
    return tables_of(sources, rate, std::make_index_sequence<N>());
}

template <std::size_t N>
void attach_tables(SampleBank<N>& bank, const std::array<SampleTable, N>& tables) {
    for (std::size_t i = 0; i < N; ++i) attach_table(bank.players[i], tables[i]);
}

}  // namespace

SampleTableSet::SampleTableSet(Vesk& engine, float rate)
    : SampleTableSet(engine, rate, noise_sources(), wobble_sources()) {}

SampleTableSet::SampleTableSet(Vesk& engine, float rate,
                               const std::array<std::vector<float>, 5>& noise,
                               const std::array<std::vector<float>, 4>& wobble)
    : noise_tables(tables_of(noise, static_cast<double>(rate))),
      wobble_tables(tables_of(wobble, static_cast<double>(rate))) {
    attach_tables(engine.noise_bank, noise_tables);
    attach_tables(engine.wobble_bank, wobble_tables);
}

}  // namespace orvane::blocks::vesk
