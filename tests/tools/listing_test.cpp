// What the program tells of attributes and presets, and that presets can be
// heard. The whole text of the attributes is compared with the README.
#include <cmath>
#include <nlohmann/json.hpp>
#include <sstream>

#include "attribute_table.h"
#include "sandbox.h"

using Listing = sandbox;

TEST_F(Listing, OfAttributesJoinsHostPageAndTable) {
    const auto all = nlohmann::json::parse(vesk("attributes --json").out);  // nothing else there
    EXPECT_EQ(all["object"], "orv.device.vesk~");
    EXPECT_EQ(all["attributes"].size(), kv7::orv::attribute_count);
    for (const char* wanted : {
             R"({"name": "delay", "label": "Delay times", "type": "list", "low": 0.001,
                 "high": 5.0, "default": [0.375, 0.375], "unit": "s",
                 "description": "Sets the left and right delay time in seconds."})",
             R"({"name": "reverb_location", "label": "Reverb location", "category": "Reverb",
                 "type": "choice", "default": "Post", "values": ["Pre", "Post", "Feedback"],
                 "description":
                     "Set the location in the processing chain where reverb is added."})",
             R"({"name": "gate", "label": "Gate", "category": "Gate", "type": "toggle",
                 "default": false, "description": "Enable/disable the output gate."})"}) {
        const auto& found = all["attributes"];
        EXPECT_EQ(std::count(found.begin(), found.end(), nlohmann::json::parse(wanted)), 1)
            << wanted << found;
    }
    const outcome ended = vesk("attributes --object objects/plain~.tkx64");
    EXPECT_EQ(ended.exit, 1);
    EXPECT_NE(ended.err.find("plain~.teskref.xml: no reference page with descriptions: "),
              std::string::npos)
        << ended.err;
}

TEST_F(Listing, OfPresetsNamesWhatCanBePlayed) {
    write("hit.wav", {8000, 2, {0.9f, -0.9f, 0.9f, -0.9f, 0.5f, 0.5f, -0.5f, -0.5f}});
    std::istringstream lines(vesk("presets").out);
    int presets = 0;
    for (std::string line; std::getline(lines, line); ++presets) {
        SCOPED_TRACE(line);
        EXPECT_NE(line.find(": "), std::string::npos) << "title and what it is";
        const std::string name = line.substr(0, line.find(' '));
        const outcome ended = vesk("render hit.wav o.wav --force --tail 2 --preset " + name);
        ASSERT_EQ(ended.exit, 0) << ended.err;
        float peak = 0;
        const std::vector<float> heard = read("o.wav").samples;
        for (std::size_t i = 2 * 80; i < heard.size(); ++i)
            peak = std::isfinite(heard[i]) ? std::max(peak, std::fabs(heard[i])) : INFINITY;
        EXPECT_GT(peak, 0.01f) << "behind the dry sound";
        EXPECT_LT(peak, 2.0f);
    }
    EXPECT_GT(presets, 0);
}
