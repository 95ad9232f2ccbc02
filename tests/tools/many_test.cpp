// Many files in one command: the same bytes as one by one, whatever came before in the process.
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "sandbox.h"

namespace {

class Many : public sandbox {
protected:
    Many() {
        for (const auto& [name, rate] : {std::pair{"a.wav", 8000}, {"b.wav", 44100}}) {
            sound noise{rate, 2, {}};
            for (int i = 0; i < 12002; ++i)
                noise.samples.push_back(static_cast<float>(i * 7919LL % 1999) / 1000 - 1);
            write(name, noise);
        }
    }
    // Each line of output is an object.
    static std::vector<nlohmann::json> objects_of(const std::string& out) {
        std::vector<nlohmann::json> objects;
        std::istringstream lines(out);
        for (std::string line; std::getline(lines, line);)
            objects.push_back(nlohmann::json::parse(line));
        return objects;
    }
};

}  // namespace

// Neighbours in the list differ in rate, ramps, random sources, noise and read heads, so a state
// that one leaves behind would be heard in the next.
TEST_F(Many, GivesTheBytesOfACommandOfItsOwn) {
    const std::string common =
        " --seed 5 --tail 0.5 --at '0.1 feedback 1.5' --at '0.2 clear' --at '0.3 delay 0.1 0.2'";
    const char* const settings[] = {
        "mod_waveform=Random;mod_delay=0.5;mod_freq=20",
        "noise=1;wobble=1;repitch=on",
        "",
        "reverb=1;reverb_location=Feedback;feedback=1.4;input=20",
        "mod_waveform=Random;mod_delay=0.5;mod_freq=20",
        "gate=on;gate_threshold=-20;duck=on;duck_threshold=-40;channel_mode=pingpong",
        "",
        "noise=0.5;noise_morph=0.7;mod_envelope=1;mod_delay=1;drywetmode=1;mix=0.4",
    };
    std::string list;
    std::vector<std::string> alone;
    for (std::size_t i = 0; i < std::size(settings); ++i) {
        const std::string input = i % 3 == 1 ? "b.wav" : "a.wav";
        list += input + "\tm" + std::to_string(i) + ".wav\t" + settings[i] + "\n";
        std::string words = "render " + input + " o.wav --force" + common;
        std::istringstream each(settings[i]);
        for (std::string setting; std::getline(each, setting, ';');) words += " --set " + setting;
        ASSERT_EQ(vesk(words).exit, 0);
        alone.push_back(bytes("o.wav"));
    }
    EXPECT_EQ(std::set<std::string>(alone.begin(), alone.end()).size(), 7u)
        << "only those without settings are equal";
    write_text("list", list);
    for (const char* words : {" --jobs 1", " --jobs 3"}) {
        const outcome ended = vesk("render --force --list list" + common + words);
        ASSERT_EQ(ended.exit, 0) << ended.err;
        for (std::size_t i = 0; i < alone.size(); ++i)
            EXPECT_TRUE(bytes("m" + std::to_string(i) + ".wav") == alone[i]) << i << words;
    }
}

TEST_F(Many, OneFailureDoesNotStopTheRest) {
    write_text("there.wav", "kept");
    write_text("list",
               "a.wav\tone.wav\tgain=2; flip=on\n\nno.wav\ttwo.wav\na.wav\tthere.wav\n"
               "a.wav\tfour.wav\tgain=loud\nb.wav\tfive.wav\n");
    const outcome ended = play("--tail 0 --json --seed 7 --jobs 2 --list - <list");
    EXPECT_EQ(ended.exit, 1);
    EXPECT_NE(ended.err.find("2 rendered, 0 skipped, 3 failed; "), std::string::npos) << ended.err;
    EXPECT_TRUE(ended.err.ends_with("render: 3 files of 5 failed\n")) << ended.err;
    std::set<std::string> errors;
    int rendered = 0;
    for (const nlohmann::json& object : objects_of(ended.out)) {
        if (!object["ok"]) errors.insert(object["error"]);
        if (object["out"] == "one.wav") {
            EXPECT_EQ(object["settings"]["gain"], 2.0);
            EXPECT_EQ(object["frames"], 6000 + 1) << object;
            EXPECT_EQ(object["seed"], 7);
            EXPECT_NEAR(object["peak"], 2, 1e-6);
        }
        rendered += object["ok"] == true;
    }
    EXPECT_EQ(rendered, 2);
    EXPECT_EQ(errors, (std::set<std::string>{"no.wav: no such file",
                                             "there.wav: is there already, expected --force",
                                             "--set gain=loud: gain: \"loud\" is not a number"}));
    EXPECT_EQ(bytes("there.wav"), "kept");
    EXPECT_FALSE(std::filesystem::exists(folder / "four.wav"));
}

TEST_F(Many, AFolderKeepsItsStructureAndWhatIsDoneIsSkipped) {
    std::filesystem::create_directories(folder / "set/deep er");
    for (const char* name : {"set/one.wav", "set/deep er/two.WAV"})
        std::filesystem::copy(folder / "a.wav", folder / name);
    write_text("set/read.me", "no sound");
    EXPECT_EQ(play("set --into set/out --tail 0").exit, 0);
    EXPECT_EQ(bytes("set/out/one.wav"), bytes("set/out/deep er/two.WAV"));
    EXPECT_GT(bytes("set/out/one.wav").size(), 48000u);
    write_text("set/out/one.wav", "kept");
    const outcome again = play("set --into set/out --tail 0 --skip-existing");
    EXPECT_EQ(again.exit, 0);
    EXPECT_TRUE(again.out.starts_with("0 rendered, 2 skipped, 0 failed")) << again.out;
    EXPECT_EQ(bytes("set/out/one.wav"), "kept");
}

TEST_F(Many, WrongListsAreRefusedBeforeTheFirstFile) {
    const struct {
        const char* list;
        const char* line;
    } rows[] = {
        {"a.wav\tone.wav\na.wav\n", "list:2: expected INPUT, a tab and OUTPUT"},
        {"a.wav\tone.wav\n-\ttwo.wav\n",
         "list:2: standard streams can't be in a list, expected files"},
        {"a.wav\tone.wav\nb.wav\t./one.wav\n",
         "./one.wav: is written twice, expected another file for b.wav"},
        {"a.wav\tone.wav\none.wav\ttwo.wav\n",
         "one.wav: is an input of the list too, expected another file"},
    };
    for (const auto& [list, line] : rows) {
        write_text("list", list);
        const outcome ended = play("--list list --tail 0");
        EXPECT_EQ(ended.exit, 2);
        EXPECT_EQ(ended.err, "render: " + std::string(line) + "\n");
        EXPECT_FALSE(std::filesystem::exists(folder / "one.wav"));
    }
}
