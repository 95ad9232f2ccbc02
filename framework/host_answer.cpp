#include "framework/host_answer.h"

#include <stdexcept>

namespace kv7::ply {

void throw_refusal(const char* call, const std::string& about) {
    throw std::runtime_error(about + ": the host refused " + call);
}

}  // namespace kv7::ply
