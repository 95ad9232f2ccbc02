#include "tools/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>

#include "tools/failure.h"
#include "tools/text.h"

namespace program {

namespace {

constexpr const char* version = "vesk " VESK_VERSION;
constexpr int max_vector_size = 8192;  // frames
constexpr double max_tail = 86400;     // s
constexpr std::array subcommands{"render", "attributes", "presets"};

// Numbers as text: the library would convert them by the locale.
struct number_texts {
    std::string vector_size;
    std::string tail;
    std::string seed;
};

void add_render(CLI::App& app, render_options& options, number_texts& numbers) {
    CLI::App& render = *app.add_subcommand("render", "Plays INPUT through the effect into OUTPUT");
    render.add_option("INPUT", options.input, "Sound file, 1 or 2 channels; - for standard input")
        ->required()
        ->type_name("");
    render.add_option("OUTPUT", options.output, "File to write: .wav, .flac or .w64")
        ->required()
        ->type_name("");
    const auto repeatable = [&render](const char* name, std::vector<std::string>& into,
                                      const char* help) {
        return render.add_option(name, into, help)->allow_extra_args(false);
    };
    repeatable("--set", options.settings, "Set an attribute before the start; repeatable")
        ->type_name("NAME=VALUE");
    repeatable("--at", options.events, "Send a message at this time; repeatable")
        ->type_name("\"SECONDS MESSAGE\"");
    const auto once = [&render](const char* name, std::string& into, const char* help) {
        return render.add_option(name, into, help)
            ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
    };
    once("--score", options.score,
         "Read messages from FILE, SECONDS MESSAGE a line; # starts a comment")
        ->type_name("FILE");
    once("--preset", options.preset, "Begin with these settings; --set overrides them")
        ->type_name("NAME|FILE");
    once("--vector", numbers.vector_size, "Frames a vector, 1 to 8192 [64]")->type_name("N");
    once("--tail", numbers.tail,
         "Play on after INPUT for SECONDS, or until a second is under -80 dBFS, 60 s at most "
         "[auto]")
        ->type_name("SECONDS|auto");
    once("--subtype", options.subtype, "Sample type: float, 24 or 16 [float; 24 for FLAC]")
        ->type_name("TYPE");
    once("--picture", options.picture, "Draw input, output and events into FILE, .png or .svg")
        ->type_name("FILE");
    once("--seed", numbers.seed, "Make what is random the same on every run")->type_name("N");
    once("--object", options.object, "Play through this object file")->type_name("PATH");
    render.add_flag("--force", options.force, "Replace OUTPUT and picture if they are there");
    render.add_flag("--quiet", options.quiet, "No progress and no summary");
}

void read_numbers(const number_texts& texts, render_options& options) {
    if (!texts.vector_size.empty()) {
        const auto size = read_integer(texts.vector_size);
        if (!size || *size < 1 || *size > max_vector_size)
            throw usage_error("--vector " + texts.vector_size +
                              ": expected a whole number, 1 to 8192");
        options.vector_size = static_cast<int>(*size);
    }
    if (!texts.tail.empty() && texts.tail != "auto") {
        options.tail = read_number(texts.tail);
        if (!options.tail || *options.tail < 0 || *options.tail > max_tail)
            throw usage_error("--tail " + texts.tail + ": expected auto or seconds, 0 to 86400");
    }
    if (!texts.seed.empty()) {
        const auto seed = read_integer(texts.seed);
        if (!seed || *seed < 0)
            throw usage_error("--seed " + texts.seed + ": expected a whole number, 0 or above");
        options.seed = static_cast<std::uint64_t>(*seed);
    }
}

}  // namespace

std::string subcommand_of(int count, const char* const* words) {
    const std::string first = count > 1 ? words[1] : "";
    const bool known =
        std::find(subcommands.begin(), subcommands.end(), first) != subcommands.end();
    return known ? first : "vesk";
}

options read_command_line(int count, const char* const* words) {
    CLI::App app("Plays sound files through the modulation delay orv.device.vesk~", "vesk");
    app.require_subcommand(1);
    app.set_version_flag("--version", version);
    render_options render;
    number_texts numbers;
    add_render(app, render, numbers);
    attributes_options attributes;
    CLI::App& list = *app.add_subcommand("attributes", "Prints every attribute of the effect");
    list.add_flag("--json", attributes.json, "Print as JSON");
    list.add_option("--object", attributes.object, "List those of this object file")
        ->type_name("PATH");
    app.add_subcommand("presets", "Prints name and title of every preset");
    try {
        app.parse(count, words);
    } catch (const CLI::CallForVersion& version_text) {
        return text_options{std::string(version_text.what()) + "\n"};
    } catch (const CLI::CallForHelp&) {
        const std::vector<CLI::App*> subcommand = app.get_subcommands();
        return text_options{subcommand.empty() ? app.help() : subcommand.front()->help("vesk")};
    } catch (const CLI::ParseError& wrong) {
        throw usage_error(wrong.what());
    }
    if (app.got_subcommand("attributes")) return attributes;
    if (app.got_subcommand("presets")) return presets_options{};
    read_numbers(numbers, render);
    return render;
}

}  // namespace program
