#include "tools/render.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <iostream>
#include <memory>

#include "tools/effect.h"
#include "tools/failure.h"
#include "tools/input_file.h"
#include "tools/output_file.h"
#include "tools/package.h"
#include "tools/picture.h"
#include "tools/player.h"
#include "tools/presets.h"
#include "tools/progress.h"
#include "tools/score.h"
#include "tools/seed.h"
#include "tools/tail.h"
#include "tools/text.h"

namespace program {

namespace {

namespace fs = std::filesystem;

void warn(const std::string& text) {
    std::cerr << "render: " << one_line(text) << std::endl;
}

void check_path(const std::string& path, const render_options& options) {
    std::error_code failed;
    const fs::file_status status = fs::status(path, failed);
    if (!fs::exists(status)) return;
    if (fs::is_directory(status)) throw failure(path + ": is a folder, expected a file to write");
    if (!fs::is_regular_file(status))
        throw failure(path + ": is no ordinary file, expected a file to write");
    if (options.input != "-" && fs::equivalent(options.input, path, failed))
        throw usage_error(path + ": is INPUT too, expected another file");
    if (!options.force) throw failure(path + ": is there already, expected --force");
}

std::vector<message> settings_of(const render_options& options, const tesk::class_info& of_class) {
    std::vector<message> settings;
    if (!options.preset.empty()) settings = read_preset(of_class, options.preset);
    for (const std::string& setting : options.settings) {
        const std::size_t equals = setting.find('=');
        if (equals == std::string::npos)
            throw usage_error("--set " + setting + ": expected NAME=VALUE");
        try {
            add_setting(settings, read_setting(of_class, trimmed(setting.substr(0, equals)),
                                               setting.substr(equals + 1)));
        } catch (const bad_text& wrong) {
            throw usage_error("--set " + setting + ": " + wrong.what());
        }
    }
    return settings;
}

score score_of(const render_options& options, const tesk::class_info& of_class) {
    score events(of_class);
    if (!options.score.empty()) events.add_file(options.score);
    for (const std::string& line : options.events) try {
            events.add(line);
        } catch (const bad_text& wrong) {
            throw usage_error("--at \"" + line + "\": " + wrong.what());
        }
    return events;
}

// Reads, plays and writes until the end of the tail, some vectors at a time.
void play_all(const render_options& options, input_file& input, output_file& output,
              player& effect_player, picture* drawn) {
    constexpr int target_block = 4096;  // frames; shorter blocks make more calls to the files
    const auto vector = static_cast<std::int64_t>(options.vector_size);
    const std::int64_t block = vector * std::max(1, target_block / options.vector_size);
    const int channels = input.channels();
    std::vector<float> in(static_cast<std::size_t>(block * channels));
    std::vector<float> out(static_cast<std::size_t>(block * 2));
    tail ending(options.tail, input.rate());
    std::optional<std::int64_t> expected = input.header_frames();
    if (expected) {
        if (options.tail) *expected += std::llround(*options.tail * input.rate());
        output.check_length(*expected);
    }
    progress bar(expected, input.rate(), options.quiet);
    for (bool reading = true; effect_player.position() < ending.end();) {
        const std::int64_t begin = effect_player.position();
        const std::int64_t count = reading ? input.read(in.data(), block) : 0;
        std::fill(in.begin() + count * channels, in.end(), 0.0f);
        if (reading && count < block) {
            ending.input_ends(begin + count);
            reading = false;
        }
        for (std::int64_t offset = 0; offset < block && begin + offset < ending.end();
             offset += vector) {
            effect_player.play(&in[static_cast<std::size_t>(offset * channels)], channels,
                               &out[static_cast<std::size_t>(offset * 2)]);
            ending.measure(&out[static_cast<std::size_t>(offset * 2)], vector);
        }
        const std::int64_t played = std::min(effect_player.position(), ending.end()) - begin;
        output.write(out.data(), played);
        if (drawn != nullptr) drawn->add(in.data(), channels, count, out.data(), played);
        bar.show(effect_player.position());
    }
}

void warn_about(const input_file& input, const output_file& output, const score& events, int rate) {
    const std::string& in = input.shown_name();
    if (input.cut_short())
        warn(in + ": ends at frame " + std::to_string(input.frames_read()) +
             ", its header promises more; played what is there");
    if (input.not_finite() > 0)
        warn(in + ": " + counted(input.not_finite(), "sample is", "samples are") +
             " not finite, taken as 0");
    if (const std::size_t late = events.events().size() - events.done(); late > 0)
        warn(counted(static_cast<std::int64_t>(late), "event", "events") + " after the end at " +
             fixed_text(static_cast<double>(output.frames()) / rate, 3) +
             " s did not act, the first at " + number_text(events.events()[events.done()].seconds) +
             " s; a longer --tail reaches it");
    if (output.clipped() > 0)
        warn(counted(output.clipped(), "sample", "samples") +
             " beyond full scale cut to it; --subtype float keeps them");
    if (const std::string posted = take_posted_errors(); !posted.empty()) warn(posted);
}

}  // namespace

void render(const render_options& options) {
    check_path(options.output, options);
    std::optional<picture> drawn;
    if (!options.picture.empty()) {
        drawn.emplace(options.picture);
        check_path(options.picture, options);
    }
    const output_format format = output_format_of(options.output, options.subtype);
    remove_unfinished_on_signals();
    input_file input(options.input);
    const int rate = input.rate();
    if (options.seed) seed_random_device(*options.seed);

    const tesk::class_info& of_class =
        load_object(options.object.empty() ? default_object() : fs::path(options.object));
    const std::vector<message> settings = settings_of(options, of_class);
    score events = score_of(options, of_class);
    events.schedule(rate);

    tesk::host::the().set_defaults(rate, options.vector_size);
    const std::unique_ptr<tesk::instance> effect = make_effect(of_class.name, settings);
    if (!effect->prepare(rate, options.vector_size))
        throw failure(of_class.name + ": gives no signal routine at " + std::to_string(rate) +
                      " Hz");
    if (options.seed && seeded_draws() == 0)
        warn("--seed " + std::to_string(*options.seed) + ": " + of_class.name +
             " draws no random word from the program, so the seed changes nothing");

    const auto began = std::chrono::steady_clock::now();
    output_file output(options.output, format, rate, options.force);
    player effect_player(*effect, events, options.vector_size);
    play_all(options, input, output, effect_player, drawn ? &*drawn : nullptr);
    output.finish();
    const double passed =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count();
    if (drawn) drawn->write(rate, output.frames(), events);
    warn_about(input, output, events, rate);
    if (options.quiet) return;
    const double length = static_cast<double>(output.frames()) / rate;
    std::cout << one_line(options.output + ": " + fixed_text(length, 3) + " s, " +
                          std::to_string(rate) + " Hz, peak " + dbfs_text(output.peak()) +
                          " dBFS, " + fixed_text(length / passed, 1) + " times real time")
              << std::endl;
}

}  // namespace program
