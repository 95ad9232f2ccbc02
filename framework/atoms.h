// The value that crosses the host boundary, and the list in which every message and attribute
// value travels.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "framework/host_interface.h"
#include "framework/symbol.h"

namespace kv7::ply {

// Method types at the host; the first five are the types of atoms too.
enum method_type : std::int32_t {
    type_none = 0,
    type_long = 1,
    type_float = 2,
    type_symbol = 3,
    type_object = 4,
    type_any = 8,             // a count and atoms
    type_private = 9,         // its own argument list; users cannot send it
    type_any_result = 14,     // as 8, and a slot for a result
    kind_plain_strings = 69,  // a message's kind only: strings ended by a null
};

// What the host has handed out, until it goes back.
struct back_to_host {
    void operator()(void* memory) const noexcept { sysmem_freeptr(memory); }
};
template <class T>
using host_memory = std::unique_ptr<T, back_to_host>;

// A host atom by value; read and written through the host's calls alone.
class atom : public tesk_atom {
public:
    atom() noexcept : tesk_atom{} {}
    atom(const tesk_atom& other) noexcept : tesk_atom(other) {}  // NOLINT: the same 16 bytes
    template <std::integral T>
    atom(T number) : tesk_atom{} {  // NOLINT
        atom_setlong(this, static_cast<std::int64_t>(number));
    }
    atom(double number) : tesk_atom{} { atom_setfloat(this, number); }              // NOLINT
    atom(const symbol& name) : tesk_atom{} { atom_setsym(this, name.interned()); }  // NOLINT
    atom(const char* name) : atom(symbol(name)) {}                                  // NOLINT
    explicit atom(void* object) : tesk_atom{} { atom_setobj(this, object); }

    std::int64_t as_long() const { return atom_getlong(this); }
    double as_float() const { return atom_getfloat(this); }
    symbol as_symbol() const { return atom_getsym(this); }
    void* as_object() const { return atom_getobj(this); }
    bool as_bool() const { return as_long() != 0; }
    bool is_symbol() const noexcept { return type == type_symbol; }  // for names of enums
};
static_assert(sizeof(atom) == 16);

using atoms = std::vector<atom>;

atoms atoms_from(std::int64_t count, const tesk_atom* values);

// As the host writes them; "" after an error, which goes to the error channel.
std::string to_text(const atoms& values);

}  // namespace kv7::ply
