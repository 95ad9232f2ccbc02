#include "engine/harmonic_sum.h"

#include <array>
#include <utility>

namespace orvane::blocks::vesk {
namespace {

// One pass of the transform: splits each of the `stride` interleaved transforms of `radix` *
// `count` points into `radix` of `count` points. The output is in natural order, so there are two
// buffers and no bit reversal (Stockham).
template <std::size_t radix>
void split(std::span<const Rotor> in, std::span<Rotor> out, std::size_t stride,
           std::span<const Rotor> circle) {
    const std::size_t count = in.size() / stride / radix;
    const std::size_t turn = circle.size() / in.size();  // circle elements in 1 / in.size() turn
    std::array<Rotor, radix> roots;
    for (std::size_t r = 0; r < radix; ++r) roots[r] = circle[r * (circle.size() / radix)];

    for (std::size_t j = 0; j < count; ++j) {
        std::array<Rotor, radix> twiddles;
        for (std::size_t q = 0; q < radix; ++q) twiddles[q] = circle[j * q * stride * turn];
        for (std::size_t k = 0; k < stride; ++k) {
            // Point r and point radix - r share a cosine and differ in the sign of the sine.
            const auto point = [&](std::size_t r) { return in[k + stride * (j + count * r)]; };
            std::array<Rotor, (radix + 1) / 2> sums, differences;
            for (std::size_t r = 1; 2 * r < radix; ++r) {
                sums[r] = point(r) + point(radix - r);
                differences[r] = quarter_turn(point(r) - point(radix - r));
            }
            for (std::size_t q = 0; q < radix; ++q) {
                Rotor sum = point(0);
                for (std::size_t r = 1; 2 * r < radix; ++r) {
                    const Rotor root = roots[q * r % radix];
                    sum = sum + root.re * sums[r] + root.im * differences[r];
                }
                if constexpr (radix % 2 == 0) {
                    const Rotor middle = point(radix / 2);
                    sum = q % 2 == 0 ? sum + middle : sum - middle;
                }
                out[k + stride * (radix * j + q)] = twiddles[q] * sum;
            }
        }
    }
}

std::vector<Rotor> transform(std::vector<Rotor> points, std::span<const Rotor> circle) {
    std::vector<Rotor> spare(points.size());
    std::size_t stride = 1;
    const auto divide_out = [&]<std::size_t radix>() {
        while (points.size() / stride % radix == 0) {
            split<radix>(points, spare, stride, circle);
            std::swap(points, spare);
            stride *= radix;
        }
    };
    divide_out.operator()<7>();
    divide_out.operator()<5>();
    divide_out.operator()<3>();
    divide_out.operator()<2>();
    return points;
}

}  // namespace

std::vector<double> sum_harmonics(std::span<const Rotor> harmonics, std::span<const Rotor> circle) {
    // A real signal by a complex transform of half the length: even samples are its real part, odd
    // samples its imaginary part.
    const std::size_t half = harmonics.size();
    std::vector<Rotor> points(half);
    points[0] = {harmonics[0].re, harmonics[0].re};
    for (std::size_t k = 1; k < half; ++k) {
        const Rotor low = 0.5 * harmonics[k];
        const Rotor high = 0.5 * conjugate(harmonics[half - k]);
        points[k] = low + high + quarter_turn(circle[k] * (low - high));
    }
    points = transform(std::move(points), circle);

    std::vector<double> samples;
    samples.reserve(2 * half);
    for (const Rotor pair : points) {
        samples.push_back(pair.re);
        samples.push_back(pair.im);
    }
    return samples;
}

}  // namespace orvane::blocks::vesk
