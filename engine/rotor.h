// Points of the unit circle, with the same bits on every machine.
#pragma once

#include <cstddef>
#include <vector>

namespace orvane::blocks::vesk {

// A complex number. Its product is written out, so that it is always rounded in the same way.
struct Rotor {
    double re = 0.0;
    double im = 0.0;
};

inline Rotor operator+(Rotor a, Rotor b) noexcept {
    return {a.re + b.re, a.im + b.im};
}
inline Rotor operator-(Rotor a, Rotor b) noexcept {
    return {a.re - b.re, a.im - b.im};
}
inline Rotor operator*(double k, Rotor a) noexcept {
    return {k * a.re, k * a.im};
}
inline Rotor operator*(Rotor a, Rotor b) noexcept {
    return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}
inline Rotor conjugate(Rotor a) noexcept {
    return {a.re, -a.im};
}
inline Rotor quarter_turn(Rotor a) noexcept {  // times i
    return {-a.im, a.re};
}

// Element k is k/n of a turn; n is a multiple of 8. Computed from sums and products alone, since
// libraries differ in the last bit of a sine.
std::vector<Rotor> unit_circle(std::size_t n);

}  // namespace orvane::blocks::vesk
