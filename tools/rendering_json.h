// A rendering, done or failed, as one line of JSON.
#pragma once

#include <string>

#include "tools/render.h"

namespace program {

// {"in": ..., "out": ..., "ok": true, "frames": ..., "rate": Hz, "peak": linear, "tail": s,
//  "settings": {...}, "seed": ... or null, "warnings": [...]}
std::string json_of(const std::string& input, const rendering& done);
// {"in": ..., "out": ..., "ok": true, "skipped": true}
std::string json_of_skipped(const std::string& input, const std::string& output);
// {"in": ..., "out": ..., "ok": false, "error": ...}
std::string json_of_failed(const std::string& input, const std::string& output,
                           const std::string& error);

}  // namespace program
