// Random settings: any attribute, at any value of its range, often at an end of it.
#pragma once

#include <algorithm>
#include <cmath>

#include "attribute_table.h"
#include "dice.h"

inline const kv7::orv::attribute_row& any_attribute(Dice& dice) {
    using namespace kv7::orv;
    return attribute_table[static_cast<std::size_t>(dice.below(int{attribute_count}))];
}

// Toggles and choices come whole.
inline double any_value(Dice& dice, const kv7::orv::attribute_row& row) {
    using kv7::orv::attribute_kind;
    const double high = row.kind == attribute_kind::toggle ? 1.0 : row.high;
    const double value = row.low + (high - row.low) * std::clamp(2.0 * dice.unit() - 0.5, 0.0, 1.0);
    const bool whole = row.kind == attribute_kind::toggle || row.kind == attribute_kind::choice;
    return whole ? std::round(value) : value;
}
