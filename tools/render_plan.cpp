#include "tools/render_plan.h"

#include <algorithm>
#include <cstddef>

#include "tools/failure.h"
#include "tools/presets.h"
#include "tools/text.h"

namespace program {

namespace {

// Calls read with the rules of one piece of text. What it refuses or clamps is reported with the
// option before it.
template <class Read>
void read_option(const std::string& option, const value_rules& rules, Read read) {
    value_rules named = rules;
    if (rules.clamp_warning)
        named.clamp_warning = [&](const std::string& line) {
            rules.clamp_warning(option + ": " + line);
        };
    try {
        read(named);
    } catch (const bad_text& wrong) {
        throw usage_error(option + ": " + wrong.what());
    }
}

void add_settings(std::vector<message>& settings, const render_options& options,
                  const tesk::class_info& of_class, const value_rules& rules) {
    if (!options.preset.empty()) settings = read_preset(of_class, options.preset, rules);
    for (const std::string& setting : options.settings) {
        const std::size_t equals = setting.find('=');
        if (equals == std::string::npos)
            throw usage_error("--set " + setting + ": expected NAME=VALUE");
        read_option("--set " + setting, rules, [&](const value_rules& named) {
            add_setting(settings, read_setting(of_class, trimmed(setting.substr(0, equals)),
                                               setting.substr(equals + 1), named));
        });
    }
}

// Calls take with every value that settings and events give to the attribute.
template <class Take>
void for_each_value(const render_plan& plan, const std::string& attribute, Take take) {
    const auto look = [&](const message& m) {
        if (m.selector != attribute) return;
        for (const tesk_atom& value : m.values)
            take(value.type == 2 ? value.value.as_float : static_cast<double>(value.value.as_long));
    };
    for (const message& setting : plan.settings) look(setting);
    for (const event& e : plan.events.events()) look(e.what);
}

bool is_used(const render_plan& plan, const std::string& attribute) {
    bool used = false;
    for_each_value(plan, attribute, [&used](double value) { used = used || value != 0; });
    return used;
}

}  // namespace

render_plan plan_of(const render_options& options, const tesk::class_info& of_class,
                    const warning& warn) {
    value_rules rules;
    rules.bpm = options.bpm;
    if (options.clamp) rules.clamp_warning = warn;
    render_plan plan{{}, score(of_class, rules)};
    for (const std::string& file : options.scores) plan.events.add_file(file);
    rules.bpm = plan.events.bpm();
    for (const std::string& line : options.events)
        read_option("--at \"" + line + "\"", rules,
                    [&](const value_rules& named) { plan.events.add(line, named); });
    add_settings(plan.settings, options, of_class, rules);
    return plan;
}

double silence_to_wait(const render_plan& plan, const tesk::class_info& of_class) {
    constexpr double shortest = 1;     // s
    constexpr double line_length = 8;  // s; no echo comes later than that
    const tesk::attribute_info* const delay = of_class.attribute("delay");
    if (delay == nullptr) return shortest;
    double longest = 0;
    for (const tesk_atom& value : tesk::atoms_of_text(delay->property("default")))
        if (value.type == 2) longest = std::max(longest, value.value.as_float);
    for_each_value(plan, "delay", [&longest](double value) { longest = std::max(longest, value); });
    // Modulation reads up to twice as far back, four times with its depth multiplied.
    if (is_used(plan, "mod_mult") && is_used(plan, "mod_delay"))
        longest *= 4;
    else if (is_used(plan, "mod_delay") || is_used(plan, "wobble"))
        longest *= 2;
    return std::clamp(longest, shortest, line_length);
}

}  // namespace program
