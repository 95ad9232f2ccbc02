// Wrong usage and bad files: one line that names the thing, the exit code, and nothing left behind.
#include "sandbox.h"

using BadInput = sandbox;

TEST_F(BadInput, EndsWithOneLineAndLeavesNothing) {
    write("in.wav", {8000, 2, std::vector<float>(64, 0.5f)});
    write("three.wav", {8000, 3, std::vector<float>(66, 0.5f)});
    write("slow.wav", {4000, 1, std::vector<float>(64, 0.5f)});
    write("empty.flac.wav", {8000, 2, {}});
    write_text("there.wav", "kept");
    write_text("there.png", "kept");
    write_text("text.wav", "no sound\n");
    write_text("bad.score", "# first\n0 gain 1\n0.5 gain loud\n");
    write_text("late.score", "0 gain 1\nsoon gain 1\n");
    write_text("bad.txt", "# Bad: has no such attribute\n\ngain 1\ngrain 1\n");
    const std::vector<std::string> before = files();
    const struct {
        const char* words;
        int exit;
        const char* line;
    } rows[] = {
        {"in.wav", 2, "render: OUTPUT is required"},
        {"in.wav o.wav --loud", 2, "render: The following argument was not expected: --loud"},
        {"in.wav o.mp3", 2, "render: o.mp3: suffix \".mp3\", expected .wav, .flac or .w64"},
        {"in.wav o.flac --subtype float", 2,
         "render: o.flac: FLAC has no floats, expected --subtype 24 or 16"},
        {"in.wav o.wav --subtype 32", 2, "render: --subtype 32: expected float, 24 or 16"},
        {"in.wav o.wav --vector 0", 2, "render: --vector 0: expected a whole number, 1 to 8192"},
        {"in.wav o.wav --vector 64.5", 2,
         "render: --vector 64.5: expected a whole number, 1 to 8192"},
        {"in.wav o.wav --tail -1", 2, "render: --tail -1: expected auto or seconds, 0 to 86400"},
        {"in.wav o.wav --seed x", 2, "render: --seed x: expected a whole number, 0 or above"},
        {"in.wav o.wav --set gain", 2, "render: --set gain: expected NAME=VALUE"},
        {"in.wav o.wav --set gian=1", 2,
         "render: --set gian=1: no attribute named \"gian\", the nearest is gain"},
        {"in.wav o.wav --set gain=loud", 2,
         "render: --set gain=loud: gain: \"loud\" is not a number"},
        {"in.wav o.wav --set gain=nan", 2, "render: --set gain=nan: gain: \"nan\" is not a number"},
        {"in.wav o.wav --set gain=", 2, "render: --set gain=: gain: has no value"},
        {"in.wav o.wav --set gain=1,2", 2, "render: --set gain=1,2: gain: 2 values, at most 1"},
        {"in.wav o.wav --set flip=yes", 2,
         "render: --set flip=yes: flip: \"yes\" is neither on (1) nor off (0)"},
        {"in.wav o.wav --set 'shape=Very sqare'", 2,
         "render: --set shape=Very sqare: shape: no value named \"Very sqare\", the nearest is "
         "\"Very square\""},
        {"in.wav o.wav --at gain", 2,
         "render: --at \"gain\": \"gain\" is not a time in seconds, 0 or later"},
        {"in.wav o.wav --at '-1 clear'", 2,
         "render: --at \"-1 clear\": \"-1\" is not a time in seconds, 0 or later"},
        {"in.wav o.wav --at '1 claer'", 2,
         "render: --at \"1 claer\": no message or attribute named \"claer\", the nearest is clear"},
        {"in.wav o.wav --at '1 secret'", 2,
         "render: --at \"1 secret\": no message or attribute named \"secret\", the nearest is "
         "shape"},
        {"in.wav o.wav --preset tap", 2,
         "render: --preset tap: no such preset, the nearest is tape"},
        {"in.wav in.wav --force", 2, "render: in.wav: is INPUT too, expected another file"},
        {"in.wav o.wav --picture o.gif", 2,
         "render: --picture o.gif: expected suffix .png or .svg"},
        {"in.wav o.wav --picture there.png", 1,
         "render: there.png: is there already, expected --force"},
        {"in.wav there.wav", 1, "render: there.wav: is there already, expected --force"},
        {"in.wav . --force", 1, "render: .: is a folder, expected a file to write"},
        {"in.wav no/o.wav", 1, "render: no/o.wav: can't be written: No such file or directory"},
        {"nosuch.wav o.wav", 1, "render: nosuch.wav: no such file"},
        {". o.wav", 1, "render: .: is a folder, expected a sound file"},
        {"text.wav o.wav", 1,
         "render: text.wav: is no sound file that can be read: Format not recognised."},
        {"three.wav o.wav", 1, "render: three.wav: 3 channels, expected 1 or 2"},
        {"slow.wav o.wav", 1, "render: slow.wav: 4000 Hz, expected 8000 to 384000"},
        {"empty.flac.wav o.flac --tail 0", 1,
         "render: o.flac: a FLAC file without a frame can't be read, expected a --tail"},
        {"in.wav o.wav --score bad.score", 1,
         "render: bad.score:3: gain: \"loud\" is not a number"},
        {"in.wav o.wav --score late.score", 1,
         "render: late.score:2: \"soon\" is not a time in seconds, 0 or later"},
        {"in.wav o.wav --score no.score", 1,
         "render: no.score: can't be read: No such file or directory"},
        {"in.wav o.wav --preset bad.txt", 1,
         "render: bad.txt:4: no attribute named \"grain\", the nearest is gain"},
        {"in.wav o.wav --object no.tkx64", 1, "render: no.tkx64: no such object file"},
        {"in.wav o.wav --object OBJECTS/entryless~.tkx64", 1,
         "render: OBJECTS/entryless~.tkx64: has no ext_main"},
        {"in.wav o.wav --object OBJECTS/refusing~.tkx64", 1,
         "render: plain~: could not be made: This object requires Tesk 12 or later"},
    };
    for (const auto& [words, exit, line] : rows) {
        SCOPED_TRACE(words);
        const outcome told = play(words);
        EXPECT_EQ(told.exit, exit);
        EXPECT_EQ(told.err, std::string(line) + "\n");
        EXPECT_EQ(told.out, "");
        EXPECT_EQ(files(), before);
    }
    EXPECT_EQ(bytes("there.wav"), "kept");
}

TEST_F(BadInput, IsSeenThroughOtherNamesOfInput) {
    write("in.wav", {8000, 2, std::vector<float>(64, 0.5f)});
    const std::string before = bytes("in.wav");
    std::filesystem::create_symlink("in.wav", folder / "in" / "soft.wav");
    std::filesystem::create_hard_link(folder / "in" / "in.wav", folder / "in" / "hard.wav");
    for (const char* name : {"soft.wav", "hard.wav", "../in/in.wav"}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(play(std::string("in.wav --force ") + name).exit, 2);
        EXPECT_EQ(bytes("in.wav"), before);
    }
}

TEST_F(BadInput, OfNoSubcommandIsWrongUsage) {
    EXPECT_EQ(vesk("").exit, 2);
    EXPECT_EQ(vesk("play").exit, 2);
    EXPECT_EQ(vesk("presets >/dev/full;exit $?; :").exit, 1) << "a listing that can't be written";
}
