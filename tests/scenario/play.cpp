// Plays a scenario: on a bare engine, or through ramps, queue and vectors.
#include <algorithm>
#include <bit>
#include <memory>
#include <stdexcept>

#include "scenario.h"
#include "vesk_driver.h"

namespace scenario {
namespace {

using orvane::blocks::vesk::SampleTableSet;

// The contents that take the place of the built-in tables, if there are any.
class Tables {
public:
    explicit Tables(const std::string& path) : given_(!path.empty()) {
        if (!given_) return;
        constexpr std::size_t noise_length = 88200, wobble_length = 384;
        const std::vector<float> all = read_floats(path);
        if (all.size() != 5 * noise_length + 4 * wobble_length)
            throw std::runtime_error(path + ": not five noise and four wobble tables");
        const float* next = all.data();
        const auto take = [&](auto& tables, std::size_t length) {
            for (auto& table : tables) table.assign(next, next + length), next += length;
        };
        take(noise_, noise_length);
        take(wobble_, wobble_length);
    }
    std::shared_ptr<SampleTableSet> attach(Vesk& engine, float rate) const {
        if (!given_) return std::make_shared<SampleTableSet>(engine, rate);
        return std::make_shared<SampleTableSet>(engine, rate, noise_, wobble_);
    }

private:
    bool given_;
    std::array<std::vector<float>, 5> noise_;
    std::array<std::vector<float>, 4> wobble_;
};

void seed(const Scenario& s, Vesk& engine) {
    if (!s.seed) return;
    engine.modulator.random_state = *s.seed;
    engine.modulator.reset();
}

class EnginePlayer {
public:
    explicit EnginePlayer(const Scenario& s)
        : engine_(static_cast<float>(s.rate)),
          tables_(Tables(s.tables).attach(engine_, engine_.sample_rate)) {
        seed(s, engine_);
    }
    void act(const Event& event) {
        if (event.kind == Event::Kind::set) set(engine_, event.attribute, event.values);
        if (event.kind == Event::Kind::clear) engine_.engine_clear();
        if (event.kind == Event::Kind::reset) engine_.engine_reset();
        if (event.kind == Event::Kind::rate)
            throw std::runtime_error("an engine's rate does not change");
    }
    Frame frame(Frame x) { return engine_.process(x); }
    void block(double* left, double* right, std::size_t frames) {
        engine_.process(left, right, left, right, frames);
    }

private:
    Vesk engine_;
    std::shared_ptr<SampleTableSet> tables_;
};

class DevicePlayer {
public:
    explicit DevicePlayer(const Scenario& s) : scenario_(s), tables_(s.tables), driver_(s.rate) {
        driver_.core.rebuild_tables = [this](Vesk& engine, float rate) {
            return tables_.attach(engine, rate);
        };
        announce(s.rate);
    }
    void act(const Event& event) {
        if (event.kind == Event::Kind::set) driver_.set(event.attribute, event.values);
        if (event.kind == Event::Kind::clear) driver_.core.request_clear();
        if (event.kind == Event::Kind::reset) driver_.core.request_reset();
        if (event.kind == Event::Kind::rate) announce(event.values[0]);
    }
    void block(double* left, double* right, std::size_t frames) {
        double* const channels[2] = {left, right};
        const kv7::orv::signal_bundle bundle{channels, 2, static_cast<std::int32_t>(frames)};
        driver_.core.perform(bundle, bundle);
    }

private:
    void announce(double rate) {
        const Vesk* const before = driver_.core.engine.get();
        driver_.prepare(rate);
        if (driver_.core.engine.get() != before) seed(scenario_, *driver_.core.engine);
    }

    const Scenario& scenario_;
    Tables tables_;
    kv7::orv::vesk_driver driver_;
};

}  // namespace

void set(Vesk& engine, std::size_t attribute, const std::vector<double>& values) {
    kv7::orv::apply_value(engine, kv7::orv::attribute_table[attribute], values);
}

std::vector<double> play(const Scenario& s, std::size_t block) {
    const std::vector<Frame> input = make_input(s);
    std::vector<double> out;
    auto event = s.events.begin();
    const auto play_on = [&](auto&& player, std::size_t longest, bool events_end_blocks) {
        std::vector<double> left, right;
        for (std::size_t n = 0, end = 0; n < input.size(); n = end) {
            for (; event != s.events.end() && event->frame <= n; ++event) player.act(*event);
            end = std::min(n + std::max<std::size_t>(longest, 1), input.size());
            if (events_end_blocks && event != s.events.end() && event->frame < end)
                end = event->frame;
            if constexpr (requires { player.frame(input[n]); }) {
                if (longest == 0) {
                    const Frame y = player.frame(input[n]);
                    out.insert(out.end(), {y.left, y.right});
                    continue;
                }
            }
            left.clear(), right.clear();
            for (std::size_t i = n; i < end; ++i)
                left.push_back(input[i].left), right.push_back(input[i].right);
            player.block(left.data(), right.data(), end - n);
            for (std::size_t i = 0; i < left.size(); ++i)
                out.insert(out.end(), {left[i], right[i]});
        }
    };
    if (s.on_device)
        play_on(DevicePlayer(s), s.vector_size, false);
    else
        play_on(EnginePlayer(s), block, true);
    return out;
}

std::uint64_t hash_of(const std::vector<double>& interleaved) {
    std::uint64_t hash = 0xcbf29ce484222325U;
    const auto bits = [](double x) {
        return std::uint64_t{std::bit_cast<std::uint32_t>(static_cast<float>(x) + 0.0f)};
    };
    for (std::size_t i = 0; i + 1 < interleaved.size(); i += 2)
        hash = (hash ^ (bits(interleaved[i]) | bits(interleaved[i + 1]) << 32U)) * 0x100000001b3U;
    return hash;
}

}  // namespace scenario
