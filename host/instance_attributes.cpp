// Attributes by name, with the names of a Choice's values.
#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "host/state.h"

namespace tesk {

bool instance::set(const std::string& attribute, const atom_list& values) {
    const tesk_symbol* const name = gensym(attribute.c_str());
    const tesk_class::attribute* const found = record_->of_class->find_attribute(name);
    if (found == nullptr || found->setter == nullptr) {
        refuse("no attribute named " + attribute);
        return false;
    }
    if (found->most > 1 && static_cast<std::int64_t>(values.size()) > found->most) {
        refuse(attribute + ": " + std::to_string(values.size()) + " values, at most " +
               std::to_string(found->most));
        return false;
    }
    atom_list given = values;
    const attribute_info& info = *described().attribute(attribute);
    if (!given.empty() && given.front().type == 3 && info.property("style") == "enumindex") {
        const std::vector<std::string> names = info.value_names();
        const std::string wanted = given.front().value.as_symbol->name;
        const auto named = std::find(names.begin(), names.end(), wanted);
        if (named == names.end()) {
            refuse(attribute + ": no value named " + wanted);
            return false;
        }
        given.front() = atom_of(static_cast<std::int64_t>(named - names.begin()));
    }
    return set_attribute(*record_, name, std::move(given)) == 0;
}

bool instance::set(const std::string& attribute, const std::vector<double>& values) {
    atom_list atoms;
    for (const double value : values) atoms.push_back(atom_of(value));
    return set(attribute, atoms);
}

bool instance::set(const std::string& attribute, double value) {
    return set(attribute, atom_list{atom_of(value)});
}

atom_list instance::get(const std::string& attribute) {
    std::int64_t count = 0;
    tesk_atom* values = nullptr;
    tesk_symbol* const name = gensym(attribute.c_str());
    if (record_->of_class->find_attribute(name) == nullptr) {
        refuse("no attribute to read named " + attribute);
        return {};
    }
    const call_into call(*record_);
    if (call.refused() || object_attr_getvalueof(record_->object, name, &count, &values) != 0)
        return {};
    atom_list result(values, values + count);
    sysmem_freeptr(values);
    return result;
}

std::vector<double> instance::get_numbers(const std::string& attribute) {
    std::vector<double> numbers;
    for (const tesk_atom& value : get(attribute)) numbers.push_back(atom_getfloat(&value));
    return numbers;
}

double instance::get_number(const std::string& attribute) {
    const std::vector<double> numbers = get_numbers(attribute);
    return numbers.empty() ? std::numeric_limits<double>::quiet_NaN() : numbers.front();
}

}  // namespace tesk
