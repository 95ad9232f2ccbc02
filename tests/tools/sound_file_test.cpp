// Sound files as they come and as they leave: formats, levels, and files that are not whole.
#include <cmath>
#include <cstddef>
#include <limits>
#include <string>

#include "sandbox.h"

using SoundFile = sandbox;

namespace {

sound loud() {
    return {8000, 2, {0.5f, -2.0f, 1.0f, -1.0f, 1.5f, 0.25f}};
}

}  // namespace

TEST_F(SoundFile, IsWrittenInTheFormatOfItsSuffix) {
    write("in.wav", loud());
    const struct {
        const char* words;
        int format;
        float second;  // -2 in the input
        const char* peak;
    } rows[] = {
        {"o.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, -2.0f, "peak 6.0 dBFS"},
        {"o.W64", SF_FORMAT_W64 | SF_FORMAT_FLOAT, -2.0f, "peak 6.0 dBFS"},
        {"o.wav --subtype 24", SF_FORMAT_WAV | SF_FORMAT_PCM_24, -1.0f, "peak 0.0 dBFS"},
        {"o.wav --subtype 16", SF_FORMAT_WAV | SF_FORMAT_PCM_16, -1.0f, "peak 0.0 dBFS"},
        {"o.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_24, -1.0f, "peak 0.0 dBFS"},
        {"o.flac --subtype 16", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, -1.0f, "peak 0.0 dBFS"},
    };
    for (const auto& [words, format, second, peak] : rows) {
        SCOPED_TRACE(words);
        const std::string name = std::string(words).substr(0, std::string(words).find(' '));
        const outcome told = play(std::string("in.wav --force --tail 0 ") + words);
        ASSERT_EQ(told.exit, 0) << told.err;
        const sound heard = read(name);
        EXPECT_EQ(heard.format & (SF_FORMAT_TYPEMASK | SF_FORMAT_SUBMASK), format);
        ASSERT_EQ(heard.samples.size(), 6u);
        EXPECT_NEAR(heard.samples[0], 0.5f, 1e-4);
        EXPECT_NEAR(heard.samples[1], second, 1e-4);
        EXPECT_EQ(told.out.rfind(name + ": 0.000 s, 8000 Hz, " + peak, 0), 0u) << told.out;
        const bool cut = second == -1.0f;
        EXPECT_EQ(told.err, cut ? "render: 2 samples beyond full scale cut to it; --subtype float "
                                  "keeps them\n"
                                : "");
    }
    EXPECT_EQ(play("in.wav o.wav --force --quiet").out, "");
}

TEST_F(SoundFile, SamplesThatAreNotFiniteAreSilentAndCounted) {
    constexpr float infinity = std::numeric_limits<float>::infinity();
    write("in.wav", {8000, 2, {0.5f, infinity, NAN, 0.25f, -infinity, 0.125f}});
    const outcome told = play("in.wav o.wav --tail 0");
    EXPECT_EQ(told.err, "render: in.wav: 3 samples are not finite, taken as 0\n");
    EXPECT_EQ(read("o.wav").samples, (std::vector<float>{0.5f, 0, 0, 0.25f, 0, 0.125f}));
}

TEST_F(SoundFile, CutShortIsPlayedAsFarAsItGoes) {
    sound ramp{8000, 2, {}};
    for (int i = 0; i < 40000; ++i) ramp.samples.push_back(static_cast<float>(i) / 40000);
    write("whole.wav", ramp);
    ramp.format = SF_FORMAT_FLAC | SF_FORMAT_PCM_16;
    write("whole.flac", ramp);
    const std::string wav = bytes("whole.wav");
    const std::string flac = bytes("whole.flac");
    write_text("cut.wav", wav.substr(0, 80011));  // in the middle of a frame
    write_text("cut.flac", flac.substr(0, flac.size() / 2));
    for (const char* words : {"cut.wav o.wav", "cut.flac o.wav", "- o.wav <cut.wav"}) {
        SCOPED_TRACE(words);
        const outcome told = play("--force --tail 0 " + std::string(words));
        EXPECT_EQ(told.exit, 0);
        EXPECT_NE(told.err.find("its header promises more; played what is there\n"),
                  std::string::npos)
            << told.err;
        const sound heard = read("o.wav");
        EXPECT_GT(heard.samples.size(), 8000u);
        EXPECT_LT(heard.samples.size(), 32000u);
        for (std::size_t i = 0; i < heard.samples.size(); ++i)
            ASSERT_NEAR(heard.samples[i], ramp.samples[i], 1e-4) << i;
    }
}

TEST_F(SoundFile, ComesThroughAPipeWhereTheFormatAllowsIt) {
    sound flac{8000, 2, {0.5f, -0.25f, 0.75f, 0.125f}};
    write("in.wav", flac);
    flac.format = SF_FORMAT_FLAC | SF_FORMAT_PCM_16;
    write("in.flac", flac);
    ASSERT_EQ(play("in.wav file.wav").exit, 0);
    ASSERT_EQ(play("- pipe.wav", "cat in.wav |").exit, 0);
    EXPECT_EQ(bytes("pipe.wav"), bytes("file.wav"));
    EXPECT_EQ(play("- redirected.wav <in.flac").exit, 0) << "a file can be read in any order";
    const outcome told = play("- o.wav", "cat in.flac |");
    EXPECT_EQ(told.exit, 1);
    EXPECT_EQ(
        told.err.rfind("render: standard input: can't be read as a stream of sound, which WAV "
                       "and AU allow and FLAC does not: ",
                       0),
        0u)
        << told.err;
}

TEST_F(SoundFile, OfAStreamWithoutALengthIsWhole) {
    // As a writer of streams leaves it: the length of what follows is not known yet.
    write("in.wav", loud());
    std::string stream = bytes("in.wav");
    const std::size_t data = stream.find("data");
    stream.replace(data + 4, 4, "\xff\xff\xff\xff");
    stream.replace(4, 4, "\xff\xff\xff\xff");
    write_text("stream.wav", stream);
    const outcome told = play("- o.wav --tail 0", "cat stream.wav |");
    EXPECT_EQ(told.exit, 0);
    EXPECT_EQ(told.err, "");
    EXPECT_EQ(read("o.wav").samples, loud().samples);
}
