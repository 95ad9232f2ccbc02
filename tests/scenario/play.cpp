// Plays a scenario: on a bare engine, or through ramps, queue and vectors.
#include <memory>
#include <stdexcept>

#include "scenario.h"
#include "vesk_driver.h"

namespace scenario {
namespace {

using orvane::blocks::vesk::SampleTableSet;
using orvane::blocks::vesk::Vesk;

struct TableContents {
    std::array<std::vector<float>, 5> noise;
    std::array<std::vector<float>, 4> wobble;
};

// The tables of the built-in forms one behind the other.
std::unique_ptr<TableContents> read_tables(const std::string& path) {
    if (path.empty()) return nullptr;
    constexpr std::size_t noise_length = 88200, wobble_length = 384;
    const std::vector<float> all = read_floats(path);
    auto contents = std::make_unique<TableContents>();
    if (all.size() != 5 * noise_length + 4 * wobble_length)
        throw std::runtime_error(path + ": not five noise and four wobble tables");
    const float* next = all.data();
    for (auto& table : contents->noise)
        table.assign(next, next + noise_length), next += noise_length;
    for (auto& table : contents->wobble)
        table.assign(next, next + wobble_length), next += wobble_length;
    return contents;
}

std::shared_ptr<SampleTableSet> make_tables(const TableContents* contents, Vesk& engine,
                                            float rate) {
    if (contents == nullptr) return std::make_shared<SampleTableSet>(engine, rate);
    return std::make_shared<SampleTableSet>(engine, rate, contents->noise, contents->wobble);
}

void seed(const Scenario& s, Vesk& engine) {
    if (!s.seed) return;
    engine.modulator.random_state = *s.seed;
    engine.modulator.reset();
}

}  // namespace

std::vector<float> play_engine(const Scenario& s) {
    const auto rate = static_cast<float>(s.rate);
    const auto contents = read_tables(s.tables);
    Vesk engine(rate);
    const auto tables = make_tables(contents.get(), engine, rate);
    seed(s, engine);
    std::vector<float> out;
    auto event = s.events.begin();
    std::uint64_t n = 0;
    for (const Frame x : make_input(s)) {
        for (; event != s.events.end() && event->frame <= n; ++event) {
            switch (event->kind) {
                case Event::Kind::set:
                    kv7::orv::apply_value(engine, kv7::orv::attribute_table[event->attribute],
                                         event->values);
                    break;
                case Event::Kind::clear:
                    engine.engine_clear();
                    break;
                case Event::Kind::reset:
                    engine.engine_reset();
                    break;
                case Event::Kind::rate:
                    throw std::runtime_error("an engine's rate does not change");
            }
        }
        const Frame y = engine.process(x);
        out.insert(out.end(), {y.left, y.right});
        ++n;
    }
    return out;
}

std::vector<double> play_device(const Scenario& s) {
    const auto contents = read_tables(s.tables);
    kv7::orv::vesk_driver driver(s.rate);
    driver.core.rebuild_tables = [&](Vesk& engine, float rate) {
        return make_tables(contents.get(), engine, rate);
    };
    const auto announce = [&](double rate) {
        const Vesk* const before = driver.core.engine.get();
        driver.prepare(rate);
        if (driver.core.engine.get() != before) seed(s, *driver.core.engine);
    };
    announce(s.rate);

    const std::vector<Frame> input = make_input(s);
    std::vector<double> out;
    std::vector<double> left(s.vector_size), right(s.vector_size);
    double* const channels[2] = {left.data(), right.data()};
    auto event = s.events.begin();
    for (std::size_t first = 0; first < input.size(); first += s.vector_size) {
        for (; event != s.events.end() && event->frame <= first; ++event) {
            switch (event->kind) {
                case Event::Kind::set:
                    driver.set(event->attribute, event->values);
                    break;
                case Event::Kind::clear:
                    driver.core.request_clear();
                    break;
                case Event::Kind::reset:
                    driver.core.request_reset();
                    break;
                case Event::Kind::rate:
                    announce(event->values[0]);
                    break;
            }
        }
        const std::size_t frames = std::min(s.vector_size, input.size() - first);
        for (std::size_t i = 0; i < frames; ++i) {
            left[i] = static_cast<double>(input[first + i].left);
            right[i] = static_cast<double>(input[first + i].right);
        }
        const kv7::orv::signal_bundle bundle{channels, 2, static_cast<std::int32_t>(frames)};
        driver.core.perform(bundle, bundle);
        for (std::size_t i = 0; i < frames; ++i) out.insert(out.end(), {left[i], right[i]});
    }
    return out;
}

}  // namespace scenario
