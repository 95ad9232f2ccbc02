// The picture of a rendering: read back from its pixels.
#include <cairo.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <utility>

#include "sandbox.h"

using Picture = sandbox;

namespace {

struct box {
    int left, top, right, bottom;  // pixels
};

class pixels {
public:
    explicit pixels(const std::filesystem::path& file)
        : surface_(cairo_image_surface_create_from_png(file.c_str()), cairo_surface_destroy) {}

    // How many of a place are near a colour.
    int near_colour(std::uint32_t colour, const box& in) const {
        const unsigned char* const data = cairo_image_surface_get_data(surface_.get());
        int found = 0;
        for (int y = in.top; y < in.bottom; ++y)
            for (int x = in.left; x < in.right; ++x) {
                const auto* const p =
                    data + y * cairo_image_surface_get_stride(surface_.get()) + 4 * x;
                const auto off = [&](int c) {
                    return std::abs(p[c] - static_cast<int>(colour >> 8 * c & 255));
                };
                found += off(0) < 40 && off(1) < 40 && off(2) < 40;
            }
        return found;
    }

private:
    std::unique_ptr<cairo_surface_t, void (*)(cairo_surface_t*)> surface_;
};

constexpr std::uint32_t left_colour = 0x4DC7EB, right_colour = 0xFF9E4D;
constexpr std::uint32_t mark = 0x655B36;  // of an event, over a lane

// A second of which the first half sounds, at full scale.
sound square() {
    sound made;
    for (int i = 0; i < 16000; ++i)
        made.samples.push_back(i >= 8000 ? 0.0f : (i / 2 % 2 == 0 ? 1.0f : -1.0f));
    return made;
}

}  // namespace

// The time axis runs from 84 to 1510, left is above and right below the middle of 194 to 430.
TEST_F(Picture, ShowsLevelsAndEventsWhereTheyAre) {
    write("in.wav", square());
    hear("--tail 0 --set gain=1 --at '0.75 gain 1' --picture o.png");
    const pixels drawn(folder / "o.png");
    for (const auto& [colour, top] : {std::pair(left_colour, 196), std::pair(right_colour, 314)}) {
        EXPECT_GT(drawn.near_colour(colour, {90, top, 790, top + 114}), 700 * 100);
        EXPECT_EQ(drawn.near_colour(colour, {810, top, 1500, top + 114}), 0);
    }
    EXPECT_GT(drawn.near_colour(mark, {1151, 440, 1156, 640}), 100);
    EXPECT_EQ(drawn.near_colour(mark, {810, 440, 1140, 640}), 0);
}

// In the lane from 676 to 846 the short delay is below, the long one above.
TEST_F(Picture, ShowsTheDelayThatIsReadWithoutWritingTheSound) {
    write("in.wav", square());
    const outcome ended =
        vesk("picture in.wav o.png --tail 0 --quiet --set delay=0.1 --at '0.5 delay 0.3'");
    ASSERT_EQ(ended.exit, 0) << ended.err;
    const pixels drawn(folder / "o.png");
    const box early_top{90, 680, 780, 760}, early_bottom{90, 762, 780, 844};
    const box late_top{860, 680, 1500, 760}, late_bottom{860, 762, 1500, 844};
    EXPECT_EQ(drawn.near_colour(right_colour, early_top), 0);
    EXPECT_GT(drawn.near_colour(right_colour, early_bottom), 600);
    EXPECT_GT(drawn.near_colour(right_colour, late_top), 600);
    EXPECT_EQ(drawn.near_colour(right_colour, late_bottom), 0);
    EXPECT_FALSE(std::filesystem::exists(folder / "o.wav"));
}
