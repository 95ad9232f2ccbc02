#include "engine/sample_bank.h"

#include <cmath>
#include <utility>

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

}  // namespace orvane::blocks::vesk
