// What ends the program before its work is done; each text is one line without the subcommand.
#pragma once

#include <stdexcept>

namespace program {

// The command line is wrong whatever the files hold: exit 2.
struct usage_error : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A file, the object or the machine is not as the work needs it: exit 1.
struct failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A piece of typed text can't be read. Whoever knows where it was typed makes one of the above.
struct bad_text : std::runtime_error {
    using std::runtime_error::runtime_error;
};

}  // namespace program
