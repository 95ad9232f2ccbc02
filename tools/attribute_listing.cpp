#include "tools/attribute_listing.h"

#include <algorithm>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <pugixml.hpp>
#include <utility>

#include "attribute_table.h"
#include "tools/failure.h"
#include "tools/text.h"

namespace program {

namespace {

constexpr std::size_t name_width = 18;   // characters
constexpr std::size_t type_width = 9;    // characters
constexpr std::size_t range_width = 20;  // characters
constexpr std::size_t line_width = 100;  // characters

const char* type_of(const tesk::attribute_info& attribute) {
    const std::string style = attribute.property("style");
    if (style == "onoff") return "toggle";
    if (style == "enumindex") return "choice";
    return attribute.most > 1 ? "list" : "number";
}

std::vector<double> numbers_of(const std::string& text) {
    std::vector<double> numbers;
    for (const tesk_atom& value : tesk::atoms_of_text(text)) {
        if (value.type == 1) numbers.push_back(static_cast<double>(value.value.as_long));
        if (value.type == 2) numbers.push_back(value.value.as_float);
    }
    return numbers;
}

// Without markup.
std::string text_of(const pugi::xml_node& node) {
    if (node.type() == pugi::node_pcdata) return node.value();
    std::string text;
    for (const pugi::xml_node& child : node) text += text_of(child);
    return text;
}

void add_table_data(listed_attribute& attribute) {
    const std::size_t row = kv7::orv::attribute_index(attribute.name);
    if (row == kv7::orv::attribute_count) return;
    const kv7::orv::attribute_row& data = kv7::orv::attribute_table[row];
    attribute.unit = data.unit;
    if (data.kind == kv7::orv::attribute_kind::list) {
        attribute.low = data.low;
        attribute.high = data.high;
    }
}

std::string padded(std::string text, std::size_t width) {
    text.resize(std::max(text.size(), width), ' ');
    return text + " ";
}

std::string value_text(const listed_attribute& attribute, double value) {
    const auto index = static_cast<std::size_t>(value);
    if (attribute.type == "toggle") return value != 0 ? "on" : "off";
    if (index < attribute.value_names.size()) return attribute.value_names[index];
    return number_text(value);
}

std::string default_text(const listed_attribute& attribute) {
    std::string text;
    for (const double value : attribute.default_values)
        text += (text.empty() ? "" : " ") + value_text(attribute, value);
    return text;
}

std::string range_text(const listed_attribute& attribute) {
    if (!attribute.low || !attribute.high) return "";
    return number_text(*attribute.low) + " to " + number_text(*attribute.high) +
           (attribute.unit.empty() ? "" : " " + attribute.unit);
}

// Breaks the text into indented lines.
std::string wrapped(const std::string& text, std::size_t indent) {
    std::string lines;
    std::string line;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find(' ', begin), text.size());
        const std::string word = text.substr(begin, end - begin);
        if (!line.empty() && indent + line.size() + 1 + word.size() > line_width) {
            lines += std::string(indent, ' ') + line + "\n";
            line.clear();
        }
        line += (line.empty() ? "" : " ") + word;
        begin = end + 1;
    }
    return line.empty() ? lines : lines + std::string(indent, ' ') + line + "\n";
}

nlohmann::ordered_json default_json(const listed_attribute& attribute) {
    if (attribute.type == "list") return attribute.default_values;
    if (attribute.default_values.empty()) return nullptr;
    const double value = attribute.default_values.front();
    if (attribute.type == "toggle") return value != 0;
    if (attribute.type == "choice") return value_text(attribute, value);
    return value;
}

}  // namespace

std::vector<listed_attribute> list_attributes(const tesk::class_info& of_class,
                                              const std::filesystem::path& page) {
    pugi::xml_document document;
    const pugi::xml_parse_result read = document.load_file(page.c_str());
    if (!read)
        throw failure(page.string() +
                      ": no reference page with descriptions: " + read.description());
    const pugi::xml_node described = document.child("kv7object").child("attributelist");
    std::vector<listed_attribute> attributes;
    for (const tesk::attribute_info& known : of_class.attributes) {
        listed_attribute listed;
        listed.name = known.name;
        listed.label = known.property("label");
        listed.category = known.property("category");
        listed.type = type_of(known);
        listed.default_values = numbers_of(known.property("default"));
        listed.value_names = known.value_names();
        if (listed.value_names.empty()) {
            listed.low = read_number(without_quotes(known.property("minimum")));
            listed.high = read_number(without_quotes(known.property("maximum")));
        }
        listed.description =
            text_of(described.find_child_by_attribute("attribute", "name", known.name.c_str())
                        .child("description"));
        add_table_data(listed);
        attributes.push_back(std::move(listed));
    }
    return attributes;
}

std::string as_text(const std::vector<listed_attribute>& attributes) {
    std::string text;
    for (const listed_attribute& attribute : attributes) {
        text += padded(attribute.name, name_width) + padded(attribute.type, type_width) +
                padded(range_text(attribute), range_width) + "default " + default_text(attribute) +
                "\n";
        std::string names;
        for (const std::string& name : attribute.value_names)
            names += (names.empty() ? "" : ", ") + name;
        text += wrapped(names, name_width + 1) + wrapped(attribute.description, name_width + 1);
    }
    return text;
}

std::string as_json(const std::string& class_name,
                    const std::vector<listed_attribute>& attributes) {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const listed_attribute& attribute : attributes) {
        nlohmann::ordered_json one{{"name", attribute.name}, {"label", attribute.label}};
        if (!attribute.category.empty()) one["category"] = attribute.category;
        one["type"] = attribute.type;
        if (attribute.low && attribute.high) {
            one["low"] = *attribute.low;
            one["high"] = *attribute.high;
        }
        one["default"] = default_json(attribute);
        if (!attribute.unit.empty()) one["unit"] = attribute.unit;
        if (!attribute.value_names.empty()) one["values"] = attribute.value_names;
        one["description"] = attribute.description;
        list.push_back(std::move(one));
    }
    const nlohmann::ordered_json listing{{"object", class_name}, {"attributes", list}};
    // Text that is not UTF-8 is replaced; by default the library throws.
    return listing.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace program
