// What a picture says of a rendering.
#pragma once

#include <string>

#include "host/host.h"
#include "tools/picture/picture.h"
#include "tools/render_plan.h"

namespace program {

// preset: name or file, "" for none.
picture_texts texts_of(const std::string& preset, const render_plan& plan,
                       const tesk::class_info& of_class);

}  // namespace program
