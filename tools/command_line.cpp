#include "tools/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <filesystem>
#include <functional>
#include <utility>

#include "tools/failure.h"
#include "tools/output_format.h"
#include "tools/text.h"
#include "tools/value_text.h"

namespace program {

namespace {

constexpr const char* version = "vesk " VESK_VERSION;
constexpr int max_vector_size = 8192;  // frames
constexpr int max_jobs = 256;
constexpr int max_channel = 1024;
constexpr double max_tail = 86400;  // s
constexpr std::array subcommands{"render", "picture", "attributes", "presets"};

// Numbers as text: the library would convert them by the locale.
struct number_texts {
    std::string vector_size;
    std::string tail;
    std::string seed;
    std::string bpm;
    std::string jobs;
    std::string channels;
};

using string_option = std::function<CLI::Option*(const char*, std::string&, const char*)>;

// An option whose last value counts.
string_option once_in(CLI::App& command) {
    return [&command](const char* name, std::string& into, const char* help) {
        return command.add_option(name, into, help)
            ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
    };
}

// What is played, and how; for every command that plays.
void add_playing(CLI::App& command, render_options& options, number_texts& numbers) {
    const auto once = once_in(command);
    const auto repeatable = [&command](const char* name, std::vector<std::string>& into,
                                       const char* help) {
        return command.add_option(name, into, help)->allow_extra_args(false);
    };
    repeatable("--set", options.settings, "Set an attribute before the start; repeatable")
        ->type_name("NAME=VALUE");
    repeatable("--at", options.events, "Send a message at this time; repeatable")
        ->type_name("\"SECONDS MESSAGE\"");
    repeatable("--score", options.scores,
               "Read messages from FILE, SECONDS MESSAGE a line; repeatable")
        ->type_name("FILE");
    once("--preset", options.preset, "Begin with these settings; --set overrides them")
        ->type_name("NAME|FILE");
    once("--vector", numbers.vector_size, "Frames a vector, 1 to 8192 [64]")->type_name("N");
    once("--tail", numbers.tail,
         "Play on after INPUT for SECONDS, or until a second is under -80 dBFS, 60 s at most "
         "[auto]")
        ->type_name("SECONDS|auto");
    once("--bpm", numbers.bpm, "Tempo of note values, as delay=1/8.,1/4t")->type_name("BPM");
    once("--channels", numbers.channels, "Channels of INPUT to play, from 1 on [all of 1 or 2]")
        ->type_name("A[,B]");
    once("--seed", numbers.seed, "Make what is random the same on every run")->type_name("N");
    once("--object", options.object, "Play through this object file")->type_name("PATH");
    command.add_flag("--clamp", options.clamp,
                     "Clamp values out of range, with a warning, instead of refusing them");
    command.add_flag("--partial", options.partial,
                     "Of a damaged INPUT play what can be read, into NAME.partial.wav");
    command.add_flag("--force", options.force, "Replace what is written if it is there");
    command.add_flag("--quiet", options.quiet, "No progress and no summary");
}

void add_render(CLI::App& app, render_options& options, number_texts& numbers) {
    CLI::App& render = *app.add_subcommand("render", "Plays INPUT through the effect into OUTPUT");
    render
        .add_option("INPUT", options.input,
                    "Sound file; - for standard input; with --into also a folder")
        ->type_name("");
    render
        .add_option("OUTPUT", options.output,
                    "File to write: " + output_suffixes() + "; - for standard output")
        ->type_name("");
    add_playing(render, options, numbers);
    const auto once = once_in(render);
    once("--format", options.format, "Of the standard output: wav, or raw for samples alone [wav]")
        ->type_name("wav|raw");
    once("--subtype", options.subtype,
         "Sample type: float, 24 or 16 [float; 24 for FLAC]; none for .ogg, .opus, .mp3")
        ->type_name("TYPE");
    render.add_flag("!--no-dither", options.dither, "Without dither for samples of 16 bits");
    once("--picture", options.picture,
         "Draw levels, spectrum, delay times and events into FILE, .png or .svg")
        ->type_name("FILE");
    once("--list", options.list, "Render every line INPUT, tab, OUTPUT [, tab, SETTINGS] of FILE")
        ->type_name("FILE|-");
    once("--into", options.into, "Write every sound file of INPUT into DIR, under its name")
        ->type_name("DIR");
    once("--jobs", numbers.jobs, "Files of a list or folder rendered at a time, 1 to 256 [1]")
        ->type_name("N");
    render.add_flag("--skip-existing", options.skip_existing,
                    "Of a list or folder, leave outputs that are there");
    render.add_flag("--json", options.json, "Print one JSON object for each file");
}

void add_picture(CLI::App& app, render_options& options, number_texts& numbers) {
    CLI::App& picture =
        *app.add_subcommand("picture", "Plays INPUT through the effect and draws what comes out");
    picture.add_option("INPUT", options.input, "Sound file; - for standard input")->type_name("");
    picture.add_option("PICTURE", options.picture, "File to write: .png or .svg")->type_name("");
    add_playing(picture, options, numbers);
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
    for (const std::string& word : separated(texts.channels)) {
        const auto channel = read_integer(word);
        if (!channel || *channel < 1 || *channel > max_channel || options.channels.size() == 2)
            throw usage_error("--channels " + texts.channels +
                              ": expected one or two numbers of channels, from 1 on");
        options.channels.push_back(static_cast<int>(*channel));
    }
    if (!texts.jobs.empty()) {
        const auto jobs = read_integer(texts.jobs);
        if (!jobs || *jobs < 1 || *jobs > max_jobs)
            throw usage_error("--jobs " + texts.jobs + ": expected a whole number, 1 to 256");
        options.jobs = static_cast<int>(*jobs);
    }
    if (!texts.bpm.empty()) try {
            options.bpm = read_bpm(texts.bpm);
        } catch (const bad_text& wrong) {
            throw usage_error(std::string("--bpm: ") + wrong.what());
        }
}

// One file, a list, or a folder.
void check_files(const render_options& options) {
    const bool many = !options.list.empty() || !options.into.empty();
    if (!options.list.empty() && !(options.input.empty() && options.into.empty()))
        throw usage_error("--list " + options.list + ": names all files, expected no other");
    if (!options.into.empty() && !options.output.empty())
        throw usage_error("--into " + options.into + ": expected INPUT alone, without OUTPUT");
    if (options.list.empty() && options.input.empty()) throw usage_error("INPUT is required");
    if (!many && options.output.empty()) throw usage_error("OUTPUT is required");
    if (!many && options.skip_existing)
        throw usage_error("--skip-existing: is for --list and --into");
    if (!many && options.jobs > 1) throw usage_error("--jobs: is for --list and --into");
}

std::string list_of_commands() {
    std::string list;
    for (const char* name : subcommands) list += (list.empty() ? "" : ", ") + std::string(name);
    return list;
}

// The first word that no option and no place takes.
[[noreturn]] void refuse(const std::string& word, const CLI::App& app) {
    if (word.size() < 2 || word[0] != '-')
        throw usage_error(word + ": one file too many, expected INPUT and OUTPUT alone");
    if (std::filesystem::path(word).has_extension() || std::filesystem::exists(word))
        throw usage_error(word + ": is no option; a file of that name goes after --, as in vesk " +
                          app.get_name() + " -- " + word);
    std::vector<std::string> names;
    for (const CLI::Option* option : app.get_options())
        for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    const std::string name = word.substr(0, word.find('='));
    const std::string nearest = near_name(name, names);
    throw usage_error(name + ": no such option, " +
                      (nearest.empty() ? "vesk " + app.get_name() + " --help lists them"
                                       : "the nearest is " + nearest));
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
    render_options picture;
    number_texts picture_numbers;
    add_picture(app, picture, picture_numbers);
    attributes_options attributes;
    CLI::App& list = *app.add_subcommand("attributes", "Prints every attribute of the effect");
    list.add_flag("--json", attributes.json, "Print as JSON");
    list.add_option("--object", attributes.object, "List those of this object file")
        ->type_name("PATH");
    app.add_subcommand("presets", "Prints name and title of every preset");
    for (CLI::App* subcommand : app.get_subcommands({})) subcommand->allow_extras();
    const std::vector<std::string> given(words + std::min(count, 1), words + count);
    if (given.empty())
        throw usage_error("no command, expected one of " + list_of_commands() +
                          "; vesk help shows more");
    if (given[0] == "help") {
        if (given.size() == 1) return text_options{app.help()};
        for (const CLI::App* subcommand : app.get_subcommands({}))
            if (subcommand->get_name() == given[1]) return text_options{subcommand->help("vesk")};
    }
    const std::string command = given[0] == "help" ? given[1] : given[0];
    if (command[0] != '-' &&
        std::find(subcommands.begin(), subcommands.end(), command) == subcommands.end()) {
        throw usage_error(command + ": no such command, expected one of " + list_of_commands() +
                          "; vesk help shows more");
    }
    const auto refuse_rest = [&app] {
        for (const CLI::App* subcommand : app.get_subcommands())
            for (const std::string& word : subcommand->remaining())
                if (word != "--") refuse(word, *subcommand);
    };
    try {
        app.parse(count, words);
        refuse_rest();
    } catch (const CLI::CallForVersion& version_text) {
        return text_options{std::string(version_text.what()) + "\n"};
    } catch (const CLI::CallForHelp&) {
        const std::vector<CLI::App*> subcommand = app.get_subcommands();
        return text_options{subcommand.empty() ? app.help() : subcommand.front()->help("vesk")};
    } catch (const CLI::ParseError& wrong) {
        refuse_rest();  // names the cause of what is missing
        throw usage_error(wrong.what());
    }
    if (app.got_subcommand("attributes")) return attributes;
    if (app.got_subcommand("presets")) return presets_options{};
    if (app.got_subcommand("picture")) {
        read_numbers(picture_numbers, picture);
        for (const auto& [value, name] :
             {std::pair(&picture.input, "INPUT"), std::pair(&picture.picture, "PICTURE")})
            if (value->empty()) throw usage_error(std::string(name) + " is required");
        return picture;
    }
    read_numbers(numbers, render);
    check_files(render);
    return render;
}

}  // namespace program
