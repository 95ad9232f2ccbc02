// What the program tells of attributes and presets, and that both lists are true of the effect.
#include <cmath>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "sandbox.h"

using Listing = sandbox;

TEST_F(Listing, OfAttributesJoinsHostPageAndTable) {
    const outcome told = vesk("attributes --json");
    ASSERT_EQ(told.exit, 0) << told.err;
    std::map<std::string, nlohmann::json> by_name;
    const nlohmann::json all = nlohmann::json::parse(told.out);  // nothing else was printed there
    EXPECT_EQ(all["object"], "orv.device.vesk~");
    for (const nlohmann::json& one : all["attributes"]) by_name[one["name"]] = one;
    EXPECT_EQ(by_name.size(), 30u);
    const struct {
        const char* name;
        const char* rest;
    } rows[] = {
        {"delay", R"({"label": "Delay times", "type": "list", "low": 0.001, "high": 5.0,
                      "default": [0.375, 0.375], "unit": "s",
                      "description": "Sets the left and right delay time in seconds."})"},
        {"gate", R"({"label": "Gate", "category": "Gate", "type": "toggle", "default": false,
                     "description": "Enable/disable the output gate."})"},
        {"output", R"({"label": "Output gain", "type": "number", "low": -76.0, "high": 12.0,
                       "default": 0.0, "unit": "dB",
                       "description": "Set the output gain in dB."})"},
        {"reverb_location", R"({"label": "Reverb location", "category": "Reverb",
                                "type": "choice", "default": "Post",
                                "values": ["Pre", "Post", "Feedback"], "description":
                        "Set the location in the processing chain where reverb is added."})"},
    };
    for (const auto& [name, rest] : rows) {
        nlohmann::json expected = nlohmann::json::parse(rest);
        expected["name"] = name;
        EXPECT_EQ(by_name[name], expected);
    }
    const std::string text = vesk("attributes").out;
    for (const auto& [name, one] : by_name)
        EXPECT_NE(("\n" + text).find("\n" + name + " "), std::string::npos) << name;
    EXPECT_NE(text.find("0.001 to 5 s "), std::string::npos) << text;
}

TEST_F(Listing, OfAttributesNeedsTheReferencePage) {
    const outcome told = vesk("attributes --object OBJECTS/plain~.tkx64");
    EXPECT_EQ(told.exit, 1);
    EXPECT_NE(told.err.find("plain~.teskref.xml: no reference page with descriptions: "),
              std::string::npos)
        << told.err;
}

TEST_F(Listing, OfPresetsNamesWhatCanBePlayed) {
    write("hit.wav", {8000, 2, {0.9f, -0.9f, 0.9f, -0.9f, 0.5f, 0.5f, -0.5f, -0.5f}});
    std::istringstream lines(vesk("presets").out);
    int presets = 0;
    for (std::string line; std::getline(lines, line); ++presets) {
        SCOPED_TRACE(line);
        const std::string name = line.substr(0, line.find(' '));
        EXPECT_NE(line.find(": "), std::string::npos) << "title and what it is";
        const outcome told = vesk("render hit.wav o.wav --force --tail 2 --preset " + name);
        ASSERT_EQ(told.exit, 0) << told.err;
        float peak = 0;
        const sound heard = read("o.wav");
        for (std::size_t i = 2 * 80; i < heard.samples.size(); ++i) {
            ASSERT_TRUE(std::isfinite(heard.samples[i]));
            peak = std::max(peak, std::fabs(heard.samples[i]));
        }
        EXPECT_GT(peak, 0.01f) << "behind the dry sound";
        EXPECT_LT(peak, 2.0f);
    }
    EXPECT_GE(presets, 8);
}
