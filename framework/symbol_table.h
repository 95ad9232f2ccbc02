// The names that the framework interns while the object file loads, before the host calls it.
#pragma once

#include "framework/symbol.h"

// Not for use in another file's static initialisers, which may run first. Unchanged after
// registration.
namespace kv7::ply::symbols {

extern symbol empty;             // "": no category, no colour, no type
extern symbol saved_dictionary;  // "#D": the object bound to it is an instance's saved state
extern symbol preset;            // "_preset": the object bound to it is the preset list
extern symbol box;               // name space of classes and instances
extern symbol nobox;             // name space of classes without a box
extern symbol float64;           // datatype of float attributes
extern symbol getname;           // message to a host attribute: its name
extern symbol gettype;           // message to a host attribute: its type
extern symbol long_integer;      // "long": datatype of integer, bool and enum attributes
extern symbol tesk;              // the object bound to it is the host's own
extern symbol modified;          // notification after "value" changes
extern symbol symbol_type;       // "symbol": type of properties that are names
extern symbol value;             // the attribute that carries an object's main value

// Interns once more those for which the host gave null while the object file was loading. Throws
// std::runtime_error when it does so again.
void intern_missing();

}  // namespace kv7::ply::symbols
