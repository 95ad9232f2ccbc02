// Samples of any bit pattern in vectors of any size, between changes of every attribute, new rates,
// clear and reset. Input that is finite and not above the loudest the input gain makes of full
// scale must leave finite; after anything else a reset must make it so again.
//
// scripts/test-fuzz starts from a fixed seed: a short run plays the same inputs each time. Only a
// longer one looks further.
#include <bit>
#include <cmath>
#include <utility>

#include "dice.h"
#include "trapped.h"

namespace {

using namespace kv7::orv;

constexpr double loudest = 100.0;  // full scale through 40 dB

// True when every sample is such that the output must be finite.
bool fill(fuzz::Bytes& bytes, std::vector<double>& channel) {
    enum { any_bits, floats_of_any_bits, noise, loud_noise, silence, kinds };
    const int kind = bytes.below(kinds);
    Dice dice(bytes.take<std::uint8_t>());
    const bool draws = kind == noise || kind == loud_noise;
    double given[4] = {};  // a handful of patterns, met again and again
    for (double& x : given) {
        if (kind == any_bits) x = bytes.take<double>();
        if (kind == floats_of_any_bits) x = std::bit_cast<float>(bytes.take<std::uint32_t>());
    }
    bool tame = true;
    for (double& x : channel) {
        x = draws ? dice.swing() * (kind == noise ? 1.0 : loudest) : given[dice.below(4)];
        tame = tame && std::abs(x) <= loudest;
    }
    return tame;
}

double any_value(fuzz::Bytes& bytes, const attribute_row& row) {
    if (row.kind == attribute_kind::toggle) return bytes.below(2);
    if (row.kind == attribute_kind::choice) return bytes.below(static_cast<int>(row.high) + 1);
    const int where = bytes.below(4);
    if (where < 2) return where == 0 ? row.low : row.high;
    return row.low + (row.high - row.low) * bytes.unit();
}

class Player {
public:
    Player() : instance_(tesk::host::the().make(fuzz::object_name())) { prepare(); }

    void step(fuzz::Bytes& bytes) {
        const int what = bytes.below(16);
        if (what == 0) {
            instance_->send("clear");
        } else if (what == 1) {
            instance_->send("reset");
            reset_waits_ = true;
        } else if (what == 2) {
            const double rates[] = {8000.0, 11025.0, 22050.5, 44100.0, 96000.0};
            rate_ = rates[bytes.below(5)];
            prepare();
        } else if (what == 3) {
            for (int n = 0; n < 600; ++n)
                instance_->set("clip", n % 2);  // more than the queue holds
        } else if (what < 10) {
            const attribute_row& row = bytes.attribute();
            instance_->set(row.info.name, {any_value(bytes, row), any_value(bytes, row)});
        } else {
            const int sizes[] = {0, 1, 7, 64, 65, 512, 2048};
            vector(bytes, what == 10 ? bytes.below(2048) : sizes[bytes.below(7)]);
        }
    }

    void finish() { fuzz::require_impulse(*instance_, rate_); }

private:
    void prepare() {
        fuzz::require(instance_->prepare(rate_, 64), "the object gives a perform routine");
        tame_ = true;  // another rate is another engine
    }

    void vector(fuzz::Bytes& bytes, int frames) {
        std::vector<double> left(static_cast<std::size_t>(frames)), right(left);
        if (std::exchange(reset_waits_, false)) tame_ = true;
        tame_ = fill(bytes, left) && tame_;
        tame_ = fill(bytes, right) && tame_;
        fuzz::run(*instance_, left, right, tame_);
    }

    std::unique_ptr<tesk::instance> instance_;
    double rate_ = 8000.0;
    bool tame_ = true;
    bool reset_waits_ = false;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // One for all runs: what came before must not matter.
    static Player player;
    fuzz::Bytes bytes{data, size};
    while (bytes.left > 0) player.step(bytes);
    player.finish();
    return 0;
}
