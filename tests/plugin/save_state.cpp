// Saves the plugin's state as hosts do, through lilv, with some ports set:
//
//   save_state BUNDLE FOLDER [SYMBOL=VALUE ...]     BUNDLE: the folder vesk.lv2
//
// Fails unless loading what was saved brings every control input back.
#include <lilv/lilv.h>
#include <lv2/atom/atom.h>
#include <lv2/state/state.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace {

constexpr const char* file_name = "state.ttl";
using Ports = std::map<std::string, float>;

std::vector<std::string> uris;
LV2_URID id_of(LV2_URID_Map_Handle, const char* uri) {
    for (std::size_t i = 0; i < uris.size(); ++i)
        if (uris[i] == uri) return static_cast<LV2_URID>(i + 1);
    uris.emplace_back(uri);
    return static_cast<LV2_URID>(uris.size());
}
const char* uri_of(LV2_URID_Unmap_Handle, LV2_URID id) {
    return uris.at(id - 1).c_str();
}

const void* value_of(const char* symbol, void* ports, std::uint32_t* size, std::uint32_t* type) {
    *size = sizeof(float);
    *type = id_of(nullptr, LV2_ATOM__Float);
    return &static_cast<Ports*>(ports)->at(symbol);
}
void take_value(const char* symbol, void* ports, const void* value, std::uint32_t size,
                std::uint32_t) {
    if (size == sizeof(float)) std::memcpy(&(*static_cast<Ports*>(ports))[symbol], value, size);
}

int fail(const std::string& text) {
    std::fprintf(stderr, "save_state: %s\n", text.c_str());
    return 1;
}

}  // namespace

int main(int count, char** words) {
    if (count < 3) return fail("usage: save_state BUNDLE FOLDER [SYMBOL=VALUE ...]");
    LilvWorld* const world = lilv_world_new();
    lilv_world_load_bundle(
        world, lilv_new_file_uri(world, nullptr, (std::string(words[1]) + "/").c_str()));
    const LilvPlugin* const plugin = lilv_plugins_get_by_uri(
        lilv_world_get_all_plugins(world), lilv_new_uri(world, "urn:orvane:vesk"));
    if (plugin == nullptr) return fail(std::string("no plugin in ") + words[1]);

    Ports ports;
    const LilvNode* const input = lilv_new_uri(world, LV2_CORE__InputPort);
    const LilvNode* const control = lilv_new_uri(world, LV2_CORE__ControlPort);
    for (std::uint32_t i = 0; i < lilv_plugin_get_num_ports(plugin); ++i) {
        const LilvPort* const port = lilv_plugin_get_port_by_index(plugin, i);
        if (!lilv_port_is_a(plugin, port, input) || !lilv_port_is_a(plugin, port, control))
            continue;
        LilvNode* standard = nullptr;
        lilv_port_get_range(plugin, port, &standard, nullptr, nullptr);
        ports[lilv_node_as_string(lilv_port_get_symbol(plugin, port))] =
            lilv_node_as_float(standard);
    }
    for (int i = 3; i < count; ++i) {
        const std::string word = words[i];
        const std::string symbol = word.substr(0, word.find('='));
        if (!ports.contains(symbol)) return fail("no port " + symbol);
        ports[symbol] = std::stof(word.substr(symbol.size() + 1));
    }

    LV2_URID_Map map{nullptr, id_of};
    LV2_URID_Unmap unmap{nullptr, uri_of};
    LilvInstance* const instance = lilv_plugin_instantiate(plugin, 48000.0, nullptr);
    LilvState* const state =
        lilv_state_new_from_instance(plugin, instance, &map, nullptr, nullptr, nullptr, words[2],
                                     value_of, &ports, LV2_STATE_IS_POD, nullptr);
    if (lilv_state_save(world, &map, &unmap, state, nullptr, words[2], file_name) != 0)
        return fail(std::string("nothing was saved in ") + words[2]);

    const std::string file = std::string(words[2]) + '/' + file_name;
    LilvState* const loaded = lilv_state_new_from_file(world, &map, nullptr, file.c_str());
    if (loaded == nullptr) return fail(file + " does not load");
    Ports restored;
    lilv_state_restore(loaded, instance, take_value, &restored, 0, nullptr);
    return restored == ports ? 0 : fail("other values come back than were saved");
}
