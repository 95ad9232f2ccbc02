// Wrong usage and bad files: one line that names the thing, the exit code, and
// nothing left behind.
#include "sandbox.h"

using BadInput = sandbox;

TEST_F(BadInput, EndsWithOneLineAndLeavesNothing) {
    write("in.wav", {8000, 2, std::vector<float>(64, 0.5f)});
    write("three.wav", {8000, 3, std::vector<float>(66, 0.5f)});
    write("slow.wav", {4000, 1, std::vector<float>(64, 0.5f)});
    write("fast.wav", {384000, 1, {0.5f}});
    write("empty.wav", {8000, 2, {}});
    for (const char* name : {"there.wav", "there.png"}) write_text(name, "kept");
    write_text("text.wav", "no sound\n");
    write("cut.wav", {8000, 1, std::vector<float>(64, 0.5f)});
    write_text("cut.wav", bytes("cut.wav").substr(0, bytes("cut.wav").size() - 128));
    write_text("bad.score", "# first\n0 gain 1\n0.5 gain loud\n");
    write_text("latin.score",
               "\xEF\xBB\xBF"
               "0 gain 1\r\n0 gain 1 # \xE9\n");
    write_text("nul.score", std::string("0 gain\0 1\n", 10));
    write_text("bad.txt", "# Bad: has no such attribute\n\ngain 1\ngrain 1\n");
    const std::pair<const char*, const char*> presets[] = {{"untitled", "gain 1\n"},
                                                           {"nothing", ""},
                                                           {"twice", "# A: b\ngain 1\ngain 2\n"},
                                                           {"bare", "# A: b\ngain\n"},
                                                           {"fraction", "# A: b\nshape 1.0\n"},
                                                           {"latin", "# A: b\ngain 1 # \xE9\n"},
                                                           {"bell", "# A: b\ngain 1\a\n"}};
    for (const auto& [name, text] : presets) write_text(std::string(name) + ".txt", text);
    std::filesystem::create_symlink("in.wav", folder / "soft.wav");
    std::filesystem::create_hard_link(folder / "in.wav", folder / "hard.wav");
    const auto files = [this] {
        std::string names;
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            names += entry.path().filename().string() + " ";
        return names;
    };
    const std::string before = files();
    struct row {
        const char* words;  // after in.wav o.wav where they begin with --
        const char* line;
    };
    const row wrong_usage[] = {
        {"in.wav", "OUTPUT is required"},
        {"--loud", "--loud: no such option, vesk render --help lists them"},
        {"in.wav o.mp4",
         "o.mp4: suffix \".mp4\", expected one of .wav, .w64, .flac, .aiff, .aif, .caf, .ogg, "
         ".opus, .mp3"},
        {"in.wav o.ogg --subtype 16", "o.ogg: Vorbis has no sample type, expected no --subtype"},
        {"--channels 1,2,3",
         "--channels 1,2,3: expected one or two numbers of channels, from 1 on"},
        {"in.wav - --format mp3", "--format mp3: expected wav or raw"},
        {"--jobs 2", "--jobs: is for --list and --into"},
        {"in.wav o.flac --subtype float",
         "o.flac: FLAC has no floats, expected --subtype 24 or 16"},
        {"--subtype 32", "--subtype 32: expected float, 24 or 16"},
        {"--vector 0", "--vector 0: expected a whole number, 1 to 8192"},
        {"--tail -1", "--tail -1: expected auto or seconds, 0 to 86400"},
        {"--seed x", "--seed x: expected a whole number, 0 or above"},
        {"--set gain", "--set gain: expected NAME=VALUE"},
        {"--set pain=1",  // pair is as near
         "--set pain=1: no attribute named \"pain\", the nearest is gain"},
        {"--set gain=nan", "--set gain=nan: gain: \"nan\" is not a number"},
        {"--set gain=", "--set gain=: gain: has no value"},
        {"--set gain=1,2", "--set gain=1,2: gain: 2 values, at most 1"},
        {"--set flip=2",
         "--set flip=2: flip: \"2\" is neither on (yes, true, 1) nor off (no, false, 0)"},
        {"--set 'shape=Very sqare'",
         "--set shape=Very sqare: shape: no value named \"Very sqare\", expected Round or Very "
         "square"},
        {"--set shape=2",
         "--set shape=2: shape: no value has the index 2, expected 0 to 1, or Round or Very "
         "square"},
        {"--set lfo=1", "--set lfo=1: no attribute named \"lfo\"; vesk attributes lists them"},
        {"--set gain=-6dB",
         "--set gain=-6dB: gain: \"-6dB\" is in another unit, expected % or a bare number"},
        {"--bpm 0", "--bpm: \"0\" is no tempo, expected quarter notes per minute, above 0 to 1000"},
        {"--quite", "--quite: no such option, the nearest is --quiet"},
        {"-in.wav x.wav",
         "-in.wav: is no option; a file of that name goes after --, as in vesk render -- -in.wav"},
        {"in.wav o.wav x.wav", "x.wav: one file too many, expected INPUT and OUTPUT alone"},
        {"--at '1 clear foo'", "--at \"1 clear foo\": clear takes no arguments, expected it alone"},
        {"--at '-1 clear'", "--at \"-1 clear\": \"-1\" is not a time in seconds, 0 or later"},
        {"--at '1 dsp64 1'",  // for the host alone
         "--at \"1 dsp64 1\": no message or attribute named \"dsp64\"; "
         "vesk attributes lists them"},
        {"--preset tap", "--preset tap: no preset named \"tap\", the nearest is tape"},
        {"in.wav in.wav --force", "in.wav: is INPUT too, expected another file"},
        {"in.wav soft.wav --force", "soft.wav: is INPUT too, expected another file"},
        {"in.wav hard.wav --force", "hard.wav: is INPUT too, expected another file"},
        {"in.wav ../in/in.wav --force", "../in/in.wav: is INPUT too, expected another file"},
        {"--picture o.gif", "--picture o.gif: expected suffix .png or .svg"},
        {"--score latin.score", "latin.score:2: is not UTF-8 text"},
        {"--score nul.score", "nul.score:1: control character 0, expected plain text"},
        {"--score bad.score", "bad.score:3: gain: \"loud\" is not a number"},
        {"--preset bad.txt", "bad.txt:4: no attribute named \"grain\", the nearest is gain"},
        {"--preset untitled.txt",
         "untitled.txt:1: expected \"# Title: what it is\" in the first line"},
        {"--preset nothing.txt", "nothing.txt: is empty, expected a preset"},
        {"--preset twice.txt", "twice.txt:3: gain: is set in line 2 already"},
        {"--preset bare.txt", "bare.txt:2: gain: has no value"},
        {"--preset fraction.txt",
         "fraction.txt:2: shape: no value named \"1.0\", expected Round or Very square"},
        {"--preset latin.txt", "latin.txt:2: is not UTF-8 text"},
        {"--preset bell.txt", "bell.txt:2: control character 7, expected plain text"},
    };
    const row failures[] = {
        {"--picture no/o.png", "no/o.png: can't be written: No such file or directory"},
        {"cut.wav o.wav",
         "cut.wav: ends at frame 32, its header promises more; nothing was written, --partial "
         "keeps what can be read"},
        {"--picture there.png", "there.png: is there already, expected --force"},
        {"in.wav there.wav", "there.wav: is there already, expected --force"},
        {"in.wav . --force", ".: is a folder, expected a file to write"},
        {"in.wav no/o.wav", "no/o.wav: can't be written: No such file or directory"},
        {"nosuch.wav o.wav", "nosuch.wav: no such file"},
        {". o.wav", ".: is a folder, expected a sound file"},
        {"text.wav o.wav", "text.wav: is no sound file that can be read: Format not recognised."},
        {"three.wav o.wav",
         "three.wav: 3 channels, expected 1 or 2, or --channels A,B to pick two"},
        {"three.wav o.wav --channels 4",
         "three.wav: has no channel 4, expected --channels from 1 to 3"},
        {"slow.wav o.wav", "slow.wav: 4000 Hz, expected 8000 to 384000"},
        {"empty.wav o.flac --tail 0",
         "o.flac: a file of this format without a frame can't be read, expected a --tail"},
        {"--score no.score", "no.score: can't be read: No such file or directory"},
        {"--object no.tkx64", "no.tkx64: no such object file"},
        {"--object objects/entryless~.tkx64", "objects/entryless~.tkx64: has no ext_main"},
        {"--object objects/refusing~.tkx64", "plain~: could not be made: no"},
    };
    const auto expect = [&](const auto& rows, int exit) {
        for (const auto& [words, line] : rows) {
            SCOPED_TRACE(words);
            const bool options = std::string(words).starts_with("--");
            const outcome ended =
                play((options ? "in.wav o.wav " : "") + std::string(words), "ulimit -f 8000;");
            EXPECT_EQ(ended.exit, exit);
            EXPECT_EQ(ended.err, "render: " + std::string(line) + "\n");
            EXPECT_EQ(ended.out, "");
            EXPECT_EQ(files(), before);
        }
    };
    expect(wrong_usage, 2);
    expect(failures, 1);
    EXPECT_EQ(bytes("there.wav"), "kept");
    for (const char* words : {"", "play"}) {
        const outcome ended = vesk(words);
        EXPECT_EQ(ended.exit, 2) << words;
        EXPECT_NE(
            ended.err.find("expected one of render, picture, attributes, presets; vesk help shows"),
            std::string::npos)
            << ended.err;
    }
    EXPECT_EQ(vesk("presets >/dev/full;exit $?; :").exit, 1) << "a listing that can't be written";
}

// The effect has ranges and units, which the plain object lacks.
TEST_F(BadInput, ValuesThatTheEffectWouldChangeAreRefusedOrClampedWithAWarning) {
    write("in.wav", {8000, 2, std::vector<float>(64, 0.5f)});
    write_text("loud.txt", "# Loud: too much\nfeedback 2\n");
    write_text("loud.score", "0 mix 1\n0 channel_mode 7\n");
    const struct {
        const char* words;
        const char* refused;
        const char* clamped;
    } rows[] = {
        {"--set mix=50", "--set mix=50: mix: 50 is out of range, expected 0 to 1",
         "--set mix=50: mix: 50 is out of range, taken as 1"},
        {"--set delay=375",
         "--set delay=375: delay: 375 is out of range, expected 0.001 to 5 s; were milliseconds "
         "meant? Then 375ms",
         "--set delay=375: delay: 375 is out of range, taken as 5"},
        {"--at '0 delay 1 2 3'", "--at \"0 delay 1 2 3\": delay: 3 values, at most 2",
         "--at \"0 delay 1 2 3\": delay: 3 values, only the first 2 taken"},
        {"--preset loud.txt", "loud.txt:2: feedback: 2 is out of range, expected 0 to 1.5",
         "loud.txt: feedback: 2 is out of range, taken as 1.5"},
        {"--score loud.score",
         "loud.score:2: channel_mode: no value has the index 7, expected 0 to 2, or stereo, "
         "pingpong or midside",
         "loud.score:2: channel_mode: no value has the index 7, so the object keeps the one it "
         "has"},
    };
    for (const auto& [words, refused, clamped] : rows) {
        const std::string line = "render in.wav o.wav --force --tail 0 " + std::string(words);
        const outcome strict = vesk(line);
        EXPECT_EQ(strict.exit, 2) << words;
        EXPECT_EQ(strict.err, "render: " + std::string(refused) + "\n");
        const outcome lenient = vesk(line + " --clamp");
        EXPECT_EQ(lenient.exit, 0) << words;
        EXPECT_EQ(lenient.err, "render: " + std::string(clamped) + "\n");
    }
}
