// The names that the framework interns while the object file loads, before the host calls it.
#pragma once

#include "framework/symbol.h"

// Not for use in another file's static initialisers, which may run first.
namespace kv7::ply::symbols {

extern const symbol empty;             // "": no category, no colour, no type
extern const symbol saved_dictionary;  // "#D": the object bound to it is an instance's saved state
extern const symbol preset;            // "_preset": the object bound to it is the preset list
extern const symbol box;               // name space of classes and instances
extern const symbol nobox;             // name space of classes without a box
extern const symbol float64;           // datatype of float attributes
extern const symbol getname;           // asks a host attribute for its name
extern const symbol gettype;           // asks a host attribute for its type
extern const symbol long_integer;      // "long": datatype of integer, bool and enum attributes
extern const symbol tesk;              // the object bound to it is the host's own
extern const symbol modified;          // notification after "value" changes
extern const symbol symbol_type;       // "symbol": type of properties that are names
extern const symbol value;             // the attribute that carries an object's main value

// False when the host gave null for one of them while the object file was loading.
bool all_interned() noexcept;

}  // namespace kv7::ply::symbols
