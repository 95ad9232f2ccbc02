// The picture of a rendering: read back from its pixels.
#include <cairo.h>

#include <cstdint>
#include <cstdlib>

#include "sandbox.h"

using Picture = sandbox;

TEST_F(Picture, ShowsInputOutputAndEventsWhereTheyAre) {
    sound square;  // full scale for half of the second, then silence
    for (int i = 0; i < 16000; ++i)
        square.samples.push_back(i >= 8000 ? 0.0f : (i / 2 % 2 == 0 ? 1.0f : -1.0f));
    write("in.wav", square);
    hear("--tail 0 --set gain=0 --at '0.75 gain 0' --picture o.png");
    cairo_surface_t* const surface =
        cairo_image_surface_create_from_png((folder / "o.png").c_str());
    const unsigned char* const data = cairo_image_surface_get_data(surface);
    // Pixels near a colour, in a stretch of columns. The lanes lie from 20 to
    // 1180.
    const auto pixels = [&](int from, int to, std::uint32_t colour) {
        int found = 0;
        for (int y = 0; y < cairo_image_surface_get_height(surface); ++y)
            for (int x = from; x < to; ++x) {
                const auto* const p = data + y * cairo_image_surface_get_stride(surface) + 4 * x;
                const auto off = [&](int c) { return std::abs(p[c] - int(colour >> 8 * c & 255)); };
                found += off(0) < 40 && off(1) < 40 && off(2) < 40;
            }
        return found;
    };
    constexpr std::uint32_t grey = 0xB8B8B8,
                            red = 0xE0857D;  // red of the mark, on white
    EXPECT_GT(pixels(30, 590, grey), 560 * 300);
    EXPECT_LT(pixels(610, 1170, grey), 560 * 10);
    EXPECT_GT(pixels(888, 892, red), 300);
    EXPECT_EQ(pixels(30, 880, red), 0);
    cairo_surface_destroy(surface);
}
