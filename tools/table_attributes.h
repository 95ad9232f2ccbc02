// The attributes of the effect's own table, in the form in which their values are read: for front
// ends that play it without a host.
#pragma once

#include <vector>

#include "attribute_table.h"
#include "tools/value_text.h"

namespace program {

inline value_attribute value_attribute_of(const kv7::orv::attribute_row& row) {
    value_attribute made{.name = row.info.name, .low = row.low, .high = row.high, .unit = row.unit};
    using kv7::orv::attribute_kind;
    switch (row.kind) {
        case attribute_kind::continuous:
            break;
        case attribute_kind::toggle:
            made.kind = value_kind::toggle;
            made.high = 1.0;
            break;
        case attribute_kind::choice:
            made.kind = value_kind::choice;
            made.value_names.assign(row.value_names.begin(), row.value_names.end());
            break;
        case attribute_kind::list:
            made.max_values = kv7::orv::list_length;
            break;
    }
    return made;
}

// In the order of the table.
inline std::vector<value_attribute> attributes_of_table() {
    std::vector<value_attribute> attributes;
    for (const kv7::orv::attribute_row& row : kv7::orv::attribute_table)
        attributes.push_back(value_attribute_of(row));
    return attributes;
}

}  // namespace program
