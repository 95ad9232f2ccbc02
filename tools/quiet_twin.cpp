#include "tools/quiet_twin.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "tools/effect.h"

namespace program {

namespace {

constexpr const char* noise = "noise";
constexpr double noise_floor = 0.001;  // the effect's noise is off up to here

std::vector<message> without_noise(std::vector<message> settings) {
    std::erase_if(settings, [](const message& m) { return m.selector == noise; });
    return settings;
}

}  // namespace

bool quiet_twin::is_needed(const std::vector<message>& settings, const score& events) {
    const auto is_on = [](const message& m) {
        return m.selector == noise && !m.values.empty() && m.values[0].value.as_float > noise_floor;
    };
    return std::any_of(settings.begin(), settings.end(), is_on) ||
           std::any_of(events.events().begin(), events.events().end(),
                       [&is_on](const event& e) { return is_on(e.what); });
}

quiet_twin::quiet_twin(const tesk::class_info& of_class, std::vector<message> settings,
                       const score& events, int rate, int vector_size,
                       std::optional<std::uint64_t> seed)
    : effect_(make_effect(of_class, without_noise(std::move(settings)), rate, vector_size, seed)),
      events_(events.without(noise)),
      out_(2 * static_cast<std::size_t>(vector_size)),
      player_(of_class, *effect_, events_, vector_size) {}

const float* quiet_twin::play(const float* in, int channels) {
    player_.play(in, channels, out_.data());
    return out_.data();
}

bool is_noisy(tesk::instance& effect) {
    return effect.get_number(noise) > noise_floor;
}

}  // namespace program
