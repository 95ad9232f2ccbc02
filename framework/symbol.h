// A name that the host has interned: compared by pointer, copied freely on any thread.
#pragma once

#include <stdexcept>
#include <string>

#include "framework/host_interface.h"

namespace kv7::ply {

class symbol {
public:
    symbol() : symbol("") {}
    // Throws std::runtime_error when the host interns nothing.
    symbol(const char* text) : symbol(gensym(text)) {  // NOLINT: a name is a symbol
        if (interned_ == nullptr)
            throw std::runtime_error(std::string("the host refused gensym: ") + text);
    }
    symbol(const std::string& text) : symbol(text.c_str()) {}        // NOLINT
    symbol(tesk_symbol* interned) noexcept : interned_(interned) {}  // NOLINT: as the host gave it

    tesk_symbol* interned() const noexcept { return interned_; }
    // A name that the host left out reads as the empty one.
    const char* c_str() const noexcept {
        return interned_ != nullptr && interned_->name != nullptr ? interned_->name : "";
    }
    std::string text() const { return c_str(); }
    bool empty() const noexcept { return *c_str() == '\0'; }
    void* object() const noexcept {  // bound by the host, or null
        return interned_ != nullptr ? interned_->object : nullptr;
    }

    friend bool operator==(const symbol& a, const symbol& b) noexcept {
        return a.interned_ == b.interned_;
    }

private:
    tesk_symbol* interned_;  // null only where the host gave null
};

}  // namespace kv7::ply
