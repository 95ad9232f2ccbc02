// What ends a fuzz run besides the sanitizers: a promise that is broken, with its text.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "host/host.h"
#include "vesk_driver.h"

namespace fuzz {

inline void require(bool kept, const std::string& promise) {
    if (kept) return;
    std::cerr << "broken: " << promise << std::endl;
    std::abort();
}

// The class under test, loaded by the first call.
inline const std::string& object_name() {
    static const std::string name = [] {
        tesk::host::the().set_defaults(8000.0, 64);  // a small engine is made fast
        return tesk::host::the().load(VESK_OBJECT_FILE);
    }();
    return name;
}

// The input of one run, taken from the front; zeros once it is used up.
struct Bytes {
    const std::uint8_t* data;
    std::size_t left;

    template <class T>
    T take() {
        T value{};
        const std::size_t size = std::min(left, sizeof value);
        std::memcpy(&value, data, size);
        data += size;
        left -= size;
        return value;
    }
    int below(int n) { return take<std::uint16_t>() % n; }
    double unit() { return take<std::uint16_t>() / 65535.0; }  // 0 to 1
    const kv7::orv::attribute_row& attribute() {
        return kv7::orv::attribute_table[take<std::uint16_t>() % kv7::orv::attribute_count];
    }
};

// One vector in place, of as many frames as the left channel has. Requires that perform came
// through without heap and locks, and the output to be finite if asked.
void run(tesk::instance& instance, std::vector<double>& left, std::vector<double>& right,
         bool finite);

// Whatever was done to the instance: known values, a reset, and an impulse that comes back once,
// where the delay says. Rate in Hz, as prepared.
void require_impulse(tesk::instance& instance, double rate);

}  // namespace fuzz
