// What programs ask of a class: its attributes and their properties.
#include <string>
#include <vector>

#include "host/state.h"

namespace tesk {

std::string attribute_info::property(const std::string& key) const {
    for (const auto& [name_, text] : properties)
        if (name_ == key) return text;
    return {};
}

double attribute_info::number(const std::string& key) const {
    const std::string text = property(key);
    const std::vector<std::string> items = quoted_items(text);
    return as_number(items.size() == 1 ? items.front() : text);
}

std::vector<std::string> attribute_info::value_names() const {
    return quoted_items(property("enumvals"));
}

const attribute_info* class_info::attribute(const std::string& wanted) const {
    for (const attribute_info& info : attributes)
        if (info.name == wanted) return &info;
    return nullptr;
}

}  // namespace tesk
