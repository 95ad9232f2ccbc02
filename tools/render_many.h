// Renders many files in one command. Each gets the bytes that a command of its own gives it; one
// that fails does not stop the others.
#pragma once

#include "tools/render_options.h"

namespace program {

// Prints a line for each failure and a summary, or with --json one object a line. Throws
// usage_error and failure before anything is rendered, failure at the end when any file failed.
void render_many(const render_options& options);

}  // namespace program
