// The substitute host: loads an object file, makes its instances from a text and runs them.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "framework/host_interface.h"
#include "host/export.h"

namespace tesk {

class instance;
struct instance_record;

using atom_list = std::vector<tesk_atom>;

// What a class says of one attribute. A property's text is as the object gave it.
struct attribute_info {
    std::string name;
    std::string type;                                             // "float64", "long", "symbol"
    std::int64_t flags = 0;                                       // 0x200 hidden, 0x202 read-only
    std::int64_t most = 1;                                        // elements; 65535 for an array
    std::vector<std::pair<std::string, std::string>> properties;  // "label", "style", ...

    TESK_EXPORT std::string property(const std::string& key) const;  // "" when there is none
    TESK_EXPORT double number(const std::string& key) const;         // quoted or not; NaN when none
    TESK_EXPORT std::vector<std::string> value_names() const;        // of "enumvals"
};

struct method_info {
    std::string name;
    std::int32_t type = 0;  // 9: private
};

struct class_info {
    std::string name;
    std::string name_space;                  // "box" or "nobox"
    std::vector<method_info> methods;        // in order of registration
    std::vector<attribute_info> attributes;  // in order of registration

    TESK_EXPORT const attribute_info* attribute(const std::string& name) const;  // null when none
};

// What objects hold of the host at one moment; equal before and after when nothing leaked.
struct live_memory {
    std::int64_t pointers = 0;      // sysmem_newptr and texts of atoms
    std::int64_t instances = 0;     // object_alloc
    std::int64_t qelems = 0;        // qelem_new
    std::int64_t outlets = 0;       // outlet_new
    std::int64_t dictionaries = 0;  // dictionary_new and retained ones
    std::int64_t registrations = 0;
    bool operator==(const live_memory&) const = default;
};

// One per process. The thread that calls the() first is the main thread: load, make, serve and
// everything below belong to it, unless a line says otherwise.
class host {
public:
    TESK_EXPORT static host& the();

    // Loads an object file, which stays loaded, and lets it register; throws std::runtime_error
    // with one line that names file and reason. The name of the class that was registered; an
    // object that registers none is refused, one loaded again answers the class of the first time.
    // What the object prints goes to the process's streams; redirect them around the call.
    TESK_EXPORT std::string load(const std::string& object_path);

    // Makes an instance of a loaded class, e.g. `orv.device.vesk~ @feedback 0.8 @delay 0.25 0.5`.
    // Throws std::runtime_error with the text that the object left in the error channel.
    TESK_EXPORT std::unique_ptr<instance> make(const std::string& box_text);

    TESK_EXPORT const class_info& described(const std::string& class_name) const;  // throws

    // The error channel: one line per failure, from objects and from the host. Any thread.
    TESK_EXPORT std::vector<std::string> errors() const;
    TESK_EXPORT std::vector<std::string> take_errors();  // and empties it

    // Runs what was deferred to the main thread before this call: deferred calls and set qelems, in
    // the order in which they came. How many.
    TESK_EXPORT int serve();

    TESK_EXPORT void set_version(std::uint16_t version);                // 0x900 at first
    TESK_EXPORT void set_defaults(double rate, int vector_size);        // sys_getsr: 44100 and 64
    TESK_EXPORT void set_library(bool library);                         // "islib"; false at first
    TESK_EXPORT void set_perform_guarded_by_dsp64(bool guarded);        // true at first
    TESK_EXPORT live_memory live() const;                               // any thread
    TESK_EXPORT const std::vector<std::string>& registrations() const;  // class calls, one a line

    // Objects bound to names: "#D" a saved dictionary, "_preset" the preset being stored.
    TESK_EXPORT void bind(const std::string& symbol_name, void* object);  // null unbinds
    TESK_EXPORT void* new_dictionary(const std::string& registered_name);
    TESK_EXPORT void free_dictionary(void* dictionary);
    // Asks every instance that has "preset" for its values; the lists stored, each as text.
    TESK_EXPORT std::vector<std::string> store_preset();

    host(const host&) = delete;
    host& operator=(const host&) = delete;

private:
    host() = default;
};

// One box. Freed on the main thread: what is still deferred to it is dropped, after waiting for
// calls under way on other threads.
class instance {
public:
    struct borrowed {};
    TESK_EXPORT explicit instance(instance_record* record) noexcept;
    TESK_EXPORT instance(instance_record* record, borrowed) noexcept;  // the host's own
    TESK_EXPORT ~instance();                                           // frees
    instance(const instance&) = delete;
    instance& operator=(const instance&) = delete;

    // Gives the object back before this handle goes: from here on everything is refused, quietly.
    TESK_EXPORT void free();

    // Any thread; the object decides what it does there. False when refused, with a line in the
    // error channel: text that can't be read, a private message, an unknown selector, an unknown
    // value name. A selector that is no message but an attribute sets it.
    TESK_EXPORT bool send(const std::string& text, int inlet = 0);
    TESK_EXPORT bool send(const std::string& selector, const atom_list& values, int inlet = 0);
    TESK_EXPORT bool set(const std::string& attribute, const atom_list& values);
    TESK_EXPORT bool set(const std::string& attribute, const std::vector<double>& values);
    TESK_EXPORT bool set(const std::string& attribute, double value);
    TESK_EXPORT atom_list get(const std::string& attribute);  // empty when refused, with a line
    TESK_EXPORT std::vector<double> get_numbers(const std::string& attribute);
    TESK_EXPORT double get_number(const std::string& attribute);  // NaN when there is none

    // Sends "dsp64": the object learns rate and vector size, and hands its perform routine over.
    // False when the object has no "dsp64" or gave no routine. connected: inlets, then outlets.
    TESK_EXPORT bool prepare(double rate, int vector_size);
    TESK_EXPORT bool prepare(double rate, int vector_size,
                             const std::vector<std::int16_t>& connected);

    // One vector on the calling thread: neither allocates nor locks. False, and silence at the
    // outputs, while "dsp64" runs, before the first one and after z_dsp_free. In and out may be
    // the same buffers. One thread at a time.
    TESK_EXPORT bool run(const double* const* in, double* const* out, int frames) noexcept;

    TESK_EXPORT int inlets() const;
    TESK_EXPORT int outlets() const;
    TESK_EXPORT std::string assist(bool outlet, int index, const std::string& before = {});
    TESK_EXPORT const std::string& class_name() const;
    TESK_EXPORT const class_info& described() const;
    TESK_EXPORT std::vector<std::string> notifications() const;  // by object_notify, so far

    // The method as registered, to be called with its own argument list, and the object to hand it.
    TESK_EXPORT tesk_method method(const std::string& name) const;  // null when there is none
    TESK_EXPORT void* object() const;

private:
    void refuse(const std::string& why) const;  // a line in the error channel
    instance_record* record_;
    int output_count_ = 0;
    bool borrowed_ = false;
};

// A thread that runs vectors of one instance until it is stopped. before_vector may send and set.
class audio_thread {
public:
    struct settings {
        int vector_size = 64;
        bool flush_denormals = true;
        std::function<void(std::int64_t vector, double* const* inputs)> before_vector = {};
    };
    TESK_EXPORT audio_thread(instance& runs, settings with);
    TESK_EXPORT ~audio_thread();  // stops
    TESK_EXPORT void stop();
    std::int64_t vectors() const { return vectors_.load(); }  // performed so far

private:
    void work();
    instance& runs_;
    settings with_;
    std::atomic<bool> stop_{false};
    std::atomic<std::int64_t> vectors_{0};
    std::thread thread_;
};

// Flushing of denormals on the calling thread; off unless asked for.
TESK_EXPORT void set_flush_denormals(bool flush);

// Reads blank-separated values: integers, other numbers, names; double quotes hold names with
// blanks. Throws std::invalid_argument with one line that says what is wrong and where.
TESK_EXPORT atom_list atoms_of_text(const std::string& text);
TESK_EXPORT std::string text_of_atoms(const atom_list& values);  // readable by atoms_of_text
TESK_EXPORT tesk_atom atom_of(double value);
TESK_EXPORT tesk_atom atom_of(std::int64_t value);
TESK_EXPORT tesk_atom atom_of(const std::string& name);

}  // namespace tesk
