#include "tools/output_format.h"

#include <sndfile.h>

#include <algorithm>
#include <array>
#include <filesystem>

#include "tools/failure.h"
#include "tools/text.h"

namespace program {

namespace {

struct suffix_format {
    const char* suffix;
    const char* name;
    int code;                     // with the codec of a compressed format
    const char* default_subtype;  // null: compressed, without a sample type
    bool has_float;
    bool can_be_empty;
};

constexpr std::array suffix_formats{
    suffix_format{".wav", "WAV", SF_FORMAT_WAV, "float", true, true},
    suffix_format{".w64", "W64", SF_FORMAT_W64, "float", true, true},
    suffix_format{".flac", "FLAC", SF_FORMAT_FLAC, "24", false, false},
    suffix_format{".aiff", "AIFF", SF_FORMAT_AIFF, "float", true, true},
    suffix_format{".aif", "AIFF", SF_FORMAT_AIFF, "float", true, true},
    suffix_format{".caf", "CAF", SF_FORMAT_CAF, "float", true, true},
    suffix_format{".ogg", "Vorbis", SF_FORMAT_OGG | SF_FORMAT_VORBIS, nullptr, true, false},
    suffix_format{".opus", "Opus", SF_FORMAT_OGG | SF_FORMAT_OPUS, nullptr, true, false},
    suffix_format{".mp3", "MP3", SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, nullptr, true, false},
};

struct sample_format {
    const char* name;
    int code;
    int bytes;
};

constexpr std::array sample_formats{
    sample_format{"float", SF_FORMAT_FLOAT, 4},
    sample_format{"24", SF_FORMAT_PCM_24, 3},
    sample_format{"16", SF_FORMAT_PCM_16, 2},
};

}  // namespace

std::string output_suffixes() {
    std::string list;
    for (const suffix_format& format : suffix_formats)
        list += (list.empty() ? "" : ", ") + std::string(format.suffix);
    return list;
}

output_format output_format_of(const std::string& path, const std::string& subtype) {
    constexpr int channels = 2;
    const std::string suffix = lower_case(std::filesystem::path(path).extension().string());
    const auto* const file =
        std::find_if(suffix_formats.begin(), suffix_formats.end(),
                     [&suffix](const suffix_format& f) { return suffix == f.suffix; });
    if (file == suffix_formats.end())
        throw usage_error(path + ": suffix \"" + suffix + "\", expected one of " +
                          output_suffixes());
    if (file->default_subtype == nullptr) {
        if (!subtype.empty())
            throw usage_error(path + ": " + file->name +
                              " has no sample type, expected no --subtype");
        return {file->code, sizeof(float) * channels, 0, true, file->can_be_empty};
    }
    const std::string chosen = subtype.empty() ? file->default_subtype : subtype;
    const auto* const samples =
        std::find_if(sample_formats.begin(), sample_formats.end(),
                     [&chosen](const sample_format& f) { return chosen == f.name; });
    if (samples == sample_formats.end())
        throw usage_error("--subtype " + subtype + ": expected float, 24 or 16");
    const bool is_integer = samples->code != SF_FORMAT_FLOAT;
    if (!is_integer && !file->has_float)
        throw usage_error(path + ": " + file->name + " has no floats, expected --subtype 24 or 16");
    return {file->code | samples->code, std::int64_t{samples->bytes} * channels,
            is_integer ? 8 * samples->bytes : 0, file->has_float, file->can_be_empty};
}

output_format stream_format_of(const std::string& name, const std::string& subtype) {
    if (name != "wav" && name != "raw")
        throw usage_error("--format " + name + ": expected wav or raw");
    output_format format = output_format_of("stream.wav", subtype);
    format.code = SF_FORMAT_RAW | SF_ENDIAN_LITTLE | (format.code & SF_FORMAT_SUBMASK);
    format.has_wav_header = name == "wav";
    return format;
}

}  // namespace program
