// Plays the effect by attribute, without a host: for programs that hand it vectors themselves.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <list>
#include <span>
#include <variant>
#include <vector>

#include "attribute_table.h"
#include "driver_core.h"
#include "engine/vesk.h"

namespace kv7::orv {

using vesk_core = driver_core<orvane::blocks::vesk::Vesk>;

class vesk_driver {
public:
    // rate in Hz, of the engine that is replaced by the first prepare. Throws std::bad_alloc.
    explicit vesk_driver(double rate);

    // Main thread. An attribute by its index in attribute_table: a number, a list's one or two.
    // Values are clamped; no values change nothing.
    void set(std::size_t attribute, std::span<const double> values);
    // The same before the first vector of a rate, when no ramp is due. Like set it allocates
    // nothing, so that a driver whose audio thread is its main thread may call both there.
    void land(std::size_t attribute, std::span<const double> values);
    void prepare(double rate) { core.prepare(rate); }

    vesk_core core;

private:
    // What was last set, by kind, and where it goes.
    struct toggle {
        parameter_queue<orvane::blocks::vesk::Vesk>::toggle_setter setter;
        bool value;
    };
    struct choice {
        parameter_queue<orvane::blocks::vesk::Vesk>::choice_setter setter;
        std::int32_t value;
    };
    struct number_list {
        parameter_queue<orvane::blocks::vesk::Vesk>::list_setter setter;
        short_list value;
    };
    using attribute = std::variant<smooth_value*, toggle, choice, number_list>;

    attribute make_attribute(std::size_t index);
    void set_again(attribute& a);

    std::list<smooth_value> smooth_values_;
    std::vector<attribute> attributes_;  // in the order of attribute_table
};

}  // namespace kv7::orv
