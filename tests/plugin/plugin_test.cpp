// The plugin through its C interface, compared with the driver it is made of: equal to the bit, and
// no heap on the audio thread.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <lv2/atom/forge.h>
#include <lv2/core/lv2.h>
#include <lv2/time/time.h>
#include <lv2/urid/urid.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "dice.h"
#include "inline_display.h"
#include "port_list.h"
#include "vesk_driver.h"

namespace {

thread_local bool counting = false;
thread_local long heap_calls = 0;
thread_local bool heap_is_full = false;

void* counted_new(std::size_t size) {
    if (counting) ++heap_calls;
    void* const memory = heap_is_full ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (memory != nullptr) return memory;
    throw std::bad_alloc();
}
void counted_delete(void* memory) noexcept {
    if (counting) ++heap_calls;
    std::free(memory);
}

}  // namespace

// The plugin's calls come here too.
#define COUNTED [[gnu::visibility("default")]]
COUNTED void* operator new(std::size_t size) {
    return counted_new(size);
}
COUNTED void operator delete(void* memory) noexcept {
    counted_delete(memory);
}
COUNTED void operator delete(void* memory, std::size_t) noexcept {
    counted_delete(memory);
}

namespace kv7::orv::lv2 {
namespace {

constexpr double rate = 44100.0;
constexpr std::size_t most_frames = 300;

const LV2_Descriptor* descriptor(std::uint32_t index) {
    void* const library = dlopen(VESK_LV2_BINARY, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) throw std::runtime_error(dlerror());
    return reinterpret_cast<LV2_Descriptor_Function>(dlsym(library, "lv2_descriptor"))(index);
}

// What a host plays through the plugin, what the same moves give on a driver alone.
class Pair {
public:
    Pair() {
        for (const control_port& port : controls_)
            values_.push_back(static_cast<float>(port.standard));
        values_.resize(controls_.size() + trigger_count, 0.0f);
        for (std::size_t i = 0; i < values_.size(); ++i) connect(first_control + i, &values_[i]);
    }
    ~Pair() { calls_.cleanup(plugin_); }

    void activate() {
        calls_.activate(plugin_);
        driver_ = std::make_unique<vesk_driver>(rate);
        for (std::size_t i = 0; i < attribute_count; ++i) driver_->set(i, values_of(i));
        driver_->prepare(rate);
        driver_->start();
        seen_ = values_;
        frames_on_ = {};
    }
    // Without memory the engine stays, and starts from silence.
    void activate_without_memory() {
        heap_is_full = true;
        calls_.activate(plugin_);
        heap_is_full = false;
        driver_->core.request_reset();
    }
    // Noise in, with what isn't finite here and there; asserts that both give the same.
    void block(std::size_t frames) {
        take_changes(frames);
        std::array<std::array<double, most_frames>, 2> wanted;
        for (std::size_t c = 0; c < 2; ++c)
            for (std::size_t i = 0; i < frames; ++i) {
                const float odd[] = {NAN, -INFINITY};
                const bool is_odd = dice_.below(50) == 0;
                in_[c][i] = is_odd ? odd[dice_.below(2)] : static_cast<float>(0.3 * dice_.swing());
                wanted[c][i] = is_odd ? 0.0 : double{in_[c][i]};
            }
        double* const channels[2] = {wanted[0].data(), wanted[1].data()};
        const signal_bundle bundle{channels, 2, static_cast<std::int32_t>(frames)};
        driver_->core.perform(bundle, bundle);

        const int sharing = dice_.below(3);
        std::array<float*, 4> ports{in_[0].data(), in_[1].data(), out_[0].data(), out_[1].data()};
        if (sharing == 1) ports = {ports[0], ports[1], ports[0], ports[1]};
        if (sharing == 2) ports = {ports[0], ports[1], ports[1], ports[0]};
        for (std::size_t i = 0; i < ports.size(); ++i) connect(i, ports[i]);
        counting = true;
        calls_.run(plugin_, static_cast<std::uint32_t>(frames));
        counting = false;
        for (std::size_t c = 0; c < 2; ++c)
            for (std::size_t i = 0; i < frames; ++i) {
                const float got = ports[out_left + c][i];
                ASSERT_EQ(got, static_cast<float>(wanted[c][i])) << "channel " << c << " " << i;
                loudest = std::max(loudest, std::abs(got));
            }
    }
    // The port of any attribute, or a trigger, to any value, often an end of its range or none of
    // it.
    void turn_a_knob() {
        const auto n = static_cast<std::size_t>(dice_.below(static_cast<int>(values_.size())));
        if (n < controls_.size() && controls_[n].own != own_control_count) return;
        if (n >= controls_.size()) {  // a trigger, which may be held
            const float held[] = {1.0f, 0.2f, 0.0f, -1.0f};
            values_[n] = held[dice_.below(4)];
            return;
        }
        const attribute_row& row = attribute_table[controls_[n].attribute];
        const auto low = static_cast<float>(row.low), high = static_cast<float>(row.high);
        const float odd[] = {low, high, low - 3.0f, high + 3.0f, INFINITY, -INFINITY, NAN};
        const float switched[] = {0.0f, 1.0f, 0.25f, INFINITY, -0.5f, -7.0f, -INFINITY};
        if (row.kind == attribute_kind::toggle)
            values_[n] = switched[dice_.below(7)];
        else if (dice_.below(3) == 0)
            values_[n] = odd[dice_.below(7)];
        else
            values_[n] = low + (high - low) * static_cast<float>(dice_.unit());
        // Drawn at random by each engine for itself.
        if (values_[n] >= 4.5f && std::string(row.info.name) == "mod_waveform") values_[n] = 4.0f;
    }
    std::size_t any_frames() {
        return static_cast<std::size_t>(dice_.below(static_cast<int>(most_frames) + 1));
    }

    float loudest = 0.0f;

private:
    void connect(std::size_t port, float* data) {
        calls_.connect_port(plugin_, static_cast<std::uint32_t>(port), data);
    }
    std::vector<double> values_of(std::size_t attribute) const {
        const bool toggles = attribute_table[attribute].kind == attribute_kind::toggle;
        const bool is_choice = attribute_table[attribute].kind == attribute_kind::choice;
        std::vector<double> values;
        for (std::size_t i = 0; i < controls_.size(); ++i)
            if (controls_[i].attribute == attribute)  // a list's elements stand in their order
                // A toggle is on above 0, whatever whole number the attribute makes of it.
                values.push_back(toggles     ? (values_[i] > 0.0f ? 1.0 : 0.0)
                                 : is_choice ? std::round(double{values_[i]})
                                             : double{values_[i]});
        return values;
    }
    // In the order of registration, each attribute once.
    void take_changes(std::size_t frames) {
        const auto changed = [this](std::size_t i) {
            return values_[i] != seen_[i] && !(std::isnan(values_[i]) && std::isnan(seen_[i]));
        };
        for (std::size_t attribute = 0; attribute < attribute_count; ++attribute)
            for (std::size_t i = 0; i < controls_.size(); ++i)
                if (controls_[i].attribute == attribute && changed(i)) {
                    driver_->set(attribute, values_of(attribute));
                    break;
                }
        // A press, or the end of one that has lasted for a second.
        for (std::size_t t = 0; t < trigger_count; ++t) {
            const bool on = values_[controls_.size() + t] > 0.0f;
            const bool was_on = seen_[controls_.size() + t] > 0.0f;
            const bool acts = on ? !was_on : was_on && frames_on_[t] >= rate;
            frames_on_[t] = on ? frames_on_[t] + static_cast<double>(frames) : 0.0;
            if (acts && t == clear) driver_->core.request_clear();
            if (acts && t == reset) driver_->core.request_reset();
        }
        seen_ = values_;
    }

    const LV2_Descriptor& calls_ = *descriptor(0);
    LV2_Handle plugin_ = calls_.instantiate(&calls_, rate, "", nullptr);
    const std::vector<control_port> controls_ = control_ports();
    std::vector<float> values_, seen_;  // of the controls, then of the triggers
    std::array<double, trigger_count> frames_on_{};
    Dice dice_{3};
    std::unique_ptr<vesk_driver> driver_;
    std::array<std::array<float, most_frames>, 2> in_{}, out_{};
};

TEST(Plugin, IsOneEffectUnderItsNameAtAnyRateAboveZero) {
    EXPECT_STREQ(descriptor(0)->URI, "urn:orvane:vesk");
    EXPECT_EQ(descriptor(1), nullptr);
    for (const double none : {0.0, -44100.0, std::nan("")})
        EXPECT_EQ(descriptor(0)->instantiate(descriptor(0), none, "", nullptr), nullptr) << none;
}

TEST(Plugin, PlaysAsTheDriverDoesThroughAnyBlocksKnobsTriggersAndActivations) {
    Pair pair;
    heap_calls = 0;
    for (int life = 0; life < 12; ++life) {
        SCOPED_TRACE(life);
        for (int n = 0; n < 3 * life; ++n) pair.turn_a_knob();
        pair.activate();
        for (int n = 0; n < 300; ++n) {
            if (n == 150) pair.activate_without_memory();
            for (int k = n % 12 / 3; k > 0 && n % 3 == 0; --k) pair.turn_a_knob();
            ASSERT_NO_FATAL_FAILURE(pair.block(pair.any_frames())) << n;
        }
    }
    EXPECT_GT(pair.loudest, 0.1f);
    EXPECT_EQ(heap_calls, 0);
    counting = true;
    pair.activate();
    counting = false;
    EXPECT_GT(heap_calls, 0) << "the plugin's calls are counted";
}

// The plugin in the hands of a host that knows its ports by symbol and sends it positions.
class Host {
public:
    Host(std::initializer_list<std::pair<const char*, float>> settings, double at = rate)
        : plugin_(calls_.instantiate(&calls_, at, "", features_)) {
        for (const control_port& port : control_ports())
            add(port.symbol, static_cast<float>(port.standard));
        for (const plain_port& port : trigger_ports) add(port.symbol, 0.0f);
        for (const plain_port& port : readout_ports) add(port.symbol, NAN);
        std::size_t index = first_control;
        for (auto& [symbol, value] : ports_)
            calls_.connect_port(plugin_, static_cast<std::uint32_t>(index++), &value);
        lv2_atom_forge_init(&forge_, &map_);
        forget_positions();
        for (const auto& [symbol, value] : settings) port(symbol) = value;
        calls_.activate(plugin_);
    }
    ~Host() { calls_.cleanup(plugin_); }
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    // The colours of the small picture, row by row.
    std::vector<std::uint32_t> picture(std::uint32_t width, std::uint32_t max_height) {
        const auto* const display = static_cast<const LV2_Inline_Display_Interface*>(
            calls_.extension_data(LV2_INLINEDISPLAY__interface));
        const LV2_Inline_Display_Image_Surface* const made =
            display->render(plugin_, width, max_height);
        if (made == nullptr) return {};
        EXPECT_EQ(made->width, static_cast<int>(width));
        EXPECT_LE(made->height, static_cast<int>(max_height));
        EXPECT_EQ(made->stride, 4 * made->width);
        std::vector<std::uint32_t> pixels(width * static_cast<std::size_t>(made->height));
        std::memcpy(pixels.data(), made->data, 4 * pixels.size());
        return pixels;
    }
    int pictures_asked = 0;

    float& port(const std::string& symbol) {
        for (auto& [name, value] : ports_)
            if (name == symbol) return value;
        throw std::runtime_error("no port " + symbol);
    }
    // For the next run.
    void send_position(std::int64_t frame, std::optional<double> bpm, std::optional<int> unit = {},
                       float speed = 1.0f) {
        lv2_atom_forge_frame_time(&forge_, frame);
        LV2_Atom_Forge_Frame object;
        lv2_atom_forge_object(&forge_, &object, 0, id_of(LV2_TIME__Position));
        const auto key = [this](const char* uri) { lv2_atom_forge_key(&forge_, id_of(uri)); };
        key(LV2_TIME__speed), lv2_atom_forge_float(&forge_, speed);
        if (bpm) key(LV2_TIME__beatsPerMinute), lv2_atom_forge_double(&forge_, *bpm);
        if (unit) key(LV2_TIME__beatUnit), lv2_atom_forge_int(&forge_, *unit);
        lv2_atom_forge_pop(&forge_, &object);
    }
    // Both channels of the output, the left one first.
    std::vector<float> run(std::vector<float> in) {
        const std::size_t frames = in.size();
        std::vector<float> out(2 * frames);
        const std::array<float*, 4> ports{in.data(), in.data(), out.data(), out.data() + frames};
        for (std::size_t i = 0; i < ports.size(); ++i)
            calls_.connect_port(plugin_, static_cast<std::uint32_t>(i), ports[i]);
        calls_.connect_port(plugin_, event_port, events_.data());
        counting = true;
        calls_.run(plugin_, static_cast<std::uint32_t>(frames));
        counting = false;
        forget_positions();
        return out;
    }

private:
    void add(const std::string& symbol, float value) { ports_.push_back({symbol, value}); }
    void forget_positions() {
        lv2_atom_forge_set_buffer(&forge_, reinterpret_cast<std::uint8_t*>(events_.data()),
                                  sizeof events_);
        lv2_atom_forge_sequence_head(&forge_, &sequence_, 0);
    }
    static LV2_URID id_of(const std::string& uri) {
        static std::vector<std::string> known;
        const auto found = std::find(known.begin(), known.end(), uri);
        if (found == known.end()) known.push_back(uri);
        return static_cast<LV2_URID>(std::find(known.begin(), known.end(), uri) - known.begin()) +
               1;
    }

    const LV2_Descriptor& calls_ = *descriptor(0);
    LV2_URID_Map map_{nullptr, [](LV2_URID_Map_Handle, const char* uri) { return id_of(uri); }};
    const LV2_Feature map_feature_{LV2_URID__map, &map_};
    const LV2_Inline_Display display_{
        this, [](void* host) { ++static_cast<Host*>(host)->pictures_asked; }};
    // A feature of a host's is a pointer to data that aren't const.
    const LV2_Feature display_feature_{LV2_INLINEDISPLAY__queue_draw,
                                       const_cast<LV2_Inline_Display*>(&display_)};
    const LV2_Feature* features_[3] = {&map_feature_, &display_feature_, nullptr};
    LV2_Handle plugin_;
    std::vector<std::pair<std::string, float>> ports_;
    LV2_Atom_Forge forge_{};
    LV2_Atom_Forge_Frame sequence_{};
    std::array<std::uint64_t, 256> events_{};
};

std::vector<float> noise(std::size_t frames) {
    Dice dice(7);
    std::vector<float> in(frames);
    for (float& x : in) x = static_cast<float>(0.3 * dice.swing());
    return in;
}
std::vector<float> impulse(std::size_t frames) {
    std::vector<float> in(frames);
    in[0] = 0.25f;
    return in;
}
float peak_of(const std::vector<float>& out) {
    float peak = 0.0f;
    for (const float y : out) peak = std::max(peak, std::abs(y));
    return peak;
}

// What the tempo makes of the divisions is what somebody would set by hand at the same frame.
TEST(Plugin, FollowsTheTempoAsIfItsTimesWereSet) {
    struct Step {
        std::optional<double> bpm;
        std::optional<int> unit;
        float speed;
        float left, right, frequency;  // wanted
    };
    heap_calls = 0;
    constexpr float eighth = 7, dotted_quarter = 12, triplet_half = 11;
    const Step steps[] = {
        {{}, {}, 1, 0.1f, 0.2f, 3},  // no tempo known: the ports in seconds and Hz
        {120, {}, 1, 0.25f, 0.75f, 1.5f},
        {96, {}, 1, 0.3125f, 0.9375f, 1.2f},  // a jump
        {{}, {}, 0, 0.3125f, 0.9375f, 1.2f},  // stopped: the last one stays
        {0.0, {}, 0, 0.3125f, 0.9375f, 1.2f},
        {std::nan(""), {}, 1, 0.3125f, 0.9375f, 1.2f},
        {1e-310, {}, 1, 0.3125f, 0.9375f, 1.2f},  // notes without end
        {120, 8, 1, 0.5f, 1.5f, 0.75f},           // of eighths
        {15, 4, 1, 2.0f, 3.0f, 0.1875f},          // six seconds are halved
    };
    for (const float repitch : {0.0f, 1.0f}) {
        Host synced({{"sync", 1},
                     {"division_left", eighth},
                     {"division_right", dotted_quarter},
                     {"mod_sync", 1},
                     {"mod_division", triplet_half},
                     {"delay_left", 0.1f},
                     {"delay_right", 0.2f},
                     {"mod_freq", 3},
                     {"mod_delay", 0.1f},
                     {"repitch", repitch}});
        Host by_hand({{"delay_left", 0.1f},
                      {"delay_right", 0.2f},
                      {"mod_freq", 3},
                      {"mod_delay", 0.1f},
                      {"repitch", repitch}});
        const std::vector<float> in = noise(9000);
        for (const Step& step : steps) {
            constexpr std::size_t at = 777;
            synced.send_position(at, step.bpm, step.unit, step.speed);
            const std::vector<float> out = synced.run(in);
            const auto before = by_hand.run({in.begin(), in.begin() + at});
            by_hand.port("delay_left") = step.left;
            by_hand.port("delay_right") = step.right;
            by_hand.port("mod_freq") = step.frequency;
            const auto after = by_hand.run({in.begin() + at, in.end()});
            for (std::size_t i = 0; i < in.size(); ++i)
                ASSERT_EQ(out[i], i < at ? before[i] : after[i - at]) << i;
        }
    }
    EXPECT_EQ(heap_calls, 0);
}

TEST(Plugin, LinkedDelaysMoveAsOneAndTheReadoutsShowWhatIsRead) {
    Host host({{"delay_left", 0.3f},
               {"delay_right", 0.1f},
               {"link", 1},
               {"repitch", 1},
               {"duck", 1},
               {"duck_threshold", -40},
               {"gate", 1},
               {"gate_threshold", -20}});
    host.run(noise(20000));
    EXPECT_NEAR(host.port("delay_read_left"), 0.3, 1e-3);
    EXPECT_NEAR(host.port("delay_read_right"), 0.3, 1e-3);
    EXPECT_GT(host.port("gain_reduction"), 10.0f);
    EXPECT_NEAR(host.port("gate_open"), 1.0, 1e-3);
    host.port("link") = 0;
    const auto out = host.run(std::vector<float>(4000));
    EXPECT_NEAR(host.port("delay_read_left"), 0.3, 1e-3);
    EXPECT_LT(host.port("delay_read_right"), 0.298f) << "gliding";
    EXPECT_GT(host.port("delay_read_right"), 0.11f) << "gliding";
    EXPECT_LT(host.port("gate_open"), 0.9f);
    const std::vector<float> left(out.begin(), out.begin() + 4000);
    EXPECT_NEAR(host.port("peak_left"), 20 * std::log10(peak_of(left)), 1e-3);
}

// The law of the fade: the effect gets a share of the input that moves by 1 in 5 ms, the rest
// passes by, and noise is off while it does.
TEST(Plugin, PassesDryWhileItIsDisabledAndRingsOut) {
    Host host({{"mix", 0.6f}, {"delay_left", 0.05f}, {"delay_right", 0.05f}, {"noise", 0.2f}});
    Host effect({{"mix", 0.6f}, {"delay_left", 0.05f}, {"delay_right", 0.05f}, {"noise", 0.2f}});
    double share = 1.0;
    for (const bool enabled : {true, false, false, true, true}) {
        const std::vector<float> in = noise(4410);
        host.port("enabled") = enabled ? 1.0f : 0.0f;
        effect.port("noise") = enabled ? 0.2f : 0.0f;
        std::vector<float> faded, passed;
        for (const float x : in) {
            share = std::clamp(share + (enabled ? 1 : -1) / (0.005 * rate), 0.0, 1.0);
            faded.push_back(static_cast<float>(x * share));
            passed.push_back(static_cast<float>(x * (1 - share)));
        }
        const auto out = host.run(in), wet = effect.run(faded);
        for (std::size_t i = 0; i < out.size(); ++i)
            ASSERT_NEAR(out[i], wet[i] + passed[i % in.size()], 1e-6) << i;
    }
    Host off({{"enabled", 0}, {"noise", 1}});
    const std::vector<float> in = noise(3000);
    const auto out = off.run(in);
    EXPECT_TRUE(std::equal(in.begin(), in.end(), out.begin())) << "from the first sample on";
}

TEST(Plugin, HasAWholeFirstEcho) {
    for (const float seconds : {0.003f, 0.02f})
        for (const float repitch : {0.0f, 1.0f}) {
            Host host({{"delay_left", seconds},
                       {"delay_right", seconds},
                       {"repitch", repitch},
                       {"feedback", 0}});
            const float first = peak_of(host.run(impulse(4410)));
            host.run(std::vector<float>(44100));
            EXPECT_NEAR(first, peak_of(host.run(impulse(4410))), 2e-3f) << seconds;
            EXPECT_GT(first, 0.15f);
        }
}

TEST(Plugin, ClearsAtEveryPressAlsoWhereTheHostLatchesIt) {
    const auto tail_after = [](Host& host, float clear, std::size_t frames_held) {
        host.run(noise(20000));
        host.port("clear") = clear;
        host.run(std::vector<float>(64));
        return peak_of(host.run(std::vector<float>(frames_held)));
    };
    Host host({{"clear", 1}, {"delay_left", 0.4f}, {"delay_right", 0.4f}});
    EXPECT_GT(tail_after(host, 1, 44100), 0.1f) << "saved as on: not a press";
    EXPECT_EQ(tail_after(host, 0, 20000), 0.0f) << "it was latched";
    EXPECT_EQ(tail_after(host, 1, 5000), 0.0f) << "a press";
    EXPECT_GT(tail_after(host, 0, 20000), 0.1f) << "the button springs back";
}

// The columns of the small picture in which bars begin, times a hundredth of its span.
TEST(Plugin, DrawsTheEchoesThatAreHeard) {
    Host host({{"delay_left", 0.25f}, {"delay_right", 0.4f}, {"feedback", 0.5f}});
    heap_calls = 0;
    const auto bars = [&host](bool left) {
        constexpr std::size_t width = 100;
        const std::vector<std::uint32_t> pixels = host.picture(width, 1000);
        const std::size_t rows = pixels.size() / width;
        const std::size_t row = left ? rows / 2 - 1 : rows / 2 + 1;
        std::vector<std::size_t> columns;
        for (std::size_t x = 1; x < width; ++x)
            if (pixels[row * width + x] != pixels[0] && pixels[row * width + x - 1] == pixels[0])
                columns.push_back(x);
        return columns;
    };
    host.run(noise(4410));
    EXPECT_EQ(host.pictures_asked, 1);
    using columns = std::vector<std::size_t>;
    // Of two seconds; the eighth echo is 42 dB down and the last that is seen.
    EXPECT_EQ(bars(true), (columns{12, 25, 37, 50, 62, 75, 87}));
    EXPECT_EQ(bars(false), (columns{20, 40, 60, 80}));
    host.port("channel_mode") = 1;
    for (int block = 0; block < 100; ++block) host.run(noise(64));  // 0.15 s
    EXPECT_GT(host.pictures_asked, 1);
    EXPECT_LT(host.pictures_asked, 6);
    EXPECT_EQ(bars(true), (columns{12, 45, 77}));
    EXPECT_EQ(bars(false), (columns{32, 65, 97}));
    const int asked = host.pictures_asked;
    host.port("channel_mode") = 0;
    host.port("free_wheeling") = 1;
    host.run(noise(4410));
    EXPECT_EQ(host.pictures_asked, asked);
    EXPECT_EQ(heap_calls, 0);
    EXPECT_TRUE(host.picture(0, 10).empty());
    for (const std::uint32_t size : {1u, 2u, 3u, 17u}) EXPECT_FALSE(host.picture(size, 1).empty());
    EXPECT_EQ(descriptor(0)->extension_data("urn:none"), nullptr);
}

// Hosts may leave ports unconnected, and connect them with null.
TEST(Plugin, TakesAnUnconnectedControlForItsDefaultAndSilenceForAnInput) {
    const LV2_Descriptor& calls = *descriptor(0);
    std::vector<float> defaults;
    for (const control_port& port : control_ports())
        defaults.push_back(static_cast<float>(port.standard));
    std::array<std::array<float, 64>, 2> heard{};
    for (const bool connected : {false, true}) {
        const LV2_Handle plugin = calls.instantiate(&calls, 8000.0, "", nullptr);
        calls.connect_port(plugin, audio_port_count, nullptr);
        calls.activate(plugin);
        calls.run(plugin, 64);
        if (connected)
            for (std::size_t i = 0; i < defaults.size(); ++i)
                calls.connect_port(plugin, static_cast<std::uint32_t>(first_control + i),
                                   &defaults[i]);
        std::array<float, 64> left{1.0f, -0.5f};
        calls.connect_port(plugin, in_left, left.data());
        calls.connect_port(plugin, out_left, heard[connected].data());
        for (int n = 0; n < 47; ++n) {  // the echo comes in the last block, after 3000 frames
            calls.run(plugin, 64);
            left.fill(0.0f);
        }
        calls.cleanup(plugin);
    }
    EXPECT_EQ(heard[0], heard[1]);
    EXPECT_NE(heard[0], decltype(heard)::value_type{});
}

}  // namespace
}  // namespace kv7::orv::lv2
