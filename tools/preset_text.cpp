#include "tools/preset_text.h"

#include <algorithm>
#include <functional>
#include <string_view>

#include "tools/failure.h"
#include "tools/text.h"
#include "tools/text_file.h"

namespace program {

namespace {

preset_title title_of(std::string_view line) {
    const std::size_t colon = line.find(':');
    const std::string_view title =
        line.starts_with('#') && colon != line.npos ? trimmed(line.substr(1, colon - 1)) : "";
    if (title.empty()) throw bad_text("expected \"# Title: what it is\" in the first line");
    return {std::string(title), std::string(trimmed(line.substr(colon + 1)))};
}

// Empty where the line names none.
std::string category_of(std::string_view line) {
    constexpr std::string_view begin = "# Category:";
    return line.starts_with(begin) ? std::string(trimmed(line.substr(begin.size()))) : "";
}

// Calls take with the text and the number of every line after the first, without comments.
preset_title read_lines(const std::string& file,
                        const std::function<void(std::string_view, std::size_t)>& take) {
    preset_title title;
    std::size_t number = 0;
    for_each_line(file, [&](std::string_view line) {
        if (++number == 1)
            title = title_of(line);
        else if (number == 2 && line.starts_with('#'))
            title.category = category_of(line);
        else if (line = trimmed(line.substr(0, line.find('#'))); !line.empty())
            take(line, number);
    });
    if (number == 0) throw usage_error(file + ": is empty, expected a preset");
    return title;
}

preset_setting setting_of(std::string_view line, std::span<const value_attribute> attributes,
                          const value_rules& rules) {
    const std::size_t end = std::min(line.find_first_of(" \t"), line.size());
    const std::string_view name = line.substr(0, end);
    const auto found = std::find_if(attributes.begin(), attributes.end(),
                                    [name](const value_attribute& a) { return a.name == name; });
    if (found == attributes.end()) {
        std::vector<std::string> names;
        for (const value_attribute& attribute : attributes) names.push_back(attribute.name);
        throw bad_text(unknown_name("attribute", name, names, "vesk attributes"));
    }
    try {
        return {static_cast<std::size_t>(found - attributes.begin()),
                read_values(*found, line.substr(end), rules)};
    } catch (const bad_text& wrong) {
        throw bad_text(found->name + ": " + wrong.what());
    }
}

}  // namespace

preset_text read_preset_text(const std::string& file, std::span<const value_attribute> attributes,
                             const value_rules& rules) {
    preset_text preset;
    std::vector<std::size_t> line_of(attributes.size());  // that sets it; 0 for none so far
    preset.title = read_lines(file, [&](std::string_view line, std::size_t number) {
        const preset_setting& added =
            preset.settings.emplace_back(setting_of(line, attributes, rules));
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
