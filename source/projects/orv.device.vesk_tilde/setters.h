// One setter for every attribute: turns an attribute value into writes on the engine's members.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <variant>

#include "attribute_table.h"
#include "engine/vesk.h"

namespace kv7::orv {

// Run between two samples. A continuous value and a list's elements have been clamped to their
// range before; the index of a choice is tested by its setter and dropped when there is no such.
using continuous_setter = void (*)(orvane::blocks::vesk::Vesk&, double);
using toggle_setter = void (*)(orvane::blocks::vesk::Vesk&, bool);
using choice_setter = void (*)(orvane::blocks::vesk::Vesk&, std::int32_t);
using list_setter = void (*)(orvane::blocks::vesk::Vesk&, std::span<const double>);

// In the order of attribute_table, each alternative at the index of its attribute_kind.
using attribute_setter = std::variant<continuous_setter, toggle_setter, choice_setter, list_setter>;
extern const std::array<attribute_setter, attribute_count> attribute_setters;

}  // namespace kv7::orv
