#include "engine/sample_player.h"

namespace orvane::blocks::vesk {

void attach_table(SamplePlayer& player, const SampleTable& table) {
    player.table = &table;
    player.increment = table.sample_rate / player.sample_rate;
    player.position = 0.0;
}

}  // namespace orvane::blocks::vesk
