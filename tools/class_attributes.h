// The attributes of a class, as the host knows them, in the form in which their values are read.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/host.h"
#include "tools/value_text.h"

namespace program {

// A class has no limits for the elements of a list and no units; both come from the effect's table.
value_attribute value_attribute_of(const tesk::attribute_info& attribute);

std::vector<std::string> attribute_names(const tesk::class_info& of_class);

// Ready to send: numbers as floats, everything else as integers.
tesk::atom_list atoms_of(const std::vector<double>& values, value_kind kind);

}  // namespace program
