// Points of the unit circle that come out the same on every machine.
#pragma once

#include <cstddef>
#include <vector>

namespace orvane::blocks::vesk {

// A complex number. Its products are written out: the four roundings are always the same.
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
inline Rotor quarter_turn(Rotor a) noexcept {
    return {-a.im, a.re};
}  // times i

// Element k is k/n of a turn; n is a multiple of 8. Sums and products alone, since the last bit of
// a library's sine is the library's own.
std::vector<Rotor> unit_circle(std::size_t n);

}  // namespace orvane::blocks::vesk
