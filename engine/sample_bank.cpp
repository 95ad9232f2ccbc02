#include "engine/sample_bank.h"

#include <utility>

#include "engine/exact_sine.h"

namespace orvane::blocks::vesk {
namespace {

template <std::size_t N, std::size_t... I>
std::array<SamplePlayer, N> players_at(double rate, std::index_sequence<I...>) {
    return {((void)I, SamplePlayer(rate))...};
}

}  // namespace

template <std::size_t N>
SampleBank<N>::SampleBank(float rate)
    : players(players_at<N>(static_cast<double>(rate), std::make_index_sequence<N>())) {
    set_morph(0.0f);
}

template <std::size_t N>
std::uint64_t SampleBank<N>::index_at(float position) noexcept {
    const float x = position * static_cast<float>(N - 1);
    return min(static_cast<std::uint64_t>(x), static_cast<std::uint64_t>(N - 2));
}

template <std::size_t N>
typename SampleBank<N>::Morph SampleBank<N>::morph_at(float position) noexcept {
    const std::uint64_t index = index_at(position);
    const float r = position * static_cast<float>(N - 1) - static_cast<float>(index);
    return {index, exact_sine((1.0f - r) * half_pi), exact_sine(r * half_pi)};
}

template <std::size_t N>
void SampleBank<N>::set_morph(float position) {
    const Morph morph = morph_at(position);
    index = morph.index;
    gain_a = morph.gain_a;
    gain_b = morph.gain_b;
}

template <std::size_t N>
void SampleBank<N>::rewind() noexcept {
    for (SamplePlayer& player : players) player.position = 0.0;
}

template struct SampleBank<5>;
template struct SampleBank<4>;

}  // namespace orvane::blocks::vesk
