// The settings under which speed is told.
#pragma once

#include <vector>

#include "vesk_driver.h"

namespace kv7::orv {

struct setting {
    const char* name;
    std::vector<double> values;
};
using settings = std::vector<setting>;

// The delay alone: the object's defaults, modulated, half wet.
inline settings delay_settings() {
    return {{"mod_delay", {0.2}}, {"mod_phase", {90}}, {"mix", {0.5}}};
}

// That and all other stages, every attribute at rest.
inline settings full_settings() {
    settings all = delay_settings();
    all.insert(all.end(), {{"gate", {1}},
                           {"gate_threshold", {-40}},
                           {"duck", {1}},
                           {"duck_threshold", {-20}},
                           {"noise", {0.1}},
                           {"wobble", {0.05}},
                           {"reverb", {0.3}},
                           {"reverb_location", {1}}});
    return all;
}

inline void apply(vesk_driver& driver, const settings& all) {
    for (const setting& s : all) driver.set(attribute_index(s.name), s.values);
}

}  // namespace kv7::orv
