// The picture of a rendering: read back from its outline and its pixels.
#include <cairo.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#include "sandbox.h"

class Picture : public sandbox {
protected:
    // Counts pixels that are nearest to a colour, in a stretch of columns; all must be in the file.
    int pixels(const std::string& name, int from, int to, std::uint32_t colour) const {
        cairo_surface_t* const surface =
            cairo_image_surface_create_from_png((folder / "in" / name).c_str());
        const unsigned char* const bytes = cairo_image_surface_get_data(surface);
        const int stride = cairo_image_surface_get_stride(surface);
        int found = 0;
        for (int y = 0; y < cairo_image_surface_get_height(surface); ++y)
            for (int x = from; x < to; ++x) {
                bool near = true;
                for (int c = 0; c < 3; ++c)
                    near = near && std::abs(bytes[y * stride + 4 * x + c] -
                                            static_cast<int>(colour >> (8 * c) & 0xFF)) < 40;
                found += near ? 1 : 0;
            }
        cairo_surface_destroy(surface);
        return found;
    }
};

TEST_F(Picture, ShowsInputOutputAndEventsWhereTheyAre) {
    constexpr std::uint32_t grey = 0xB8B8B8;
    constexpr std::uint32_t red = 0xE0857D;  // of the mark, on white
    sound square{8000, 2, {}};               // full scale for half of the second, then silence
    for (int i = 0; i < 16000; ++i)
        square.samples.push_back(i >= 8000 ? 0.0f : (i / 2 % 2 == 0 ? 1.0f : -1.0f));
    write("in.wav", square);
    ASSERT_EQ(play("in.wav o.wav --tail 0 --set gain=0 --at '0.75 gain 0' --picture o.png").exit,
              0);
    // The lanes lie from 20 to 1180.
    EXPECT_GT(pixels("o.png", 30, 590, grey), 560 * 300);
    EXPECT_LT(pixels("o.png", 610, 1170, grey), 560 * 10);
    EXPECT_GT(pixels("o.png", 888, 892, red), 300);
    EXPECT_EQ(pixels("o.png", 30, 880, red), 0);
}

TEST_F(Picture, IsTheSameOnEveryRunAndSmallForLongFiles) {
    sound noise{8000, 1, {}};
    for (int i = 0; i < 900000; ++i)
        noise.samples.push_back(static_cast<float>(i * 7919LL % 1999) / 1000 - 1);
    write("in.wav", noise);
    for (const char* name : {"o.svg", "o.png"}) {
        const std::string words = std::string("in.wav o.wav --force --tail 1 --picture ") + name;
        ASSERT_EQ(play(words).exit, 0);
        const std::string first = bytes(name);
        ASSERT_EQ(play(words).exit, 0);
        EXPECT_EQ(bytes(name), first);
        EXPECT_GT(first.size(), 5000u);
        EXPECT_LT(first.size(), 500000u);
    }
    EXPECT_EQ(files(), (std::vector<std::string>{"in.wav", "o.png", "o.svg", "o.wav"}));
}
