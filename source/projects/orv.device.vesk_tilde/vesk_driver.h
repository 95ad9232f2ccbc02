// Plays the effect by attribute, without a host: for programs that hand it vectors themselves.
#pragma once

#include <cstddef>
#include <span>

#include "attribute_table.h"
#include "driver_core.h"
#include "engine/vesk.h"

namespace kv7::orv {

using vesk_core = driver_core<orvane::blocks::vesk::Vesk>;

class vesk_driver {
public:
    // rate in Hz, of the engine that is replaced by the first prepare. Throws as driver_core does.
    explicit vesk_driver(double rate);

    // An attribute by its index in attribute_table; see driver_core. A driver whose audio thread is
    // its main thread may call them there.
    void set(std::size_t attribute, std::span<const double> values) { core.set(attribute, values); }
    void jump_to(std::size_t attribute, std::span<const double> values) {
        core.jump_to(attribute, values);
    }
    void prepare(double rate) { core.prepare(rate); }

    // Audio thread, before the first vector of a rate: the values set so far then sound from its
    // first sample. Else the first vector starts with a crossfade or a glide there from the
    // engine's initial delay.
    void start();

    vesk_core core;
};

}  // namespace kv7::orv
