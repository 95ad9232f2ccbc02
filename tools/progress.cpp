#include "tools/progress.h"

#include <string>

#include "tools/text.h"

namespace program {

progress::progress(std::optional<std::int64_t> expected, int rate, bool quiet)
    : expected_(expected), rate_(rate), line_(quiet) {}

void progress::show(std::int64_t frames) {
    if (!line_.is_due()) return;
    const double passed = std::chrono::duration<double>(clock::now() - began_).count();
    const double played = static_cast<double>(frames) / rate_;
    std::string text = fixed_text(played, 1) + " s";
    if (passed > 0) text += ", " + fixed_text(played / passed, 0) + " times real time";
    std::optional<double> share;
    if (expected_ && *expected_ > 0)
        share = static_cast<double>(frames) / static_cast<double>(*expected_);
    line_.show(share, text);
}

}  // namespace program
