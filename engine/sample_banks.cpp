#include "engine/sample_banks.h"

#include <cmath>
#include <utility>

#include "engine/sample_sources.h"
#include "engine/vesk.h"

namespace orvane::blocks::vesk {
namespace {

template <std::size_t N, std::size_t... I>
std::array<SamplePlayer, N> players_at(double rate, std::index_sequence<I...>) {
    return {((void)I, SamplePlayer(rate))...};
}

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
void attach_all(SampleBank<N>& bank, const std::array<SampleTable, N>& tables) {
    for (std::size_t i = 0; i < N; ++i) attach_table(bank.players[i], tables[i]);
}

}  // namespace

SampleTable::SampleTable(const std::vector<float>& source, double rate) : sample_rate(rate) {
    constexpr std::size_t guards = 3;
    samples.reserve(source.size() + 1 + guards);
    samples.push_back(0.0f);  // the guard in front, known below
    samples.insert(samples.end(), source.begin(), source.end());
    if (source.empty()) samples.push_back(0.0f);
    length = samples.size() - 1;
    samples[0] = samples[length];
    samples.push_back(samples[1]);
    samples.push_back(samples[length == 1 ? 1 : 2]);
}

void attach_table(SamplePlayer& player, const SampleTable& table) {
    player.table = &table;
    player.increment = table.sample_rate / player.sample_rate;
    player.position = 0.0;
}

template <std::size_t N>
SampleBank<N>::SampleBank(float rate)
    : players(players_at<N>(static_cast<double>(rate), std::make_index_sequence<N>())) {
    set_morph(0.0f);
}

template <std::size_t N>
void SampleBank<N>::set_morph(float position) {
    const float x = position * static_cast<float>(N - 1);
    index = min(static_cast<std::uint64_t>(x), static_cast<std::uint64_t>(N - 2));
    const float r = x - static_cast<float>(index);
    gain_a = std::sin((1.0f - r) * half_pi);
    gain_b = std::sin(r * half_pi);
}

template <std::size_t N>
void SampleBank<N>::rewind() noexcept {
    for (SamplePlayer& player : players) player.position = 0.0;
}

template struct SampleBank<5>;
template struct SampleBank<4>;

SampleTableSet::SampleTableSet(Vesk& engine, float rate)
    : SampleTableSet(engine, rate, noise_sources(), wobble_sources()) {}

SampleTableSet::SampleTableSet(Vesk& engine, float rate,
                               const std::array<std::vector<float>, 5>& noise,
                               const std::array<std::vector<float>, 4>& wobble)
    : noise_tables(tables_of(noise, static_cast<double>(rate))),
      wobble_tables(tables_of(wobble, static_cast<double>(rate))) {
    attach_all(engine.noise_bank, noise_tables);
    attach_all(engine.wobble_bank, wobble_tables);
}

}  // namespace orvane::blocks::vesk
