// Atoms: what each call answers for its own type and for the others.
#include <cstring>
#include <limits>

#include "host/state.h"

namespace {

// The fraction is dropped; what does not fit, or is no number, becomes the smallest integer.
int64_t integer_of(double number) {
    constexpr double limit = 9223372036854775808.0;  // 2 to the 63rd
    if (number >= -limit && number < limit) return static_cast<int64_t>(number);
    return std::numeric_limits<int64_t>::min();
}

}  // namespace

extern "C" {

int64_t atom_setlong(tesk_atom* atom, int64_t value) {
    atom->type = 1;
    atom->value.as_long = value;
    return 0;
}

int64_t atom_setfloat(tesk_atom* atom, double value) {
    atom->type = 2;
    atom->value.as_float = value;
    return 0;
}

int64_t atom_setsym(tesk_atom* atom, tesk_symbol* value) {
    atom->type = 3;
    atom->value.as_symbol = value;
    return 0;
}

int64_t atom_setobj(tesk_atom* atom, void* value) {
    atom->type = 4;
    atom->value.as_object = value;
    return 0;
}

int64_t atom_getlong(const tesk_atom* atom) {
    if (atom->type == 1) return atom->value.as_long;
    return atom->type == 2 ? integer_of(atom->value.as_float) : 0;
}

double atom_getfloat(const tesk_atom* atom) {
    if (atom->type == 2) return atom->value.as_float;
    return atom->type == 1 ? static_cast<double>(atom->value.as_long) : 0.0;
}

tesk_symbol* atom_getsym(const tesk_atom* atom) {
    return atom->type == 3 ? atom->value.as_symbol : gensym("");
}

void* atom_getobj(const tesk_atom* atom) {
    return atom->type == 4 ? atom->value.as_object : nullptr;
}

int64_t atom_gettext(int64_t count, const tesk_atom* values, int64_t* size, char** text, int64_t) {
    const std::string line = tesk::text_of_atoms(tesk::atom_list(values, values + count));
    *size = static_cast<int64_t>(line.size()) + 1;
    *text = static_cast<char*>(sysmem_newptr(*size));
    if (*text == nullptr) return 1;
    std::memcpy(*text, line.c_str(), line.size() + 1);
    return 0;
}

}  // extern "C"

namespace tesk {

tesk_atom atom_of(double value) {
    tesk_atom atom{};
    atom_setfloat(&atom, value);
    return atom;
}

tesk_atom atom_of(std::int64_t value) {
    tesk_atom atom{};
    atom_setlong(&atom, value);
    return atom;
}

tesk_atom atom_of(const std::string& name) {
    tesk_atom atom{};
    atom_setsym(&atom, gensym(name.c_str()));
    return atom;
}

}  // namespace tesk
