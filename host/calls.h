// The host's own calls, declared so that its shared library offers them.
#pragma once

#if defined(__ELF__)
#pragma GCC visibility push(default)
#endif
#include "framework/host_interface.h"
#if defined(__ELF__)
#pragma GCC visibility pop
#endif
