#include "tools/value_text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

#include "tools/failure.h"
#include "tools/note_value.h"
#include "tools/text.h"

namespace program {

namespace {

struct written_unit {
    const char* suffix;  // in lower case, longer ones before their own ends
    const char* unit;    // of the attribute
    double divisor;      // a power of ten, so that 375ms is exactly what 0.375 is
};

constexpr std::array written_units{
    written_unit{"ms", "s", 1000},     written_unit{"s", "s", 1},
    written_unit{"khz", "Hz", 0.001},  written_unit{"hz", "Hz", 1},
    written_unit{"db", "dB", 1},       written_unit{"degrees", "degrees", 1},
    written_unit{"deg", "degrees", 1}, written_unit{"%", "", 100},
};

std::string units_of(const value_attribute& attribute) {
    std::string text;
    for (const written_unit& written : written_units)
        if (attribute.unit == written.unit)
            text +=
                (text.empty() ? "" : " or ") +
                (written.suffix == lower_case(attribute.unit) ? attribute.unit : written.suffix);
    return text;
}

std::string range_of(const value_attribute& attribute) {
    return number_text(attribute.low) + " to " + number_text(attribute.high) +
           (attribute.unit.empty() ? "" : " " + attribute.unit);
}

// Seconds of `1/8`, `1/8.` (dotted), `1/8..` or `1/8t` (triplet); a whole note is four quarters.
double seconds_of_note(std::string_view text, const std::optional<double>& bpm) {
    if (!bpm) throw bad_text(in_quotes(text) + " is a note value, expected a tempo, as --bpm 120");
    std::string_view note = text;
    note_length length = note_length::plain;
    if (note.ends_with("..")) {
        length = note_length::double_dotted;
        note.remove_suffix(2);
    } else if (note.ends_with('.')) {
        length = note_length::dotted;
        note.remove_suffix(1);
    } else if (note.ends_with('t') || note.ends_with('T')) {
        length = note_length::triplet;
        note.remove_suffix(1);
    }
    const std::size_t slash = note.find('/');
    const std::optional<std::int64_t> count = read_integer(note.substr(0, slash));
    const std::optional<std::int64_t> part = read_integer(note.substr(slash + 1));
    if (!count || !part || *count < 1 || *part < 1)
        throw bad_text(in_quotes(text) + " is no note value, expected one as 1/4, 1/8. or 1/8t");
    return note_seconds(static_cast<double>(*count), static_cast<double>(*part), length, *bpm);
}

double number_of(const value_attribute& attribute, std::string_view text,
                 const value_rules& rules) {
    if (const std::optional<double> number = read_number(text)) return *number;
    if (text.find('/') != text.npos && (attribute.unit == "s" || attribute.unit == "Hz")) {
        const double seconds = seconds_of_note(text, rules.bpm);
        return attribute.unit == "s" ? seconds : 1 / seconds;
    }
    const std::string lower = lower_case(text);
    for (const written_unit& written : written_units) {
        const std::string_view suffix = written.suffix;
        if (!lower.ends_with(suffix)) continue;
        const std::optional<double> number =
            read_number(trimmed(text.substr(0, text.size() - suffix.size())));
        if (!number) break;
        if (attribute.unit == written.unit) return *number / written.divisor;
        throw bad_text(in_quotes(text) + " is in another unit, expected " + units_of(attribute) +
                       " or a bare number");
    }
    throw bad_text(in_quotes(text) + " is not a number");
}

double in_range(const value_attribute& attribute, const std::string& text, double value,
                const value_rules& rules) {
    if (value >= attribute.low && value <= attribute.high) return value;
    const double clamped = std::clamp(value, attribute.low, attribute.high);
    if (rules.clamp_warning) {
        rules.clamp_warning(attribute.name + ": " + text + " is out of range, taken as " +
                            number_text(clamped));
        return clamped;
    }
    const bool may_be_ms = attribute.unit == "s" && value / 1000 >= attribute.low &&
                           value / 1000 <= attribute.high && read_number(text);
    throw bad_text(text + " is out of range, expected " + range_of(attribute) +
                   (may_be_ms ? "; were milliseconds meant? Then " + text + "ms" : ""));
}

double toggle_of(std::string_view text) {
    const std::string lower = lower_case(text);
    for (const char* word : {"1", "on", "yes", "true"})
        if (lower == word) return 1;
    for (const char* word : {"0", "off", "no", "false"})
        if (lower == word) return 0;
    throw bad_text(in_quotes(text) + " is neither on (yes, true, 1) nor off (no, false, 0)");
}

std::string list_of(const std::vector<std::string>& names) {
    std::string text;
    for (std::size_t i = 0; i < names.size(); ++i)
        text += (i == 0 ? "" : i + 1 == names.size() ? " or " : ", ") + names[i];
    return text;
}

double choice_of(const value_attribute& attribute, std::string_view text,
                 const value_rules& rules) {
    text = without_quotes(text);
    const std::vector<std::string>& names = attribute.value_names;
    const auto found = std::find_if(names.begin(), names.end(), [text](const std::string& name) {
        return lower_case(name) == lower_case(text);
    });
    if (found != names.end()) return static_cast<double>(found - names.begin());
    const std::optional<std::int64_t> index = read_integer(text);
    if (!index)
        throw bad_text("no value named " + in_quotes(text) + ", expected " + list_of(names));
    if (*index >= 0 && static_cast<std::size_t>(*index) < names.size())
        return static_cast<double>(*index);
    if (!rules.clamp_warning)
        throw bad_text("no value has the index " + std::to_string(*index) + ", expected 0 to " +
                       std::to_string(names.size() - 1) + ", or " + list_of(names));
    rules.clamp_warning(attribute.name + ": no value has the index " + std::to_string(*index) +
                        ", so the object keeps the one it has");
    return -1;
}

double value_of(const value_attribute& attribute, const std::string& text,
                const value_rules& rules) {
    switch (attribute.kind) {
        case value_kind::number:
            return in_range(attribute, text, number_of(attribute, text, rules), rules);
        case value_kind::whole_number: {
            const std::optional<std::int64_t> number = read_integer(text);
            if (!number) throw bad_text(in_quotes(text) + " is not a whole number");
            return in_range(attribute, text, static_cast<double>(*number), rules);
        }
        case value_kind::toggle:
            return toggle_of(text);
        case value_kind::choice:
            return choice_of(attribute, text, rules);
        case value_kind::unsupported:
            break;
    }
    throw bad_text("takes no value that can be read");
}

}  // namespace

std::vector<double> read_values(const value_attribute& attribute, std::string_view text,
                                const value_rules& rules) {
    text = trimmed(text);
    // The name of a choice may hold blanks.
    const bool is_name =
        attribute.kind == value_kind::choice || attribute.kind == value_kind::toggle;
    std::vector<std::string> words =
        is_name && !text.empty() ? std::vector{std::string(text)} : separated(text);
    if (words.empty()) throw bad_text("has no value");
    if (words.size() > attribute.max_values) {
        const std::string max = std::to_string(attribute.max_values);
        if (!rules.clamp_warning)
            throw bad_text(std::to_string(words.size()) + " values, at most " + max);
        rules.clamp_warning(attribute.name + ": " + std::to_string(words.size()) +
                            " values, only the first " + max + " taken");
        words.resize(attribute.max_values);
    }
    std::vector<double> values;
    for (const std::string& word : words) values.push_back(value_of(attribute, word, rules));
    return values;
}

double read_bpm(std::string_view text) {
    constexpr double max_bpm = 1000;
    const std::optional<double> bpm = read_number(trimmed(text));
    if (!bpm || *bpm <= 0 || *bpm > max_bpm)
        throw bad_text(in_quotes(text) +
                       " is no tempo, expected quarter notes per minute, above "
                       "0 to 1000");
    return *bpm;
}

std::string unknown_name(std::string_view what, std::string_view name,
                         const std::vector<std::string>& names, std::string_view list_command) {
    const std::string nearest = near_name(name, names);
    return "no " + std::string(what) + " named " + in_quotes(name) +
           (nearest.empty() ? "; " + std::string(list_command) + " lists them"
                            : ", the nearest is " + nearest);
}

}  // namespace program
