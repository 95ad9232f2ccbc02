// Ten minutes of audio with everything moved at random: every output stays finite, and nothing on
// the way of a vector allocates or frees.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <memory>
#include <new>
#include <vector>

#include "dice.h"
#include "vesk_driver.h"

namespace {

thread_local bool counting = false;
thread_local long heap_calls = 0;

// Aligned by hand, for not every C library can; what malloc gave stands in front of what is handed
// out.
void* counted_new(std::size_t size, std::size_t alignment) {
    if (counting) ++heap_calls;
    std::size_t room = size + alignment;
    void* const whole = std::malloc(sizeof(void*) + room);
    if (whole == nullptr) throw std::bad_alloc();
    void* memory = static_cast<void**>(whole) + 1;
    std::align(alignment, size, memory, room);
    static_cast<void**>(memory)[-1] = whole;
    return memory;
}
void counted_delete(void* memory) noexcept {
    if (counting) ++heap_calls;
    if (memory != nullptr) std::free(static_cast<void**>(memory)[-1]);
}

}  // namespace

void* operator new(std::size_t size) {
    return counted_new(size, alignof(std::max_align_t));
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return counted_new(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory) noexcept {
    counted_delete(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    counted_delete(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
    counted_delete(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
    counted_delete(memory);
}

namespace kv7::orv {
namespace {

// Any attribute to a random value of its range, often to an end of it.
void set_at_random(Dice& dice, vesk_driver& driver) {
    const auto index = static_cast<std::size_t>(dice.below(static_cast<int>(attribute_count)));
    const attribute_row& row = attribute_table[index];
    const double high = row.kind == attribute_kind::toggle ? 1.0 : row.high;
    const auto value = [&] {
        const int way = dice.below(4);
        if (way == 0) return row.low;
        if (way == 1) return high;
        const double any = row.low + (high - row.low) * dice.unit();
        return row.kind == attribute_kind::continuous || row.kind == attribute_kind::list
                   ? any
                   : std::round(any);
    };
    const double values[2] = {value(), value()};
    driver.set(index, values);
}

TEST(Endurance, TenMinutesOfEverythingMovedStayFiniteAndTouchNoHeap) {
    Dice dice(11);
    constexpr double seconds_at_each_rate = 200.0;
    constexpr int frames = 256;
    std::vector<double> left(frames), right(frames);
    double* const channels[2] = {left.data(), right.data()};
    const signal_bundle bundle{channels, 2, frames};
    long vectors = 0;
    double loudest = 0.0;
    for (const double rate : {44100.0, 48000.0, 96000.0}) {
        vesk_driver driver(rate);
        driver.prepare(rate);
        for (double t = 0.0; t < seconds_at_each_rate; t += frames / rate) {
            if (dice.below(3) == 0) set_at_random(dice, driver);
            if (dice.below(5000) == 0) driver.core.request_clear();
            if (dice.below(5000) == 0) driver.core.request_reset();
            const double level = dice.below(8) == 0 ? 0.0 : dice.unit();
            for (int i = 0; i < frames; ++i) {
                left[static_cast<std::size_t>(i)] = dice.swing() * level;
                right[static_cast<std::size_t>(i)] = dice.swing() * level;
            }
            counting = true;
            driver.core.perform(bundle, bundle);
            counting = false;
            ++vectors;
            for (int c = 0; c < 2; ++c)
                for (int i = 0; i < frames; ++i) {
                    ASSERT_TRUE(std::isfinite(channels[c][i])) << "vector " << vectors;
                    loudest = std::max(loudest, std::abs(channels[c][i]));
                }
        }
    }
    EXPECT_EQ(heap_calls, 0) << "in " << vectors << " vectors";
    EXPECT_GT(loudest, 1.0) << "something was played";
}

}  // namespace
}  // namespace kv7::orv
