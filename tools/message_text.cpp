#include "tools/message_text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <utility>

#include "tools/class_attributes.h"
#include "tools/failure.h"
#include "tools/text.h"

namespace program {

namespace {

bool is_public(const tesk::method_info& method) {
    constexpr std::int32_t private_type = 9;
    constexpr std::int32_t private_names_type = 69;
    return method.type != private_type && method.type != private_names_type;
}

bool has_message(const tesk::class_info& of_class, std::string_view name) {
    return std::any_of(of_class.methods.begin(), of_class.methods.end(),
                       [name](const auto& m) { return m.name == name && is_public(m); });
}

bool takes_arguments(std::string_view message) {
    constexpr std::array without{"bang", "clear", "reset"};
    return std::find(without.begin(), without.end(), message) == without.end();
}

tesk::atom_list read_atoms(const tesk::attribute_info& attribute, std::string_view text,
                           const value_rules& rules) {
    const value_attribute settable = value_attribute_of(attribute);
    if (settable.kind != value_kind::unsupported)
        return atoms_of(read_values(settable, text, rules), settable.kind);
    const std::vector<std::string> words = separated(text);
    if (words.empty()) throw bad_text("has no value");
    tesk::atom_list names;
    for (const std::string& word : words) names.push_back(tesk::atom_of(word));
    return names;
}

}  // namespace

message read_setting(const tesk::class_info& of_class, std::string_view attribute,
                     std::string_view values, const value_rules& rules) {
    const std::string name(attribute);
    const tesk::attribute_info* const found = of_class.attribute(name);
    if (found == nullptr)
        throw bad_text(
            unknown_name("attribute", name, attribute_names(of_class), "vesk attributes"));
    try {
        return {name, read_atoms(*found, values, rules)};
    } catch (const bad_text& wrong) {
        throw bad_text(name + ": " + wrong.what());
    }
}

message read_message(const tesk::class_info& of_class, std::string_view text,
                     const value_rules& rules) {
    text = trimmed(text);
    if (text.empty()) throw bad_text("no message");
    const std::size_t end = std::min(text.find_first_of(" \t"), text.size());
    const std::string selector(text.substr(0, end));
    if (!has_message(of_class, selector) && of_class.attribute(selector) != nullptr)
        return read_setting(of_class, selector, text.substr(end), rules);

    tesk::atom_list values;
    try {
        values = tesk::atoms_of_text(std::string(text));
    } catch (const std::invalid_argument& unreadable) {
        throw bad_text(std::string("message not understood: ") + unreadable.what());
    }
    if (read_number(selector)) {
        if (values.size() == 1 && (has_message(of_class, "float") || has_message(of_class, "int")))
            return {"float", values};
        throw bad_text("begins with the number " + selector + ", expected a name");
    }
    if (has_message(of_class, selector) || has_message(of_class, "anything")) {
        values.erase(values.begin());
        if (!values.empty() && !takes_arguments(selector))
            throw bad_text(selector + " takes no arguments, expected it alone");
        return {selector, values};
    }
    std::vector<std::string> names = attribute_names(of_class);
    for (const tesk::method_info& method : of_class.methods)
        if (is_public(method)) names.push_back(method.name);
    throw bad_text(unknown_name("message or attribute", selector, names, "vesk attributes"));
}

void add_setting(std::vector<message>& settings, message added) {
    const auto earlier = std::find_if(settings.begin(), settings.end(), [&added](const message& s) {
        return s.selector == added.selector;
    });
    if (earlier != settings.end())
        *earlier = std::move(added);
    else
        settings.push_back(std::move(added));
}

std::string box_text(const std::string& class_name, const std::vector<message>& settings) {
    std::string text = class_name;
    for (const message& setting : settings)
        text += " @" + setting.selector + " " + tesk::text_of_atoms(setting.values);
    return text;
}

}  // namespace program
