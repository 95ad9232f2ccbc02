// Atoms of any kind and content into the object: attributes by name, messages by selector. What an
// attribute then reports lies in its range, and vectors between them stay finite.
#include <iterator>

#include "trapped.h"

namespace {

using namespace kv7::orv;

tesk_atom any_atom(fuzz::Bytes& bytes) {
    static const char* const names[] = {"",     "Sine", "Random", "pingpong", "Feedback", "1e999",
                                        "bang", "nan",  "@delay", "delay",    "\xff"};
    switch (bytes.below(4)) {
        case 0:
            return tesk::atom_of(bytes.take<std::int64_t>());
        case 1:
            return tesk::atom_of(bytes.take<double>());
        case 2:
            return tesk::atom_of(static_cast<double>(bytes.below(2001) - 1000) / 100.0);
        default:
            return tesk::atom_of(std::string(names[bytes.below(int(std::size(names)))]));
    }
}

tesk::atom_list any_atoms(fuzz::Bytes& bytes) {
    tesk::atom_list values;
    for (int n = bytes.below(6); n > 0; --n) values.push_back(any_atom(bytes));
    return values;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr double rate = 8000.0;
    tesk::host& host = tesk::host::the();
    static const std::string box = fuzz::object_name();
    // One for all runs: what came before must not matter.
    static const auto instance = host.make(box);
    static const bool prepared = instance->prepare(rate, 64);
    fuzz::require(prepared, "the object gives a perform routine");
    fuzz::Bytes bytes{data, size};
    const auto& methods = instance->described().methods;
    while (bytes.left > 0) {
        const int what = bytes.below(8);
        if (what < 5) {
            const attribute_row& row = bytes.attribute();
            instance->set(row.info.name, any_atoms(bytes));
        } else if (what < 7) {
            const std::size_t n = bytes.take<std::uint16_t>() % methods.size();
            instance->send(methods[n].name, any_atoms(bytes), bytes.below(3));
        } else {
            std::vector<double> left(64), right(64);
            left[0] = bytes.unit();
            right[0] = bytes.unit();
            fuzz::run(*instance, left, right, true);
        }
        host.serve();
    }
    for (const attribute_row& row : attribute_table) {
        if (row.kind == attribute_kind::toggle || row.kind == attribute_kind::choice) continue;
        for (const double value : instance->get_numbers(row.info.name))
            fuzz::require(value >= row.low && value <= row.high,
                          std::string(row.info.name) + " stays in its range");
    }
    host.take_errors();
    fuzz::require_impulse(*instance, rate);
    return 0;
}
