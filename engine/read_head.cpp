#include "engine/read_head.h"

namespace orvane::blocks::vesk {

EntryRings::EntryRings(std::uint64_t history)
    : rate_left(history + max_block), rate_right(history + max_block), capacity(history) {}

void EntryRings::seed(std::int64_t entry_left, std::int64_t entry_right) noexcept {
    for (int i = 0; i < 2; ++i) {
        rate_left.push(entry_left);
        rate_right.push(entry_right);
    }
    filled = 2;
}

void ReadHead::seed(std::int64_t entry_left, std::int64_t entry_right) noexcept {
    cursor_left = {1, entry_left};
    cursor_right = {1, entry_right};
}

}  // namespace orvane::blocks::vesk
