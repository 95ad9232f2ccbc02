#include "tools/class_attributes.h"

#include <cmath>
#include <cstddef>
#include <cstdint>

#include "attribute_table.h"

namespace program {

namespace {

value_kind kind_of(const tesk::attribute_info& attribute) {
    const std::string style = attribute.property("style");
    if (style == "onoff") return value_kind::toggle;
    if (style == "enumindex") return value_kind::choice;
    if (attribute.type == "float64") return value_kind::number;
    return attribute.type == "long" ? value_kind::whole_number : value_kind::unsupported;
}

}  // namespace

value_attribute value_attribute_of(const tesk::attribute_info& attribute) {
    value_attribute made{.name = attribute.name, .kind = kind_of(attribute)};
    made.max_values = static_cast<std::size_t>(attribute.most);
    made.value_names = attribute.value_names();
    if (const double low = attribute.number("minimum"); !std::isnan(low)) made.low = low;
    if (const double high = attribute.number("maximum"); !std::isnan(high)) made.high = high;
    const std::size_t row = kv7::orv::attribute_index(attribute.name);
    if (row == kv7::orv::attribute_count) return made;
    made.unit = kv7::orv::attribute_table[row].unit;
    if (made.max_values > 1) {
        made.low = kv7::orv::attribute_table[row].low;
        made.high = kv7::orv::attribute_table[row].high;
        made.max_values = kv7::orv::list_length;
    }
    return made;
}

std::vector<std::string> attribute_names(const tesk::class_info& of_class) {
    std::vector<std::string> names;
    for (const tesk::attribute_info& attribute : of_class.attributes)
        names.push_back(attribute.name);
    return names;
}

tesk::atom_list atoms_of(const std::vector<double>& values, value_kind kind) {
    tesk::atom_list atoms;
    for (const double value : values)
        atoms.push_back(kind == value_kind::number
                            ? tesk::atom_of(value)
                            : tesk::atom_of(static_cast<std::int64_t>(value)));
    return atoms;
}

}  // namespace program
