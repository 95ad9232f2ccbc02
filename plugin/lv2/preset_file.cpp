#include "preset_file.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <stdexcept>
#include <string_view>

namespace kv7::orv::lv2 {
namespace {

constexpr std::string_view blanks = " \t\r,";

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// Takes the first word off the text.
std::string_view take_word(std::string_view& text) {
    text = trimmed(text);
    const std::string_view word = text.substr(0, text.find_first_of(blanks));
    text = trimmed(text.substr(word.size()));
    return word;
}

std::runtime_error no_value(std::string_view text, const attribute_row& row) {
    return std::runtime_error('"' + std::string(text) + "\" is no value of " + row.info.name);
}

double read_number(std::string_view text, const attribute_row& row) {
    double value = 0.0;
    const auto [end, failed] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool whole = failed == std::errc() && end == text.data() + text.size();
    if (!whole || !(value >= row.low && value <= row.high)) throw no_value(text, row);
    return value;
}

double read_toggle(std::string_view text, const attribute_row& row) {
    if (text == "on" || text == "1") return 1.0;
    if (text == "off" || text == "0") return 0.0;
    throw no_value(text, row);
}

// By name, in double quotes or without, or by index.
double read_choice(std::string_view text, const attribute_row& row) {
    std::string_view name = text;
    if (name.size() > 1 && name.front() == '"' && name.back() == '"')
        name = name.substr(1, name.size() - 2);
    const auto found = std::find(row.value_names.begin(), row.value_names.end(), name);
    if (found != row.value_names.end()) return static_cast<double>(found - row.value_names.begin());
    const double index = read_number(text, row);
    if (index != static_cast<int>(index)) throw no_value(text, row);
    return index;
}

std::array<double, list_length> read_values(std::string_view text, const attribute_row& row) {
    if (row.kind == attribute_kind::toggle) return {read_toggle(text, row), 0.0};
    if (row.kind == attribute_kind::choice) return {read_choice(text, row), 0.0};
    std::string_view rest = text;
    const double first = read_number(take_word(rest), row);
    if (rest.empty()) return {first, first};
    if (row.kind != attribute_kind::list) throw no_value(text, row);
    return {first, read_number(rest, row)};
}

void read_setting(std::string_view line, preset& into) {
    const std::string_view name = take_word(line);
    const std::size_t index = attribute_index(name);
    if (index == attribute_count)
        throw std::runtime_error("there is no attribute \"" + std::string(name) + '"');
    into.values[index] = read_values(line, attribute_table[index]);
}

void read_title(std::string_view line, preset& into) {
    const std::size_t colon = line.find(':');
    if (line.substr(0, 1) != "#" || colon == std::string_view::npos)
        throw std::runtime_error("expected \"# Title: what it is\"");
    into.title = trimmed(line.substr(1, colon - 1));
    into.description = trimmed(line.substr(colon + 1));
}

}  // namespace

preset read_preset(const std::filesystem::path& file) {
    preset made;
    made.name = file.stem().string();
    for (std::size_t i = 0; i < attribute_count; ++i)
        made.values[i].fill(attribute_table[i].default_value);
    std::ifstream lines(file);
    std::string line;
    int number = 0;
    try {
        while (std::getline(lines, line)) {
            if (++number == 1) {
                read_title(line, made);
                continue;
            }
            const std::string_view setting =
                trimmed(std::string_view(line).substr(0, line.find('#')));
            if (!setting.empty()) read_setting(setting, made);
        }
    } catch (const std::runtime_error& wrong) {
        throw std::runtime_error(file.string() + ':' + std::to_string(number) + ": " +
                                 wrong.what());
    }
    if (number == 0 || lines.bad())
        throw std::runtime_error(file.string() + ": could not be read, or is empty");
    return made;
}

}  // namespace kv7::orv::lv2
