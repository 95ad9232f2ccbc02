#include "tools/preset_text.h"

#include <algorithm>
#include <functional>
#include <string_view>

#include "tools/failure.h"
#include "tools/text.h"
#include "tools/text_file.h"

namespace program {

namespace {

void check_characters(std::string_view line) {
    const auto is_control = [](unsigned char c) { return (c < 0x20 && c != '\t') || c == 0x7F; };
    const auto found = std::find_if(line.begin(), line.end(), is_control);
    if (found != line.end())
        throw bad_text("control character " + std::to_string(int{*found}) +
                       ", expected plain text");
    if (!is_utf8(line)) throw bad_text("is not UTF-8 text");
}

preset_title title_of(std::string_view line) {
    constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";
    if (line.starts_with(byte_order_mark)) line.remove_prefix(byte_order_mark.size());
    const std::size_t colon = line.find(':');
    const std::string_view title =
        line.starts_with('#') && colon != line.npos ? trimmed(line.substr(1, colon - 1)) : "";
    if (title.empty()) throw bad_text("expected \"# Title: what it is\" in the first line");
    return {std::string(title), std::string(trimmed(line.substr(colon + 1)))};
}

// Calls take with the text and the number of every line after the first, without comments.
preset_title read_lines(const std::string& file,
                        const std::function<void(std::string_view, std::size_t)>& take) {
    preset_title title;
    std::size_t number = 0;
    for_each_line(file, [&](std::string_view line) {
        if (line.ends_with('\r')) line.remove_suffix(1);
        check_characters(line);
        if (++number == 1)
            title = title_of(line);
        else if (line = trimmed(line.substr(0, line.find('#'))); !line.empty())
            take(line, number);
    });
    if (number == 0) throw failure(file + ": is empty, expected a preset");
    return title;
}

double value_of(const preset_attribute& attribute, std::string_view text) {
    switch (attribute.kind) {
        case value_kind::number:
            return number_of(text);
        case value_kind::whole_number:
            return static_cast<double>(whole_number_of(text));
        case value_kind::toggle:
            return toggle_of(text) ? 1.0 : 0.0;
        case value_kind::choice:
            return static_cast<double>(choice_of(text, attribute.value_names));
        case value_kind::unsupported:
            break;
    }
    throw bad_text("can't be set by a preset");
}

std::vector<double> values_of(const preset_attribute& attribute, std::string_view text) {
    // The name of a choice may hold blanks.
    const bool is_name =
        attribute.kind == value_kind::choice || attribute.kind == value_kind::toggle;
    const std::vector<std::string> words =
        is_name && !text.empty() ? std::vector{std::string(text)} : separated(text);
    check_value_count(words.size(), attribute.max_values);
    std::vector<double> values;
    for (const std::string& word : words) {
        const double value = value_of(attribute, word);
        if (value < attribute.low || value > attribute.high)
            throw bad_text(word + " is out of range, expected " + number_text(attribute.low) +
                           " to " + number_text(attribute.high));
        values.push_back(value);
    }
    return values;
}

preset_setting setting_of(std::string_view line, std::span<const preset_attribute> attributes) {
    const std::size_t end = std::min(line.find_first_of(" \t"), line.size());
    const std::string_view name = line.substr(0, end);
    const auto found = std::find_if(attributes.begin(), attributes.end(),
                                    [name](const preset_attribute& a) { return a.name == name; });
    if (found == attributes.end()) {
        std::vector<std::string> names;
        for (const preset_attribute& attribute : attributes) names.push_back(attribute.name);
        throw unknown_attribute(name, names);
    }
    try {
        return {static_cast<std::size_t>(found - attributes.begin()),
                values_of(*found, trimmed(line.substr(end)))};
    } catch (const bad_text& wrong) {
        throw bad_text(found->name + ": " + wrong.what());
    }
}

}  // namespace

preset_text read_preset_text(const std::string& file,
                             std::span<const preset_attribute> attributes) {
    preset_text preset;
    std::vector<std::size_t> line_of(attributes.size());  // that sets it; 0 for none so far
    preset.title = read_lines(file, [&](std::string_view line, std::size_t number) {
        const preset_setting& added = preset.settings.emplace_back(setting_of(line, attributes));
        std::size_t& earlier = line_of[added.attribute];
        if (earlier != 0)
            throw bad_text(attributes[added.attribute].name + ": is set in line " +
                           std::to_string(earlier) + " already");
        earlier = number;
    });
    return preset;
}

preset_title read_preset_title(const std::string& file) {
    return read_lines(file, [](std::string_view, std::size_t) {});
}

}  // namespace program
