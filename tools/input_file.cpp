#include "tools/input_file.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <filesystem>
#include <sstream>
#include <string>
#include <utility>

#include "tools/failure.h"
#include "tools/text.h"

namespace program {

namespace {

constexpr int min_rate = 8000;    // Hz
constexpr int max_rate = 384000;  // Hz
constexpr int max_channels = 2;

// A program that writes to a pipe can't know the length and puts one near the maximum in the
// header.
constexpr std::int64_t unknown_length = 0x07FFFFF0;  // frames; 2 GiB of the widest frame

// `data : 4294967295 (should be 3913)`: what a program that writes to a pipe leaves in its header.
bool is_length_of_a_stream(const std::string& line) {
    constexpr std::int64_t near_max = 0x7FFFF000;  // bytes
    const std::size_t colon = line.find(':');
    const std::size_t end = line.find('(');
    if (colon >= end) return false;
    return read_integer(trimmed(line.substr(colon + 1, end - colon - 1))).value_or(0) >= near_max;
}

// libsndfile shortens a length that exceeds the file, and reports it only in its log, e.g.
// `data : 8000 (should be 3913)`.
bool log_reports_missing_data(SNDFILE* file) {
    std::array<char, 16384> log{};
    sf_command(file, SFC_GET_LOG_INFO, log.data(), static_cast<int>(log.size() - 1));
    std::istringstream lines(log.data());
    for (std::string line; std::getline(lines, line);) {
        const std::size_t word = line.find_first_not_of(' ');
        if (word == std::string::npos || line.find("(should be ") == std::string::npos) continue;
        for (const char* chunk : {"data", "Data", "SSND"})
            if (line.compare(word, 4, chunk) == 0 && !is_length_of_a_stream(line)) return true;
    }
    return false;
}

}  // namespace

input_file::input_file(const std::string& name, std::vector<int> picked)
    : shown_name_(name == "-" ? "standard input" : name), picked_(std::move(picked)) {
    std::error_code unknown;
    if (name != "-") {
        const std::filesystem::file_status status = std::filesystem::status(name, unknown);
        if (!std::filesystem::exists(status)) throw failure(name + ": no such file");
        if (std::filesystem::is_directory(status))
            throw failure(name + ": is a folder, expected a sound file");
        file_.reset(sf_open(name.c_str(), SFM_READ, &info_));
    } else {
        file_.reset(sf_open_fd(STDIN_FILENO, SFM_READ, &info_, SF_FALSE));
    }
    if (file_ == nullptr) {
        const bool stream = name == "-" && lseek(STDIN_FILENO, 0, SEEK_CUR) < 0;
        throw failure(shown_name_ + ": " +
                      (stream ? "can't be read as a stream of sound, which WAV and AU allow and "
                                "FLAC does not: "
                              : "is no sound file that can be read: ") +
                      sf_strerror(nullptr));
    }
    if (info_.channels > max_channels && picked_.empty())
        throw failure(shown_name_ + ": " + std::to_string(info_.channels) +
                      " channels, expected 1 or 2, or --channels A,B to pick two");
    for (const int channel : picked_)
        if (channel > info_.channels)
            throw failure(shown_name_ + ": has no channel " + std::to_string(channel) +
                          ", expected --channels from 1 to " + std::to_string(info_.channels));
    if (picked_.empty())
        for (int channel = 1; channel <= info_.channels; ++channel) picked_.push_back(channel);
    if (info_.samplerate < min_rate || info_.samplerate > max_rate)
        throw failure(shown_name_ + ": " + std::to_string(info_.samplerate) +
                      " Hz, expected 8000 to 384000");
}

std::optional<std::int64_t> input_file::header_frames() const {
    const std::int64_t unknown = info_.seekable ? SF_COUNT_MAX : unknown_length;
    if (info_.frames < 0 || info_.frames >= unknown) return std::nullopt;
    // Without a length tag the library estimates the length of an MP3 from its size.
    if ((info_.format & SF_FORMAT_TYPEMASK) == SF_FORMAT_MPEG) return std::nullopt;
    return info_.frames;
}

std::int64_t input_file::read_picked(float* interleaved, std::int64_t frames) {
    const auto all = static_cast<std::size_t>(info_.channels);
    if (picked_.size() == all && std::is_sorted(picked_.begin(), picked_.end()))
        return sf_readf_float(file_.get(), interleaved, frames);
    all_channels_.resize(static_cast<std::size_t>(frames) * all);
    const std::int64_t count = sf_readf_float(file_.get(), all_channels_.data(), frames);
    for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i)
        for (const int channel : picked_)
            *interleaved++ = all_channels_[i * all + static_cast<std::size_t>(channel - 1)];
    return count;
}

std::int64_t input_file::read(float* interleaved, std::int64_t frames) {
    const std::int64_t count = read_picked(interleaved, frames);
    // The next read would clear the error, and a decoder can go on after a gap.
    if (first_error_.empty() && sf_error(file_.get()) != SF_ERR_NO_ERROR)
        first_error_ = "can't be decoded near frame " + std::to_string(frames_read_ + count) +
                       ": " + sf_strerror(file_.get());
    for (std::int64_t i = 0; i < count * channels(); ++i)
        if (!std::isfinite(interleaved[i])) {
            interleaved[i] = 0;
            ++not_finite_;
        }
    frames_read_ += count;
    return count;
}

std::string input_file::damage() const {
    const std::string end = "ends at frame " + std::to_string(frames_read_);
    const std::optional<std::int64_t> expected = header_frames();
    if (!first_error_.empty()) return first_error_;
    if (expected && frames_read_ < *expected)
        return end + ", its header promises " + std::to_string(*expected);
    return log_reports_missing_data(file_.get()) ? end + ", its header promises more" : "";
}

}  // namespace program
