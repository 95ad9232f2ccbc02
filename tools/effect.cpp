#include "tools/effect.h"

#include <unistd.h>

#include <cstdio>
#include <iostream>
#include <stdexcept>

#include "tools/failure.h"
#include "tools/seed.h"

namespace program {

namespace {

// Redirects the standard output, of C and C++ streams and of the system, to the error stream.
class output_to_errors {
public:
    output_to_errors() : output_(dup(STDOUT_FILENO)) { point_to(STDERR_FILENO); }
    ~output_to_errors() {
        if (output_ < 0) return;
        point_to(output_);
        close(output_);
    }
    output_to_errors(const output_to_errors&) = delete;
    output_to_errors& operator=(const output_to_errors&) = delete;

private:
    static void point_to(int stream) {
        std::cout.flush();
        std::fflush(stdout);
        dup2(stream, STDOUT_FILENO);
    }
    int output_;
};

}  // namespace

const tesk::class_info& load_object(const std::filesystem::path& object) {
    try {
        const output_to_errors redirected;
        tesk::host& host = tesk::host::the();
        return host.described(host.load(object.string()));
    } catch (const std::runtime_error& error) {
        throw failure(error.what());
    }
}

std::unique_ptr<tesk::instance> make_effect(const tesk::class_info& of_class,
                                            const std::vector<message>& settings, int rate,
                                            int vector_size, std::optional<std::uint64_t> seed) {
    const std::string& class_name = of_class.name;
    tesk::host::the().set_defaults(rate, vector_size);
    if (seed) seed_random_device(*seed);
    std::unique_ptr<tesk::instance> made;
    try {
        const output_to_errors redirected;
        made = tesk::host::the().make(box_text(class_name, settings));
    } catch (const std::runtime_error& error) {
        throw failure(class_name + ": could not be made: " + error.what());
    }
    if (made->inlets() != 2 || made->outlets() != 2)
        throw failure(class_name + ": " + std::to_string(made->inlets()) + " inlets and " +
                      std::to_string(made->outlets()) + " outlets, expected 2 and 2");
    if (!made->prepare(rate, vector_size))
        throw failure(class_name + ": gives no signal routine at " + std::to_string(rate) + " Hz");
    return made;
}

std::string take_posted_errors() {
    std::string line;
    for (const std::string& posted : tesk::host::the().take_errors())
        line += (line.empty() ? "" : "; ") + posted;
    return line;
}

}  // namespace program
