// What is played: when events act, how long it rings, and that equal commands give equal bytes.
#include <cmath>
#include <cstddef>
#include <string>

#include "sandbox.h"

using Render = sandbox;

namespace {

constexpr int rate = 8000;

sound steady(std::size_t frames, float left, float right) {
    sound result{rate, 2, {}};
    for (std::size_t i = 0; i < frames; ++i) {
        result.samples.push_back(left);
        result.samples.push_back(right);
    }
    return result;
}

// The left sample at which the sound first differs from its start.
std::size_t first_change(const sound& heard) {
    for (std::size_t i = 0; i < heard.samples.size(); i += 2)
        if (heard.samples[i] != heard.samples[0]) return i / 2;
    return heard.samples.size() / 2;
}

std::string seconds(double frames) {
    return std::to_string(frames / rate);
}

}  // namespace

TEST_F(Render, EventsActAtTheFirstVectorAtOrAfterTheirFrame) {
    write("in.wav", steady(1000, 0.5f, 0.5f));
    const struct {
        double frame;
        int vector;
        std::size_t acts_at;
    } rows[] = {
        {1, 64, 64},    {63, 64, 64},    {64, 64, 64},  {65, 64, 128}, {63.6, 64, 64},
        {64.4, 64, 64}, {64.6, 64, 128}, {999, 1, 999}, {500, 7, 504}, {700, 4096, 1000},
    };
    for (const auto& [frame, vector, acts_at] : rows) {
        SCOPED_TRACE(testing::Message() << frame << " in vectors of " << vector);
        const outcome told =
            play("in.wav o.wav --force --tail 0 --vector " + std::to_string(vector) + " --at '" +
                 seconds(frame) + " gain 0.25'");
        ASSERT_EQ(told.exit, 0) << told.err;
        const sound heard = read("o.wav");
        ASSERT_EQ(heard.samples.size(), 2000u);
        EXPECT_EQ(heard.samples[0], 0.5f);
        EXPECT_EQ(first_change(heard), acts_at);
        EXPECT_EQ(heard.samples.back(), acts_at < 1000 ? 0.125f : 0.5f);
        EXPECT_EQ(told.err.find("did not act") != std::string::npos, acts_at == 1000) << told.err;
    }
}

TEST_F(Render, EventsOfOneFrameKeepTheirOrderFileFirst) {
    write("in.wav", steady(200, 0.5f, 0.25f));
    write_text("one.score",
               "# comment, blank lines and line ends of another system\r\n\r\n"
               "0.016 gain 3  # later, though it stands first\r\n"
               "0.008 gain 2\r\n0.008 pair 0.5, 0.25\r\n0.008 shape \"Very square\"\n"
               "0.008 shape Round\n0.008 flip on");
    ASSERT_EQ(play("in.wav o.wav --tail 0 --score one.score --at '0.008 gain 1' --at '0 flip on' "
                   "--at '0 flip off' --at '0.016 clear'")
                  .exit,
              0);
    const sound heard = read("o.wav");
    EXPECT_EQ(heard.samples[0], 0.5f) << "off came last";
    EXPECT_EQ(heard.samples[2 * 64], -0.25f) << "gain 1 from the command line, pair 0.5";
    EXPECT_EQ(heard.samples[2 * 64 + 1], -0.0625f);
    EXPECT_EQ(heard.samples[2 * 128], 0.0f) << "cleared for one vector";
    EXPECT_EQ(heard.samples[2 * 192], -0.75f);
}

TEST_F(Render, SettingsAreInForceFromTheFirstSampleAndTheLastOneCounts) {
    write("in.wav", steady(10, 0.5f, 0.25f));
    write_text("half.txt", "# Half: half as loud\ngain 0.5\npair 1 0.5\n");
    const struct {
        const char* words;
        float left, right;
    } rows[] = {
        {"--set gain=0.5", 0.25f, 0.125f},
        {"--set gain=0.5 --set gain=2", 1.0f, 0.5f},
        {"--set gain=+1e-1", 0.05f, 0.025f},
        {"--set pair=0.5,2", 0.25f, 0.5f},
        {"--set 'pair=0.5 2'", 0.25f, 0.5f},
        {"--set flip=on --set shape=1", -1.0f, -1.0f},
        {"--set 'shape=Very square'", 1.0f, 1.0f},
        {"--preset half.txt", 0.25f, 0.0625f},
        {"--preset half.txt --set gain=1", 0.5f, 0.125f},
    };
    for (const auto& [words, left, right] : rows) {
        SCOPED_TRACE(words);
        ASSERT_EQ(play(std::string("in.wav o.wav --force --tail 0 ") + words).exit, 0);
        const sound heard = read("o.wav");
        EXPECT_FLOAT_EQ(heard.samples[0], left);
        EXPECT_FLOAT_EQ(heard.samples[1], right);
    }
}

TEST_F(Render, OneChannelFeedsBothAndTheRateIsKept) {
    for (const int of : {8000, 44100, 384000}) {
        write("mono.wav", {of, 1, {0.5f, -0.25f, 0.125f}});
        const outcome told = play("mono.wav o.wav --force --tail 0 --vector 2");
        ASSERT_EQ(told.exit, 0) << told.err;
        const sound heard = read("o.wav");
        EXPECT_EQ(heard.rate, of);
        EXPECT_EQ(heard.samples, (std::vector<float>{0.5f, 0.5f, -0.25f, -0.25f, 0.125f, 0.125f}));
        EXPECT_NE(told.out.find(std::to_string(of) + " Hz, peak -6.0 dBFS, "), std::string::npos)
            << told.out;
    }
}

TEST_F(Render, RingsOnForTheTail) {
    write("in.wav", steady(100, 0.5f, 0.5f));
    write("none.wav", {rate, 2, {}});
    const struct {
        const char* words;
        std::size_t frames;
    } rows[] = {
        {"in.wav --tail 0", 100},
        {"in.wav --tail 0.01", 180},
        {"in.wav", 8100},                                    // a second of silence
        {"in.wav --set dice=on --seed 1", 100 + 60 * rate},  // never silent
        {"in.wav --set dice=on --seed 1 --at '2 dice off'", 24000},
        {"none.wav --tail 0", 0},
        {"none.wav", 8000},
    };
    for (const auto& [words, frames] : rows) {
        SCOPED_TRACE(words);
        ASSERT_EQ(play(std::string(words) + " o.wav --force").exit, 0);
        EXPECT_EQ(read("o.wav").samples.size() / 2, frames);
    }
}

TEST_F(Render, EqualCommandsGiveEqualBytes) {
    sound noise{rate, 2, {}};
    for (int i = 0; i < 20000; ++i)
        noise.samples.push_back(static_cast<float>(i * 7919 % 997) / 997);
    write("in.wav", noise);
    for (const char* suffix : {"wav", "w64", "flac"}) {
        SCOPED_TRACE(suffix);
        const std::string name = std::string("o.") + suffix;
        ASSERT_EQ(play("in.wav " + name).exit, 0);
        const std::string first = bytes(name);
        ASSERT_EQ(play("in.wav " + name + " --force", "sleep 1.1;").exit, 0);
        EXPECT_EQ(bytes(name), first) << "no date in it";
    }
}

TEST_F(Render, ASeedDecidesWhatTheObjectDraws) {
    write("in.wav", steady(4, 0, 0));
    const auto drawn = [this](const std::string& words) {
        EXPECT_EQ(play("in.wav o.wav --force --tail 0 --set dice=1 " + words).exit, 0);
        return read("o.wav").samples[0];
    };
    const float of_one = drawn("--seed 1");
    EXPECT_EQ(drawn("--seed 1"), of_one);
    EXPECT_NE(drawn("--seed 2"), of_one);
    EXPECT_NE(drawn(""), drawn("")) << "unseeded draws differ";
    const outcome told = vesk("render --object OBJECTS/alone~.tkx64 in.wav o.wav --force --seed 1");
    EXPECT_EQ(told.exit, 0);
    EXPECT_EQ(told.err,
              "render: --seed 1: plain~ draws no random word from the program, so the seed changes "
              "nothing\n");
}
