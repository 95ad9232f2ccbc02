// vesk: plays sound files through the effect, as the object file of a patching host has it.
#include <cstdio>
#include <exception>
#include <iostream>

#include "tools/attribute_listing.h"
#include "tools/command_line.h"
#include "tools/effect.h"
#include "tools/failure.h"
#include "tools/package.h"
#include "tools/presets.h"
#include "tools/text.h"

namespace program {

namespace {

void carry_out(const render_order& order) {
    render(order);
}

void carry_out(const attributes_order& order) {
    const std::filesystem::path object =
        order.object.empty() ? usual_object() : std::filesystem::path(order.object);
    const tesk::class_info& of_class = load_object(object);
    const auto attributes = list_attributes(of_class, reference_page(object, of_class.name));
    std::cout << (order.json ? as_json(of_class.name, attributes) : as_text(attributes));
}

void carry_out(const presets_order&) {
    constexpr std::size_t name_width = 18;
    for (const listed_preset& preset : list_presets()) {
        std::string name = preset.name;
        name.resize(std::max(name.size(), name_width), ' ');
        std::cout << name << ' ' << preset.title.title << ": " << preset.title.description << '\n';
    }
}

void carry_out(const text_order& order) {
    std::cout << order.text;
}

// A full disk behind the standard output is a failure as any other.
void flush_output() {
    std::cout.flush();
    if (!std::cout) throw failure("standard output: can't be written");
}

}  // namespace

}  // namespace program

int main(int count, char** words) {
    const std::string subcommand = program::subcommand_of(count, words);
    const auto tell = [&subcommand](const std::exception& wrong) {
        std::cerr << subcommand << ": " << program::one_line(wrong.what()) << std::endl;
    };
    try {
        std::visit([](const auto& order) { program::carry_out(order); },
                   program::read_command_line(count, words));
        program::flush_output();
        return 0;
    } catch (const program::usage_error& wrong) {
        tell(wrong);
        return 2;
    } catch (const std::exception& wrong) {
        tell(wrong);
        return 1;
    }
}
