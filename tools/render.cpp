#include "tools/render.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <iostream>
#include <memory>
#include <optional>
#include <random>

#include "tools/effect.h"
#include "tools/failure.h"
#include "tools/input_file.h"
#include "tools/output_file.h"
#include "tools/output_path.h"
#include "tools/package.h"
#include "tools/picture/delay_track.h"
#include "tools/picture/picture.h"
#include "tools/picture/picture_texts.h"
#include "tools/player.h"
#include "tools/progress.h"
#include "tools/quiet_twin.h"
#include "tools/rendering_json.h"
#include "tools/seed.h"
#include "tools/silence_meter.h"
#include "tools/tail.h"
#include "tools/text.h"
#include "tools/unfinished_file.h"

namespace program {

namespace {

// What the rendering makes: the sound, or the picture alone.
const std::string& result_of(const render_options& options) {
    return options.output.empty() ? options.picture : options.output;
}

constexpr double nearly_all = 0.99;  // of a silent output that the summary mentions

void warn_on_terminal(const std::string& text) {
    std::cerr << "render: " << one_line(text) << std::endl;
}

// The parts of one rendering.
struct rendition {
    const render_options& options;
    input_file& input;
    output_file& output;
    player& effect_player;
    tesk::instance& effect;
    quiet_twin* twin;     // null without noise
    picture* drawn;       // null without a picture
    delay_track* delays;  // null without one, or where it does not know the object
    tail ending;
    silence_meter silence_in;
    silence_meter silence_out;
};

void refuse_damage(const input_file& input, bool partial) {
    const std::string damage = input.damage();
    if (!damage.empty() && !partial)
        throw failure(input.shown_name() + ": " + damage +
                      "; nothing was written, --partial keeps what can be read");
}

// Reads, plays and writes until the end of the tail, some vectors at a time.
void play_all(rendition& r) {
    constexpr int target_block = 4096;  // frames; shorter blocks make more calls to the files
    const auto vector = static_cast<std::int64_t>(r.options.vector_size);
    const std::int64_t block = vector * std::max(1, target_block / r.options.vector_size);
    const int channels = r.input.channels();
    std::vector<float> in(static_cast<std::size_t>(block * channels));
    std::vector<float> out(static_cast<std::size_t>(block * 2));
    std::optional<std::int64_t> expected = r.input.header_frames();
    if (expected && r.options.tail) *expected += std::llround(*r.options.tail * r.input.rate());
    progress bar(expected, r.input.rate(), r.options.quiet);
    for (bool reading = true; r.effect_player.position() < r.ending.end();) {
        const std::int64_t begin = r.effect_player.position();
        const std::int64_t count = reading ? r.input.read(in.data(), block) : 0;
        std::fill(in.begin() + count * channels, in.end(), 0.0f);
        if (reading && count < block) {
            refuse_damage(r.input, r.options.partial);
            r.ending.input_ends(begin + count);
            reading = false;
        }
        const bool listen_to_twin = r.twin != nullptr && is_noisy(r.effect);
        for (std::int64_t offset = 0; offset < block && begin + offset < r.ending.end();
             offset += vector) {
            const float* const vector_in = &in[static_cast<std::size_t>(offset * channels)];
            float* const vector_out = &out[static_cast<std::size_t>(offset * 2)];
            r.effect_player.play(vector_in, channels, vector_out);
            if (r.delays != nullptr) r.delays->play(vector_in, channels);
            const float* const quiet =
                r.twin != nullptr ? r.twin->play(vector_in, channels) : vector_out;
            r.ending.measure(listen_to_twin ? quiet : vector_out, vector);
        }
        const std::int64_t played = std::min(r.effect_player.position(), r.ending.end()) - begin;
        r.output.write(out.data(), played);
        r.silence_in.measure(in.data(), count, channels);
        r.silence_out.measure(out.data(), played, 2);
        if (r.drawn != nullptr) r.drawn->add(in.data(), channels, count, out.data(), played);
        bar.show(r.effect_player.position());
    }
}

void warn_about(const rendition& r, const score& events, const warning& warn) {
    const std::string& in = r.input.shown_name();
    if (const std::string damage = r.input.damage(); !damage.empty())
        warn(in + ": " + damage + "; played what can be read, into " +
             (r.options.output.empty() ? r.options.picture : partial_path(r.options.output)));
    if (r.input.not_finite() > 0)
        warn(in + ": " + counted(r.input.not_finite(), "sample is", "samples are") +
             " not finite, taken as 0");
    if (const std::size_t late = events.events().size() - events.done(); late > 0) {
        const double last_vector =
            static_cast<double>(r.effect_player.position() - r.options.vector_size);
        warn(counted(static_cast<std::int64_t>(late), "event", "events") +
             " did not act: the last vector begins at " +
             fixed_text(std::max(0.0, last_vector) / r.input.rate(), 6) +
             " s, the first of them is due at " +
             fixed_text(events.events()[events.done()].seconds, 6) +
             " s; a longer --tail reaches it");
    }
    if (r.ending.cut())
        warn(result_of(r.options) + ": still sounding when the automatic tail ended after " +
             number_text(tail::max_seconds) + " s; --tail SECONDS plays longer");
    if (r.output.clipped() > 0)
        warn(counted(r.output.clipped(), "sample", "samples") + " beyond full scale cut to it; " +
             (r.output.format().has_float ? "--subtype float keeps them"
                                          : "a lower --set output keeps them, or a .wav file"));
    if (const std::string posted = take_posted_errors(); !posted.empty()) warn(posted);
}

// Of an output that is nearly all silent.
std::string reason_for_silence(rendition& r, const tesk::class_info& of_class) {
    const auto value = [&](const char* name) {
        return of_class.attribute(name) != nullptr ? r.effect.get_number(name) : 0;
    };
    if (r.silence_in.share() > nearly_all) return "so is the input";
    if (value("gate") != 0)
        return "gate is on, and only what is above gate_threshold, " +
               number_text(value("gate_threshold")) + " dB, enters the delay";
    if (value("output") < -40) return "the output gain is " + number_text(value("output")) + " dB";
    if (value("input") < -20) return "the input gain is " + number_text(value("input")) + " dB";
    return "";
}

// Not into the sound when that goes to the standard output.
std::ostream& report_stream(const rendering& done) {
    return done.output == "-" ? std::cerr : std::cout;
}

void print_summary(const rendering& done) {
    const double length = static_cast<double>(done.frames) / done.rate;
    std::string line = done.output + ": " + fixed_text(length, 3) + " s, " +
                       std::to_string(done.rate) + " Hz, peak " + dbfs_text(done.peak) + " dBFS, " +
                       fixed_text(length / done.wall_time, 1) + " times real time";
    if (done.silent_share > nearly_all)
        line += ", " + fixed_text(100 * done.silent_share, 1) + " % silent" +
                (done.silence_reason.empty() ? "" : ": " + done.silence_reason);
    report_stream(done) << one_line(line) << std::endl;
}

}  // namespace

void check_paths(const render_options& options) {
    if (!options.output.empty()) check_output_path(options.output, options.input, options.force);
    if (options.partial && !options.output.empty())
        check_output_path(partial_path(options.output), options.input, options.force);
    if (options.picture.empty()) return;
    picture::check_suffix(options.picture);
    check_output_path(options.picture, options.input, options.force);
    if (!options.output.empty() && std::filesystem::weakly_canonical(options.picture) ==
                                       std::filesystem::weakly_canonical(options.output))
        throw usage_error("--picture " + options.picture +
                          ": is OUTPUT too, expected another file");
}

rendering render_file(const render_options& options, const tesk::class_info& of_class,
                      const warning& warn) {
    const output_format format = options.output.empty() ? stream_format_of("raw", "")
                                 : options.output == "-"
                                     ? stream_format_of(options.format, options.subtype)
                                     : output_format_of(options.output, options.subtype);
    input_file input(options.input, options.channels);
    const int rate = input.rate();
    render_plan plan = plan_of(options, of_class, warn);
    plan.events.schedule(rate);

    // What a picture shows of the heads is played a second time, with the same random words.
    std::optional<std::uint64_t> seed = options.seed;
    if (!seed && !options.picture.empty()) seed = std::random_device()();
    const std::unique_ptr<tesk::instance> effect =
        make_effect(of_class, plan.settings, rate, options.vector_size, seed);
    if (options.seed && seeded_draws() == 0)
        warn("--seed " + std::to_string(*options.seed) + ": " + of_class.name +
             " draws no random word from the program, so the seed changes nothing");
    std::optional<quiet_twin> twin;
    if (!options.tail && quiet_twin::is_needed(plan.settings, plan.events))
        twin.emplace(of_class, plan.settings, plan.events, rate, options.vector_size, seed);
    std::optional<picture> drawn;
    std::optional<delay_track> delays;
    if (!options.picture.empty()) {
        drawn.emplace(options.picture, rate);
        if (delay_track::knows(of_class.name))
            delays.emplace(plan.settings, plan.events, rate, options.vector_size, seed);
    }

    const auto began = std::chrono::steady_clock::now();
    std::optional<std::int64_t> max_frames = input.header_frames();
    if (max_frames) *max_frames += std::llround(options.tail.value_or(tail::max_seconds) * rate);
    output_file output(options.output, format, rate, options.force, max_frames, options.dither);
    output.set(input.tags());
    player effect_player(of_class, *effect, plan.events, options.vector_size);
    rendition all{options,
                  input,
                  output,
                  effect_player,
                  *effect,
                  twin ? &*twin : nullptr,
                  drawn ? &*drawn : nullptr,
                  delays ? &*delays : nullptr,
                  tail(options.tail, silence_to_wait(plan, of_class), rate),
                  {},
                  {}};
    play_all(all);
    rendering done;
    done.output = input.damage().empty() || options.output.empty() ? result_of(options)
                                                                   : partial_path(options.output);
    output.finish_as(done.output);
    done.wall_time =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count();
    if (drawn)
        drawn->write(texts_of(options.preset, plan, of_class),
                     delays ? &delays->over_time() : nullptr);
    warn_about(all, plan.events, warn);
    done.frames = output.frames();
    done.rate = rate;
    done.peak = output.peak();
    done.tail = static_cast<double>(output.frames() - input.frames_read()) / rate;
    done.settings = plan.settings;
    done.seed = options.seed;
    done.silent_share = all.silence_out.share();
    if (done.silent_share > nearly_all) done.silence_reason = reason_for_silence(all, of_class);
    return done;
}

void render(const render_options& options) {
    check_paths(options);
    remove_unfinished_on_signals();
    const tesk::class_info& of_class = load_object(
        options.object.empty() ? default_object() : std::filesystem::path(options.object));
    std::vector<std::string> warnings;
    rendering done = render_file(options, of_class, [&warnings](const std::string& line) {
        warn_on_terminal(line);
        warnings.push_back(one_line(line));
    });
    done.warnings = warnings;
    if (options.json)
        report_stream(done) << json_of(options.input, done) << std::endl;
    else if (!options.quiet)
        print_summary(done);
}

}  // namespace program
