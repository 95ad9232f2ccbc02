// The effect: an object file that the host has loaded, and one instance of its class.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "host/host.h"
#include "tools/message_text.h"

namespace program {

// Loads it and answers what the host knows of its class. What the object prints meanwhile goes to
// the error stream. Throws failure.
const tesk::class_info& load_object(const std::filesystem::path& object);

// With two inlets and two outlets, its settings typed in the box. Throws failure.
std::unique_ptr<tesk::instance> make_effect(const std::string& class_name,
                                            const std::vector<message>& settings);

// What object and host have posted since the last time, as one line; "" when nothing.
std::string take_posted_errors();

}  // namespace program
