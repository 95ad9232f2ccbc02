#include "tools/output_file.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "tools/failure.h"
#include "tools/output_stream.h"
#include "tools/unfinished_file.h"

namespace program {

namespace {

constexpr int channels = 2;

byte_sink& bytes_of(void* user) {
    return *static_cast<byte_sink*>(user);
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

// Of a rendering of which only the picture is wanted.
class no_bytes : public byte_sink {
public:
    std::int64_t write(const void*, std::int64_t count) noexcept override {
        size_ += count;
        return count;
    }
    std::int64_t read(void*, std::int64_t) noexcept override { return 0; }
    std::int64_t seek(std::int64_t, int) noexcept override { return size_; }
    std::int64_t size() noexcept override { return size_; }
    int error() const override { return 0; }
    std::string text_of(int) const override { return ""; }
    void finish_as(const std::string&) override {}

private:
    std::int64_t size_ = 0;
};

std::unique_ptr<byte_sink> sink_of(const std::string& path, const output_format& format, int rate,
                                   bool replace) {
    if (path.empty()) return std::make_unique<no_bytes>();
    if (path != "-") return std::make_unique<unfinished_file>(path, replace);
    auto stream = std::make_unique<output_stream>();
    if (format.has_wav_header) stream->write_wav_header(rate, channels, format.bits);
    return stream;
}

}  // namespace

output_file::output_file(const std::string& path, const output_format& format, int rate,
                         bool replace, std::optional<std::int64_t> max_frames, bool dithered)
    : path_(path), format_(format), bytes_(sink_of(path, format, rate, replace)) {
    if (format.bits > 0) integers_.emplace(format.bits, dithered && format.bits == 16);
    SF_VIRTUAL_IO calls = file_calls();
    SF_INFO info{};
    info.samplerate = rate;
    info.channels = channels;
    constexpr std::int64_t max_bytes = 0xFFFFFFFF - 4096;  // less room for the header
    const bool is_wav = (format.code & SF_FORMAT_TYPEMASK) == SF_FORMAT_WAV;
    const bool may_be_large =
        is_wav && (!max_frames || *max_frames > max_bytes / format.frame_bytes);
    info.format = may_be_large ? SF_FORMAT_RF64 | (format.code & SF_FORMAT_SUBMASK) : format.code;
    file_ = sf_open_virtual(&calls, SFM_WRITE, &info, bytes_.get());
    if (file_ == nullptr) fail();
    // Of an unknown length only one above 4 GiB stays RF64.
    if (may_be_large && !max_frames) sf_command(file_, SFC_RF64_AUTO_DOWNGRADE, nullptr, SF_TRUE);
    // The PEAK chunk holds the time of writing; without it equal sound gives equal bytes.
    sf_command(file_, SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
}

output_file::~output_file() {
    if (file_ != nullptr) sf_close(file_);
}

void output_file::fail() const {
    if (bytes_->error() == 0)
        throw failure(path_ + ": refused by the sound file library: " + sf_strerror(file_));
    throw failure(bytes_->text_of(bytes_->error()));
}

void output_file::measure_levels(const float* interleaved, std::int64_t samples) {
    float peak = 0;
    for (std::int64_t i = 0; i < samples; ++i) peak = std::max(peak, std::fabs(interleaved[i]));
    if (format_.bits > 0 && peak > 1) {
        clipped_ += std::count_if(interleaved, interleaved + samples,
                                  [](float x) { return std::fabs(x) > 1; });
        peak = 1;
    }
    peak_ = std::max(peak_, double{peak});
}

void output_file::write(const float* interleaved, std::int64_t frames) {
    measure_levels(interleaved, frames * channels);
    const auto samples = static_cast<std::size_t>(frames * channels);
    const std::int64_t written =
        integers_ ? sf_writef_int(file_, integers_->quantise(interleaved, samples), frames)
                  : sf_writef_float(file_, interleaved, frames);
    if (written != frames || bytes_->error() != 0) fail();
    frames_ += frames;
}

void output_file::finish() {
    finish_as(path_);
}

void output_file::finish_as(const std::string& path) {
    if (frames_ == 0 && !format_.can_be_empty)
        throw failure(path_ +
                      ": a file of this format without a frame can't be read, expected a --tail");
    if (sf_close(std::exchange(file_, nullptr)) != 0) fail();
    bytes_->finish_as(path);
}

}  // namespace program
