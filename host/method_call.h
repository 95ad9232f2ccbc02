// Calls a method that an object registered, with the argument list that its name stands for.
#pragma once

#include "host/calls.h"

namespace tesk {

template <class Function, class... Arguments>
void call_as(tesk_method method, Arguments... arguments) {
    reinterpret_cast<Function*>(method)(arguments...);
}

}  // namespace tesk
