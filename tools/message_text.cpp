#include "tools/message_text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <utility>

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

std::vector<std::string> attribute_names(const tesk::class_info& of_class) {
    std::vector<std::string> names;
    for (const tesk::attribute_info& attribute : of_class.attributes)
        names.push_back(attribute.name);
    return names;
}

std::vector<std::string> separate(std::string_view text) {
    std::vector<std::string> words;
    for (std::size_t begin = 0;
         (begin = text.find_first_not_of(" \t,", begin)) != std::string_view::npos;) {
        const std::size_t end = std::min(text.find_first_of(" \t,", begin), text.size());
        words.emplace_back(text.substr(begin, end - begin));
        begin = end;
    }
    return words;
}

std::string in_quotes(std::string_view text) {
    return "\"" + std::string(text) + "\"";
}

tesk_atom read_toggle(std::string_view text) {
    if (text == "1" || text == "on") return tesk::atom_of(std::int64_t{1});
    if (text == "0" || text == "off") return tesk::atom_of(std::int64_t{0});
    throw bad_text(in_quotes(text) + " is neither on (1) nor off (0)");
}

tesk_atom read_choice(const std::vector<std::string>& names, std::string_view text) {
    const auto place = std::find(names.begin(), names.end(), text);
    if (place != names.end())
        return tesk::atom_of(static_cast<std::int64_t>(place - names.begin()));
    if (const std::optional<std::int64_t> index = read_integer(text)) return tesk::atom_of(*index);
    throw bad_text("no value named " + in_quotes(text) + ", the nearest is " +
                   in_quotes(nearest_name(text, names)));
}

tesk_atom read_element(const tesk::attribute_info& attribute, const std::string& word) {
    if (attribute.type == "float64") {
        if (const std::optional<double> number = read_number(word)) return tesk::atom_of(*number);
        throw bad_text(in_quotes(word) + " is not a number");
    }
    if (attribute.type == "long") {
        if (const std::optional<std::int64_t> n = read_integer(word)) return tesk::atom_of(*n);
        throw bad_text(in_quotes(word) + " is not a whole number");
    }
    return tesk::atom_of(word);
}

tesk::atom_list read_values(const tesk::attribute_info& attribute, std::string_view text) {
    text = trimmed(text);
    if (text.empty()) throw bad_text("has no value");
    const std::string style = attribute.property("style");
    if (style == "onoff") return {read_toggle(text)};
    if (style == "enumindex") return {read_choice(attribute.value_names(), without_quotes(text))};
    tesk::atom_list values;
    for (const std::string& word : separate(text)) values.push_back(read_element(attribute, word));
    const auto count = static_cast<std::int64_t>(values.size());
    if (count == 0) throw bad_text("has no value");
    if (count > attribute.most)
        throw bad_text(std::to_string(count) + " values, at most " +
                       std::to_string(attribute.most));
    return values;
}

}  // namespace

message read_setting(const tesk::class_info& of_class, std::string_view attribute,
                     std::string_view values) {
    const std::string name(attribute);
    const tesk::attribute_info* const found = of_class.attribute(name);
    if (found == nullptr)
        throw bad_text("no attribute named " + in_quotes(name) + ", the nearest is " +
                       nearest_name(name, attribute_names(of_class)));
    try {
        return {name, read_values(*found, values)};
    } catch (const bad_text& wrong) {
        throw bad_text(name + ": " + wrong.what());
    }
}

message read_message(const tesk::class_info& of_class, std::string_view text) {
    text = trimmed(text);
    if (text.empty()) throw bad_text("no message");
    const std::size_t end = std::min(text.find_first_of(" \t"), text.size());
    const std::string selector(text.substr(0, end));
    if (!has_message(of_class, selector) && of_class.attribute(selector) != nullptr)
        return read_setting(of_class, selector, text.substr(end));

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
        return {selector, values};
    }
    std::vector<std::string> names = attribute_names(of_class);
    for (const tesk::method_info& method : of_class.methods)
        if (is_public(method)) names.push_back(method.name);
    throw bad_text("no message or attribute named " + in_quotes(selector) + ", the nearest is " +
                   nearest_name(selector, names));
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
