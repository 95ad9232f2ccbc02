// What ends a fuzz run beside the sanitizers: a promise that is broken, with its text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <string>

#include "host/host.h"

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
class Bytes {
public:
    Bytes(const std::uint8_t* data, std::size_t size) : data_(data), left_(size) {}
    bool empty() const { return left_ == 0; }
    template <class T>
    T take() {
        T value{};
        const std::size_t size = left_ < sizeof value ? left_ : sizeof value;
        std::memcpy(&value, data_, size);
        data_ += size;
        left_ -= size;
        return value;
    }
    int below(int n) { return take<std::uint16_t>() % n; }
    double unit() { return take<std::uint16_t>() / 65535.0; }  // 0 to 1

private:
    const std::uint8_t* data_;
    std::size_t left_;
};

// Heap and locks inside perform since the program began; see trapped.cpp.
long calls_in_perform();

// One vector in place. Requires that perform came through without heap and locks.
void run(tesk::instance& instance, double* const* channels, int frames);

// Whatever was done to the instance: known values, a reset, and an impulse that comes back once,
// where the delay says. Rate in Hz, as prepared.
void require_impulse(tesk::instance& instance, double rate);

}  // namespace fuzz
