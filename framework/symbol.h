// A name that the host has interned: compared by pointer, copied freely on any thread.
#pragma once

#include <string>

#include "framework/host_interface.h"

namespace kv7::ply {

class symbol {
public:
    symbol() : interned_(gensym("")) {}
    symbol(const char* text) : interned_(gensym(text)) {}  // NOLINT: a name is a symbol
    symbol(const std::string& text) : interned_(gensym(text.c_str())) {}  // NOLINT
    symbol(tesk_symbol* interned) noexcept : interned_(interned) {}       // NOLINT

    tesk_symbol* interned() const noexcept { return interned_; }
    const char* c_str() const noexcept { return interned_->name; }
    std::string text() const { return interned_->name; }
    bool empty() const noexcept { return *interned_->name == '\0'; }
    void* object() const noexcept { return interned_->object; }  // bound by the host, or null

    friend bool operator==(const symbol& a, const symbol& b) noexcept {
        return a.interned_ == b.interned_;
    }

private:
    tesk_symbol* interned_;  // never null
};

}  // namespace kv7::ply
