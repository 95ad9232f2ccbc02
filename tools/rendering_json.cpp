#include "tools/rendering_json.h"

#include <nlohmann/json.hpp>

namespace program {

namespace {

using json = nlohmann::ordered_json;

json json_of(const tesk_atom& atom) {
    if (atom.type == 1) return atom.value.as_long;
    if (atom.type == 2) return atom.value.as_float;
    return atom.value.as_symbol->name;
}

json json_of(const std::vector<message>& settings) {
    json object = json::object();
    for (const message& setting : settings) {
        json& value = object[setting.selector];
        if (setting.values.size() == 1)
            value = json_of(setting.values[0]);
        else
            for (const tesk_atom& atom : setting.values) value.push_back(json_of(atom));
    }
    return object;
}

std::string line_of(const json& object) {
    // Text that is not UTF-8, as a file name can be, is replaced; by default the library throws.
    return object.dump(-1, ' ', false, json::error_handler_t::replace);
}

}  // namespace

std::string json_of(const std::string& input, const rendering& done) {
    json object{{"in", input},       {"out", done.output},
                {"ok", true},        {"frames", done.frames},
                {"rate", done.rate}, {"peak", done.peak},
                {"tail", done.tail}, {"settings", json_of(done.settings)}};
    object["seed"] = done.seed ? json(*done.seed) : json(nullptr);
    if (!done.warnings.empty()) object["warnings"] = done.warnings;
    return line_of(object);
}

std::string json_of_skipped(const std::string& input, const std::string& output) {
    return line_of({{"in", input}, {"out", output}, {"ok", true}, {"skipped", true}});
}

std::string json_of_failed(const std::string& input, const std::string& output,
                           const std::string& error) {
    return line_of({{"in", input}, {"out", output}, {"ok", false}, {"error", error}});
}

}  // namespace program
