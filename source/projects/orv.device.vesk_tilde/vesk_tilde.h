// The device: the effect's attributes, messages, ports and tables on the signal object.
#pragma once

#include "attribute_table.h"
#include "dsp_wrapper.h"
#include "engine/vesk.h"

class vesk_tilde final
    : public kv7::orv::dsp_wrapper<vesk_tilde, orvane::blocks::vesk::Vesk, 2, 2> {
public:
    static constexpr const char* class_description = kv7::orv::class_metadata::description;
    static constexpr const char* class_author = kv7::orv::class_metadata::author;
    static constexpr const char* class_tags = kv7::orv::class_metadata::tags;

    vesk_tilde();

private:
    kv7::ply::message<0> clear_{this, "clear",
                                [this](const kv7::ply::atoms&, int) {
                                    core.request_clear();
                                    return kv7::ply::atoms{};
                                },
                                "Clear feedback."};
};
