// Run by the build: writes attributes.json and presets.json, from which the page makes its
// controls.
//   write_page_texts FOLDER PRESET...
// Values are lists: of one number, of a choice its index, of a toggle 0 or 1, or of two.
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "attribute_table.h"
#include "preset_file.h"

namespace {

using nlohmann::ordered_json;
using namespace kv7::orv;

const char* kind_name(attribute_kind kind) {
    switch (kind) {
        case attribute_kind::continuous:
            return "number";
        case attribute_kind::toggle:
            return "toggle";
        case attribute_kind::choice:
            return "choice";
        case attribute_kind::list:
            return "list";
    }
    throw std::logic_error("an attribute kind without a name");
}

ordered_json values_of(const attribute_row& row, const std::array<double, list_length>& values) {
    const std::size_t count = row.kind == attribute_kind::list ? list_length : 1;
    return std::vector<double>(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(count));
}

ordered_json attributes() {
    ordered_json all = ordered_json::array();
    for (const attribute_row& row : attribute_table) {
        const bool is_toggle = row.kind == attribute_kind::toggle;
        all.push_back({{"name", row.info.name},
                       {"label", row.info.label},
                       {"description", row.info.description},
                       {"category", row.info.category},
                       {"kind", kind_name(row.kind)},
                       {"default", values_of(row, {row.default_value, row.default_value})},
                       {"low", row.low},
                       {"high", is_toggle ? 1.0 : row.high},
                       {"unit", row.unit},
                       {"choices",
                        std::vector<std::string>(row.value_names.begin(), row.value_names.end())}});
    }
    return all;
}

ordered_json presets(const std::vector<std::string>& files) {
    ordered_json all = ordered_json::array();
    for (const std::string& file : files) {
        const lv2::preset preset = lv2::read_preset(file);
        ordered_json values = ordered_json::object();
        for (std::size_t i = 0; i < attribute_count; ++i)
            values[attribute_table[i].info.name] = values_of(attribute_table[i], preset.values[i]);
        all.push_back({{"name", preset.name},
                       {"title", preset.title},
                       {"description", preset.description},
                       {"values", values}});
    }
    return all;
}

void write(const std::filesystem::path& file, const ordered_json& json) {
    std::ofstream out(file);
    out << json.dump(1) << '\n';
    out.close();
    if (!out) throw std::runtime_error(file.string() + ": could not be written");
}

}  // namespace

int main(int count, char** words) {
    try {
        if (count < 3) throw std::runtime_error("expected FOLDER PRESET...");
        const std::filesystem::path folder = words[1];
        write(folder / "attributes.json", attributes());
        write(folder / "presets.json", presets({words + 2, words + count}));
    } catch (const std::exception& failure) {
        std::cerr << "write_page_texts: " << failure.what() << '\n';
        return 1;
    }
}
