// What is played: when events act, how long it rings, and that equal commands
// give equal bytes.
#include <cmath>

#include "sandbox.h"

using Render = sandbox;

namespace {

sound steady(std::size_t frames, float left, float right) {
    sound result;
    for (std::size_t i = 0; i < frames; ++i)
        result.samples.insert(result.samples.end(), {left, right});
    return result;
}

}  // namespace

TEST_F(Render, EventsActAtTheFirstVectorAtOrAfterTheirFrame) {
    write("in.wav", steady(1000, 0.5f, 0.5f));
    const struct {
        double frame;
        int vector;
        std::size_t acts_at;
    } rows[] = {{63, 64, 64},  {64, 64, 64},    {65, 64, 128}, {64.4, 64, 64},
                {999, 1, 999}, {64.6, 64, 128}, {500, 7, 504}, {700, 4096, 1000}};
    for (const auto& [frame, vector, acts_at] : rows) {
        SCOPED_TRACE(testing::Message() << frame << " in vectors of " << vector);
        const outcome ended =
            play("in.wav o.wav --force --tail 0 --vector " + std::to_string(vector) + " --at '" +
                 std::to_string(frame / 8000) + " gain 0.25'");
        const std::vector<float> heard = read("o.wav").samples;
        std::vector<float> wanted(2 * acts_at, 0.5f);
        wanted.resize(2000, 0.125f);
        EXPECT_EQ(heard, wanted);
        EXPECT_EQ(ended.err.find("did not act") != std::string::npos, acts_at == 1000) << ended.err;
    }
}

TEST_F(Render, EventsOfOneFrameKeepTheirOrderFileFirst) {
    write("in.wav", steady(200, 0.5f, 0.25f));
    std::string many;  // so many that a sort which doesn't keep their order shows
    for (int i = 0; i < 40; ++i) many += "0.008 gain " + std::to_string(i) + "\n";
    write_text("one.score",
               "# comment, blank lines and line ends of another system\r\n\r\n"
               "0.016 gain 3  # later, though it stands first\r\n" +
                   many +
                   "0.008 gain 2\r\n0.008 pair 0.5, 0.25\r\n0.008 shape \"Very square\"\n"
                   "0.008 shape Round\n0.008 flip on");
    const std::vector<float> heard = hear(
                                         "--score one.score --at '0.008 gain 1' --at '0 flip on' "
                                         "--at '0 flip off' --at '0.016 clear'")
                                         .samples;
    EXPECT_EQ(heard[0], 0.5f) << "off came last";
    EXPECT_EQ(heard[2 * 64], -0.25f) << "gain 1 from the command line, pair 0.5";
    EXPECT_EQ(heard[2 * 64 + 1], -0.0625f);
    EXPECT_EQ(heard[2 * 128], 0.0f) << "cleared for one vector";
    EXPECT_EQ(heard[2 * 192], -0.75f);
}

TEST_F(Render, SettingsAreInForceFromTheFirstSampleAndTheLastOneCounts) {
    write("in.wav", steady(1, 0.5f, 0.25f));
    write_text("half.txt", "# Half: half as loud\ngain 0.5\npair 1 0.5\n");
    const struct {
        const char* words;
        float left, right;
    } rows[] = {
        {"--set gain=0.5 --set gain=2", 1.0f, 0.5f},
        {"--set gain=+1e-1", 0.05f, 0.025f},
        {"--set pair=0.5,2", 0.25f, 0.5f},
        {"--set 'pair=0.5 2'", 0.25f, 0.5f},
        {"--set flip=TRUE --set shape=1", -1.0f, -1.0f},
        {"--set 'shape=very SQUARE' --set flip=No", 1.0f, 1.0f},
        {"--set gain=50% --set pair=1e2%,200%", 0.25f, 0.25f},
        {"--set 'shape=Very square'", 1.0f, 1.0f},
        {"--preset half.txt --set gain=1", 0.5f, 0.125f},
    };
    for (const auto& [words, left, right] : rows)
        EXPECT_EQ(hear(words + std::string(" --tail 0")).samples, (std::vector{left, right}))
            << words;
}

TEST_F(Render, RingsOnForTheTail) {
    write("in.wav", steady(100, 0.5f, 0.5f));
    const struct {
        const char* words;
        std::size_t frames;
    } rows[] = {
        {"--tail 0.01", 180},
        {"", 8100},                                   // a second of silence
        {"--set dice=on --seed 1", 100 + 60 * 8000},  // never silent
        {"--set dice=on --seed 1 --at '2 dice off'", 24000},
    };
    for (const auto& [words, frames] : rows)
        EXPECT_EQ(hear(words).samples.size() / 2, frames) << words;
    write("in.wav", {});
    EXPECT_EQ(hear("").samples.size() / 2, 8000) << "nothing in";
}

// Expected delays are sums done by hand: at 120 quarter notes a minute an eighth lasts 0.25 s.
TEST_F(Render, UnitsAndNoteValuesAreTimes) {
    sound click{8000, 2, {0.9f, 0.9f}};
    write("in.wav", click);
    write_text("tempo.score", "bpm 120\n0 delay 1/8 1/4\n");
    const struct {
        const char* words;
        std::size_t left, right;  // frames, of the first echo
    } rows[] = {
        {"--set delay=250ms,0.5s", 2000, 4000},
        {"--bpm 120 --set delay=1/8,1/4", 2000, 4000},
        {"--bpm 60 --set delay=1/8t,1/8.", 2667, 6000},
        {"--score tempo.score", 2000, 4000},
        {"--score tempo.score --set delay=1/4,1/8", 2000, 4000},
        {"--bpm 120 --at '0 delay 1/8 1/4' --set delay=1/16", 2000, 4000},
    };
    for (const auto& [words, left, right] : rows) {
        SCOPED_TRACE(words);
        const outcome ended =
            vesk("render in.wav o.wav --force --tail 1 --vector 1 --set feedback=0 " +
                 std::string(words));
        ASSERT_EQ(ended.exit, 0) << ended.err;
        const std::vector<float> heard = read("o.wav").samples;
        const auto loudest = [&](std::size_t lane) {
            std::size_t at = lane;
            for (std::size_t i = lane; i < heard.size(); i += 2)
                if (std::fabs(heard[i]) > std::fabs(heard[at])) at = i;
            return static_cast<double>(at / 2);
        };
        EXPECT_NEAR(loudest(0), static_cast<double>(left), 2);
        EXPECT_NEAR(loudest(1), static_cast<double>(right), 2);
    }
}

TEST_F(Render, AutomaticTailWaitsForTheLongestDelayAndNotForNoise) {
    write("in.wav", {8000, 2, {0.9f, 0.9f}});
    const auto length = [this](const std::string& words) {
        const outcome ended = vesk("render in.wav o.wav --force " + words);
        EXPECT_EQ(ended.exit, 0) << ended.err;
        EXPECT_EQ(ended.err.find("still sounding") != std::string::npos,
                  words.find("feedback=1.2") != std::string::npos)
            << words << ended.err;
        return static_cast<double>(read("o.wav").samples.size()) / 2 / 8000;
    };
    EXPECT_NEAR(length("--set delay=2 --set feedback=0"), 4, 0.01);
    EXPECT_NEAR(length("--at '0 delay 3' --set feedback=0"), 6, 0.05);
    EXPECT_NEAR(length("--set feedback=1.2"), 60, 0.01);
    const double without_noise = length("--set feedback=0.5 --set delay=0.1");
    EXPECT_LT(without_noise, 5);
    EXPECT_EQ(length("--set feedback=0.5 --set delay=0.1 --set noise=0.5"), without_noise);
    EXPECT_EQ(length("--set feedback=0.5 --set delay=0.1 --at '0 noise 0.5'"), without_noise);
}

TEST_F(Render, SummarySaysThatNearlyAllIsSilentAndWhy) {
    write("in.wav", steady(800, 0.5f, 0.5f));
    const auto summary = [this](const std::string& words) {
        return vesk("render in.wav o.wav --force " + words).out;
    };
    EXPECT_EQ(summary("--set mix=0").find("silent"), std::string::npos);
    EXPECT_NE(summary("--set gate=on")
                  .find("100.0 % silent: gate is on, and only what is above "
                        "gate_threshold, 0 dB, enters the delay"),
              std::string::npos);
    write("in.wav", steady(800, 0, 0));
    EXPECT_NE(summary("").find("100.0 % silent: so is the input"), std::string::npos);
}

TEST_F(Render, ReplacesAFileThroughItsLinkAndKeepsItsMode) {
    write("in.wav", steady(8, 0.5f, 0.5f));
    write_text("real.wav", "old");
    std::filesystem::permissions(folder / "real.wav", std::filesystem::perms{0640});
    std::filesystem::create_symlink("real.wav", folder / "link.wav");
    EXPECT_EQ(play("in.wav link.wav --force --tail 0").exit, 0);
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link.wav"));
    EXPECT_EQ(read("real.wav").samples.size(), 16u);
    EXPECT_EQ(std::filesystem::status(folder / "real.wav").permissions(),
              std::filesystem::perms{0640});
}

TEST_F(Render, EveryScoreCounts) {
    write("in.wav", steady(1, 0.5f, 0.25f));
    write_text("one.score", "0 gain 0.5\n");
    write_text("two.score",
               "\xEF\xBB\xBF"
               "0 pair 1 2\n");
    EXPECT_EQ(hear("--tail 0 --score one.score --score two.score").samples,
              (std::vector{0.25f, 0.25f}));
}

TEST_F(Render, EqualCommandsGiveEqualBytes) {
    sound noise{8000, 1, {}};
    for (int i = 0; i < 900000; ++i)
        noise.samples.push_back(static_cast<float>(i * 7919LL % 1999) / 1000 - 1);
    write("in.wav", noise);
    for (const std::string names : {"o.wav --picture o.svg", "o.w64 --picture o.png", "o.flac"}) {
        SCOPED_TRACE(names);
        const std::string name = names.substr(0, names.find(' '));
        const std::string picture = names.substr(names.rfind(' ') + 1);
        play("in.wav --force --tail 1 " + names);
        const std::string first = bytes(name), drawn = bytes(picture);
        play("in.wav --force --tail 1 " + names, "sleep 1.1;");
        EXPECT_TRUE(bytes(name) == first) << "no date in it";
        EXPECT_GT(first.size(), 900000u);
        if (picture == name) continue;
        EXPECT_TRUE(bytes(picture) == drawn);
        EXPECT_GT(drawn.size(), 5000u);
        EXPECT_LT(drawn.size(), 500000u);
    }
}

TEST_F(Render, ASeedDecidesWhatTheObjectDraws) {
    write("in.wav", steady(1, 0, 0));
    const auto drawn = [this](const std::string& words) {
        return hear("--tail 0 --set dice=1 " + words).samples[0];
    };
    const float of_one = drawn("--seed 1");
    EXPECT_EQ(drawn("--seed 1"), of_one);
    EXPECT_NE(drawn("--seed 2"), of_one);
    EXPECT_NE(drawn(""), drawn("")) << "unseeded draws differ";
    EXPECT_EQ(vesk("render --object objects/alone~.tkx64 in.wav a.wav --seed 1").err,
              "render: --seed 1: plain~ draws no random word from the program, so the "
              "seed changes "
              "nothing\n");
}
