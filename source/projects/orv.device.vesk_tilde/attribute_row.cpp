#include "attribute_row.h"

#include "attribute_values.h"

namespace kv7::orv {
namespace {

struct applied_value {
    orvane::blocks::vesk::Vesk& engine;
    std::span<const double> values;

    void operator()(const ramped_setter& setter) const { setter.set(engine, values[0]); }
    void operator()(setter_of<bool> set) const { set(engine, to_integer(values[0]) != 0); }
    void operator()(setter_of<std::span<const double>> set) const { set(engine, values); }
    template <class Mode>
    void operator()(setter_of<Mode> set) const {
        set(engine, static_cast<Mode>(static_cast<std::int32_t>(to_integer(values[0]))));
    }
};

}  // namespace

void apply_value(orvane::blocks::vesk::Vesk& engine, const attribute_row& row,
                 std::span<const double> values) {
    if (!values.empty()) std::visit(applied_value{engine, values}, row.setter);
}

}  // namespace kv7::orv
