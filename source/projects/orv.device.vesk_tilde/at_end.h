// Calls a function at the end of its scope, however that ends.
#pragma once

#include <utility>

namespace kv7::orv {

template <class Function>
class at_end {
public:
    explicit at_end(Function function) : call_(std::move(function)) {}
    ~at_end() { call_(); }
    at_end(const at_end&) = delete;
    at_end& operator=(const at_end&) = delete;

private:
    Function call_;
};

}  // namespace kv7::orv
