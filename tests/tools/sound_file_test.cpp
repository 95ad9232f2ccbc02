// Sound files as they come and as they leave: formats, levels, and files that
// are not whole.
#include <cmath>

#include "sandbox.h"

using SoundFile = sandbox;

TEST_F(SoundFile, IsWrittenInTheFormatOfItsSuffix) {
    write("in.wav", {8000, 2, {0.5f, -2.0f, 1.0f, -1.0f, 1.5f, 0.25f}});
    const struct {
        std::string name;
        const char* words;
        int format;
    } rows[] = {
        {"o.wav", "", SF_FORMAT_WAV | SF_FORMAT_FLOAT},
        {"o.W64", "", SF_FORMAT_W64 | SF_FORMAT_FLOAT},
        {"o.wav", " --subtype 24", SF_FORMAT_WAV | SF_FORMAT_PCM_24},
        {"o.aif", " --subtype 16 --no-dither", SF_FORMAT_AIFF | SF_FORMAT_PCM_16},
        {"o.caf", "", SF_FORMAT_CAF | SF_FORMAT_FLOAT},
        {"o.flac", "", SF_FORMAT_FLAC | SF_FORMAT_PCM_24},
        {"o.flac", " --subtype 16", SF_FORMAT_FLAC | SF_FORMAT_PCM_16},
    };
    for (const auto& [name, words, format] : rows) {
        SCOPED_TRACE(name + words);
        const bool cut = (format & SF_FORMAT_SUBMASK) != SF_FORMAT_FLOAT;
        const outcome ended = play("in.wav --force --tail 0 " + name + words);
        const sound heard = read(name);
        EXPECT_EQ(heard.format & (SF_FORMAT_TYPEMASK | SF_FORMAT_SUBMASK), format);
        ASSERT_EQ(heard.samples.size(), 6u);
        EXPECT_NEAR(heard.samples[0], 0.5f, 1e-4);
        EXPECT_NEAR(heard.samples[1], cut ? -1.0f : -2.0f, 1e-4);
        const std::string line = ": 0.000 s, 8000 Hz, peak " + std::string(cut ? "0.0" : "6.0");
        EXPECT_TRUE(ended.out.starts_with(name + line + " dBFS")) << ended.out;
        const std::string hint = name == "o.flac"
                                     ? "a lower --set output keeps them, or a .wav file"
                                     : "--subtype float keeps them";
        EXPECT_EQ(ended.err,
                  cut ? "render: 2 samples beyond full scale cut to it; " + hint + "\n" : "");
    }
    EXPECT_EQ(play("in.wav q.wav --quiet").out, "");
}

TEST_F(SoundFile, CanBeCompressedAndKeepsItsTags) {
    sound tone{48000, 2, {}};
    for (int i = 0; i < 48000; ++i)
        tone.samples.push_back(0.5f * std::sin(static_cast<float>(i / 2) * 0.05f));
    {
        SndfileHandle file(folder / "in.flac", SFM_WRITE, SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 2,
                           48000);
        file.setString(SF_STR_TITLE, "Kick");
        file.setString(SF_STR_ARTIST, "Somebody");
        file.write(tone.samples.data(), 48000);
    }
    for (const std::string name : {"o.ogg", "o.opus", "o.mp3", "o.wav", "o.aiff"}) {
        SCOPED_TRACE(name);
        const outcome ended = play("in.flac --tail 0 " + name);
        ASSERT_EQ(ended.exit, 0) << ended.err;
        SndfileHandle file(folder / name);
        ASSERT_NE(file.getString(SF_STR_TITLE), nullptr);
        EXPECT_STREQ(file.getString(SF_STR_TITLE), "Kick");
        const std::vector<float> heard = read(name).samples;
        EXPECT_NEAR(*std::max_element(heard.begin(), heard.end()), 0.5f, 0.05f);
    }
}

// The mean of many roundings of a level between two steps is that level only with dither.
TEST_F(SoundFile, OfSixteenBitsIsDithered) {
    constexpr double level = 0.3;  // steps
    sound quiet{8000, 2, std::vector<float>(80000, static_cast<float>(level / 32768))};
    write("in.wav", quiet);
    const auto mean_of = [this](const std::string& words) {
        play("in.wav o.wav --force --tail 0 --subtype 16 " + words);
        double sum = 0;
        for (const float x : read("o.wav").samples) sum += double{x} * 32768;
        return sum / 80000;
    };
    EXPECT_NEAR(mean_of(""), level, 0.02);
    EXPECT_EQ(mean_of("--no-dither"), 0);
}

TEST_F(SoundFile, OfManyChannelsIsPickedFrom) {
    write("in.wav", {8000, 3, {0.1f, 0.2f, 0.3f, 0.4f, 0.5f, 0.6f}});
    EXPECT_EQ(hear("--tail 0 --channels 3,1").samples, (std::vector{0.3f, 0.1f, 0.6f, 0.4f}));
    EXPECT_EQ(hear("--tail 0 --channels 2").samples, (std::vector{0.2f, 0.2f, 0.5f, 0.5f}));
}

TEST_F(SoundFile, OfOneChannelFeedsBothAtItsRateAndIsSilentWhereItIsNotFinite) {
    for (const int rate : {8000, 384000}) {
        write("in.wav", {rate, 1, {0.5f, -INFINITY, NAN, 0.25f, INFINITY}});
        const outcome ended = play("in.wav o.wav --force --tail 0 --vector 2");
        EXPECT_EQ(ended.err, "render: in.wav: 3 samples are not finite, taken as 0\n");
        const sound heard = read("o.wav");
        EXPECT_EQ(heard.rate, rate);
        EXPECT_EQ(heard.samples, (std::vector<float>{0.5f, 0.5f, 0, 0, 0, 0, 0.25f, 0.25f, 0, 0}));
    }
}

TEST_F(SoundFile, DamagedIsRefusedOrKeptInPartUnderItsOwnName) {
    sound ramp;
    for (int i = 0; i < 40000; ++i) ramp.samples.push_back(static_cast<float>(i) / 40000);
    write("whole.wav", ramp);
    ramp.format = SF_FORMAT_FLAC | SF_FORMAT_PCM_16;
    write("whole.flac", ramp);
    write_text("cut.wav", bytes("whole.wav").substr(0, 80011));  // in the middle of a frame
    std::string flac = bytes("whole.flac");
    write_text("cut.flac", flac.substr(0, flac.size() / 2));
    flac.replace(flac.size() / 2, 400, std::string(400, '\x55'));
    write_text("holed.flac", flac);
    for (const char* words :
         {"cut.wav o.wav", "cut.flac o.wav", "holed.flac o.wav", "- o.wav <cut.wav"}) {
        SCOPED_TRACE(words);
        const outcome refused = play("--force --tail 0 " + std::string(words));
        EXPECT_EQ(refused.exit, 1);
        EXPECT_TRUE(refused.err.ends_with("--partial keeps what can be read\n")) << refused.err;
        EXPECT_FALSE(std::filesystem::exists(folder / "o.wav"));
        const outcome ended = play("--force --partial --tail 0 " + std::string(words));
        EXPECT_EQ(ended.exit, 0);
        EXPECT_TRUE(ended.err.ends_with("; played what can be read, into o.partial.wav\n"))
            << ended.err;
        EXPECT_FALSE(std::filesystem::exists(folder / "o.wav"));
        const sound heard = read("o.partial.wav");
        EXPECT_GT(heard.samples.size(), 8000u);
        for (std::size_t i = 0; i < std::min<std::size_t>(heard.samples.size(), 16000); ++i)
            ASSERT_NEAR(heard.samples[i], ramp.samples[i], 1e-4) << i;
    }
}

TEST_F(SoundFile, OfMp3WithoutALengthTagIsWhole) {
    sound tone{44100, 2, {}, SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III};
    for (int i = 0; i < 88200; ++i) tone.samples.push_back(i / 200 % 2 == 0 ? 0.25f : -0.25f);
    write("tagged.mp3", tone);
    std::string file = bytes("tagged.mp3");
    const std::size_t tag = std::min(file.find("Xing"), file.find("Info"));
    ASSERT_NE(tag, std::string::npos) << "the library wrote a tag";
    file.replace(tag, 4, 4, '\0');
    write_text("in.mp3", file);
    const outcome ended = play("in.mp3 o.wav --tail 0");
    EXPECT_EQ(ended.exit, 0);
    EXPECT_EQ(ended.err, "");
    EXPECT_NEAR(static_cast<double>(read("o.wav").samples.size()), 88200, 8000);
}

TEST_F(SoundFile, ComesThroughAPipeWhereTheFormatAllowsIt) {
    sound some{8000, 2, {0.5f, -0.25f, 0.75f, 0.125f}};
    write("in.wav", some);
    some.format = SF_FORMAT_FLAC | SF_FORMAT_PCM_16;
    write("in.flac", some);
    // As a writer of streams leaves it: the length of what follows is not known
    // yet.
    std::string stream = bytes("in.wav");
    for (const std::size_t at : {std::size_t{4}, stream.find("data") + 4})
        stream.replace(at, 4, "\xff\xff\xff\xff");
    write_text("stream.wav", stream);
    play("in.wav file.wav");
    for (const char* through : {"cat in.wav |", "cat stream.wav |"}) {
        EXPECT_EQ(play("- o.wav --force", through).err, "") << through;
        EXPECT_EQ(read("o.wav").samples, read("file.wav").samples) << through;
    }
    EXPECT_EQ(play("stream.wav o.wav --force").err, "") << "saved as it came";
    EXPECT_EQ(play("- o.wav --force <in.flac").exit, 0) << "a file can be read in any order";
    const outcome ended = play("- no.wav", "cat in.flac |");
    EXPECT_EQ(ended.exit, 1);
    EXPECT_TRUE(
        ended.err.starts_with("render: standard input: can't be read as a stream of sound, "
                              "which WAV and AU allow and FLAC does not: "))
        << ended.err;
}

TEST_F(SoundFile, GoesThroughPipes) {
    write("in.wav", {8000, 2, {0.5f, -0.25f, 0.75f, 0.125f}});
    for (const char* subtype : {"float", "24", "16 --no-dither"}) {
        SCOPED_TRACE(subtype);
        const outcome ended = vesk(
            "render --object objects/plain~.tkx64 in.wav - --tail 0 "
            "--set gain=0.5 --subtype " +
            std::string(subtype) +
            " | '" VESK_PROGRAM
            "' render --object objects/plain~.tkx64 - o.wav --tail 0 "
            "--force --quiet --set gain=2");
        EXPECT_EQ(ended.exit, 0);
        EXPECT_EQ(read("o.wav").samples, (std::vector{0.5f, -0.25f, 0.75f, 0.125f}));
    }
    const outcome raw = play("in.wav - --tail 0 --format raw --quiet");
    const float expected[] = {0.5f, -0.25f, 0.75f, 0.125f};
    EXPECT_EQ(raw.out, std::string(reinterpret_cast<const char*>(expected), sizeof expected));
    EXPECT_EQ(raw.err, "");
    EXPECT_EQ(play("in.wav - >/dev/full; exit $?; :").exit, 1);
}
