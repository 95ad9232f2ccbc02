// What people type: score lines, messages and the text of a box. Nothing may end the program, what
// is refused is refused by an exception with one line or by a line in the error channel, and what
// is read reads the same once it has been written.
#include <algorithm>
#include <string>
#include <vector>

#include "tools/failure.h"
#include "tools/score.h"
#include "trapped.h"

namespace {

bool same(const tesk_atom& a, const tesk_atom& b) {
    if (a.type != b.type) return false;
    if (a.type == 3) return std::string(a.value.as_symbol->name) == b.value.as_symbol->name;
    return std::memcmp(&a.value, &b.value, sizeof a.value) == 0;
}

void require_same_again(const tesk::atom_list& values) {
    const std::string text = tesk::text_of_atoms(values);
    const tesk::atom_list again = tesk::atoms_of_text(text);
    fuzz::require(std::equal(values.begin(), values.end(), again.begin(), again.end(), same),
                  "written values read the same: " + text);
}

// Lets a refusal with a text pass.
template <class Refusal, class Function>
void may_refuse(Function function) {
    try {
        function();
    } catch (const Refusal& refused) {
        fuzz::require(*refused.what() != '\0', "a refusal has a text");
    }
}

void read_score(const std::string& text, tesk::instance& instance) {
    program::score score(instance.described());
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        may_refuse<program::bad_text>(
            [&] { score.add(std::string_view(text).substr(begin, end - begin)); });
        begin = end + 1;
    }
    score.schedule(44100.0);
    std::int64_t before = 0;
    for (const program::event& e : score.events()) {
        fuzz::require(e.frame >= before, "events stand in the order of their frames");
        before = e.frame;
        require_same_again(e.what.values);
    }
    while (const program::message* const m = score.due(before))
        instance.send(m->selector, m->values);
    fuzz::require(score.done() == score.events().size(), "every event comes due");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    tesk::host& host = tesk::host::the();
    // One for all runs: what came before must not matter.
    static const auto instance = host.make(fuzz::object_name());
    static const tesk::live_memory before = host.live();
    const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
    if (data[0] % 4 == 0) {
        may_refuse<std::runtime_error>([&] { host.make(fuzz::object_name() + " " + text); });
        may_refuse<std::invalid_argument>([&] { require_same_again(tesk::atoms_of_text(text)); });
    }
    if (data[0] % 4 == 1) instance->send(text);
    if (data[0] % 4 > 1) read_score(text, *instance);
    host.serve();
    host.take_errors();
    fuzz::require(host.live() == before, "nothing is kept of the host");
    return 0;
}
