// How long a note lasts at a tempo.
#pragma once

namespace program {

enum class note_length { plain, dotted, double_dotted, triplet };

// In seconds: count notes of 1 / part of a whole note, which has four quarters. bpm: quarter notes
// per minute.
constexpr double note_seconds(double count, double part, note_length length, double bpm) {
    const double factor = length == note_length::dotted          ? 1.5
                          : length == note_length::double_dotted ? 1.75
                          : length == note_length::triplet       ? 2.0 / 3.0
                                                                 : 1.0;
    return 240.0 / bpm * factor * count / part;
}

}  // namespace program
