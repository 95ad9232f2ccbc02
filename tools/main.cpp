// The program vesk: plays sound files through the effect, which it loads as an object file.
#include <cstdio>
#include <exception>
#include <iostream>

#include "tools/attribute_listing.h"
#include "tools/command_line.h"
#include "tools/effect.h"
#include "tools/failure.h"
#include "tools/package.h"
#include "tools/presets.h"
#include "tools/render.h"
#include "tools/render_many.h"
#include "tools/text.h"

namespace program {

namespace {

void run(const render_options& options) {
    options.list.empty() && options.into.empty() ? render(options) : render_many(options);
}

void run(const attributes_options& options) {
    const std::filesystem::path object =
        options.object.empty() ? default_object() : std::filesystem::path(options.object);
    const tesk::class_info& of_class = load_object(object);
    const auto attributes = list_attributes(of_class, reference_page(object, of_class.name));
    std::cout << (options.json ? as_json(of_class.name, attributes) : as_text(attributes));
}

void run(const presets_options&) {
    constexpr std::size_t name_width = 18;
    for (const listed_preset& preset : list_presets()) {
        std::string name = preset.name;
        name.resize(std::max(name.size(), name_width), ' ');
        std::cout << name << ' ' << preset.title.title << ": " << preset.title.description << '\n';
    }
}

void run(const text_options& options) {
    std::cout << options.text;
}

// So that a full disk is reported when the output goes to a file.
void flush_output() {
    std::cout.flush();
    if (!std::cout) throw failure("standard output: can't be written");
}

}  // namespace

}  // namespace program

int main(int count, char** words) {
    const std::string subcommand = program::subcommand_of(count, words);
    const auto report = [&subcommand](const std::exception& wrong) {
        std::cerr << subcommand << ": " << program::one_line(wrong.what()) << std::endl;
    };
    try {
        std::visit([](const auto& options) { program::run(options); },
                   program::read_command_line(count, words));
        program::flush_output();
        return 0;
    } catch (const program::usage_error& wrong) {
        report(wrong);
        return 2;
    } catch (const std::exception& wrong) {
        report(wrong);
        return 1;
    }
}
