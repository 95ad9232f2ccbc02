// Loads object files and makes boxes of their classes.
#include "host/host.h"

#include <filesystem>
#include <utility>

#include "host/state.h"
#include "host/system.h"

namespace tesk {

namespace {

std::string joined(const std::vector<std::string>& lines, std::size_t from) {
    std::string text;
    for (std::size_t i = from; i < lines.size(); ++i) text += (text.empty() ? "" : "; ") + lines[i];
    return text;
}

}  // namespace

host& host::the() {
    state();
    static host only;
    return only;
}

std::string host::load(const std::string& object_path) {
    std::error_code failed;
    const std::filesystem::path file = std::filesystem::weakly_canonical(object_path, failed);
    if (!std::filesystem::is_regular_file(file, failed))
        throw std::runtime_error(object_path + ": no such object file");
    const std::string key = file.generic_string();
    host_state& kept = state();
    const std::string folder = file.parent_path().generic_string();
    // The file being loaded is found before others of its name.
    std::erase(kept.search_folders, folder);
    kept.search_folders.insert(kept.search_folders.begin(), folder);

    std::string why;
    void* const object_file = system::open_object(file.string(), why);
    if (object_file == nullptr)
        throw std::runtime_error(object_path + ": cannot be loaded: " + why);
    void* const entry = system::find_in(object_file, "ext_main");
    if (entry == nullptr) throw std::runtime_error(object_path + ": has no ext_main");
    const std::size_t errors_before = errors().size();
    kept.registered_last = nullptr;
    reinterpret_cast<void (*)(void*)>(entry)(nullptr);
    if (kept.registered_last != nullptr) kept.class_of_file[key] = kept.registered_last->info.name;
    if (const auto known = kept.class_of_file.find(key); known != kept.class_of_file.end())
        return known->second;
    const std::string reported = joined(errors(), errors_before);
    throw std::runtime_error(object_path + ": registers no class" +
                             (reported.empty() ? "" : ": " + reported));
}

std::unique_ptr<instance> host::make(const std::string& box_text) {
    host_state& kept = state();
    atom_list values;
    try {
        values = atoms_of_text(box_text);
    } catch (const std::invalid_argument& unreadable) {
        throw std::runtime_error(std::string("box text: ") + unreadable.what());
    }
    if (values.empty() || values.front().type != 3)
        throw std::runtime_error("box text: begins with no object name");
    constexpr std::size_t most_values = 32767;  // the host's counts have 16 bits
    if (values.size() - 1 > most_values) throw std::runtime_error("box text: too many values");
    tesk_symbol* const name = values.front().value.as_symbol;
    values.erase(values.begin());
    const auto found = kept.by_name.find(name->name);
    if (found == kept.by_name.end() || found->second->info.name_space != "box")
        throw std::runtime_error(std::string(name->name) + ": no such object");

    const std::size_t errors_before = errors().size();
    kept.allocated.clear();
    void* const made =
        found->second->make(name, static_cast<std::int64_t>(values.size()), values.data());
    instance_record* record = nullptr;
    for (instance_record* const allocated : std::exchange(kept.allocated, {})) {
        if (allocated->object == made) {
            record = allocated;
            continue;
        }
        give_back(*allocated);
        delete allocated;
    }
    if (record == nullptr) {
        const std::string reported = joined(errors(), errors_before);
        throw std::runtime_error(reported.empty() ? std::string(name->name) + ": could not be made"
                                                  : reported);
    }
    kept.instances.push_back(record);
    return std::make_unique<instance>(record);
}

const class_info& host::described(const std::string& class_name) const {
    const auto found = state().by_name.find(class_name);
    if (found == state().by_name.end()) throw std::runtime_error(class_name + ": no such class");
    return found->second->info;
}

std::vector<std::string> host::errors() const {
    host_state& kept = state();
    const std::lock_guard lock(kept.error_mutex);
    return kept.errors;
}

std::vector<std::string> host::take_errors() {
    host_state& kept = state();
    const std::lock_guard lock(kept.error_mutex);
    return std::exchange(kept.errors, {});
}

void host::set_version(std::uint16_t version) {
    state().version = version;
}

void host::set_defaults(double rate, int vector_size) {
    state().rate = rate;
    state().vector_size = vector_size;
}

void host::set_library(bool library) {
    state().library = library;
}
void host::set_perform_guarded_by_dsp64(bool guarded) {
    state().guarded = guarded;
}
const std::vector<std::string>& host::registrations() const {
    return state().traffic;
}

void set_flush_denormals(bool flush) {
    system::flush_denormals(flush);
}

}  // namespace tesk
