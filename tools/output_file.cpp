#include "tools/output_file.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <utility>

#include "tools/failure.h"
#include "tools/text.h"

namespace program {

namespace {

constexpr int channels = 2;

struct suffix_format {
    const char* suffix;
    int code;
    const char* default_subtype;
    bool has_float;
    bool can_be_empty;
};

constexpr std::array suffix_formats{
    suffix_format{".wav", SF_FORMAT_WAV, "float", true, true},
    suffix_format{".w64", SF_FORMAT_W64, "float", true, true},
    suffix_format{".flac", SF_FORMAT_FLAC, "24", false, false},
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

unfinished_file& bytes_of(void* user) {
    return *static_cast<unfinished_file*>(user);
}

// The library writes through these functions: with files of its own, sf_close doesn't report that
// the last write failed.
SF_VIRTUAL_IO file_calls() {
    SF_VIRTUAL_IO calls{};
    calls.get_filelen = [](void* user) -> sf_count_t { return bytes_of(user).size(); };
    calls.seek = [](sf_count_t offset, int whence, void* user) -> sf_count_t {
        return bytes_of(user).seek(offset, whence);
    };
    calls.read = [](void* to, sf_count_t count, void* user) -> sf_count_t {
        return bytes_of(user).read(to, count);
    };
    calls.write = [](const void* from, sf_count_t count, void* user) -> sf_count_t {
        return bytes_of(user).write(from, count);
    };
    calls.tell = [](void* user) -> sf_count_t { return bytes_of(user).seek(0, SEEK_CUR); };
    return calls;
}

}  // namespace

output_format output_format_of(const std::string& path, const std::string& subtype) {
    const std::string suffix = lower_case(std::filesystem::path(path).extension().string());
    const auto* const file =
        std::find_if(suffix_formats.begin(), suffix_formats.end(),
                     [&suffix](const suffix_format& f) { return suffix == f.suffix; });
    if (file == suffix_formats.end())
        throw usage_error(path + ": suffix \"" + suffix + "\", expected .wav, .flac or .w64");
    const std::string chosen = subtype.empty() ? file->default_subtype : subtype;
    const auto* const samples =
        std::find_if(sample_formats.begin(), sample_formats.end(),
                     [&chosen](const sample_format& f) { return chosen == f.name; });
    if (samples == sample_formats.end())
        throw usage_error("--subtype " + subtype + ": expected float, 24 or 16");
    const bool is_integer = samples->code != SF_FORMAT_FLOAT;
    if (!is_integer && !file->has_float)
        throw usage_error(path + ": FLAC has no floats, expected --subtype 24 or 16");
    return {file->code | samples->code, std::int64_t{samples->bytes} * channels, is_integer,
            file->has_float, file->can_be_empty};
}

output_file::output_file(const std::string& path, const output_format& format, int rate,
                         bool replace, std::optional<std::int64_t> max_frames)
    : path_(path), format_(format), bytes_(path, replace) {
    SF_VIRTUAL_IO calls = file_calls();
    SF_INFO info{};
    info.samplerate = rate;
    info.channels = channels;
    constexpr std::int64_t max_bytes = 0xFFFFFFFF - 4096;  // less room for the header
    const bool is_wav = (format.code & SF_FORMAT_TYPEMASK) == SF_FORMAT_WAV;
    const bool may_be_large =
        is_wav && (!max_frames || *max_frames > max_bytes / format.frame_bytes);
    info.format = may_be_large ? SF_FORMAT_RF64 | (format.code & SF_FORMAT_SUBMASK) : format.code;
    file_ = sf_open_virtual(&calls, SFM_WRITE, &info, &bytes_);
    if (file_ == nullptr) fail();
    // Of an unknown length only one above 4 GiB stays RF64.
    if (may_be_large && !max_frames) sf_command(file_, SFC_RF64_AUTO_DOWNGRADE, nullptr, SF_TRUE);
    sf_command(file_, SFC_SET_CLIPPING, nullptr, SF_TRUE);
    // The PEAK chunk holds the time of writing; without it equal sound gives equal bytes.
    sf_command(file_, SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
}

output_file::~output_file() {
    if (file_ != nullptr) sf_close(file_);
}

void output_file::fail() const {
    if (bytes_.error() == 0)
        throw failure(path_ + ": refused by the sound file library: " + sf_strerror(file_));
    bytes_.fail(bytes_.error());
}

void output_file::measure_levels(const float* interleaved, std::int64_t samples) {
    float peak = 0;
    for (std::int64_t i = 0; i < samples; ++i) peak = std::max(peak, std::fabs(interleaved[i]));
    if (format_.is_integer && peak > 1) {
        clipped_ += std::count_if(interleaved, interleaved + samples,
                                  [](float x) { return std::fabs(x) > 1; });
        peak = 1;
    }
    peak_ = std::max(peak_, double{peak});
}

void output_file::write(const float* interleaved, std::int64_t frames) {
    if (sf_writef_float(file_, interleaved, frames) != frames || bytes_.error() != 0) fail();
    measure_levels(interleaved, frames * channels);
    frames_ += frames;
}

void output_file::finish() {
    finish_as(path_);
}

void output_file::finish_as(const std::string& path) {
    if (frames_ == 0 && !format_.can_be_empty)
        throw failure(path_ + ": a FLAC file without a frame can't be read, expected a --tail");
    if (sf_close(std::exchange(file_, nullptr)) != 0) fail();
    path == path_ ? bytes_.finish() : bytes_.finish_as(path);
}

}  // namespace program
