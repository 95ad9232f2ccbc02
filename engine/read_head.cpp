#include "engine/read_head.h"

namespace orvane::blocks::vesk {

EntryRings::EntryRings(std::uint64_t history)
    : left(history + max_block), right(history + max_block), capacity(history), large(left.size) {}

void EntryRings::seed(std::int64_t entry_left, std::int64_t entry_right) noexcept {
    for (int i = 0; i < 2; ++i) {
        left.push(left.at(0) + static_cast<Total>(entry_left));
        right.push(right.at(0) + static_cast<Total>(entry_right));
    }
    filled = 2;
    large.forget();
}

}  // namespace orvane::blocks::vesk
