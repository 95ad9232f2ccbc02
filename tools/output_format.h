// The formats of the sound files that are written, by the suffix of their names.
#pragma once

#include <cstdint>
#include <string>

namespace program {

struct output_format {
    int code = 0;                  // of the sound file library
    std::int64_t frame_bytes = 0;  // of both channels, before any packing
    int bits = 0;                  // of integer samples, which are clipped at full scale; 0: floats
    bool has_float = true;         // of the format, with another sample type
    bool can_be_empty = true;      // a file without frames can be read
    bool has_wav_header = false;   // of a stream, whose code is that of samples alone
};

// subtype is "float", "24", "16" or "" for the format's default; Vorbis, Opus and MP3 have none.
// Throws usage_error.
output_format output_format_of(const std::string& path, const std::string& subtype);

// Of the standard output; name is "wav" or "raw", without a header. Throws usage_error.
output_format stream_format_of(const std::string& name, const std::string& subtype);

std::string output_suffixes();  // ".wav, .flac, ..."

}  // namespace program
