// Lists the attributes for users: what the class registered with the host, the descriptions of its
// reference page, and the units of the effect's attribute table.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "host/host.h"

namespace program {

struct listed_attribute {
    std::string name;
    std::string label;
    std::string category;                // "" for none
    std::string type;                    // "number", "toggle", "choice", "list"
    std::optional<double> low, high;     // none for toggle and choice
    std::vector<double> default_values;  // one but for a list
    std::string unit;                    // "" for none
    std::vector<std::string> value_names;
    std::string description;  // "" when the page has none
};

// page: the reference page. Throws failure when it can't be read.
std::vector<listed_attribute> list_attributes(const tesk::class_info& of_class,
                                              const std::filesystem::path& page);

std::string as_text(const std::vector<listed_attribute>& attributes);
std::string as_json(const std::string& class_name, const std::vector<listed_attribute>& attributes);

}  // namespace program
