// What differs from one operating system to another.
#pragma once

#include <string>

namespace tesk::system {

// Loads an object file for the rest of the process; null, and the reason in error, when it can't.
void* open_object(const std::string& path, std::string& error);
void* find_in(void* object_file, const char* name);  // null when it is not there

void flush_denormals(bool flush);  // on the calling thread

// Called around every perform call, so that a preloaded guard can watch the audio thread. They do
// nothing where none is loaded.
void enter_realtime() noexcept;
void leave_realtime() noexcept;

}  // namespace tesk::system
