#include "engine/read_head.h"

namespace orvane::blocks::vesk {

EntryRings::EntryRings(std::uint64_t history)
    : rate_left(history + max_block),
      rate_right(history + max_block),
      capacity(history),
      sums_left(rate_left.size / stretch),
      sums_right(rate_left.size / stretch) {}

void EntryRings::seed(std::int64_t entry_left, std::int64_t entry_right) noexcept {
    for (int i = 0; i < 2; ++i) {
        const std::uint64_t old_head = rate_left.head;
        rate_left.push(entry_left);
        rate_right.push(entry_right);
        sum_passed_stretches(old_head);
    }
    filled = 2;
}

void ReadHead::seed(std::int64_t entry_left, std::int64_t entry_right) noexcept {
    cursor_left = {1, entry_left};
    cursor_right = {1, entry_right};
}

}  // namespace orvane::blocks::vesk
