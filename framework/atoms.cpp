#include "framework/atoms.h"

namespace kv7::ply {

atoms atoms_from(std::int64_t count, const tesk_atom* values) {
    if (count <= 0 || values == nullptr) return {};
    return atoms(values, values + count);
}

std::string to_text(const atoms& values) {
    std::int64_t size = 0;
    char* text = nullptr;
    const std::int64_t error =
        atom_gettext(static_cast<std::int64_t>(values.size()), values.data(), &size, &text, 2);
    const host_memory<char> owned(size != 0 ? text : nullptr);
    std::string result;
    if (error != 0)
        object_error(nullptr, "problem geting text from atoms");
    else if (text != nullptr)
        result = text;
    return result;
}

}  // namespace kv7::ply
