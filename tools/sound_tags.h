// Title, artist and the like of a sound file.
#pragma once

#include <sndfile.h>

#include <array>
#include <string>
#include <utility>
#include <vector>

namespace program {

using sound_tags = std::vector<std::pair<int, std::string>>;  // by the library's number

inline sound_tags tags_of(SNDFILE* file) {
    // Not the software, which is another now.
    constexpr std::array kept{SF_STR_TITLE,   SF_STR_COPYRIGHT,   SF_STR_ARTIST,
                              SF_STR_COMMENT, SF_STR_DATE,        SF_STR_ALBUM,
                              SF_STR_LICENSE, SF_STR_TRACKNUMBER, SF_STR_GENRE};
    sound_tags tags;
    for (const int number : kept)
        if (const char* const text = sf_get_string(file, number); text != nullptr)
            tags.emplace_back(number, text);
    return tags;
}

// Before the first frame. A format leaves out what it has no place for.
inline void set_tags(SNDFILE* file, const sound_tags& tags) {
    for (const auto& [number, text] : tags) sf_set_string(file, number, text.c_str());
}

}  // namespace program
