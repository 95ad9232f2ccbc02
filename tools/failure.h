// The exceptions that end the program; each text is one line, without the subcommand.
#pragma once

#include <stdexcept>

namespace program {

// A command line that is wrong with any files: exit 2.
struct usage_error : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A failure of a file, of the object or of the system: exit 1.
struct failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Text from a user that can't be read. Where its option, or its file and line, are known it is
// caught and becomes one of the above.
struct bad_text : std::runtime_error {
    using std::runtime_error::runtime_error;
};

}  // namespace program
