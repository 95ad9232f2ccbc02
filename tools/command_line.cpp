#include "tools/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>

#include "tools/failure.h"
#include "tools/text.h"

namespace program {

namespace {

constexpr const char* version = "vesk " VESK_VERSION;
constexpr int largest_vector = 8192;    // frames
constexpr double longest_tail = 86400;  // s
constexpr std::array subcommands{"render", "attributes", "presets"};

// Numbers as typed; they are read here, in every locale alike.
struct typed_numbers {
    std::string vector_size;
    std::string tail;
    std::string seed;
};

void add_render(CLI::App& app, render_order& order, typed_numbers& numbers) {
    CLI::App& render = *app.add_subcommand("render", "Plays INPUT through the effect into OUTPUT");
    render.add_option("INPUT", order.input, "Sound file, 1 or 2 channels; - for standard input")
        ->required()
        ->type_name("");
    render.add_option("OUTPUT", order.output, "File to write: .wav, .flac or .w64")
        ->required()
        ->type_name("");
    const auto repeatable = [&render](const char* name, std::vector<std::string>& into,
                                      const char* help) {
        return render.add_option(name, into, help)->allow_extra_args(false);
    };
    repeatable("--set", order.settings, "Set an attribute before the start; repeatable")
        ->type_name("NAME=VALUE");
    repeatable("--at", order.events, "Send a message at this time; repeatable")
        ->type_name("\"SECONDS MESSAGE\"");
    const auto once = [&render](const char* name, std::string& into, const char* help) {
        return render.add_option(name, into, help)
            ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
    };
    once("--score", order.score,
         "Read messages from FILE, SECONDS MESSAGE a line; # starts a comment")
        ->type_name("FILE");
    once("--preset", order.preset, "Begin with these settings; --set overrides them")
        ->type_name("NAME|FILE");
    once("--vector", numbers.vector_size, "Frames a vector, 1 to 8192 [64]")->type_name("N");
    once("--tail", numbers.tail,
         "Play on behind INPUT for SECONDS, or until a second is under -80 dBFS, 60 s at most "
         "[auto]")
        ->type_name("SECONDS|auto");
    once("--subtype", order.subtype, "Sample type: float, 24 or 16 [float; 24 for FLAC]")
        ->type_name("TYPE");
    once("--picture", order.picture, "Draw input, output and events into FILE, .png or .svg")
        ->type_name("FILE");
    once("--seed", numbers.seed, "Make what is random the same on every run")->type_name("N");
    once("--object", order.object, "Play through this object file")->type_name("PATH");
    render.add_flag("--force", order.force, "Replace OUTPUT and picture if they are there");
    render.add_flag("--quiet", order.quiet, "No progress and no summary");
}

void read_numbers(const typed_numbers& typed, render_order& order) {
    if (!typed.vector_size.empty()) {
        const auto size = read_integer(typed.vector_size);
        if (!size || *size < 1 || *size > largest_vector)
            throw usage_error("--vector " + typed.vector_size +
                              ": expected a whole number, 1 to 8192");
        order.vector_size = static_cast<int>(*size);
    }
    if (!typed.tail.empty() && typed.tail != "auto") {
        order.tail = read_number(typed.tail);
        if (!order.tail || *order.tail < 0 || *order.tail > longest_tail)
            throw usage_error("--tail " + typed.tail + ": expected auto or seconds, 0 to 86400");
    }
    if (!typed.seed.empty()) {
        const auto seed = read_integer(typed.seed);
        if (!seed || *seed < 0)
            throw usage_error("--seed " + typed.seed + ": expected a whole number, 0 or above");
        order.seed = static_cast<std::uint64_t>(*seed);
    }
}

}  // namespace

std::string subcommand_of(int count, const char* const* words) {
    const std::string first = count > 1 ? words[1] : "";
    const bool known =
        std::find(subcommands.begin(), subcommands.end(), first) != subcommands.end();
    return known ? first : "vesk";
}

order read_command_line(int count, const char* const* words) {
    CLI::App app("Plays sound files through the modulation delay orv.device.vesk~", "vesk");
    app.require_subcommand(1);
    app.set_version_flag("--version", version);
    render_order render;
    typed_numbers numbers;
    add_render(app, render, numbers);
    attributes_order attributes;
    CLI::App& list = *app.add_subcommand("attributes", "Prints every attribute of the effect");
    list.add_flag("--json", attributes.json, "Print as JSON");
    list.add_option("--object", attributes.object, "Ask this object file")->type_name("PATH");
    app.add_subcommand("presets", "Prints name and title of every preset");
    try {
        app.parse(count, words);
    } catch (const CLI::CallForVersion& asked) {
        return text_order{std::string(asked.what()) + "\n"};
    } catch (const CLI::CallForHelp&) {
        const std::vector<CLI::App*> asked = app.get_subcommands();
        return text_order{asked.empty() ? app.help() : asked.front()->help("vesk")};
    } catch (const CLI::ParseError& wrong) {
        throw usage_error(wrong.what());
    }
    if (app.got_subcommand("attributes")) return attributes;
    if (app.got_subcommand("presets")) return presets_order{};
    read_numbers(numbers, render);
    return render;
}

}  // namespace program
