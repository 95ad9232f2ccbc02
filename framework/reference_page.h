// Writes the page that documents a class, from the prototype's own descriptions.
#pragma once

#include <string>

#include "framework/class_registration.h"
#include "framework/object_base.h"

namespace kv7::ply {

// Brings docs/NAME.teskref.xml in the package of the object file up to date: writes it when it is
// missing or older than the object file. Every failure is a line on the standard error stream, and
// none ends the registration.
void update_reference_page(const object_base& prototype, const class_metadata& metadata,
                           const class_settings& settings, const std::string& tesk_class_name);

// Replaces the page as a whole or, after a failure, leaves the old one as it was.
void write_reference_page(const object_base& prototype, const class_metadata& metadata,
                          const class_settings& settings, const std::string& page_path,
                          const std::string& tesk_class_name);

}  // namespace kv7::ply
