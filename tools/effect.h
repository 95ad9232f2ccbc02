// Loads the effect's object file into the host and makes an instance of its class.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/host.h"
#include "tools/message_text.h"

namespace program {

// Returns the class as the host knows it. What the object prints while it loads goes to the error
// stream. Throws failure.
const tesk::class_info& load_object(const std::filesystem::path& object);

// Makes an instance and prepares it to play. The settings go into the text of its box. With a seed
// what it draws at random depends on nothing else. Throws failure, also when the instance hasn't
// two inlets and two outlets.
std::unique_ptr<tesk::instance> make_effect(const tesk::class_info& of_class,
                                            const std::vector<message>& settings, int rate,
                                            int vector_size, std::optional<std::uint64_t> seed);

// Errors posted by object and host since the last call, in one line; "" for none.
std::string take_posted_errors();

}  // namespace program
